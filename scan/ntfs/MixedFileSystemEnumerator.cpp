#include "scan/ntfs/MixedFileSystemEnumerator.h"

#include <algorithm>

#include "platform/files/Paths.h"

namespace Vantrel::Ntfs {

TMixedFileSystemEnumerator::TMixedFileSystemEnumerator(TRef<IHierarchicalEnumerator> pIndexed,
                                                       std::shared_ptr<const TMixedScan> pScan,
                                                       THierarchicalEnumeratorOptions pOptions)
    : TBaseNestedHierarchicalEnumerator(std::move(pIndexed)), fScan(std::move(pScan)) {
  fOptions = pOptions;
}

bool TMixedFileSystemEnumerator::IsOrdinary(std::u16string_view pName, TAttributes pAttributes) const {
  if ((pAttributes & kAttributeDirectory) == 0) return false;
  const bool isFollowed = (fOptions & (heoFollowSymbolicLinks | heoFollowMountPoints)) != 0;
  if ((pAttributes & kAttributeReparsePoint) != 0) return isFollowed;
  return !fScan->fMounts.empty() &&
         fScan->fMounts.contains(JoinPath(fNestedEnumerator->GetPath(), pName, fScan->fPathDelimiter));
}

bool TMixedFileSystemEnumerator::CanDescend() const {
  return fNestedEnumerator->CanDescend() || IsOrdinary(GetObjectName(), GetAttributes());
}

// Goes down from the scan's first folder, so that the ordinary enumerator knows all that is above.
TRef<IHierarchicalEnumerator> TMixedFileSystemEnumerator::CreateOrdinary(std::u16string_view pName,
                                                                         TAttributes pAttributes) const {
  TRef<IHierarchicalEnumerator> ordinary = fScan->fOpenOrdinary();
  const std::u16string path = fNestedEnumerator->GetPath();
  for (size_t at = std::min(path.size(), fScan->fTopPath.size()); at < path.size();) {
    const size_t end = std::min(path.find(fScan->fPathDelimiter, at), path.size());
    if (end > at)
      ordinary = ordinary->CreateChildEnumerator(std::u16string_view(path).substr(at, end - at), kAttributeDirectory);
    at = end + 1;
  }
  return ordinary->CreateChildEnumerator(pName, pAttributes);
}

TRef<IHierarchicalEnumerator> TMixedFileSystemEnumerator::GetChildHierarchicalEnumerator() {
  return CreateChildEnumeratorById(GetEntryId(), GetObjectName(), GetAttributes());
}

TRef<IHierarchicalEnumerator> TMixedFileSystemEnumerator::CreateChildEnumerator(std::u16string_view pName,
                                                                                TAttributes pAttributes) {
  return CreateChildEnumeratorById(0, pName, pAttributes);
}

TRef<IHierarchicalEnumerator> TMixedFileSystemEnumerator::CreateChildEnumeratorById(uint64_t pId,
                                                                                    std::u16string_view pName,
                                                                                    TAttributes pAttributes) {
  if (IsOrdinary(pName, pAttributes)) return CreateOrdinary(pName, pAttributes);
  return Wrap(fNestedEnumerator->CreateChildEnumeratorById(pId, pName, pAttributes));
}

TRef<IHierarchicalEnumerator> TMixedFileSystemEnumerator::Wrap(TRef<IHierarchicalEnumerator> pNested) const {
  return MakeRef<TMixedFileSystemEnumerator>(std::move(pNested), fScan, fOptions);
}

}  // namespace Vantrel::Ntfs
