#include "presentation/lists/TopFilesList.h"

#include <unordered_map>
#include <utility>

#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/TopSizeList.h"
#include "model/tree/FileNames.h"
#include "model/tree/FileTable.h"
#include "platform/files/Paths.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

namespace {

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

TColor ColorOf(std::u16string_view pName) {
  return CommonColorPalette().GetColorForKey(TextOfKey(TExtensionSizeArray::KeyOf(ExtensionOfName(pName))));
}

// The path is the last column, so a long path pushes no other column out of sight.
std::vector<TListColumn> Columns(bool pWithOwners) {
  std::vector<TListColumn> columns;
  for (TColumn column : {TColumn::mdName, TColumn::mdSize, TColumn::mdAllocated, TColumn::mdPercentOfRoot,
                         TColumn::mdLastChange, TColumn::mdLastAccess, TColumn::mdCreation, TColumn::mdAttributes})
    columns.push_back(Catalogued(column));
  if (pWithOwners) columns.push_back(Catalogued(TColumn::mdOwner));
  columns.push_back(Catalogued(TColumn::mdFullPath));
  return columns;
}

}  // namespace

TList TopFilesList(const IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const TRef<ITopSizeList> largest = top ? pRoot.GetTopSizeList() : nullptr;
  const bool withOwners = pRoot.GetScanConfiguration()->GetDoUsersStatistics();
  TList list = NewRootList(u"Largest files", pRoot, largest != nullptr, Columns(withOwners));
  if (!largest) return list;

  const TShares shares(pRoot, *top);
  const std::vector<TTopSizeEntry> files = largest->GetSnapshot();
  const std::vector<TMetaDataValue> owners = withOwners ? OwnersOf(files) : std::vector<TMetaDataValue>();
  for (size_t i = 0; i < files.size(); ++i) {
    const TTopSizeEntry& file = files[i];
    TListRow row{{file.fName, file.fSize, file.fAllocated, shares.Of(file.fSize, file.fAllocated),
                  DateValue(file.fLastChangeDate), DateValue(file.fLastAccessDate), DateValue(file.fCreationDate),
                  static_cast<int64_t>(file.fAttributes)}};
    if (withOwners) row.fValues.push_back(owners[i]);
    const std::u16string folder = file.fParentFolder ? file.fParentFolder->GetFullPath() : std::u16string();
    row.fKey = JoinPath(folder, file.fName, pRoot.GetPathDelimiter());
    row.fValues.emplace_back(row.fKey);
    row.fNode = file.fParentFolder;
    row.fColor = ColorOf(file.fName);
    list.fRows.push_back(std::move(row));
  }
  return list;
}

}  // namespace Vantrel::Presentation
