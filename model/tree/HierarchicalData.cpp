#include "model/tree/HierarchicalData.h"

#include <algorithm>

#include "model/columns/MetaDataCache.h"
#include "model/tree/FileNames.h"
#include "platform/files/Paths.h"

namespace Vantrel {

template <class TInterface>
TMetaDataValue TBaseVariantMetaDataProvider<TInterface>::GetValue(TColumn pColumn) const {
  auto date = [](TKivFileTime pDate) { return pDate.IsSet() ? TMetaDataValue(pDate) : TMetaDataValue(); };
  switch (pColumn) {
    case TColumn::mdName:
      return std::u16string(this->GetObjectName());
    case TColumn::mdFullPath:
      return this->GetFullPath();
    case TColumn::mdExtension:
      return this->IsFolder() ? TMetaDataValue() : std::u16string(ExtensionColumnOfName(this->GetObjectName()));
    case TColumn::mdSize:
      return this->GetSize();
    case TColumn::mdAllocated:
      return this->GetAllocated();
    case TColumn::mdFiles:
    case TColumn::mdItems:
      return this->GetFiles();
    case TColumn::mdLastAccess:
      return date(this->GetLastAccessDate());
    case TColumn::mdLastChange:
      return date(this->GetLastChangeDate());
    case TColumn::mdCreation:
      return date(this->GetCreationDate());
    case TColumn::mdAttributes:
      return static_cast<int64_t>(this->GetAttributes());
    case TColumn::mdPathLength:
      return static_cast<int64_t>(this->GetFullPath().size());
    default:
      return {};
  }
}

template <class TInterface>
TBaseHierarchicalObject<TInterface>::TBaseHierarchicalObject(TRef<IHierarchicalRoot> pRoot, std::u16string_view pName)
    : fName(pName), fRootDisposeToken(pRoot ? pRoot->GetDisposeToken() : nullptr), fRoot(std::move(pRoot)) {}

template <class TInterface>
TBaseHierarchicalObject<TInterface>::~TBaseHierarchicalObject() {
  if (IMetaDataCache* cache = fMetaDataCache.load(std::memory_order_acquire)) cache->Release();
}

template <class TInterface>
TMetaDataValue TBaseHierarchicalObject<TInterface>::GetValue(TColumn pColumn) const {
  if (pColumn == TColumn::mdOwner) return fOwnerKey == kNoKey ? TMetaDataValue() : TextOfKey(fOwnerKey);
  return TBaseVariantMetaDataProvider<TInterface>::GetValue(pColumn);
}

template <class TInterface>
TRef<IHierarchicalRoot> TBaseHierarchicalObject<TInterface>::GetRoot() const {
  TSharedLock lock(fLock);
  return fRoot;
}

template <class TInterface>
IMetaDataCache& TBaseHierarchicalObject<TInterface>::GetMetaDataCache() {
  IMetaDataCache* cache = fMetaDataCache.load(std::memory_order_acquire);
  if (cache) return *cache;
  TRef<IMetaDataCache> made = MakeRef<TMetaDataCache>();
  made->AddRef();  // the node's own reference
  if (fMetaDataCache.compare_exchange_strong(cache, made.get(), std::memory_order_acq_rel)) return *made;
  made->Release();  // another thread made one first
  return *cache;
}

template <class TInterface>
std::u16string TBaseHierarchicalObject<TInterface>::GetFormattedValue(TColumn pColumn,
                                                                      const TValueFormat& pFormat) const {
  return FormatValue(pColumn, this->GetValue(pColumn), pFormat);
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

template <class TInterface>
TMetaDataValue TBaseHierarchicalElement<TInterface>::ShareOf(const IHierarchicalElement* pWhole) const {
  const TRef<IHierarchicalRoot> root = this->GetRoot();
  if (!root) return {};
  const bool allocated = root->GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated;
  auto basis = [allocated](const IHierarchicalBase& pNode) {
    return allocated ? pNode.GetAllocated() : pNode.GetSize();
  };
  if (!pWhole) return 1.0;
  const int64_t whole = basis(*pWhole);
  return whole == 0 ? 0.0 : static_cast<double>(basis(*this)) / static_cast<double>(whole);
}

template <class TInterface>
TMetaDataValue TBaseHierarchicalElement<TInterface>::GetValue(TColumn pColumn) const {
  switch (pColumn) {
    case TColumn::mdParentPath: {
      const TRef<IHierarchicalElement> parent = GetParentFolder();
      return parent ? TMetaDataValue(parent->GetFullPath()) : TMetaDataValue();
    }
    case TColumn::mdPercentOfParent:
      return ShareOf(GetParentFolder().get());
    case TColumn::mdPercentOfRoot: {
      const TRef<IHierarchicalRoot> root = this->GetRoot();
      return root ? ShareOf(root->GetTopFolder().get()) : TMetaDataValue();
    }
    case TColumn::mdDepth: {
      int64_t depth = 0;
      for (TRef<IHierarchicalElement> parent = GetParentFolder(); parent; parent = parent->GetParentFolder()) ++depth;
      return depth;
    }
    default:
      return TBaseHierarchicalObject<TInterface>::GetValue(pColumn);
  }
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

TMetaDataValue TContainerHierarchicalElement::GetValue(TColumn pColumn) const {
  TMetaDataValue value = ValueOfSizes(GetValues(), pColumn);
  return value.index() != 0 ? value : TBaseHierarchicalElement<IFolderData>::GetValue(pColumn);
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
