// The part of the folder nodes that builds trees from a file.

#include "model/tree/CustomFolder.h"

namespace Vantrel {

TRef<TCustomFolderData> TCustomFolderData::AddLoadedChild(std::u16string_view pName, bool pIsFilesNode) {
  if (pIsFilesNode) {
    auto files = MakeRef<TFileGroupData>(*this, fRoot);
    AttachFilesNode(files);
    return files;
  }
  TRef<TCustomFolderData> child = MakeRef<TFolderData>(*this, fRoot, pName);
  child->EnterTree();
  TExclusiveLock lock(fLock);
  if (!fSubItems) fSubItems = std::make_unique<TSubFolderList>();
  fSubItems->fList.push_back(child);
  return child;
}

void TCustomFolderData::SetLoaded(const TLoadedFolder& pValues) {
  fAttributes = pValues.fEntry.fAttributes;
  fOwnerKey = pValues.fOwnerKey;
  fCreationDate = pValues.fEntry.fCreationDate;
  // The file does not tell which dates are the folder's own.
  fOwnLastAccessDate.Set(pValues.fEntry.fLastAccessDate);
  fOwnLastChangeDate.Set(pValues.fEntry.fLastChangeDate);
  fLastAccessDate.Set(pValues.fEntry.fLastAccessDate);
  fLastChangeDate.Set(pValues.fEntry.fLastChangeDate);
  IncludeFolderState(pValues.fState);
  TExclusiveLock lock(fLock);
  fSize = pValues.fValues.fSize;
  fAllocated = pValues.fValues.fAllocated;
  fFiles = pValues.fValues.fFiles;
  fFolders = pValues.fValues.fFolders;
  fCompression = pValues.fValues.fCompression;
  if (fSubItems) fSubItems->fList.shrink_to_fit();
  if (pValues.fFiles) fFileTable = pValues.fFiles;
  if (!pValues.fStatistics.IsEmpty())
    delete fStatistics.exchange(new TFolderStatistics(pValues.fStatistics), std::memory_order_acq_rel);
}

void TCustomFolderData::SetLoadedStatistics(const TFolderStatistics& pStatistics) {
  TExclusiveLock lock(fLock);
  delete fStatistics.exchange(new TFolderStatistics(pStatistics), std::memory_order_acq_rel);
}

}  // namespace Vantrel
