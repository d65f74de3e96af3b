#include "model/tree/CustomFolder.h"

#include <fmt/format.h>

#include <algorithm>

#include "model/tree/SingleFile.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::vector<TRef<IFolderData>> SortedBySize(std::vector<TRef<IFolderData>> pChildren) {
  std::vector<std::pair<int64_t, TRef<IFolderData>>> keyed;
  keyed.reserve(pChildren.size());
  for (TRef<IFolderData>& child : pChildren) {
    const int64_t size = child->GetSize();
    keyed.emplace_back(size, std::move(child));
  }
  std::sort(keyed.begin(), keyed.end(), [](const auto& pA, const auto& pB) {
    return pA.first != pB.first ? pA.first > pB.first : pA.second->GetObjectName() < pB.second->GetObjectName();
  });
  std::transform(keyed.begin(), keyed.end(), pChildren.begin(), [](auto& pItem) { return std::move(pItem.second); });
  return pChildren;
}

TCustomFolderData::TCustomFolderData(TRef<IHierarchicalElement> pParent, TRef<IHierarchicalRoot> pRoot,
                                     std::u16string_view pName)
    : TContainerHierarchicalElement(std::move(pParent), std::move(pRoot), pName) {}

TCustomFolderData::~TCustomFolderData() {
  delete fStatistics.load(std::memory_order_acquire);
}

std::vector<TRef<TCustomFolderData>> TCustomFolderData::Children() const {
  TSharedLock lock(fLock);
  std::vector<TRef<TCustomFolderData>> children;
  if (fSubItems) {
    children.reserve(fSubItems->fList.size() + 1);
    children = fSubItems->fList;
    if (fSubItems->fFilesNode) children.push_back(fSubItems->fFilesNode);
  }
  return children;
}

std::vector<TRef<IFolderData>> TCustomFolderData::FindSubFolders() {
  std::vector<TRef<IFolderData>> children;
  {
    TSharedLock lock(fLock);
    if (!fSubItems) return children;
    children.reserve(fSubItems->fList.size() + 1);
    children.assign(fSubItems->fList.begin(), fSubItems->fList.end());
    if (fSubItems->fFilesNode) children.push_back(fSubItems->fFilesNode);
  }
  return SortedBySize(std::move(children));
}

std::vector<TRef<IHierarchicalElement>> TCustomFolderData::FindFiles() {
  std::vector<TRef<IHierarchicalElement>> files;
  TRef<const TFileTable> table = GetFileTable();
  if (!table) return files;
  files.reserve(table->Count());
  for (uint32_t index : table->SortedIndices()) files.push_back(MakeRef<TFileData>(*this, *table, (*table)[index]));
  return files;
}

TRef<const TFileTable> TCustomFolderData::GetFileTable() const {
  TRef<TCustomFolderData> filesNode;
  {
    TSharedLock lock(fLock);
    if (!fSubItems || !fSubItems->fFilesNode) return fFileTable;
    filesNode = fSubItems->fFilesNode;
  }
  return filesNode->GetFileTable();
}

TRef<IFolderData> TCustomFolderData::GetFilesNode() const {
  TSharedLock lock(fLock);
  return fSubItems ? fSubItems->fFilesNode : nullptr;
}

size_t TCustomFolderData::GetSubFolderCount() const {
  TSharedLock lock(fLock);
  return fSubItems ? fSubItems->fList.size() : 0;
}

TRef<ICustomAssocSizeArray> TCustomFolderData::GetUserSizeArray() const {
  return Statistics().fUserSizeArray;
}

TRef<ICustomAssocSizeArray> TCustomFolderData::GetExtensionSizeArray() const {
  return Statistics().fExtensionSizeArray;
}

TRef<IFileAgeDistribution> TCustomFolderData::GetFileAgeDistribution(TDateType pDateType) const {
  TRef<IHierarchicalRoot> root = GetRoot();
  if (root && pDateType != root->GetScanConfiguration()->GetFileAgesDateType())
    throw EInvalidArgumentValue("Folder data can only provide the file ages as configured during the scan");
  return Statistics().fFileAgeDistribution;
}

