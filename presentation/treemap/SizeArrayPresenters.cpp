#include "presentation/treemap/SizeArrayPresenters.h"

#include <algorithm>
#include <map>

#include "presentation/treemap/FolderContainer.h"

namespace Vantrel::Treemap {

namespace {

TSizeValues SizesOf(const TBasicSizeValues& pValues) {
  TSizeValues sizes;
  sizes += pValues;
  return sizes;
}

}  // namespace

void TElementList::AppendChildren(std::vector<TTreemapChild>& pChildren) const {
  for (size_t i = 0; i < fItems.size(); ++i) pChildren.push_back({fItems[i].fValue, static_cast<uint32_t>(i)});
}

TTreemapLook TElementList::GetLook(uint32_t pItem, int32_t, TColorLookup&) const {
  const TItem& item = fItems[pItem];
  return {item.fElement->GetID(), item.fColor, item.fInside ? item.fInside->fItems.size() : 0};
}

TSizeArrayMapBasePresenter::TSizeArrayMapBasePresenter(IFolderData& pFolder, TColumn pValueColumn)
    : fFolderID(IDOfFolder(pFolder)) {
  fColoring.fValueColumn = pValueColumn;
}

void TSizeArrayMapBasePresenter::SetTop(IFolderData& pFolder, TRef<const TElementList> pElements) {
  auto top = MakeRef<TElementList>();
  top->Add(MakeRef<TTreeMapElement>(fFolderID, TRef<IHierarchicalElement>(&pFolder)), ColorOfFrame(0, false),
           ValueIn(pFolder.GetValues(), fColoring.fValueColumn), std::move(pElements));
  fTop = std::move(top);
}

TExtensionSizeArrayMapPresenter::TExtensionSizeArrayMapPresenter(IFolderData& pFolder, TColumn pValueColumn,
                                                                 TRef<const IFileTypeGroups> pGroups)
    : TSizeArrayMapBasePresenter(pFolder, pValueColumn) {
  if (!pGroups) pGroups = CommonFileTypeGroups();
  struct TGroup {
    TBasicSizeValues fSum;
    TRef<TElementList> fExtensions = MakeRef<TElementList>();
    std::u16string fCaption;
    TTreemapElementID fID;
    TColor fColor;
  };
  std::map<int, TGroup> groups;
  const TRef<ICustomAssocSizeArray> extensions = pFolder.GetExtensionSizeArray();
  for (const TKeyedSizeValues& entry : extensions ? extensions->GetEntries() : std::vector<TKeyedSizeValues>()) {
    const std::vector<int> indexes = pGroups->GetGroupIndexesOfKey(entry.fKey);
    const int index = indexes.empty() ? -1 : indexes.front();
    TGroup& group = groups[index];
    if (group.fCaption.empty()) {
      group.fCaption = index < 0 ? u"Other files" : pGroups->GetItem(index)->GetCaption();
      group.fID = ChildID(fFolderID, u"/group/" + group.fCaption);
      group.fColor = ColorOfFileTypeGroup(index, pGroups->GetCount());
    }
    group.fSum += entry.fValues;
    const std::u16string& extension = TextOfKey(entry.fKey);
    group.fExtensions->Add(
        MakeRef<TTreemapElementExtension>(ChildID(group.fID, extension), extension, SizesOf(entry.fValues)),
        group.fColor, ValueIn(entry.fValues, pValueColumn));
  }
  auto elements = MakeRef<TElementList>();
  std::vector<std::pair<int64_t, TTreemapLegendItem>> legend;
  for (const auto& [index, group] : groups) {
    const int64_t value = ValueIn(group.fSum, pValueColumn);
    const std::u16string description = index < 0 ? std::u16string() : pGroups->GetItem(index)->GetDescription();
    elements->Add(MakeRef<TTreemapElementExtensionGroup>(group.fID, group.fCaption, description, SizesOf(group.fSum)),
                  group.fColor, value, group.fExtensions);
    if (value > 0) legend.push_back({value, {group.fCaption, group.fColor}});
  }
  std::stable_sort(legend.begin(), legend.end(), [](const auto& pA, const auto& pB) { return pA.first > pB.first; });
  for (auto& item : legend) fLegend.push_back(std::move(item.second));
  SetTop(pFolder, std::move(elements));
}

TUserSizeArrayMapPresenter::TUserSizeArrayMapPresenter(IFolderData& pFolder, TColumn pValueColumn)
    : TSizeArrayMapBasePresenter(pFolder, pValueColumn) {
  constexpr size_t kMostInLegend = 12;
  auto elements = MakeRef<TElementList>();
  if (const TRef<ICustomAssocSizeArray> users = pFolder.GetUserSizeArray()) {
    for (const std::u16string& user : users->GetKeysSorted(pValueColumn)) {
      TBasicSizeValues values;
      if (!users->Find(user, values)) continue;
      const TColor color = users->GetColorForKey(user);
      const TTreemapElementID id = ChildID(fFolderID, u"/user/" + user);
      elements->Add(MakeRef<TTreemapElementUser>(id, user, SizesOf(values)), color, ValueIn(values, pValueColumn));
      if (fLegend.size() < kMostInLegend) fLegend.push_back({user, color});
    }
  }
  SetTop(pFolder, std::move(elements));
}

}  // namespace Vantrel::Treemap
