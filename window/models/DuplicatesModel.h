#pragma once

// A Qt model of what a search for duplicates has found: groups, and beneath each its files or folders.

#include <QAbstractItemModel>
#include <memory>
#include <vector>

#include "search/duplicates/DuplicateSettings.h"

namespace Vantrel::Window {

enum TDuplicateColumn { dcName, dcFiles, dcSize, dcWasted, dcFolder, dcLastChange, dcCount };

// What was found, in the order of the list. Made on another thread; stays as it is from then on.
struct TDuplicateRows {
  std::shared_ptr<const Search::TDuplicateResult> fResult;
  // Files without a duplicate take the place of groups.
  bool fAreUnique = false;
  std::vector<uint32_t> fOrder;  // places in fGroups or fUnique

  size_t Count() const { return fOrder.size(); }
  const Search::TDuplicateGroup& Group(size_t pRow) const { return fResult->fGroups[fOrder[pRow]]; }
  const Search::TFoundItem& File(size_t pRow) const { return fResult->fUnique[fOrder[pRow]]; }
};

// Rows in the order of the search itself, or by one of the columns. Any thread.
std::shared_ptr<const TDuplicateRows> MakeDuplicateRows(std::shared_ptr<const Search::TDuplicateResult> pResult,
                                                        bool pAreUnique, int pColumn, bool pDescending);

// The row of a group shows its first file, the one that would stay, and what the group wastes. The model keeps nothing
// for a row: texts are made when a view asks for them. Views get some groups at first, and more when they scroll down.
class TDuplicatesModel : public QAbstractItemModel {
  Q_OBJECT
 public:
  static constexpr int kGroupsAtOnce = 500;
  // More names of one group are counted, but not listed.
  static constexpr int kMostNames = 5000;

  using QAbstractItemModel::QAbstractItemModel;

  // At least so many groups are listed at once.
  void SetRows(std::shared_ptr<const TDuplicateRows> pRows, int pAtLeast = 0);
  const TDuplicateRows* Rows() const { return fRows.get(); }
  void SetUnit(TSizeUnit pUnit);

  bool IsGroup(const QModelIndex& pIndex) const;
  // Of a file or folder; of a group, of its first one. Empty for the row that stands for names that are not listed.
  std::u16string PathAt(const QModelIndex& pIndex) const;
  // The first file of a row's group: what a row is known by when other rows come. nullptr for other rows.
  const Search::TDuplicateFile* FileAt(const QModelIndex& pIndex) const;

  QModelIndex index(int pRow, int pColumn, const QModelIndex& pParent = {}) const override;
  QModelIndex parent(const QModelIndex& pIndex) const override;
  int rowCount(const QModelIndex& pParent = {}) const override;
  int columnCount(const QModelIndex& = {}) const override { return dcCount; }
  bool canFetchMore(const QModelIndex& pParent) const override;
  void fetchMore(const QModelIndex& pParent) override;
  QVariant data(const QModelIndex& pIndex, int pRole) const override;
  QVariant headerData(int pSection, Qt::Orientation pOrientation, int pRole) const override;

 private:
  bool IsRest(const QModelIndex& pIndex) const;
  const Search::TDuplicateName& NameAt(const QModelIndex& pIndex) const;
  TMetaDataValue ValueAt(const QModelIndex& pIndex) const;
  QString Text(const QModelIndex& pIndex) const;
  QVariant Share(const QModelIndex& pIndex) const;

  std::shared_ptr<const TDuplicateRows> fRows;
  int fListed = 0;  // rows of the top
  TValueFormat fFormat;
};

}  // namespace Vantrel::Window
