#pragma once

// A Qt model of the entries of scanned folders: the part that the tree and the contents of one folder have in common.

#include <QAbstractItemModel>
#include <QElapsedTimer>
#include <QTimer>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "model/tree/EntryView.h"
#include "model/tree/FillChildrenFuture.h"

namespace Vantrel::Window {

// The figure beside the name, with the bar: it also gives the usual order.
enum class TFigure : uint8_t { fgSize, fgAllocated, fgFiles, fgPercent };

// The columns after the name and the figure are those of the catalogue.
enum TEntryColumn : int { ecName, ecFigure, ecFirstCatalogued };
// The column of the catalogue that a model's column shows; mdName for the name, and for the figure what it shows.
TColumn CataloguedColumn(int pColumn);
int EntryColumnCount();
// The model's column; -1 when models do not show it.
int EntryColumnOf(TColumn pColumn);

// Further roles of an entry's cells.
enum TEntryRole : int {
  erShare = Qt::UserRole + 1,  // of the parent, by the figure; 0 to 1; for ecFigure
  erKind,                      // TEntryKind
  erIsIncomplete,              // something beneath could not be read
  erIsScanning,                // the folder or something beneath is still being scanned
};
enum class TEntryKind : int { ekRoot, ekFolder, ekFileGroup, ekFile, ekGone, ekMore };

// Rows exist only for what a view has opened. A folder's row takes 24 bytes, and so does a file's: values are read from
// the tree when a cell is painted. Children are listed and sorted on another thread, and at most fMostRows of them at
// first; a last row stands for the others. A row keeps its place in selections and its open branches as long as its
// entry exists: folders are known by their node, files by their folder and name.
class TEntriesModel : public QAbstractItemModel {
  Q_OBJECT
 public:
  static constexpr size_t kFirstRows = 5000;

  explicit TEntriesModel(QObject* pParent = nullptr);
  ~TEntriesModel() override;

  // What is shown, and how.
  void SetFigure(TFigure pFigure);
  TFigure Figure() const { return fFigure; }
  void SetUnit(TSizeUnit pUnit);
  const TValueFormat& Format() const { return fFormat; }
  void SetShowsChangesInNames(bool pShows);
  bool ShowsChangesInNames() const { return fShowsChangesInNames; }
  // A view has opened or closed a row. Rows that no view shows are not kept up to date.
  void SetOpen(const QModelIndex& pIndex, bool pOpen);
  // Shows more of a folder whose last row stands for others.
  void ShowMore(const QModelIndex& pMoreRow);

  // The folder that a row stands for: for a "[Files]" row or a file, the folder that holds the files. nullptr for none.
  TRef<IFolderData> FolderAt(const QModelIndex& pIndex) const;
  // The node of a row that is a folder; nullptr for a file.
  TRef<IFolderData> NodeAt(const QModelIndex& pIndex) const;
  TEntryKind KindAt(const QModelIndex& pIndex) const;
  std::u16string PathAt(const QModelIndex& pIndex) const;
  virtual TRef<IHierarchicalRoot> RootAt(const QModelIndex& pIndex) const = 0;
  bool IsFetching() const { return !fWaiting.empty() || !fChanged.empty(); }
  // The number of rows that exist, for measurements.
  size_t CountRows() const;

  QModelIndex index(int pRow, int pColumn, const QModelIndex& pParent = {}) const override;
  QModelIndex parent(const QModelIndex& pIndex) const override;
  int rowCount(const QModelIndex& pParent = {}) const override;
  int columnCount(const QModelIndex& pParent = {}) const override;
  bool hasChildren(const QModelIndex& pParent = {}) const override;
  bool canFetchMore(const QModelIndex& pParent) const override;
  void fetchMore(const QModelIndex& pParent) override;
  QVariant data(const QModelIndex& pIndex, int pRole) const override;
  QVariant headerData(int pSection, Qt::Orientation pOrientation, int pRole) const override;
  Qt::ItemFlags flags(const QModelIndex& pIndex) const override;
  void sort(int pColumn, Qt::SortOrder pOrder) override;

 Q_SIGNALS:
  // The children of a row have arrived or changed.
  void Filled(const QModelIndex& pParent);

