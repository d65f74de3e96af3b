#include "window/models/TreeModel.h"

#include <algorithm>
#include <mutex>

#include "platform/files/Paths.h"
#include "window/models/Background.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

// The folders whose changes matter, for the threads that take the queues.
struct TTreeModel::TWatched {
  std::mutex fLock;
  std::unordered_set<const IHierarchicalElement*> fFolders;
};

// What a queue held for this model.
struct TTreeModel::TNews {
  TRootChanges fRoot = 0;
  bool fChanged = false;                              // anything at all
  std::vector<TRef<IHierarchicalElement>> fBranches;  // opened folders that changed
};

struct TTreeModel::TRoot {
  TRef<IHierarchicalRoot> fRoot;
  TRef<ITreeSubscription> fSubscription;
  bool fIsTaking = false;
  int64_t fErrors = 0;
  bool fIsReadingErrors = false;
  // What could not be read wholly, up to the top. The nodes are held, so that no other node gets the address of one.
  std::unordered_set<const IHierarchicalObject*> fIncomplete;
  std::vector<TRef<IHierarchicalObject>> fHeld;
};

// The way to a path that is being opened.
struct TTreeModel::TGoal {
  std::u16string fPath;
  TRef<IHierarchicalRoot> fRoot;
  QPersistentModelIndex fAt;         // the last row reached
  std::vector<std::u16string> fWay;  // names still to go
  bool fHasAsked = false;            // for the next name, beyond the rows listed at first
};

TTreeModel::TTreeModel(QObject* pParent) : TEntriesModel(pParent), fWatched(std::make_shared<TWatched>()) {
  Top().fFetched = true;
  connect(this, &TEntriesModel::Filled, this, [this] { Advance(); });
}

TTreeModel::~TTreeModel() {
  for (const auto& root : fRoots) root->fSubscription->End();
}

// --- roots -----------------------------------------------------------------------------------------------------------

int TTreeModel::RowOf(const TRoot& pRoot) const {
  const auto found = std::find_if(fRoots.begin(), fRoots.end(), [&](const auto& pOne) { return pOne.get() == &pRoot; });
  return found == fRoots.end() ? -1 : static_cast<int>(found - fRoots.begin());
}

QModelIndex TTreeModel::IndexOfRoot(const IHierarchicalRoot& pRoot) const {
  for (size_t row = 0; row < fRoots.size(); ++row)
    if (fRoots[row]->fRoot.get() == &pRoot) return index(static_cast<int>(row), 0);
  return {};
}

std::vector<TRef<IHierarchicalRoot>> TTreeModel::Roots() const {
  std::vector<TRef<IHierarchicalRoot>> roots;
  for (const auto& root : fRoots) roots.push_back(root->fRoot);
  return roots;
}

TRef<IHierarchicalRoot> TTreeModel::RootAt(const QModelIndex& pIndex) const {
  if (!pIndex.isValid()) return nullptr;
  const TBranch* holder = HolderOf(pIndex);
  int row = pIndex.row();
  for (; holder->fParent; holder = holder->fParent) row = holder->fRow;
  return static_cast<size_t>(row) < fRoots.size() ? fRoots[row]->fRoot : nullptr;
}

QModelIndex TTreeModel::AddRoot(TRef<IHierarchicalRoot> pRoot) {
  if (const QModelIndex known = IndexOfRoot(*pRoot); known.isValid()) return known;
  auto root = std::make_unique<TRoot>();
  root->fRoot = pRoot;
  root->fSubscription = pRoot->Subscribe();
  const int row = static_cast<int>(fRoots.size());
  beginInsertRows({}, row, row);
  fRoots.push_back(std::move(root));
  Top().fItems.push_back({pRoot->GetTopFolder(), TChildRow::kNone, nullptr});
  endInsertRows();
  return index(row, 0);
}

void TTreeModel::RemoveRoot(const IHierarchicalRoot& pRoot) {
  const QModelIndex index = IndexOfRoot(pRoot);
  if (!index.isValid()) return;
  if (fGoal && fGoal->fRoot.get() == &pRoot) fGoal = nullptr;
  const int row = index.row();
  beginRemoveRows({}, row, row);
  if (TBranch* branch = Top().fItems[row].fBranch.get()) Forget(*branch);
  Top().fItems.erase(Top().fItems.begin() + row);
  fRoots[row]->fSubscription->End();
  fRoots.erase(fRoots.begin() + row);
  for (size_t i = row; i < Top().fItems.size(); ++i)
    if (Top().fItems[i].fBranch) Top().fItems[i].fBranch->fRow = static_cast<int>(i);
  endRemoveRows();
}

