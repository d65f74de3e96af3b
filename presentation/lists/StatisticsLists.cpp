#include "presentation/lists/StatisticsLists.h"

#include <utility>

#include "model/statistics/FileAges.h"
#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Text.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

namespace {

constexpr size_t kKeyColumn = 0;

std::u16string FileTypesOf(TKeyId pExtension, const IFileTypeGroups& pGroups) {
  std::u16string text;
  for (int group : pGroups.GetGroupIndexesOfKey(pExtension)) {
    if (!text.empty()) text += u", ";
    text += pGroups.GetItem(group)->GetCaption();
  }
  return text;
}

std::u16string_view DateText(TDateType pType) {
  switch (pType) {
    case TDateType::dtLastAccess:
      return u"last access";
    case TDateType::dtCreation:
      return u"creation";
    case TDateType::dtLastSave:
      return u"last save";
    default:
      return u"last change";
  }
}

// A row that a key names. The caller adds the other values.
TListRow KeyRow(std::u16string_view pKey, TColor pColor) {
  return {{std::u16string(pKey)}, std::u16string(pKey), nullptr, pColor};
}

void SortBySize(TList& pList, const IHierarchicalRoot& pRoot) {
  SortRows(pList, kKeyColumn, false);
  SortRows(pList, *FindListColumn(pList, SizeColumns(pRoot).front()), true);
}

}  // namespace

TList ExtensionsList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TRef<IFolderData> top = FolderOrTop(pRoot, std::move(pFolder));
  const TRef<ICustomAssocSizeArray> extensions = top ? top->GetExtensionSizeArray() : nullptr;
  std::vector<TListColumn> columns{Catalogued(TColumn::mdExtension), {u"File Type", TColumn::mdName}};
  AppendSumColumns(columns, pRoot, top.get());
  TList list = NewFolderList(u"Extensions", pRoot, top.get(), extensions != nullptr, std::move(columns));
  if (!extensions) return list;

  const TShares shares(pRoot, *top);
  const TRef<const IFileTypeGroups> groups = CommonFileTypeGroups();
  for (const TKeyedSizeValues& entry : extensions->GetEntries()) {
    const std::u16string_view key = TextOfKey(entry.fKey);
    TListRow row = KeyRow(key, extensions->GetColorForKey(key));
    row.fValues.emplace_back(FileTypesOf(entry.fKey, *groups));
    AppendSums(row, entry.fValues, shares);
    list.fRows.push_back(std::move(row));
  }
  SortBySize(list, pRoot);
  return list;
}

TList FileTypesList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TRef<IFolderData> top = FolderOrTop(pRoot, std::move(pFolder));
  const TRef<ICustomAssocSizeArray> extensions = top ? top->GetExtensionSizeArray() : nullptr;
  std::vector<TListColumn> columns{{u"File Type", TColumn::mdName}};
  AppendSumColumns(columns, pRoot, top.get());
  TList list = NewFolderList(u"File types", pRoot, top.get(), extensions != nullptr, std::move(columns));
  if (!extensions) return list;

  const TShares shares(pRoot, *top);
  for (const TRef<TSizeDataGroup>& group : CalculateSizeDataForGroups(*extensions, *CommonFileTypeGroups())) {
    const std::u16string& caption = group->GetName();
    TListRow row = KeyRow(caption, CommonColorPalette().GetColorForKey(caption));
    AppendSums(row, {group->GetSize(), group->GetAllocated(), group->GetFiles()}, shares);
    list.fRows.push_back(std::move(row));
  }
  return list;
}

TList UsersList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TRef<IFolderData> top = FolderOrTop(pRoot, std::move(pFolder));
  const TRef<ICustomAssocSizeArray> users = top ? top->GetUserSizeArray() : nullptr;
  std::vector<TListColumn> columns{Catalogued(TColumn::mdOwner)};
  AppendSumColumns(columns, pRoot, top.get());
  TList list = NewFolderList(u"Owners", pRoot, top.get(), users != nullptr, std::move(columns));
  if (!users) return list;

  const TShares shares(pRoot, *top);
  for (const TKeyedSizeValues& entry : users->GetEntries()) {
    const std::u16string_view key = TextOfKey(entry.fKey);
    TListRow row = KeyRow(key, users->GetColorForKey(key));
    AppendSums(row, entry.fValues, shares);
    list.fRows.push_back(std::move(row));
  }
  SortBySize(list, pRoot);
  return list;
}

TList FileAgesList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  const TDateType type = pRoot.GetScanConfiguration()->GetFileAgesDateType();
  const TRef<IFolderData> top = FolderOrTop(pRoot, std::move(pFolder));
  const TRef<IFileAgeDistribution> ages = top ? top->GetFileAgeDistribution(type) : nullptr;
  std::vector<TListColumn> columns{{u"Age", TColumn::mdName}};
  AppendSumColumns(columns, pRoot, top.get());
  TList list = NewFolderList(u"File ages", pRoot, top.get(), ages != nullptr, std::move(columns));
  if (!ages) return list;

  (list.fTitle += u", by ") += DateText(type);
  const TShares shares(pRoot, *top);
  const TRef<IFileAges> intervals = ages->GetFileAges();
  for (int i = 0; i < intervals->GetCount(); ++i) {
    const std::u16string days = FromUtf8(std::to_string(intervals->GetItem(i)));
    TListRow row{{intervals->GetLabel(i)}, days, nullptr, intervals->GetColor(i)};
    AppendSums(row, ages->GetRecord(i), shares);
    list.fRows.push_back(std::move(row));
  }
  return list;
}

}  // namespace Vantrel::Presentation
