#include "scan/ntfs/MftEnumerators.h"

#include <algorithm>

#include "platform/files/Paths.h"
#include "scan/files/LinkRules.h"
#include "scan/ntfs/MftNames.h"
#include "scan/ntfs/NtfsErrors.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Ntfs {

namespace {

// The end of the year 30000. Later times come from damaged records.
constexpr int64_t kLastTime = TKivFileTime::FromUnix(884'541'340'800, 0).fTicks;

size_t LengthOfPath(std::u16string_view pPath) {
  return pPath.ends_with(u'/') || pPath.ends_with(u'\\') ? pPath.size() - 1 : pPath.size();
}

}  // namespace

TKivFileTime TBaseMftEnumerator::DateOf(int64_t pTicks) {
  return {pTicks > 0 && pTicks <= kLastTime ? pTicks : 0};
}

uint32_t TBaseMftEnumerator::GetCurrentMftRecordNumber() const {
  return fName == kNoName ? fFolder : Root().RecordOfName(fName);
}

std::u16string_view TBaseMftEnumerator::GetObjectName() const {
  if (fName != kNoName) return Root().NameText(fName);
  if (fFolder == fScan->fTop) return FileNameOfPath(fScan->fTopPath, fScan->fPathDelimiter);
  return Root().NameOfFolder(fFolder);
}

int64_t TBaseMftEnumerator::GetAllocated() const {
  const TMftEntry& entry = GetItemEntry();
  Enumerators::TAllocationFacts facts;
  facts.fIsFolder = entry.IsFolder();
  facts.fRecordAllocation = entry.fAllocated;
  facts.fSharesHardLinks = (fOptions & heoShareHardLinks) != 0;
  facts.fADSSize = entry.fADSSize;
  if (entry.fHasHardLinks) facts.fNumberOfHardLinks = GetNumberOfHardlinks();
  return Enumerators::AllocatedSizeOf(facts);
}

TRef<THierarchicalMftEnumerator> THierarchicalMftEnumerator::Create(std::shared_ptr<const TMftScan> pScan,
                                                                    THierarchicalEnumeratorOptions pOptions) {
  const uint32_t top = pScan->fTop;
  TRef<THierarchicalMftEnumerator> enumerator(new THierarchicalMftEnumerator(std::move(pScan), top, pOptions));
  const std::u16string& path = enumerator->fScan->fTopPath;
  enumerator->fPathLength = LengthOfPath(path);
  enumerator->fDepth = enumerator->TBaseHierarchicalEnumerator::GetParentPathDepth();
  return enumerator;
}

TRef<THierarchicalMftEnumerator> THierarchicalMftEnumerator::CreateForPath(TMftScan pScan,
                                                                           std::u16string_view pPathInside,
                                                                           THierarchicalEnumeratorOptions pOptions) {
  const THierarchicalMftRoot& root = *pScan.fRoot;
  uint32_t only = kNoName;
  pScan.fTop = kRootRecord;
  while (!pPathInside.empty()) {
    const size_t end = std::min(pPathInside.find(pScan.fPathDelimiter), pPathInside.size());
    const std::u16string_view part = pPathInside.substr(0, end);
    pPathInside.remove_prefix(std::min(end + 1, pPathInside.size()));
    if (part.empty()) continue;
    if (only != kNoName) return nullptr;  // a file has nothing in it
    const uint32_t folder = FindName(root, root.SubFoldersOf(pScan.fTop), part);
    if (folder != kNoName)
      pScan.fTop = root.RecordOfName(folder);
    else if (only = FindName(root, root.FilesOf(pScan.fTop), part); only == kNoName)
      return nullptr;
  }
  if (only != kNoName) pScan.fTopPath = std::u16string(FolderOfPath(pScan.fTopPath, pScan.fPathDelimiter));
  TRef<THierarchicalMftEnumerator> enumerator = Create(std::make_shared<const TMftScan>(std::move(pScan)), pOptions);
  enumerator->fOnly = enumerator->fName = only;
  return enumerator;
}

bool THierarchicalMftEnumerator::Next() {
  const size_t index = fNext++;
  if (fOnly != kNoName) return index == 0;
  const std::span<const uint32_t> folders = Root().SubFoldersOf(fFolder);
  const std::span<const uint32_t> files = Root().FilesOf(fFolder);
  if (index < folders.size()) {
    fName = folders[index];
  } else if (index - folders.size() < files.size()) {
    fName = files[index - folders.size()];
  } else {
    fName = kNoName;
    if (fFolder == fScan->fTop) fErrorCode = fScan->fErrorCode;
    return false;
  }
  return true;
}

void THierarchicalMftEnumerator::Reset() {
  fNext = 0;
  fName = fOnly;
  fErrorCode = 0;
}

TRef<THierarchicalMftEnumerator> THierarchicalMftEnumerator::CreateForFolder(uint32_t pFolder,
                                                                             size_t pNameLength) const {
  TRef<THierarchicalMftEnumerator> child(new THierarchicalMftEnumerator(fScan, pFolder, fOptions));
  child->fPathLength = fPathLength + 1 + pNameLength;
  child->fDepth = fDepth + 1;
  return child;
}

TRef<IHierarchicalEnumerator> THierarchicalMftEnumerator::GetChildHierarchicalEnumerator() {
  return CreateForFolder(GetCurrentMftRecordNumber(), GetObjectName().size());
}

TRef<IHierarchicalEnumerator> THierarchicalMftEnumerator::CreateChildEnumerator(std::u16string_view pName,
                                                                                TAttributes) {
  for (const uint32_t name : Root().SubFoldersOf(fFolder)) {
    const uint32_t record = Root().RecordOfName(name);
    if (Root().NameText(name) == pName && !Root().Entry(record).fIsLink) return CreateForFolder(record, pName.size());
  }
  return MakeRef<Enumerators::TPathNotFoundEnumerator>(JoinPath(GetPath(), pName, fScan->fPathDelimiter),
                                                       kErrorNoFolder, fOptions);
}

TRef<IHierarchicalEnumerator> THierarchicalMftEnumerator::CreateChildEnumeratorById(uint64_t pId,
                                                                                    std::u16string_view pName,
                                                                                    TAttributes pAttributes) {
  if (pId == 0 || !Root().HasEntry(pId - 1)) return CreateChildEnumerator(pName, pAttributes);
  return CreateForFolder(static_cast<uint32_t>(pId - 1), pName.size());
}

TRef<IHierarchicalEnumerator> THierarchicalMftEnumerator::Clone() const {
  TRef<THierarchicalMftEnumerator> clone(new THierarchicalMftEnumerator(fScan, fFolder, fOptions));
  clone->fPathLength = fPathLength;
  clone->fDepth = fDepth;
  clone->fOnly = clone->fName = fOnly;
  return clone;
}

TEntryValues THierarchicalMftEnumerator::GetEntryValues() const {
  const TMftEntry& entry = GetItemEntry();
  return {GetSize(),
          GetAllocated(),
          DateOf(entry.fLastAccessTime),
          DateOf(entry.fLastWriteTime),
          DateOf(entry.fCreationTime),
          entry.fAttributes};
}

std::u16string THierarchicalMftEnumerator::GetPath() const {
  std::vector<std::u16string_view> names;
  for (uint32_t folder = fFolder; folder != fScan->fTop && folder != kRootRecord; folder = Root().ParentOf(folder))
    names.push_back(Root().NameOfFolder(folder));
  std::u16string path = fScan->fTopPath;
  for (auto name = names.rbegin(); name != names.rend(); ++name) path = JoinPath(path, *name, fScan->fPathDelimiter);
  return path;
}

std::u16string THierarchicalMftEnumerator::GetFullPath() const {
  return fName == kNoName ? GetPath() : JoinPath(GetPath(), GetObjectName(), fScan->fPathDelimiter);
}

TEnumeratorError THierarchicalMftEnumerator::GetError() const {
  return Enumerators::ClassifyEnumeratorError(fErrorCode, {});
}

}  // namespace Vantrel::Ntfs
