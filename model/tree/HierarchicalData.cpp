#include "model/tree/HierarchicalData.h"

#include <algorithm>

#include "model/tree/EntryView.h"
#include "platform/files/Paths.h"

namespace Vantrel {

template <class TInterface>
TMetaDataValue TBaseVariantMetaDataProvider<TInterface>::GetValue(TColumn pColumn) const {
  return TEntryView(static_cast<const TInterface&>(*this)).GetValue(pColumn);
}

template <class TInterface>
TBaseHierarchicalObject<TInterface>::TBaseHierarchicalObject(TRef<IHierarchicalRoot> pRoot, std::u16string_view pName)
    : fName(pName), fRootDisposeToken(pRoot ? pRoot->GetDisposeToken() : nullptr), fRoot(std::move(pRoot)) {}

template <class TInterface>
TRef<IHierarchicalRoot> TBaseHierarchicalObject<TInterface>::GetRoot() const {
  TSharedLock lock(fLock);
  return fRoot;
}

bool IsSameOrBelow(TRef<IHierarchicalElement> pElement, const IHierarchicalElement& pTop) {
  while (pElement && pElement.get() != &pTop) pElement = pElement->GetParentFolder();
  return pElement != nullptr;
}

THierarchicalObject::THierarchicalObject(std::u16string_view pFullPath, char16_t pDelimiter,
                                         const TEntryValues& pValues, int64_t pFiles)
    : TBaseHierarchicalObject(nullptr, FileNameOfPath(pFullPath, pDelimiter)),
      fFiles(pFiles),
      fPath(FolderOfPath(pFullPath, pDelimiter)),
      fFullPath(pFullPath) {
  TExclusiveLock lock(fLock);
  fAttributes = pValues.fAttributes;
  fCreationDate = pValues.fCreationDate;
  fSize = pValues.fSize;
  fAllocated = pValues.fAllocated;
  fLastAccessDate.Set(pValues.fLastAccessDate);
  fLastChangeDate.Set(pValues.fLastChangeDate);
}

int64_t THierarchicalObject::GetSize() const {
  TSharedLock lock(fLock);
  return fSize;
}

int64_t THierarchicalObject::GetAllocated() const {
  TSharedLock lock(fLock);
  return fAllocated;
}

template <class TInterface>
TRef<IHierarchicalElement> TBaseHierarchicalElement<TInterface>::GetParentFolder() const {
  TSharedLock lock(this->fLock);
  return fParentFolder;
}

template <class TInterface>
std::u16string TBaseHierarchicalElement<TInterface>::GetFullPath() const {
  std::vector<TRef<const IHierarchicalElement>> nodes;
  size_t length = this->GetObjectName().size();
  for (TRef<const IHierarchicalElement> parent = GetParentFolder(); parent; parent = parent->GetParentFolder()) {
    nodes.push_back(parent);
    length += parent->GetObjectName().size() + 1;
  }
  TRef<IHierarchicalRoot> root = this->GetRoot();
  const char16_t delimiter = root ? root->GetPathDelimiter() : NativePathDelimiter();
  std::u16string path;
  path.reserve(length);
  auto append = [&](std::u16string_view pName) {
    if (!path.empty() && path.back() != delimiter) path += delimiter;
    path += pName;
  };
  // The top folder's name is the root's path.
  std::for_each(nodes.rbegin(), nodes.rend(), [&](const auto& pNode) { append(pNode->GetObjectName()); });
  append(this->GetObjectName());
  return path;
}

TSizeValues TContainerHierarchicalElement::GetValues() const {
  TSharedLock lock(fLock);
  TSizeValues values;
  values.fSize = fSize;
  values.fAllocated = fAllocated;
  values.fFiles = fFiles;
  values.fFolders = fFolders;
  values.fCompression = fCompression;
  return values;
}

template class TBaseVariantMetaDataProvider<IHierarchicalObject>;
template class TBaseVariantMetaDataProvider<IHierarchicalElement>;
template class TBaseVariantMetaDataProvider<IFolderData>;
template class TBaseHierarchicalObject<IHierarchicalObject>;
template class TBaseHierarchicalObject<IHierarchicalElement>;
template class TBaseHierarchicalObject<IFolderData>;
template class TBaseHierarchicalElement<IHierarchicalElement>;
template class TBaseHierarchicalElement<IFolderData>;

}  // namespace Vantrel