// --- changes ---------------------------------------------------------------------------------------------------------

void TTreeModel::BranchMade(TBranch& pBranch) {
  if (!pBranch.fFolder) return;
  fBranches[pBranch.fFolder.get()] = &pBranch;
  const std::lock_guard lock(fWatched->fLock);
  fWatched->fFolders.insert(pBranch.fFolder.get());
}

void TTreeModel::BranchLeaves(TBranch& pBranch) {
  if (!pBranch.fFolder) return;
  fBranches.erase(pBranch.fFolder.get());
  const std::lock_guard lock(fWatched->fLock);
  fWatched->fFolders.erase(pBranch.fFolder.get());
}

void TTreeModel::Poll() {
  for (const auto& root : fRoots) {
    if (root->fIsTaking) continue;
    root->fIsTaking = true;
    auto take = [subscription = root->fSubscription, watched = fWatched] {
      TTreeChanges changes = subscription->Take();
      TNews news{changes.fRoot, !changes.IsEmpty(), {}};
      const std::lock_guard lock(watched->fLock);
      for (TChangedNode& node : changes.fNodes)
        if (watched->fFolders.contains(node.fNode.get())) news.fBranches.push_back(std::move(node.fNode));
      return news;
    };
    RunInBackground(ShortWork(), this, take, [this, of = root.get()](TOutcome<TNews> pNews) {
      if (RowOf(*of) >= 0) TakeNews(*of, std::move(pNews.fValue));
    });
  }
}

bool TTreeModel::IsTaking() const {
  return std::any_of(fRoots.begin(), fRoots.end(), [](const auto& pRoot) { return pRoot->fIsTaking; });
}

void TTreeModel::TakeNews(TRoot& pRoot, TNews pNews) {
  pRoot.fIsTaking = false;
  TItem& item = Top().fItems[RowOf(pRoot)];
  const TRef<IFolderData> top = pRoot.fRoot->GetTopFolder();
  // The queue may tell of a tree that is shown already. What the user has chosen in it stays chosen.
  pNews.fRoot &= ~rcTreeReplaced;
  if (top != item.fFolder) {
    pNews.fRoot |= rcTreeReplaced;
    ShowTree(pRoot);
  } else if ((pNews.fRoot & rcComparisonChanged) != 0) {
    FetchAll();
  }
  for (const TRef<IHierarchicalElement>& node : pNews.fBranches)
    if (const auto branch = fBranches.find(node.get()); branch != fBranches.end()) RenewInTurn(*branch->second);
  CheckErrors(pRoot);
  const QModelIndex shown = index(RowOf(pRoot), 0);
  if (pNews.fChanged) Q_EMIT dataChanged(shown, shown.siblingAtColumn(EntryColumnCount() - 1));
  if (pNews.fRoot != 0) Q_EMIT RootChanged(shown, pNews.fRoot);
}

// The root has another tree, or its first.
void TTreeModel::ShowTree(TRoot& pRoot) {
  const int row = RowOf(pRoot);
  TItem& item = Top().fItems[row];
  const bool wasOpen = item.fBranch && item.fBranch->fOpen;
  if (item.fBranch) {
    DropChildren(*item.fBranch);
    Forget(*item.fBranch);
  }
  item.fFolder = pRoot.fRoot->GetTopFolder();
  if (item.fBranch) {
    item.fBranch->fFolder = item.fFolder;
    BranchMade(*item.fBranch);
    if (wasOpen) Fetch(*item.fBranch);
  }
}

bool TTreeModel::IsIncomplete(const IFolderData& pFolder) const {
  return std::any_of(fRoots.begin(), fRoots.end(),
                     [&](const auto& pRoot) { return pRoot->fIncomplete.contains(&pFolder); });
}

