#include "presentation/charts/ChartSources.h"

#include <utility>

#include "model/statistics/FileAges.h"
#include "model/statistics/FileTypeGroups.h"
#include "model/tree/EntryView.h"
#include "model/tree/FileTable.h"
#include "platform/text/Text.h"
#include "presentation/treemap/TreemapColors.h"

namespace Vantrel::Charts {

namespace {

// Reads one kind of size.
class TBasis {
 public:
  explicit TBasis(const IHierarchicalRoot& pRoot) : fColumn(pRoot.GetScanConfiguration()->GetShareBasis()) {}
  TColumn Column() const { return fColumn; }
  template <class TValues>
  int64_t Of(const TValues& pValues) const {
    return LeadingSizeOf(pValues, fColumn);
  }
  int64_t Of(const IFolderData& pFolder) const { return Of(pFolder.GetValues()); }

 private:
  const TColumn fColumn;
};

// pFolder is nullptr when the root has no tree.
TChartData NewData(std::u16string_view pWhat, const IHierarchicalRoot& pRoot, const TRef<IFolderData>& pFolder,
                   const TBasis& pBasis, bool pCollected) {
  const bool isPart = pFolder && pFolder->GetParentFolder();
  TChartData data;
  data.fTitle = std::u16string(pWhat) + u" of " + (isPart ? pFolder->GetFullPath() : pRoot.GetTitle());
  if (!pCollected) data.fTitle += u" (not collected)";
  data.fColumn = pBasis.Column();
  return data;
}

// Sums up what is too small for an item of its own.
class TSmallItems {
 public:
  TSmallItems() {
    fItem.fIsRest = true;
    fItem.fCount = 0;
  }
  void Add(int64_t pValue) {
    fItem.fValue += pValue;
    ++fItem.fCount;
  }
  // Adds one item for all, if there are any.
  void AppendTo(std::vector<TChartItem>& pItems) const {
    if (fItem.fCount > 0) pItems.push_back(fItem);
  }

 private:
  TChartItem fItem;
};

TRef<IFolderData> TopOf(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  return pFolder ? std::move(pFolder) : pRoot.GetTopFolder();
}

// Items for what lies in a folder. What is smaller than pLeast is only summed up.
std::vector<TChartItem> ItemsIn(IFolderData& pFolder, const TBasis& pBasis, int64_t pLeast, int pLevels) {
  std::vector<TChartItem> items;
  TSmallItems small;
  for (const TRef<IFolderData>& child : pFolder.FindSubFolders()) {
    const int64_t value = pBasis.Of(*child);
    if (value < pLeast) {
      small.Add(value);
      continue;
    }
    TChartItem item;
    item.fKey = child->GetFullPath();
    item.fLabel = child->GetObjectName();
    item.fValue = value;
    if (pLevels > 1 && !child->IsFileGroup()) item.fChildren = ItemsIn(*child, pBasis, pLeast, pLevels - 1);
    items.push_back(std::move(item));
  }
  small.AppendTo(items);
  return items;
}

// Items for the files of a folder without sub-folders. One item for all when the scan did not keep them.
std::vector<TChartItem> FilesIn(IFolderData& pFolder, const TBasis& pBasis, int64_t pLeast) {
  TSmallItems small;
  std::vector<TChartItem> items;
  const TRef<const TFileTable> files = pFolder.GetFileTable();
  for (size_t i = 0; files && i < files->Count(); ++i) {
    TChartItem item;
    item.fValue = pBasis.Of((*files)[i]);
    if (item.fValue < pLeast) {
      small.Add(item.fValue);
      continue;
    }
    item.fKey = TEntryView(*files, (*files)[i], &pFolder).GetFullPath();
    item.fLabel = files->NameAt(i);
    items.push_back(std::move(item));
  }
  if (!files && pFolder.GetFiles() > 0) {
    items.emplace_back();
    items.back().fKey = pFolder.GetFullPath();
    items.back().fLabel = u"[Files]";
    items.back().fValue = pBasis.Of(pFolder);
  }
  small.AppendTo(items);
  return items;
}

std::vector<TChartItem> ItemsOf(const ICustomAssocSizeArray& pArray, const TBasis& pBasis) {
  std::vector<TChartItem> items;
  for (const TKeyedSizeValues& entry : pArray.GetEntries()) {
    TChartItem item;
    item.fKey = TextOfKey(entry.fKey);
    item.fLabel = item.fKey;
    item.fValue = pBasis.Of(entry.fValues);
    item.fColor = pArray.GetColorForKey(item.fKey);
    items.push_back(std::move(item));
  }
  return items;
}

// One item for each key. Without an array the chart says that it was not collected.
TChartData DataOf(std::u16string_view pWhat, const IHierarchicalRoot& pRoot, const TRef<IFolderData>& pFolder,
                  const TRef<ICustomAssocSizeArray>& pArray) {
  const TBasis basis(pRoot);
  TChartData data = NewData(pWhat, pRoot, pFolder, basis, pArray != nullptr);
  if (pArray) data.fItems = ItemsOf(*pArray, basis);
  return data;
}

}  // namespace

TChartData FoldersData(IHierarchicalRoot& pRoot, int pLevels, TRef<IFolderData> pFolder) {
  const TBasis basis(pRoot);
  const TRef<IFolderData> top = TopOf(pRoot, std::move(pFolder));
  TChartData data = NewData(u"Folders", pRoot, top, basis, top != nullptr);
  // A picture is at most some thousand pixels around.
  constexpr int64_t kLeastShare = 20'000;
  if (!top) return data;
  const int64_t least = basis.Of(*top) / kLeastShare;
  data.fItems = top->GetSubFolderCount() > 0 ? ItemsIn(*top, basis, least, pLevels) : FilesIn(*top, basis, least);
  return data;
}

TChartData ExtensionsData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TRef<IFolderData> top = TopOf(pRoot, std::move(pFolder));
  return DataOf(u"Extensions", pRoot, top, top ? top->GetExtensionSizeArray() : nullptr);
}