TFolderStatistics TCustomFolderData::Statistics() const {
  const TRef<IHierarchicalRoot> root = GetRoot();
  if (!root) return {};
  const TStatisticsSource source = FindStatistics();
  return source.fOwn ? *source.fOwn : StatisticsOfFiles(source.fFiles.get(), *root->GetScanConfiguration());
}

void TCustomFolderData::ReadStatistics(TStatisticsReading& pReading) const {
  const TRef<IHierarchicalRoot> root = GetRoot();
  if (!root) return pReading.Clear();
  const TStatisticsSource source = FindStatistics();
  if (source.fOwn)
    pReading.Read(*source.fOwn);
  else
    pReading.Read(source.fFiles.get(), *root->GetScanConfiguration());
}

TCustomFolderData::TStatisticsSource TCustomFolderData::FindStatistics() const {
  TSharedLock lock(fLock);
  if (const TFolderStatistics* own = fStatistics.load(std::memory_order_relaxed)) return {*own, nullptr};
  return {std::nullopt, fFileTable};
}

TFolderStatistics& TCustomFolderData::EnsureStatistics() {
  if (TFolderStatistics* own = fStatistics.load(std::memory_order_acquire)) return *own;
  auto made = std::make_unique<TFolderStatistics>(Statistics());
  TExclusiveLock lock(fLock);
  TFolderStatistics* own = fStatistics.load(std::memory_order_relaxed);
  if (!own) fStatistics.store(own = made.release(), std::memory_order_release);
  return *own;
}

std::unique_ptr<TFolderStatistics> TCustomFolderData::TakeStatistics() {
  TExclusiveLock lock(fLock);
  return std::unique_ptr<TFolderStatistics>(fStatistics.exchange(nullptr, std::memory_order_acq_rel));
}

std::u16string TCustomFolderData::GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
  if (pColumn >= TColumn::mdCount)
    throw EInvalidArgumentValue(
        fmt::format("TCustomFolderData.GetFormattedValue: Unexpected View Type {}", static_cast<int>(pColumn)));
  return TContainerHierarchicalElement::GetFormattedValue(pColumn, pFormat);
}

// --- what subscribers are told -------------------------------------------------------------------------------------

void TCustomFolderData::TellChange(TNodeChanges pChanges) {
  if ((fChangeMarks.load(std::memory_order_relaxed) & kIsInTree) == 0 || !fRoot) return;
  TChangeQueues& queues = fRoot->GetChangeQueues();
  if (queues.IsNews(fChangeMarks) || (pChanges != ncChanged && queues.HasSubscribers()))
    queues.Mark(*this, fChangeMarks, pChanges);
}

void TCustomFolderData::EnterTree() {
  BeInTree();
  TellChange(ncAdded);
}

void TCustomFolderData::IncludeFolderState(TFolderStates pBits) {
  if ((~fFolderState.fetch_or(pBits, std::memory_order_acq_rel) & pBits) != 0) TellChange();
}

void TCustomFolderData::ExcludeFolderState(TFolderStates pBits) {
  if ((fFolderState.fetch_and(static_cast<TFolderStates>(~pBits), std::memory_order_acq_rel) & pBits) != 0)
    TellChange();
}

// --- scans and the end ---------------------------------------------------------------------------------------------

bool TCustomFolderData::Refresh(bool pRecursive) {
  TRef<IHierarchicalRoot> root = GetRoot();
  return root && !IsGone() && root->RefreshFolder(*this, pRecursive);
}

