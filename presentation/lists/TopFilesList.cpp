#include "presentation/lists/TopFilesList.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/TopSizeList.h"
#include "model/tree/FileNames.h"
#include "model/tree/FileTable.h"
#include "model/tree/TreeWalk.h"
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
std::vector<TListColumn> Columns(const IHierarchicalRoot& pRoot, bool pWithOwners) {
  const auto [leading, other] = SizeColumns(pRoot);
  std::vector<TListColumn> columns;
  for (TColumn column : {TColumn::mdName, leading, other, TColumn::mdPercentOfRoot, TColumn::mdLastChange,
                         TColumn::mdLastAccess, TColumn::mdCreation, TColumn::mdAttributes})
    columns.push_back(Catalogued(column));
  if (pWithOwners) columns.push_back(Catalogued(TColumn::mdOwner));
  columns.push_back(Catalogued(TColumn::mdFullPath));
  return columns;
}

}  // namespace

namespace {

TList ListOf(const IHierarchicalRoot& pRoot, const IFolderData* pFolder, bool pCollected,
             const std::vector<TTopSizeEntry>& pFiles) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const bool withOwners = pRoot.GetScanConfiguration()->GetDoUsersStatistics();
  TList list = NewFolderList(u"Largest files", pRoot, pFolder, pCollected && top, Columns(pRoot, withOwners));
  if (!pCollected || !top) return list;

  const TShares shares(pRoot, *top);
  const std::vector<TMetaDataValue> owners = withOwners ? OwnersOf(pFiles) : std::vector<TMetaDataValue>();
  for (size_t i = 0; i < pFiles.size(); ++i) {
    const TTopSizeEntry& file = pFiles[i];
    TListRow row{{file.fName}};
    AppendSizes(row, file.fSize, file.fAllocated, shares);
    row.fValues.insert(row.fValues.end(), {shares.Of(file.fSize, file.fAllocated), DateValue(file.fLastChangeDate),
                                           DateValue(file.fLastAccessDate), DateValue(file.fCreationDate),
                                           TMetaDataValue(static_cast<int64_t>(file.fAttributes))});
    if (withOwners) row.fValues.push_back(owners[i]);
    const std::u16string folder = file.fParentFolder ? file.fParentFolder->GetFullPath() : std::u16string();
    row.fKey = JoinPath(folder, file.fName, pRoot.GetPathDelimiter());
    row.fValues.emplace_back(row.fKey);
    row.fNode = file.fParentFolder;
    row.fColor = ColorOf(file.fName);
    list.fRows.push_back(std::move(row));
  }
  SortRows(list, *FindListColumn(list, SizeColumns(pRoot).front()), true);
  return list;
}

TTopSizeEntry EntryOf(const TTreeRow& pRow) {
  TTopSizeEntry entry;
  entry.fSize = pRow.fFile->fSize;
  entry.fAllocated = pRow.fFile->fAllocated;
  entry.fLastChangeDate = pRow.fFile->fLastChangeDate;
  entry.fLastAccessDate = pRow.fFile->fLastAccessDate;
  entry.fCreationDate = pRow.fFile->fCreationDate;
  entry.fAttributes = pRow.fFile->fAttributes;
  entry.fOwnerKey = pRow.fFile->fOwnerKey;
  entry.fParentFolder = &pRow.fFolder;
  if (pRow.fFolder.IsFileGroup()) entry.fParentFolder = pRow.fFolder.GetParentFolder();
  entry.fName = pRow.fFiles->NameOf(*pRow.fFile);
  return entry;
}

std::vector<TTopSizeEntry> LargestBeneath(const IHierarchicalRoot& pRoot, IFolderData& pFolder, size_t pMost,
                                          const std::function<bool()>& pIsCancelled) {
  TTreeWalkSettings settings;
  settings.fShowsFiles = true;
  settings.fOrder = TSiblingOrder::soAny;
  const auto largest = MakeRef<TTopSizeFileList>(pMost, pRoot.GetPathDelimiter());
  const bool isWhole = TTreeWalk(settings).ForEach(pFolder, [&](const TTreeRow& pRow) {
    if (!pRow.IsFile()) return !pIsCancelled || !pIsCancelled();
    if (largest->IsWorthOffering(pRow.fFile->fSize, 0)) largest->Add(EntryOf(pRow));
    return true;
  });
  std::vector<TTopSizeEntry> files = largest->GetSnapshot();
  largest->Dispose();
  return isWhole ? files : std::vector<TTopSizeEntry>();
}

}  // namespace

TList TopFilesList(const IHierarchicalRoot& pRoot) {
  const TRef<ITopSizeList> largest = pRoot.GetTopFolder() ? pRoot.GetTopSizeList() : nullptr;
  return ListOf(pRoot, nullptr, largest != nullptr, largest ? largest->GetSnapshot() : std::vector<TTopSizeEntry>());
}

TList TopFilesList(const IHierarchicalRoot& pRoot, IFolderData& pFolder, const std::function<bool()>& pIsCancelled) {
  const TRef<ITopSizeList> largest = pRoot.GetTopSizeList();
  if (&pFolder == pRoot.GetTopFolder().get() || !largest) return TopFilesList(pRoot);
  std::vector<TTopSizeEntry> files = largest->GetSnapshot();
  if (pRoot.GetScanConfiguration()->GetKeepFiles()) {
    constexpr size_t kFewest = 100;  // the root may have few files, and other folders' files are no reason to list less
    files = LargestBeneath(pRoot, pFolder, std::max(files.size(), kFewest), pIsCancelled);
  } else {
    const std::u16string path = pFolder.GetFullPath();
    std::erase_if(files, [&](const TTopSizeEntry& pFile) {
      return !pFile.fParentFolder ||
             !IsSameOrInside(pFile.fParentFolder->GetFullPath(), path, pRoot.GetPathDelimiter());
    });
  }
  return ListOf(pRoot, &pFolder, true, files);
}

}  // namespace Vantrel::Presentation