 protected:
  struct TBranch;
  // One row. Without a folder and without a file it is the row for what is not listed.
  struct TItem {
    TRef<IFolderData> fFolder;
    uint32_t fFile = TChildRow::kNone;
    std::unique_ptr<TBranch> fBranch;  // its children, once a view has opened it
    bool IsMore() const { return !fFolder && fFile == TChildRow::kNone; }
  };
  // The children of one row.
  struct TBranch {
    TBranch* fParent = nullptr;  // nullptr for the model's invisible top
    int fRow = 0;                // of the item that holds this branch, in the parent
    TRef<IFolderData> fFolder;   // whose children these are
    TRef<IHierarchicalRoot> fRoot;
    TRef<const TFileTable> fFiles;
    std::vector<TItem> fItems;
    int64_t fMoreRows = 0;
    TSizeValues fMore;
    size_t fMostRows = kFirstRows;
    std::u16string fWanted;
    TRef<TFillChildrenFuture> fFuture;  // the list that is being made
    bool fFetched = false;
    bool fStale = false;    // changed since its list was made
    qint64 fNotBefore = 0;  // when changes of the tree may lead to the next list, on the model's clock
    bool fOpen = true;      // shown expanded
  };

  TBranch& Top() { return *fTop; }
  const TBranch& Top() const { return *fTop; }
  TBranch* BranchOf(const QModelIndex& pIndex) const;  // of an opened row; nullptr if it was not opened
  static TBranch* HolderOf(const QModelIndex& pIndex) { return static_cast<TBranch*>(pIndex.internalPointer()); }
  static const TItem* ItemAt(const QModelIndex& pIndex);
  QModelIndex IndexOf(const TBranch& pBranch) const;  // the row whose children these are
  TBranch& OpenBranch(const QModelIndex& pIndex);
  // Asks for the children anew.
  void Fetch(TBranch& pBranch);
  void FetchAll();
  void DropChildren(TBranch& pBranch);
  virtual bool ListsFileGroups() const { return true; }
  virtual bool TopHoldsRoots() const { return false; }
  // Asks for the children again, at once or when they come into sight.
  void Renew(TBranch& pBranch);
  // The same after changes of the tree, which go on while a scan runs. A list that took long waits for its turn.
  void RenewInTurn(TBranch& pBranch);
  virtual bool IsIncomplete(const IFolderData&) const { return false; }
  virtual void BranchMade(TBranch&) {}
  virtual void BranchLeaves(TBranch&) {}
  void Forget(TBranch& pBranch);
  void TellChanged(TBranch& pBranch);

 private:
  struct TMailbox;

  void Receive(TFillChildrenFuture* pFuture, TChildList pList, qint64 pTaken);
  void RenewThoseInTurn();
  void Apply(TBranch& pBranch, TChildList pList);
  void RemoveMissing(TBranch& pBranch, std::vector<int>& pNewRows);
  void AppendNew(TBranch& pBranch, std::vector<TItem>& pItems, std::vector<int>& pNewRows);
  void Reorder(TBranch& pBranch, const std::vector<int>& pNewRows);
  bool IsInSight(const TBranch& pBranch) const;
  TChildListSettings SettingsFor(const TBranch& pBranch) const;
  TEntryView ViewOf(const TBranch& pBranch, const TItem& pItem) const;
  QString NameText(const QModelIndex& pIndex, const TItem& pItem) const;
  QString MoreText(const TBranch& pBranch, int pColumn) const;
  QString CellText(const QModelIndex& pIndex, const TItem& pItem) const;
  QVariant ShareOf(const QModelIndex& pIndex, const TItem& pItem) const;
  QVariant Decoration(const QModelIndex& pIndex) const;
  QVariant Ink(const QModelIndex& pIndex) const;
  QVariant Hint(const QModelIndex& pIndex, const TItem& pItem) const;
  int64_t FigureOf(const TSizeValues& pValues) const;
  TColumn FigureColumn() const;
  bool IsScanning(const TItem& pItem) const;

  std::unique_ptr<TBranch> fTop;
  std::shared_ptr<TMailbox> fMailbox;
  std::unordered_map<TFillChildrenFuture*, TBranch*> fWaiting;
  std::unordered_set<TBranch*> fChanged;  // to be listed again in their turn
  QElapsedTimer fClock;
  QTimer fNextTurn;
  TFigure fFigure = TFigure::fgSize;
  TValueFormat fFormat;
  bool fShowsChangesInNames = false;
  int fSortColumn = ecFigure;
  bool fDescending = true;
};

}  // namespace Vantrel::Window