void TCustomFolderData::FinishPart() {
  for (TCustomFolderData* node = this; node; node = node->ParentFolder()) {
    if (node->fUnfinishedParts.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    node->IncludeFolderState(fsSubFolderScanningFinished);
  }
}

void TCustomFolderData::ReopenAncestors() {
  for (TCustomFolderData* node = ParentFolder(); node; node = node->ParentFolder()) {
    if (node->fUnfinishedParts.fetch_add(1, std::memory_order_acq_rel) != 0) return;
    node->ExcludeFolderState(fsSubFolderScanningFinished);
  }
}

int32_t TCustomFolderData::CountUnfinishedChildren() const {
  TSharedLock lock(fLock);
  if (!fSubItems) return 0;
  return static_cast<int32_t>(std::count_if(fSubItems->fList.begin(), fSubItems->fList.end(), [](const auto& pChild) {
    return (pChild->GetFolderState() & fsSubFolderScanningFinished) == 0;
  }));
}

// Logs that a folder's files get their own row, or lose it.
void TCustomFolderData::LogFilesNode(bool pComes) const {
  LogDebug((pComes ? u"TCustomFolderData.SetNewSize(): Creating [Files] in a folder with subfolders as there are now "
                     u"files in it: "
                   : u"TCustomFolderData.SetNewSize(): Disposing [Files] node as there are no files in it: ") +
           GetFullPath());
}

void TCustomFolderData::Dispose() {
  std::vector<TRef<TCustomFolderData>> nodes{TRef<TCustomFolderData>(this)};
  while (!nodes.empty()) {
    TRef<TCustomFolderData> node = std::move(nodes.back());
    nodes.pop_back();
    node->DisposeNode(nodes);
  }
}

void TCustomFolderData::DisposeNode(std::vector<TRef<TCustomFolderData>>& pChildren) {
  fFolderState.fetch_or(fsDisposed, std::memory_order_acq_rel);
  // References are released after the lock, since the last reference to a root or a parent may be among them.
  std::unique_ptr<TSubFolderList> subItems;
  TRef<const TFileTable> files;
  TRef<IHierarchicalElement> parent;
  TRef<IHierarchicalRoot> root;
  {
    TExclusiveLock lock(fLock);
    subItems.swap(fSubItems);
    files.swap(fFileTable);
    parent.swap(fParentFolder);
    root.swap(fRoot);
  }
  if (!subItems) return;
  pChildren.insert(pChildren.end(), std::make_move_iterator(subItems->fList.begin()),
                   std::make_move_iterator(subItems->fList.end()));
  if (subItems->fFilesNode) pChildren.push_back(std::move(subItems->fFilesNode));
}

void TCustomFolderData::Test() const {
#ifdef NDEBUG
  throw EInvalidOperation("TFolderData.Test() should not be called in non Debug versions");
#else
  const std::vector<TRef<TCustomFolderData>> children = Children();
  if (children.empty()) return;
  TSizeValues sum;
  for (const TRef<TCustomFolderData>& child : children) {
    sum += child->GetValues();
    sum.fFolders += child->IsFileGroup() ? 0 : 1;
  }
  if (!(sum == GetValues()))
    throw EInvalidOperation("TFolderData.Test: the totals are not the sum of the children: " + ToUtf8(GetFullPath()));
#endif
}

// --- the kinds of folders ------------------------------------------------------------------------------------------

TFolderData::TFolderData(TRef<IHierarchicalRoot> pRoot, std::u16string_view pPath)
    : TCustomFolderData(nullptr, std::move(pRoot), pPath) {
  fFolderState = fsIsRoot;
}

TFolderData::TFolderData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName)
    : TCustomFolderData(TRef<IHierarchicalElement>(&pParent), std::move(pRoot), pName) {}

TFileGroupData::TFileGroupData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot)
    : TCustomFolderData(TRef<IHierarchicalElement>(&pParent), std::move(pRoot), {}) {}

std::u16string TFileGroupData::GetFullPath() const {
  TRef<IHierarchicalElement> folder = GetParentFolder();
  return folder ? folder->GetFullPath() : std::u16string(kName);
}

}  // namespace Vantrel
