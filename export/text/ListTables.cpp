#include "export/text/ListTables.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "model/statistics/FileAges.h"
#include "model/statistics/FileTypeGroups.h"
#include "model/tree/FileTable.h"
#include "platform/files/Paths.h"

namespace Vantrel::Exporting {

namespace {

// The names of the lists.
constexpr std::u16string_view kTopFiles = u"topfiles";
constexpr std::u16string_view kExtensions = u"extensions";
constexpr std::u16string_view kUsers = u"users";
constexpr std::u16string_view kAges = u"ages";

TListColumn Catalogued(TColumn pColumn) {
  return {std::u16string(ColumnInfo(pColumn).fCaption), pColumn};
}

TMetaDataValue Date(TKivFileTime pDate) {
  return pDate.IsSet() ? TMetaDataValue(pDate) : TMetaDataValue();
}

// Computes shares of a root in the same way as the tree's share column.
class TShares {
 public:
  TShares(IHierarchicalRoot& pRoot, const IFolderData& pTop)
      : fOfAllocated(pRoot.GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated),
        fWhole(Basis(pTop.GetSize(), pTop.GetAllocated())) {}

  double Of(int64_t pSize, int64_t pAllocated) const {
    return fWhole == 0 ? 0.0 : static_cast<double>(Basis(pSize, pAllocated)) / static_cast<double>(fWhole);
  }

 private:
  int64_t Basis(int64_t pSize, int64_t pAllocated) const { return fOfAllocated ? pAllocated : pSize; }

