#include "window/models/DuplicatesModel.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "presentation/lists/FoundList.h"
#include "presentation/lists/List.h"
#include "window/models/EntriesModel.h"
#include "window/models/Icons.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

using Search::TDuplicateGroup;
using Search::TDuplicateName;
using Search::TFoundItem;

namespace {

// The catalogue's columns give the values their form.
constexpr TColumn kForms[dcCount] = {TColumn::mdName, TColumn::mdFiles,      TColumn::mdSize,
                                     TColumn::mdSize, TColumn::mdParentPath, TColumn::mdLastChange};

// Further names of a file are no files of their own.
int64_t CountFiles(const TDuplicateGroup& pGroup) {
  return std::count_if(pGroup.fNames.begin(), pGroup.fNames.end(),
                       [](const TDuplicateName& pName) { return !pName.fIsLink; });
}

TMetaDataValue ValueOfGroup(const TDuplicateGroup& pGroup, int pColumn) {
  switch (pColumn) {
    case dcFiles:
      return CountFiles(pGroup);
    case dcSize:
      return pGroup.fSize;
    case dcWasted:
      return pGroup.fWasted;
    default:
      return Presentation::FoundValue(pGroup.fNames.front().fFile->fItem, kForms[pColumn]);
  }
}

TMetaDataValue ValueOfFile(const TFoundItem& pItem, int pColumn) {
  if (pColumn == dcFiles || pColumn == dcWasted) return {};
  return Presentation::FoundValue(pItem, kForms[pColumn]);
}

}  // namespace

std::shared_ptr<const TDuplicateRows> MakeDuplicateRows(std::shared_ptr<const Search::TDuplicateResult> pResult,
                                                        bool pAreUnique, int pColumn, bool pDescending) {
  auto rows = std::make_shared<TDuplicateRows>();
  rows->fResult = std::move(pResult);
  rows->fAreUnique = pAreUnique;
  rows->fOrder.resize(pAreUnique ? rows->fResult->fUnique.size() : rows->fResult->fGroups.size());
  std::iota(rows->fOrder.begin(), rows->fOrder.end(), 0u);
  if (pColumn < 0 || pColumn >= dcCount) return rows;
  std::vector<TMetaDataValue> keys;
  keys.reserve(rows->Count());
  for (size_t i = 0; i < rows->Count(); ++i)
    keys.push_back(pAreUnique ? ValueOfFile(rows->File(i), pColumn) : ValueOfGroup(rows->Group(i), pColumn));
  std::stable_sort(rows->fOrder.begin(), rows->fOrder.end(), [&](uint32_t pA, uint32_t pB) {
    const auto order = CompareValues(keys[pA], keys[pB]);
    return pDescending ? order > 0 : order < 0;
  });
  return rows;
}

void TDuplicatesModel::SetRows(std::shared_ptr<const TDuplicateRows> pRows, int pAtLeast) {
  beginResetModel();
  fRows = std::move(pRows);
  const auto most = fRows ? static_cast<int>(fRows->Count()) : 0;
  fListed = std::min(most, std::max(pAtLeast, kGroupsAtOnce));
  endResetModel();
}

void TDuplicatesModel::SetUnit(TSizeUnit pUnit) {
  fFormat = WindowFormat(pUnit);
  if (fListed > 0) Q_EMIT dataChanged(index(0, 0), index(fListed - 1, dcCount - 1));
}

// --- rows ------------------------------------------------------------------------------------------------------------

// The number inside of an index is that of its group's row and 1; 0 at the top.
QModelIndex TDuplicatesModel::index(int pRow, int pColumn, const QModelIndex& pParent) const {
  if (pRow < 0 || pColumn < 0 || pColumn >= columnCount() || pRow >= rowCount(pParent)) return {};
  return createIndex(pRow, pColumn, pParent.isValid() ? static_cast<quintptr>(pParent.row()) + 1 : quintptr{0});
}

QModelIndex TDuplicatesModel::parent(const QModelIndex& pIndex) const {
  if (!pIndex.isValid() || pIndex.internalId() == 0) return {};
  return createIndex(static_cast<int>(pIndex.internalId()) - 1, 0, quintptr{0});
}

bool TDuplicatesModel::IsGroup(const QModelIndex& pIndex) const {
  return pIndex.isValid() && pIndex.internalId() == 0 && !fRows->fAreUnique;
}

int TDuplicatesModel::rowCount(const QModelIndex& pParent) const {
  if (!pParent.isValid()) return fListed;
  if (!IsGroup(pParent) || pParent.column() != 0) return 0;
  const size_t names = fRows->Group(static_cast<size_t>(pParent.row())).fNames.size();
  return static_cast<int>(std::min<size_t>(names, kMostNames + 1));
}

// One row after the listed names stands for the rest.
bool TDuplicatesModel::IsRest(const QModelIndex& pIndex) const {
  return pIndex.internalId() != 0 && pIndex.row() == kMostNames;
}

bool TDuplicatesModel::canFetchMore(const QModelIndex& pParent) const {
  return !pParent.isValid() && fRows && static_cast<size_t>(fListed) < fRows->Count();
}