TChartData OwnersData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TRef<IFolderData> top = TopOf(pRoot, std::move(pFolder));
  return DataOf(u"Owners", pRoot, top, top ? top->GetUserSizeArray() : nullptr);
}

TChartData FileTypesData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TBasis basis(pRoot);
  const TRef<IFolderData> top = TopOf(pRoot, std::move(pFolder));
  const TRef<ICustomAssocSizeArray> array = top ? top->GetExtensionSizeArray() : nullptr;
  TChartData data = NewData(u"File types", pRoot, top, basis, array != nullptr);
  if (!array) return data;
  const TRef<const IFileTypeGroups> groups = CommonFileTypeGroups();
  std::vector<TChartItem> items(static_cast<size_t>(groups->GetCount()));
  for (TChartItem& extension : ItemsOf(*array, basis)) {
    const int group = groups->GetGroupIndexByExtension(extension.fKey);
    if (group < 0) continue;
    TChartItem& item = items[static_cast<size_t>(group)];
    item.fValue += extension.fValue;
    extension.fColor.reset();  // a group and its extensions are seen as one
    item.fChildren.push_back(std::move(extension));
  }
  for (size_t i = 0; i < items.size(); ++i) {
    if (items[i].fChildren.empty()) continue;
    items[i].fKey = groups->GetItem(static_cast<int>(i))->GetCaption();
    items[i].fLabel = items[i].fKey;
    items[i].fColor = Treemap::ColorOfFileTypeGroup(static_cast<int>(i), groups->GetCount());
    data.fItems.push_back(std::move(items[i]));
  }
  return data;
}

TChartData FileAgesData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TBasis basis(pRoot);
  const TDateType type = pRoot.GetScanConfiguration()->GetFileAgesDateType();
  const TRef<IFolderData> top = TopOf(pRoot, std::move(pFolder));
  const TRef<IFileAgeDistribution> ages = top ? top->GetFileAgeDistribution(type) : nullptr;
  TChartData data = NewData(u"File ages", pRoot, top, basis, ages != nullptr);
  data.fIsOrdered = true;
  if (!ages) return data;
  const TRef<IFileAges> intervals = ages->GetFileAges();
  for (int i = 0; i < intervals->GetCount(); ++i) {
    TChartItem item;
    item.fKey = intervals->GetLabel(i);
    item.fLabel = item.fKey;
    item.fValue = basis.Of(ages->GetRecord(i));
    item.fColor = intervals->GetColor(i);
    data.fItems.push_back(std::move(item));
  }
  return data;
}

}  // namespace Vantrel::Charts
