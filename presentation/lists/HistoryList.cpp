#include "presentation/lists/HistoryList.h"

#include <algorithm>
#include <utility>

#include "model/columns/SizeData.h"
#include "platform/text/Text.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

namespace {

// The scan that this one is compared with: the last one before it with the same number of unreadable folders. Otherwise
// the folders missing from an incomplete scan would look like growth in the next complete one.
const THistoryEntry* ComparedWith(std::span<const THistoryEntry> pEntries, size_t pIndex) {
  for (size_t i = pIndex; i-- > 0;)
    if (pEntries[i].fUnreadFolders == pEntries[pIndex].fUnreadFolders) return &pEntries[i];
  return nullptr;
}

// Appends the growth in bytes and as a share of the earlier size.
void AppendGrowth(std::vector<TMetaDataValue>& pRow, const THistoryEntry* pEarlier, const THistoryEntry& pEntry) {
  if (pEarlier == nullptr) return pRow.resize(pRow.size() + 2);
  TChange change;
  change.fNow.fSize = pEntry.fSize;
  change.fThen.fSize = pEarlier->fSize;
  pRow.push_back(ValueOfChange(change, TColumn::mdSizeChange));
  pRow.push_back(ValueOfChange(change, TColumn::mdSizeChangePercent));
}

}  // namespace

bool HasIncompleteScans(std::span<const THistoryEntry> pEntries) {
  return std::any_of(pEntries.begin(), pEntries.end(),
                     [](const THistoryEntry& pEntry) { return pEntry.fUnreadFolders > 0; });
}

TList HistoryList(std::u16string_view pRootPath, std::span<const THistoryEntry> pEntries) {
  const bool withExcluded = std::any_of(pEntries.begin(), pEntries.end(),
                                        [](const THistoryEntry& pEntry) { return pEntry.fExcludedObjects; });
  const bool withUnread = HasIncompleteScans(pEntries);
  TList list{u"History of " + std::u16string(pRootPath), {}, {}};
  list.fColumns = {{u"Date", TColumn::mdLastChange},           {u"Size", TColumn::mdSize},
                   {u"Allocated", TColumn::mdAllocated},       {u"Files", TColumn::mdFiles},
                   {u"Free Space", TColumn::mdSize},           {u"Growth", TColumn::mdSizeChange},
                   {u"Growth %", TColumn::mdSizeChangePercent}};
  if (withExcluded) list.fColumns.push_back({u"Excluded", TColumn::mdItems});
  if (withUnread) list.fColumns.push_back({u"Not Read", TColumn::mdFolders});
  list.fColumns.push_back({u"ID", TColumn::mdName});
  for (size_t i = 0; i < pEntries.size(); ++i) {
    const THistoryEntry& entry = pEntries[i];
    TListRow row{{DateValue(entry.fDate), entry.fSize, entry.fAllocated, entry.fFiles, entry.fFreeSpace},
                 FromUtf8(std::to_string(entry.fId))};
    AppendGrowth(row.fValues, ComparedWith(pEntries, i), entry);
    if (withExcluded) row.fValues.emplace_back();
    if (entry.fExcludedObjects) row.fValues.back() = *entry.fExcludedObjects;
    if (withUnread) row.fValues.emplace_back(entry.fUnreadFolders);
    row.fValues.emplace_back(row.fKey);
    list.fRows.push_back(std::move(row));
  }
  return list;
}

}  // namespace Vantrel::Presentation
