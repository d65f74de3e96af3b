#include "window/models/EntriesModel.h"

#include <QMetaObject>
#include <algorithm>
#include <mutex>
#include <utility>

#include "window/models/Background.h"
#include "window/models/RowMatch.h"

namespace Vantrel::Window {

namespace {

// While a tree changes, one folder's lists may take one part in so many of a thread's time.
constexpr qint64 kListShare = 20;

}  // namespace

// Where lists arrive as long as the model lives.
struct TEntriesModel::TMailbox {
  std::mutex fLock;
  TEntriesModel* fModel = nullptr;  // nullptr once the model is gone
};

TEntriesModel::TEntriesModel(QObject* pParent)
    : QAbstractItemModel(pParent),
      fTop(std::make_unique<TBranch>()),
      fMailbox(std::make_shared<TMailbox>()),
      fFormat() {
  fMailbox->fModel = this;
  fClock.start();
  fNextTurn.setSingleShot(true);
  connect(&fNextTurn, &QTimer::timeout, this, &TEntriesModel::RenewThoseInTurn);
}

TEntriesModel::~TEntriesModel() {
  for (const auto& [future, branch] : fWaiting) future->Cancel();
  const std::lock_guard lock(fMailbox->fLock);
  fMailbox->fModel = nullptr;
}

// --- structure -------------------------------------------------------------------------------------------------------

const TEntriesModel::TItem* TEntriesModel::ItemAt(const QModelIndex& pIndex) {
  if (!pIndex.isValid()) return nullptr;
  const TBranch& holder = *HolderOf(pIndex);
  return static_cast<size_t>(pIndex.row()) < holder.fItems.size() ? &holder.fItems[pIndex.row()] : nullptr;
}

TEntriesModel::TBranch* TEntriesModel::BranchOf(const QModelIndex& pIndex) const {
  if (!pIndex.isValid()) return fTop.get();
  const TItem* item = pIndex.column() == 0 ? ItemAt(pIndex) : nullptr;
  return item ? item->fBranch.get() : nullptr;
}

QModelIndex TEntriesModel::IndexOf(const TBranch& pBranch) const {
  return pBranch.fParent ? createIndex(pBranch.fRow, 0, pBranch.fParent) : QModelIndex();
}

QModelIndex TEntriesModel::index(int pRow, int pColumn, const QModelIndex& pParent) const {
  TBranch* branch = BranchOf(pParent);
  if (!branch || pRow < 0 || pColumn < 0 || pColumn >= EntryColumnCount() ||
      static_cast<size_t>(pRow) >= branch->fItems.size())
    return {};
  return createIndex(pRow, pColumn, branch);
}

QModelIndex TEntriesModel::parent(const QModelIndex& pIndex) const {
  return pIndex.isValid() ? IndexOf(*HolderOf(pIndex)) : QModelIndex();
}

int TEntriesModel::rowCount(const QModelIndex& pParent) const {
  const TBranch* branch = BranchOf(pParent);
  return branch ? static_cast<int>(branch->fItems.size()) : 0;
}

int TEntriesModel::columnCount(const QModelIndex&) const {
  return EntryColumnCount();
}

bool TEntriesModel::hasChildren(const QModelIndex& pParent) const {
  const TBranch* branch = BranchOf(pParent);
  if (branch && (branch->fFetched || !pParent.isValid())) return !branch->fItems.empty();
  const TItem* item = pParent.column() == 0 ? ItemAt(pParent) : nullptr;
  if (!item || !item->fFolder) return false;
  if (item->fFolder->GetSubFolderCount() > 0 || item->fFolder->GetFileTable()) return true;
  if ((item->fFolder->GetFolderState() & fsIsDummyForComparison) != 0) return !item->fFolder->FindSubFolders().empty();
  const TRef<IHierarchicalRoot> root = RootAt(pParent);
  const TRef<IComparison> comparison = root ? root->GetComparison() : nullptr;
  return comparison && !comparison->FindGone(*item->fFolder).empty();
}

bool TEntriesModel::canFetchMore(const QModelIndex& pParent) const {
  if (!pParent.isValid() || !hasChildren(pParent)) return false;
  const TBranch* branch = BranchOf(pParent);
  return !branch || (!branch->fFetched && !branch->fFuture);
}

void TEntriesModel::fetchMore(const QModelIndex& pParent) {
  if (canFetchMore(pParent)) Fetch(OpenBranch(pParent));
}

Qt::ItemFlags TEntriesModel::flags(const QModelIndex& pIndex) const {
  Qt::ItemFlags flags = QAbstractItemModel::flags(pIndex);
  const TItem* item = ItemAt(pIndex);
  if (item && !item->fFolder) flags |= Qt::ItemNeverHasChildren;
  return flags;
}

size_t TEntriesModel::CountRows() const {
  size_t rows = 0;
  std::vector<const TBranch*> branches{fTop.get()};
  while (!branches.empty()) {
    const TBranch* branch = branches.back();
    branches.pop_back();
    rows += branch->fItems.size();
    for (const TItem& item : branch->fItems)
      if (item.fBranch) branches.push_back(item.fBranch.get());
  }
  return rows;
}

TEntriesModel::TBranch& TEntriesModel::OpenBranch(const QModelIndex& pIndex) {
  TBranch& holder = *HolderOf(pIndex);
  TItem& item = holder.fItems[pIndex.row()];
  if (!item.fBranch) {
    item.fBranch = std::make_unique<TBranch>();
    item.fBranch->fParent = &holder;
    item.fBranch->fRow = pIndex.row();
    item.fBranch->fFolder = item.fFolder;
    item.fBranch->fRoot = RootAt(pIndex);
    BranchMade(*item.fBranch);
  }
  return *item.fBranch;
}

// What is to be known when a branch and all beneath it goes.
void TEntriesModel::Forget(TBranch& pBranch) {
  std::vector<TBranch*> branches{&pBranch};
  while (!branches.empty()) {
    TBranch& branch = *branches.back();
    branches.pop_back();
    if (branch.fFuture) {
      branch.fFuture->Cancel();
      fWaiting.erase(branch.fFuture.get());
      branch.fFuture = nullptr;
    }
    fChanged.erase(&branch);
    if (&branch != fTop.get()) BranchLeaves(branch);
    for (TItem& item : branch.fItems)
      if (item.fBranch) branches.push_back(item.fBranch.get());
  }
}

void TEntriesModel::DropChildren(TBranch& pBranch) {
  if (!pBranch.fItems.empty()) {
    beginRemoveRows(IndexOf(pBranch), 0, static_cast<int>(pBranch.fItems.size()) - 1);
    for (TItem& item : pBranch.fItems)
      if (item.fBranch) Forget(*item.fBranch);
    pBranch.fItems.clear();
    endRemoveRows();
  }
  pBranch.fFiles = nullptr;
  pBranch.fMoreRows = 0;
  pBranch.fFetched = false;
}

// --- fetching --------------------------------------------------------------------------------------------------------

TChildListSettings TEntriesModel::SettingsFor(const TBranch& pBranch) const {
  TChildListSettings settings;
  settings.fShowsFileGroup = ListsFileGroups();
  settings.fSortColumn = fSortColumn == ecFigure ? FigureColumn() : CataloguedColumn(fSortColumn);
  settings.fDescending = fDescending;
  settings.fMostRows = pBranch.fMostRows;
  settings.fWanted = pBranch.fWanted;
  return settings;
}

void TEntriesModel::Fetch(TBranch& pBranch) {
  if (!pBranch.fFolder || !pBranch.fRoot) return;
  if (pBranch.fFuture) {  // a list that is being made may be old already
    pBranch.fStale = true;
    return;
  }
  pBranch.fStale = false;
  const auto timer = std::make_shared<QElapsedTimer>();
  const auto deliver = [mailbox = fMailbox, timer](TFillChildrenFuture& pFuture, TChildList pList) {
    const std::lock_guard lock(mailbox->fLock);
    if (!mailbox->fModel) return;
    auto list = std::make_shared<TChildList>(std::move(pList));
    QMetaObject::invokeMethod(
        mailbox->fModel,
        [model = mailbox->fModel, future = TRef<TFillChildrenFuture>(&pFuture), list, taken = timer->elapsed()] {
          model->Receive(future.get(), std::move(*list), taken);
        },
        Qt::QueuedConnection);
  };
  pBranch.fFuture = MakeRef<TFillChildrenFuture>(pBranch.fFolder, pBranch.fRoot, SettingsFor(pBranch), deliver);
  fWaiting[pBranch.fFuture.get()] = &pBranch;
  ShortWork().start([future = pBranch.fFuture, timer] {
    timer->start();
    future->Run();
  });
}

bool TEntriesModel::IsInSight(const TBranch& pBranch) const {
  for (const TBranch* branch = &pBranch; branch->fParent; branch = branch->fParent)
    if (!branch->fOpen) return false;
  return true;
}

void TEntriesModel::Renew(TBranch& pBranch) {
  if (IsInSight(pBranch))
    Fetch(pBranch);
  else
    pBranch.fStale = true;
}

void TEntriesModel::RenewInTurn(TBranch& pBranch) {
  if (!pBranch.fFuture && fClock.elapsed() >= pBranch.fNotBefore) return Renew(pBranch);
  fChanged.insert(&pBranch);
  if (!fNextTurn.isActive() && !pBranch.fFuture)
    fNextTurn.start(static_cast<int>(pBranch.fNotBefore - fClock.elapsed()));
}

void TEntriesModel::RenewThoseInTurn() {
  for (TBranch* branch : std::exchange(fChanged, {})) RenewInTurn(*branch);
}

void TEntriesModel::FetchAll() {
  std::vector<TBranch*> branches{fTop.get()};
  while (!branches.empty()) {
    TBranch& branch = *branches.back();
    branches.pop_back();
    if (branch.fFetched || branch.fFuture) Renew(branch);
    for (TItem& item : branch.fItems)
      if (item.fBranch) branches.push_back(item.fBranch.get());
  }
}

void TEntriesModel::SetOpen(const QModelIndex& pIndex, bool pOpen) {
  // A view that has yet to lay out its rows only remembers that this one is expanded, and asks for nothing.
  if (pOpen) fetchMore(pIndex);
  TBranch* opened = BranchOf(pIndex);
  if (!opened || !pIndex.isValid()) return;
  opened->fOpen = pOpen;
  std::vector<TBranch*> branches{opened};
  while (pOpen && !branches.empty()) {
    TBranch& branch = *branches.back();
    branches.pop_back();
    if (!branch.fOpen) continue;
    if (branch.fStale && !branch.fFuture) Renew(branch);
    for (TItem& item : branch.fItems)
      if (item.fBranch) branches.push_back(item.fBranch.get());
  }
}

void TEntriesModel::ShowMore(const QModelIndex& pMoreRow) {
  const TItem* item = ItemAt(pMoreRow);
  if (!item || KindAt(pMoreRow) != TEntryKind::ekMore) return;
  TBranch& branch = *HolderOf(pMoreRow);
  if (branch.fFuture) return;
  branch.fMostRows *= 2;
  Fetch(branch);
}

void TEntriesModel::sort(int pColumn, Qt::SortOrder pOrder) {
  const bool descending = pOrder == Qt::DescendingOrder;
  if (pColumn < 0 || (pColumn == fSortColumn && descending == fDescending)) return;
  fSortColumn = pColumn;
  fDescending = descending;
  FetchAll();
}

void TEntriesModel::Receive(TFillChildrenFuture* pFuture, TChildList pList, qint64 pTaken) {
  const auto waiting = fWaiting.find(pFuture);
  if (waiting == fWaiting.end()) return;
  TBranch& branch = *waiting->second;
  fWaiting.erase(waiting);
  branch.fFuture = nullptr;
  branch.fNotBefore = fClock.elapsed() + pTaken * kListShare;
  Apply(branch, std::move(pList));
  if (branch.fStale)
    Renew(branch);
  else if (fChanged.erase(&branch) > 0)
    RenewInTurn(branch);
  Q_EMIT Filled(IndexOf(branch));
}

// --- a new list of children ------------------------------------------------------------------------------------------

void TEntriesModel::Apply(TBranch& pBranch, TChildList pList) {
  std::vector<TItem> items;
  items.reserve(pList.fRows.size() + 1);
  for (TChildRow& row : pList.fRows) items.push_back({std::move(row.fFolder), row.fFile, nullptr});
  if (pList.fMoreRows > 0) items.emplace_back();

  std::vector<TRowName> before;
  std::vector<TRowName> after;
  before.reserve(pBranch.fItems.size());
  after.reserve(items.size());
  for (const TItem& item : pBranch.fItems)
    before.push_back(NameOfRow(item.fFolder.get(), pBranch.fFiles.get(), item.fFile));
  for (const TItem& item : items) after.push_back(NameOfRow(item.fFolder.get(), pList.fFiles.get(), item.fFile));
  std::vector<int> newRows = MatchRows(before, after);

  RemoveMissing(pBranch, newRows);
  for (size_t row = 0; row < newRows.size(); ++row) {
    pBranch.fItems[row].fFile = items[newRows[row]].fFile;
    pBranch.fItems[row].fFolder = items[newRows[row]].fFolder;
  }
  pBranch.fFiles = pList.fFiles;
  pBranch.fMoreRows = pList.fMoreRows;
  pBranch.fMore = pList.fMore;
  pBranch.fFetched = true;
  AppendNew(pBranch, items, newRows);
  Reorder(pBranch, newRows);
  TellChanged(pBranch);
}

// pNewRows has the new place of each row, -1 for what has gone. Afterwards it has those of the rows that stay.
void TEntriesModel::RemoveMissing(TBranch& pBranch, std::vector<int>& pNewRows) {
  const int count = static_cast<int>(pNewRows.size());
  for (int last = count - 1; last >= 0; --last) {
    if (pNewRows[last] >= 0) continue;
    int first = last;
    while (first > 0 && pNewRows[first - 1] < 0) --first;
    beginRemoveRows(IndexOf(pBranch), first, last);
    for (int row = first; row <= last; ++row)
      if (pBranch.fItems[row].fBranch) Forget(*pBranch.fItems[row].fBranch);
    pBranch.fItems.erase(pBranch.fItems.begin() + first, pBranch.fItems.begin() + last + 1);
    for (size_t row = first; row < pBranch.fItems.size(); ++row)
      if (pBranch.fItems[row].fBranch) pBranch.fItems[row].fBranch->fRow = static_cast<int>(row);
    endRemoveRows();
    last = first;
  }
  std::erase(pNewRows, -1);
}

void TEntriesModel::AppendNew(TBranch& pBranch, std::vector<TItem>& pItems, std::vector<int>& pNewRows) {
  std::vector<bool> isKnown(pItems.size());
  for (const int row : pNewRows) isKnown[row] = true;
  const int before = static_cast<int>(pNewRows.size());
  for (size_t row = 0; row < pItems.size(); ++row)
    if (!isKnown[row]) pNewRows.push_back(static_cast<int>(row));
  if (static_cast<int>(pNewRows.size()) == before) return;
  beginInsertRows(IndexOf(pBranch), before, static_cast<int>(pNewRows.size()) - 1);
  for (size_t i = before; i < pNewRows.size(); ++i) pBranch.fItems.push_back(std::move(pItems[pNewRows[i]]));
  endInsertRows();
}

void TEntriesModel::Reorder(TBranch& pBranch, const std::vector<int>& pNewRows) {
  if (std::is_sorted(pNewRows.begin(), pNewRows.end())) return;
  const QList<QPersistentModelIndex> parents{QPersistentModelIndex(IndexOf(pBranch))};
  Q_EMIT layoutAboutToBeChanged(parents, VerticalSortHint);
  std::vector<TItem> sorted(pNewRows.size());
  for (size_t row = 0; row < pNewRows.size(); ++row) sorted[pNewRows[row]] = std::move(pBranch.fItems[row]);
  pBranch.fItems.swap(sorted);
  for (size_t row = 0; row < pBranch.fItems.size(); ++row)
    if (pBranch.fItems[row].fBranch) pBranch.fItems[row].fBranch->fRow = static_cast<int>(row);
  for (const QModelIndex& old : persistentIndexList())
    if (old.internalPointer() == &pBranch)
      changePersistentIndex(old, createIndex(pNewRows[old.row()], old.column(), &pBranch));
  Q_EMIT layoutChanged(parents, VerticalSortHint);
}

void TEntriesModel::TellChanged(TBranch& pBranch) {
  if (pBranch.fItems.empty()) return;
  const int last = static_cast<int>(pBranch.fItems.size()) - 1;
  Q_EMIT dataChanged(createIndex(0, 0, &pBranch), createIndex(last, EntryColumnCount() - 1, &pBranch));
}

}  // namespace Vantrel::Window