void TTreeModel::CheckErrors(TRoot& pRoot) {
  const int64_t errors = pRoot.fRoot->GetProgress().fErrors;
  if (errors == pRoot.fErrors || pRoot.fIsReadingErrors) return;
  pRoot.fErrors = errors;
  pRoot.fIsReadingErrors = true;
  auto read = [root = pRoot.fRoot] {
    std::vector<TRef<IHierarchicalObject>> nodes;
    std::unordered_set<const IHierarchicalObject*> known;
    for (const TScanError& error : root->GetErrors()) {
      const auto* element = dynamic_cast<const IHierarchicalElement*>(error.fObject.get());
      TRef<IHierarchicalElement> node(const_cast<IHierarchicalElement*>(element));
      for (; node && known.insert(node.get()).second; node = node->GetParentFolder()) nodes.emplace_back(node);
    }
    return nodes;
  };
  RunInBackground(ShortWork(), this, read,
                  [this, of = &pRoot](TOutcome<std::vector<TRef<IHierarchicalObject>>> pNodes) {
                    if (RowOf(*of) < 0) return;
                    of->fIsReadingErrors = false;
                    of->fHeld = std::move(pNodes.fValue);
                    of->fIncomplete.clear();
                    for (const TRef<IHierarchicalObject>& node : of->fHeld) of->fIncomplete.insert(node.get());
                    const QModelIndex shown = index(RowOf(*of), 0);
                    Q_EMIT dataChanged(shown, shown);
                  });
}

// --- going to a path -------------------------------------------------------------------------------------------------

void TTreeModel::GoTo(const std::u16string& pPath) {
  fGoal = nullptr;
  // Of roots one inside the other, the inner one is meant.
  for (const auto& root : fRoots) {
    const std::u16string path = root->fRoot->GetPath();
    if (!IsSameOrInside(pPath, path, root->fRoot->GetPathDelimiter())) continue;
    if (fGoal && fGoal->fRoot->GetPath().size() >= path.size()) continue;
    fGoal = std::make_unique<TGoal>();
    fGoal->fPath = pPath;
    fGoal->fRoot = root->fRoot;
  }
  if (!fGoal) {
    Q_EMIT NotFound(ToQString(pPath));
    return;
  }
  const char16_t delimiter = fGoal->fRoot->GetPathDelimiter();
  std::u16string_view rest = std::u16string_view(pPath).substr(std::min(pPath.size(), fGoal->fRoot->GetPath().size()));
  while (!rest.empty()) {
    const size_t end = std::min(rest.find(delimiter), rest.size());
    if (end > 0) fGoal->fWay.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  fGoal->fAt = IndexOfRoot(*fGoal->fRoot);
  Advance();
}

void TTreeModel::GiveUp() {
  const QString path = ToQString(fGoal->fPath);
  fGoal = nullptr;
  Q_EMIT NotFound(path);
}

void TTreeModel::Advance() {
  while (fGoal) {
    const QModelIndex at = fGoal->fAt;
    if (!at.isValid()) return GiveUp();
    if (fGoal->fWay.empty()) {
      fGoal = nullptr;
      Q_EMIT Found(at);
      return;
    }
    const TItem* item = ItemAt(at);
    if (!item || !item->fFolder) return GiveUp();
    TBranch& branch = OpenBranch(at);
    if (branch.fFuture) return;  // goes on when the list is there
    if (!branch.fFetched) return Fetch(branch);
    const QPersistentModelIndex before = fGoal->fAt;
    AdvanceFrom(at);
    if (fGoal && fGoal->fAt == before) return;
  }
}

// One step: to the child of the next name, else into the "[Files]" row.
void TTreeModel::AdvanceFrom(const QModelIndex& pParent) {
  TBranch& branch = *BranchOf(pParent);
  const std::u16string& name = fGoal->fWay.front();
  int files = -1;
  for (size_t row = 0; row < branch.fItems.size(); ++row) {
    const TItem& item = branch.fItems[row];
    if (item.IsMore()) continue;
    if (item.fFolder && item.fFolder->IsFileGroup()) {
      files = static_cast<int>(row);
      continue;
    }
    const std::u16string_view found = item.fFolder ? item.fFolder->GetObjectName() : branch.fFiles->NameAt(item.fFile);
    if (found != name) continue;
    fGoal->fWay.erase(fGoal->fWay.begin());
    fGoal->fHasAsked = false;
    fGoal->fAt = index(static_cast<int>(row), 0, pParent);
    return;
  }
  if (branch.fMoreRows > 0 && !fGoal->fHasAsked) {
    fGoal->fHasAsked = true;
    branch.fWanted = name;
    return Fetch(branch);
  }
  if (files < 0 || fGoal->fWay.size() > 1) return GiveUp();
  fGoal->fHasAsked = false;
  fGoal->fAt = index(files, 0, pParent);
}

}  // namespace Vantrel::Window