  const bool fOfAllocated;
  const int64_t fWhole;
};

TListTable NewList(std::u16string_view pWhat, std::u16string_view pName, const IHierarchicalRoot& pRoot,
                   bool pCollected, std::vector<TListColumn> pColumns) {
  std::u16string title = std::u16string(pWhat) + u" of " + pRoot.GetTitle();
  if (!pCollected) title += u" (not collected)";
  return {std::move(title), pName, std::move(pColumns), {}};
}

// Every list of sums has these columns after its first ones.
void AppendSumColumns(std::vector<TListColumn>& pColumns) {
  for (TColumn column : {TColumn::mdSize, TColumn::mdAllocated, TColumn::mdFiles, TColumn::mdPercentOfRoot})
    pColumns.push_back(Catalogued(column));
}

void AppendSums(std::vector<TMetaDataValue>& pRow, const TBasicSizeValues& pValues, const TShares& pShares) {
  pRow.emplace_back(pValues.fSize);
  pRow.emplace_back(pValues.fAllocated);
  pRow.emplace_back(pValues.fFiles);
  pRow.emplace_back(pShares.Of(pValues.fSize, pValues.fAllocated));
}

std::vector<TKeyedSizeValues> BySize(const ICustomAssocSizeArray& pArray) {
  std::vector<TKeyedSizeValues> entries = pArray.GetEntries();
  std::sort(entries.begin(), entries.end(), TCustomAssocSizeArray::TSizeArrayComparer(TColumn::mdSize));
  return entries;
}

// The list of largest files holds no owners, but the file tables of their folders do. Each table is walked once.
// Searching it for each file would take hours for a hundred thousand files in one folder. pFiles is sorted by size, the
// largest first.
std::vector<TMetaDataValue> OwnersOf(const std::vector<TTopSizeEntry>& pFiles) {
  std::unordered_map<IHierarchicalElement*, std::unordered_map<std::u16string_view, size_t>> wanted;
  for (size_t i = 0; i < pFiles.size(); ++i)
    if (pFiles[i].fParentFolder) wanted[pFiles[i].fParentFolder.get()].emplace(pFiles[i].fName, i);
  std::vector<TMetaDataValue> owners(pFiles.size());
  for (const auto& [element, names] : wanted) {
    const IFolderData* folder = element->AsFolder();
    const TRef<const TFileTable> files = folder ? folder->GetFileTable() : nullptr;
    for (size_t i = 0; files && i < files->Count(); ++i) {
      const TFileRecord& record = (*files)[i];
      if (record.fSize < pFiles.back().fSize || record.fOwnerKey == kNoKey) continue;
      const auto found = names.find(files->NameOf(record));
      if (found != names.end()) owners[found->second] = TextOfKey(record.fOwnerKey);
    }
  }
  return owners;
}

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

}  // namespace

TListTable TopFilesList(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const TRef<ITopSizeList> list = top ? pRoot.GetTopSizeList() : nullptr;
  const bool withOwners = pRoot.GetScanConfiguration()->GetDoUsersStatistics();
  // The path is the last column, so a long path pushes no other column out of sight.
  std::vector<TListColumn> columns;
  for (TColumn column : {TColumn::mdName, TColumn::mdSize, TColumn::mdAllocated, TColumn::mdPercentOfRoot,
                         TColumn::mdLastChange, TColumn::mdLastAccess, TColumn::mdCreation, TColumn::mdAttributes})
    columns.push_back(Catalogued(column));
  if (withOwners) columns.push_back(Catalogued(TColumn::mdOwner));
  columns.push_back(Catalogued(TColumn::mdFullPath));
  TListTable table = NewList(u"Largest files", kTopFiles, pRoot, list != nullptr, std::move(columns));
  if (!list) return table;

  const TShares shares(pRoot, *top);
  const std::vector<TTopSizeEntry> files = list->GetSnapshot();
  const std::vector<TMetaDataValue> owners = withOwners ? OwnersOf(files) : std::vector<TMetaDataValue>();
  for (size_t i = 0; i < files.size(); ++i) {
    const TTopSizeEntry& file = files[i];
    std::vector<TMetaDataValue> row{file.fName,
                                    file.fSize,
                                    file.fAllocated,
                                    shares.Of(file.fSize, file.fAllocated),
                                    Date(file.fLastChangeDate),
                                    Date(file.fLastAccessDate),
                                    Date(file.fCreationDate),
                                    static_cast<int64_t>(file.fAttributes)};
    if (withOwners) row.push_back(owners[i]);
    const std::u16string folder = file.fParentFolder ? file.fParentFolder->GetFullPath() : std::u16string();
    row.emplace_back(JoinPath(folder, file.fName, pRoot.GetPathDelimiter()));
    table.fRows.push_back(std::move(row));
  }
  return table;
}

TListTable ExtensionsList(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const TRef<ICustomAssocSizeArray> extensions = top ? top->GetExtensionSizeArray() : nullptr;
  std::vector<TListColumn> columns{Catalogued(TColumn::mdExtension), {u"File Type", TColumn::mdName}};
  AppendSumColumns(columns);
  TListTable table = NewList(u"Extensions", kExtensions, pRoot, extensions != nullptr, std::move(columns));
  if (!extensions) return table;

  const TShares shares(pRoot, *top);
  const auto groups = MakeRef<TStandardFileTypes>();
  for (const TKeyedSizeValues& entry : BySize(*extensions)) {
    std::vector<TMetaDataValue> row{TextOfKey(entry.fKey), FileTypesOf(entry.fKey, *groups)};
    AppendSums(row, entry.fValues, shares);
    table.fRows.push_back(std::move(row));
  }
  return table;
}

TListTable UsersList(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const TRef<ICustomAssocSizeArray> users = top ? top->GetUserSizeArray() : nullptr;
  std::vector<TListColumn> columns{Catalogued(TColumn::mdOwner)};
  AppendSumColumns(columns);
  TListTable table = NewList(u"Owners", kUsers, pRoot, users != nullptr, std::move(columns));
  if (!users) return table;

  const TShares shares(pRoot, *top);
  for (const TKeyedSizeValues& entry : BySize(*users)) {
    std::vector<TMetaDataValue> row{TextOfKey(entry.fKey)};
    AppendSums(row, entry.fValues, shares);
    table.fRows.push_back(std::move(row));
  }
  return table;
}

TListTable FileAgesList(IHierarchicalRoot& pRoot) {
  const TDateType type = pRoot.GetScanConfiguration()->GetFileAgesDateType();
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const TRef<IFileAgeDistribution> ages = top ? top->GetFileAgeDistribution(type) : nullptr;
  std::vector<TListColumn> columns{{u"Age", TColumn::mdName}};
  AppendSumColumns(columns);
  TListTable table = NewList(u"File ages", kAges, pRoot, ages != nullptr, std::move(columns));
  if (!ages) return table;

  (table.fTitle += u", by ") += DateText(type);
  const TShares shares(pRoot, *top);
  const TRef<IFileAges> intervals = ages->GetFileAges();
  for (int i = 0; i < intervals->GetCount(); ++i) {
    std::vector<TMetaDataValue> row{intervals->GetLabel(i)};
    AppendSums(row, ages->GetRecord(i), shares);
    table.fRows.push_back(std::move(row));
  }
  return table;
}

namespace {

struct TChoice {
  bool TGlobalOptions::*fOption;
  std::u16string_view fName;
  TListTable (*fMake)(IHierarchicalRoot&);
};

constexpr TChoice kChoices[] = {{&TGlobalOptions::ListTopFiles, kTopFiles, TopFilesList},
                                {&TGlobalOptions::ListExtensions, kExtensions, ExtensionsList},
                                {&TGlobalOptions::ListUsers, kUsers, UsersList},
                                {&TGlobalOptions::ListFileAges, kAges, FileAgesList}};

}  // namespace

std::vector<TListTable> ChosenLists(IHierarchicalRoot& pRoot, const TGlobalOptions& pOptions) {
  std::vector<TListTable> lists;
  for (const TChoice& choice : kChoices)
    if (pOptions.*choice.fOption) lists.push_back(choice.fMake(pRoot));
  return lists;
}

std::vector<std::u16string_view> ChosenListNames(const TGlobalOptions& pOptions) {
  std::vector<std::u16string_view> names;
  for (const TChoice& choice : kChoices)
    if (pOptions.*choice.fOption) names.push_back(choice.fName);
  return names;
}

TListTable DriveList() {
  return DriveList(ListDrives());
}

TListTable DriveList(std::span<const TVolumeInformation> pDrives) {
  // On systems whose paths begin with a slash, drives are identified by their devices.
  const std::u16string label = NativePathDelimiter() == u'/' ? u"Device" : u"Label";
  TListTable table{u"Drives",
                   u"drives",
                   {{u"Drive", TColumn::mdFullPath},
                    {label, TColumn::mdName},
                    {u"File System", TColumn::mdName},
                    {u"Total", TColumn::mdSize},
                    {u"Used", TColumn::mdSize},
                    {u"Free", TColumn::mdSize},
                    {u"% Used", TColumn::mdPercentOfRoot}},
                   {}};
  for (const TVolumeInformation& drive : pDrives) {
    std::vector<TMetaDataValue> row{drive.fMountPoint, drive.fLabel, drive.fFileSystem};
    if (drive.fTotalBytes > 0) {
      row.emplace_back(drive.fTotalBytes);
      row.emplace_back(drive.fUsedBytes);
      row.emplace_back(drive.fFreeBytes);
      // The base is the space that the user can have. Space reserved for the system is never free, so a full drive
      // shows 100 %.
      const int64_t usable = std::max<int64_t>(drive.fUsedBytes + drive.fFreeBytes, 1);
      row.emplace_back(static_cast<double>(drive.fUsedBytes) / static_cast<double>(usable));
    }
    row.resize(table.fColumns.size());
    table.fRows.push_back(std::move(row));
  }
  return table;
}

}  // namespace Vantrel::Exporting