void TDuplicatesModel::fetchMore(const QModelIndex& pParent) {
  if (!canFetchMore(pParent)) return;
  const int more = std::min(kGroupsAtOnce, static_cast<int>(fRows->Count()) - fListed);
  beginInsertRows({}, fListed, fListed + more - 1);
  fListed += more;
  endInsertRows();
}

const TDuplicateName& TDuplicatesModel::NameAt(const QModelIndex& pIndex) const {
  const bool isGroup = pIndex.internalId() == 0;
  const TDuplicateGroup& group = fRows->Group(isGroup ? static_cast<size_t>(pIndex.row()) : pIndex.internalId() - 1);
  return group.fNames[isGroup ? 0 : static_cast<size_t>(pIndex.row())];
}

std::u16string TDuplicatesModel::PathAt(const QModelIndex& pIndex) const {
  if (!pIndex.isValid() || IsRest(pIndex)) return {};
  if (fRows->fAreUnique) return fRows->File(static_cast<size_t>(pIndex.row())).FullPath();
  return NameAt(pIndex).fFile->GetFullPath();
}

const Search::TDuplicateFile* TDuplicatesModel::FileAt(const QModelIndex& pIndex) const {
  if (!pIndex.isValid() || fRows->fAreUnique || IsRest(pIndex)) return nullptr;
  return NameAt(pIndex).fFile.get();
}

// --- cells -----------------------------------------------------------------------------------------------------------

TMetaDataValue TDuplicatesModel::ValueAt(const QModelIndex& pIndex) const {
  const auto row = static_cast<size_t>(pIndex.row());
  if (fRows->fAreUnique) return ValueOfFile(fRows->File(row), pIndex.column());
  if (IsGroup(pIndex)) return ValueOfGroup(fRows->Group(row), pIndex.column());
  if (pIndex.column() == dcSize) return {};  // the group's row has it
  return ValueOfFile(NameAt(pIndex).fFile->fItem, pIndex.column());
}

QString TDuplicatesModel::Text(const QModelIndex& pIndex) const {
  if (IsRest(pIndex)) {
    if (pIndex.column() != dcName) return {};
    const size_t names = fRows->Group(pIndex.internalId() - 1).fNames.size();
    return tr("… %1 more, which an export has").arg(ShownCount(static_cast<int64_t>(names) - kMostNames, fFormat));
  }
  const QString text = ShownValue(kForms[pIndex.column()], ValueAt(pIndex), fFormat);
  const bool isLink = pIndex.column() == dcName && pIndex.internalId() != 0 && NameAt(pIndex).fIsLink;
  return isLink ? tr("%1 (hard link)").arg(text) : text;
}

// Of what all groups waste together.
QVariant TDuplicatesModel::Share(const QModelIndex& pIndex) const {
  if (!IsGroup(pIndex) || pIndex.column() != dcWasted || fRows->fResult->fWasted <= 0) return {};
  const int64_t wasted = fRows->Group(static_cast<size_t>(pIndex.row())).fWasted;
  return static_cast<double>(wasted) / static_cast<double>(fRows->fResult->fWasted);
}

QVariant TDuplicatesModel::data(const QModelIndex& pIndex, int pRole) const {
  if (!pIndex.isValid()) return {};
  switch (pRole) {
    case Qt::DisplayRole:
      return Text(pIndex);
    case Qt::ToolTipRole:
      return pIndex.column() == dcName || pIndex.column() == dcFolder ? QVariant(Shown(PathAt(pIndex))) : QVariant();
    case Qt::AccessibleTextRole:
      if (!IsGroup(pIndex) || pIndex.column() != dcName) return Text(pIndex);
      return tr("%1, %2 times, %3 wasted")
          .arg(Text(pIndex), Text(pIndex.siblingAtColumn(dcFiles)), Text(pIndex.siblingAtColumn(dcWasted)));
    case Qt::DecorationRole: {
      if (pIndex.column() != dcName || IsRest(pIndex)) return {};
      if (fRows->fAreUnique) return Icon(TSymbol::syFile);
      if (NameAt(pIndex).fFile->IsFolder()) return Icon(TSymbol::syFolder);
      return Icon(IsGroup(pIndex) ? TSymbol::syFiles : TSymbol::syFile);
    }
    case Qt::TextAlignmentRole:
      return QVariant(headerData(pIndex.column(), Qt::Horizontal, pRole).toInt());
    case erShare:
      return Share(pIndex);
    default:
      return {};
  }
}

QVariant TDuplicatesModel::headerData(int pSection, Qt::Orientation pOrientation, int pRole) const {
  if (pOrientation != Qt::Horizontal || pSection < 0 || pSection >= columnCount()) return {};
  if (pRole == Qt::TextAlignmentRole) {
    const bool isRight = Presentation::AlignmentOf(kForms[pSection]) == Presentation::TAlignment::alRight;
    return QVariant((isRight ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
  }
  if (pRole != Qt::DisplayRole) return {};
  switch (pSection) {
    case dcWasted:
      return tr("Wasted");
    case dcFolder:
      return tr("Folder");
    default:
      return Shown(ColumnInfo(kForms[pSection]).fCaption);
  }
}

}  // namespace Vantrel::Window
