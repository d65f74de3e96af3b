#include "model/tree/SingleFile.h"

#include "platform/system/Errors.h"

namespace Vantrel {

namespace {

// The folder that holds the file. A "[Files]" node is not part of the file's path.
TRef<IHierarchicalElement> RealFolder(IHierarchicalElement& pFolder) {
  IFolderData* folder = pFolder.AsFolder();
  return folder && folder->IsFileGroup() ? pFolder.GetParentFolder() : TRef<IHierarchicalElement>(&pFolder);
}

}  // namespace

TCustomFileData::TCustomFileData(IHierarchicalElement& pFolder, std::u16string_view pName, const TFileRecord& pRecord)
    : TBaseHierarchicalElement<IHierarchicalElement>(RealFolder(pFolder), pFolder.GetRoot(), pName) {
  TExclusiveLock lock(fLock);
  fAttributes = pRecord.fAttributes;
  fOwnerKey = pRecord.fOwnerKey;
  fCreationDate = pRecord.fCreationDate;
  fSize = pRecord.fSize;
  fAllocated = pRecord.fAllocated;
  fLastAccessDate.Set(pRecord.fLastAccessDate);
  fLastChangeDate.Set(pRecord.fLastChangeDate);
}

int64_t TCustomFileData::GetSize() const {
  TSharedLock lock(fLock);
  return fSize;
}

int64_t TCustomFileData::GetAllocated() const {
  TSharedLock lock(fLock);
  return fAllocated;
}

std::vector<TRef<IFolderData>> TCustomFileData::FindSubFolders() {
  throw EInvalidOperation("A file cannot find subfolders.");
}

TRef<IFolderData> TCustomFileData::CreateChild(std::u16string_view) {
  throw EInvalidOperation("A file can't have child elements");
}

}  // namespace Vantrel
