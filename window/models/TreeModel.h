#pragma once

// The model of the tree: all open roots, each with what was opened beneath it.

#include <QTimer>
#include <memory>
#include <unordered_set>
#include <vector>

#include "window/models/EntriesModel.h"

namespace Vantrel::Window {

// Follows the roots through their queues of changes. A queue is taken on another thread, and only folders that a view
// has opened are asked for their children again.
class TTreeModel : public TEntriesModel {
  Q_OBJECT
 public:
  explicit TTreeModel(QObject* pParent = nullptr);
  ~TTreeModel() override;

  // Adds a root as the last row. The row of a root that is shown already.
  QModelIndex AddRoot(TRef<IHierarchicalRoot> pRoot);
  void RemoveRoot(const IHierarchicalRoot& pRoot);
  std::vector<TRef<IHierarchicalRoot>> Roots() const;
  QModelIndex IndexOfRoot(const IHierarchicalRoot& pRoot) const;
  TRef<IHierarchicalRoot> RootAt(const QModelIndex& pIndex) const override;

  // Opens the way to a path and emits Found with its row, or NotFound. Replaces an earlier request.
  void GoTo(const std::u16string& pPath);
  // Takes what has changed. Called several times a second.
  void Poll();
  // Whether changes are being taken on another thread.
  bool IsTaking() const;

 Q_SIGNALS:
  void Found(const QModelIndex& pIndex);
  void NotFound(const QString& pPath);
  // A root's scan began or ended, or it has another tree or comparison.
  void RootChanged(const QModelIndex& pIndex, int pChanges);

 protected:
  bool TopHoldsRoots() const override { return true; }
  bool IsIncomplete(const IFolderData& pFolder) const override;
  void BranchMade(TBranch& pBranch) override;
  void BranchLeaves(TBranch& pBranch) override;

 private:
  struct TWatched;
  struct TRoot;
  struct TNews;
  struct TGoal;

  int RowOf(const TRoot& pRoot) const;
  void TakeNews(TRoot& pRoot, TNews pNews);
  void ShowTree(TRoot& pRoot);
  void CheckErrors(TRoot& pRoot);
  void Advance();
  void AdvanceFrom(const QModelIndex& pParent);
  void GiveUp();

  std::vector<std::unique_ptr<TRoot>> fRoots;  // in the order of the rows
  std::shared_ptr<TWatched> fWatched;
  std::unordered_map<const IHierarchicalElement*, TBranch*> fBranches;
  std::unique_ptr<TGoal> fGoal;
};

}  // namespace Vantrel::Window
