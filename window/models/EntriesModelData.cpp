// The part of the model of entries that gives the cells their values.

#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <array>

#include "model/roots/EarlierFiles.h"
#include "platform/files/Paths.h"
#include "window/models/EntriesModel.h"
#include "window/models/Icons.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

namespace {

// The catalogue's columns that models show, in their first order.
constexpr std::array kColumns{
    TColumn::mdPercentOfParent, TColumn::mdSize,        TColumn::mdAllocated,         TColumn::mdFiles,
    TColumn::mdFolders,         TColumn::mdItems,       TColumn::mdLastChange,        TColumn::mdLastAccess,
    TColumn::mdCreation,        TColumn::mdOwner,       TColumn::mdAttributes,        TColumn::mdExtension,
    TColumn::mdPercentOfRoot,   TColumn::mdSizeChange,  TColumn::mdSizeChangePercent, TColumn::mdAllocatedChange,
    TColumn::mdFileChange,      TColumn::mdChangeState, TColumn::mdCompression,       TColumn::mdAverageFileSize,
    TColumn::mdPathLength,      TColumn::mdDepth,       TColumn::mdParentPath,        TColumn::mdFullPath};

bool IsAlignedRight(TColumn pColumn) {
  const TColumnKind kind = ColumnInfo(pColumn).fKind;
  return kind == TColumnKind::ckSize || kind == TColumnKind::ckCount || kind == TColumnKind::ckShare;
}

}  // namespace

TColumn CataloguedColumn(int pColumn) {
  return pColumn < ecFirstCatalogued ? TColumn::mdName : kColumns.at(static_cast<size_t>(pColumn) - ecFirstCatalogued);
}

int EntryColumnCount() {
  return ecFirstCatalogued + static_cast<int>(kColumns.size());
}

int EntryColumnOf(TColumn pColumn) {
  if (pColumn == TColumn::mdName) return ecName;
  for (size_t i = 0; i < kColumns.size(); ++i)
    if (kColumns[i] == pColumn) return ecFirstCatalogued + static_cast<int>(i);
  return -1;
}

// --- settings --------------------------------------------------------------------------------------------------------

TColumn TEntriesModel::FigureColumn() const {
  switch (fFigure) {
    case TFigure::fgAllocated:
      return TColumn::mdAllocated;
    case TFigure::fgFiles:
      return TColumn::mdFiles;
    case TFigure::fgPercent:
      return TColumn::mdPercentOfParent;
    default:
      return TColumn::mdSize;
  }
}

void TEntriesModel::SetFigure(TFigure pFigure) {
  if (fFigure == pFigure) return;
  fFigure = pFigure;
  Q_EMIT headerDataChanged(Qt::Horizontal, ecFigure, ecFigure);
  FetchAll();
  TellChanged(Top());
}

void TEntriesModel::SetUnit(TSizeUnit pUnit) {
  fFormat = WindowFormat(pUnit);
  FetchAll();
  TellChanged(Top());
}

void TEntriesModel::SetShowsChangesInNames(bool pShows) {
  fShowsChangesInNames = pShows;
  FetchAll();
  TellChanged(Top());
}

// --- rows ------------------------------------------------------------------------------------------------------------

TEntryKind TEntriesModel::KindAt(const QModelIndex& pIndex) const {
  const TItem* item = ItemAt(pIndex);
  if (!item) return TEntryKind::ekMore;
  if (TopHoldsRoots() && HolderOf(pIndex) == &Top()) return TEntryKind::ekRoot;
  if (item->IsMore()) return TEntryKind::ekMore;
  if (!item->fFolder) return TEntryKind::ekFile;
  if ((item->fFolder->GetFolderState() & fsIsDummyForComparison) != 0) return TEntryKind::ekGone;
  return item->fFolder->IsFileGroup() ? TEntryKind::ekFileGroup : TEntryKind::ekFolder;
}

TRef<IFolderData> TEntriesModel::NodeAt(const QModelIndex& pIndex) const {
  const TItem* item = ItemAt(pIndex);
  return item ? item->fFolder : nullptr;
}

TRef<IFolderData> TEntriesModel::FolderAt(const QModelIndex& pIndex) const {
  const TItem* item = ItemAt(pIndex);
  if (!item) return nullptr;
  const TRef<IFolderData> node = item->fFolder ? item->fFolder : HolderOf(pIndex)->fFolder;
  if (!node || !node->IsFileGroup()) return node;
  const TRef<IHierarchicalElement> folder = node->GetParentFolder();
  return folder ? TRef<IFolderData>(folder->AsFolder()) : nullptr;
}

std::u16string TEntriesModel::PathAt(const QModelIndex& pIndex) const {
  const TItem* item = ItemAt(pIndex);
  const TRef<IHierarchicalRoot> root = item ? RootAt(pIndex) : nullptr;
  if (!root) return {};
  switch (KindAt(pIndex)) {
    case TEntryKind::ekRoot:
      return root->GetPath();
    case TEntryKind::ekFile:
      return ViewOf(*HolderOf(pIndex), *item).GetFullPath();
    case TEntryKind::ekMore:
      return {};
    default:
      return item->fFolder->GetFullPath();
  }
}

TEntryView TEntriesModel::ViewOf(const TBranch& pBranch, const TItem& pItem) const {
  if (pItem.fFolder) return TEntryView(*pItem.fFolder);
  return {*pBranch.fFiles, (*pBranch.fFiles)[pItem.fFile], pBranch.fFolder.get()};
}

int64_t TEntriesModel::FigureOf(const TSizeValues& pValues) const {
  if (fFigure == TFigure::fgFiles) return pValues.fFiles;
  return fFigure == TFigure::fgAllocated ? pValues.fAllocated : pValues.fSize;
}

bool TEntriesModel::IsScanning(const TItem& pItem) const {
  return pItem.fFolder &&
         (pItem.fFolder->GetFolderState() & (fsSubFolderScanningFinished | fsIsDummyForComparison)) == 0;
}

// --- cells -----------------------------------------------------------------------------------------------------------

QString TEntriesModel::MoreText(const TBranch& pBranch, int pColumn) const {
  if (pColumn == ecName) return tr("… %1 more (show more of them)").arg(ShownCount(pBranch.fMoreRows, fFormat));
  const TColumn column = pColumn == ecFigure ? FigureColumn() : CataloguedColumn(pColumn);
  return ShownValue(column, ValueOfSizes(pBranch.fMore, column), fFormat);
}

QString TEntriesModel::NameText(const QModelIndex& pIndex, const TItem& pItem) const {
  if (KindAt(pIndex) == TEntryKind::ekRoot) {
    const TRef<IHierarchicalRoot> root = RootAt(pIndex);
    QString name = root ? Shown(root->GetTitle()) : QString();
    if (!pItem.fFolder || !fShowsChangesInNames || !root->GetComparison()) return name;
  }
  const TEntryView view = ViewOf(*HolderOf(pIndex), pItem);
  const TRef<IHierarchicalRoot> root = RootAt(pIndex);
  const QString name = KindAt(pIndex) == TEntryKind::ekRoot ? Shown(root->GetTitle()) : Shown(view.GetObjectName());
  if (!fShowsChangesInNames || !root || !root->GetComparison()) return name;
  const TMetaDataValue change = pItem.fFolder ? view.GetValue(TColumn::mdSizeChange) : TMetaDataValue();
  const auto* bytes = std::get_if<int64_t>(&change);
  if (!bytes || *bytes == 0) return name;
  const QString amount = ShownValue(TColumn::mdSizeChange, change, fFormat);
  return QStringLiteral("[%1%2]  %3").arg(*bytes > 0 && !amount.startsWith(u'+') ? "+" : "", amount, name);
}

QString TEntriesModel::CellText(const QModelIndex& pIndex, const TItem& pItem) const {
  const TBranch& branch = *HolderOf(pIndex);
  const TEntryKind kind = KindAt(pIndex);
  if (kind == TEntryKind::ekMore) return MoreText(branch, pIndex.column());
  if (pIndex.column() == ecName) return NameText(pIndex, pItem);
  if (!pItem.fFolder && kind == TEntryKind::ekRoot) return {};  // its path is not open yet
  const TColumn column = pIndex.column() == ecFigure ? FigureColumn() : CataloguedColumn(pIndex.column());
  if (kind == TEntryKind::ekRoot && column == TColumn::mdPercentOfParent) return ShownValue(column, 1.0, fFormat);
  if (!pItem.fFolder && ColumnInfo(column).fKind != TColumnKind::ckText) {
    const TRef<IComparison> comparison = branch.fRoot->GetComparison();
    if (comparison && column >= TColumn::mdSizeChange && column <= TColumn::mdAllocatedChange) {
      // Painting asks for the visible rows alone, so an index of the earlier files would cost more than it saves.
      const TRef<const TFileTable> earlier = comparison->EarlierFiles(*branch.fFolder);
      const TEntryView view = ViewOf(branch, pItem);
      const TFileRecord* then = earlier ? earlier->Find(view.GetObjectName()) : nullptr;
      if (!comparison->KnowsFiles()) return {};
      TChange change;
      change.fNow = view.GetValues();
      if (then) change.fThen = {{then->fSize, then->fAllocated, 1}};
      change.fIsNew = !then;
      return ShownValue(column, ValueOfChange(change, column), fFormat);
    }
  }
  return Shown(ViewOf(branch, pItem).GetFormattedValue(column, fFormat));
}

QVariant TEntriesModel::ShareOf(const QModelIndex& pIndex, const TItem& pItem) const {
  const TEntryKind kind = KindAt(pIndex);
  if (kind == TEntryKind::ekRoot) return pItem.fFolder ? QVariant(1.0) : QVariant();
  const TBranch& branch = *HolderOf(pIndex);
  if (kind == TEntryKind::ekGone) return {};
  if (fFigure == TFigure::fgPercent && kind != TEntryKind::ekMore) {
    const TMetaDataValue share = ViewOf(branch, pItem).GetValue(TColumn::mdPercentOfParent);
    const auto* value = std::get_if<double>(&share);
    return value ? QVariant(*value) : QVariant();
  }
  TRef<IFolderData> whole = branch.fFolder;
  if (whole && whole->IsFileGroup()) {  // files are measured against their folder, wherever they are shown
    const TRef<IHierarchicalElement> folder = whole->GetParentFolder();
    if (folder) whole = folder->AsFolder();
  }
  if (!whole) return {};
  const int64_t part = FigureOf(kind == TEntryKind::ekMore ? branch.fMore : ViewOf(branch, pItem).GetValues());
  return ShareOfWhole(part, FigureOf(whole->GetValues()));
}

QVariant TEntriesModel::Decoration(const QModelIndex& pIndex) const {
  const TItem* item = ItemAt(pIndex);
  switch (KindAt(pIndex)) {
    case TEntryKind::ekRoot:
      return Icon(TSymbol::syDrive);
    case TEntryKind::ekFolder:
      return Icon(IsIncomplete(*item->fFolder) ? TSymbol::syFolderIncomplete : TSymbol::syFolder);
    case TEntryKind::ekFileGroup:
      return Icon(TSymbol::syFiles);
    case TEntryKind::ekFile:
      return Icon(TSymbol::syFile);
    case TEntryKind::ekGone:
      return Icon(TSymbol::syGone);
    default:
      return {};
  }
}

QVariant TEntriesModel::Ink(const QModelIndex& pIndex) const {
  const TEntryKind kind = KindAt(pIndex);
  if (kind != TEntryKind::ekGone && kind != TEntryKind::ekMore) return {};
  return QGuiApplication::palette().color(QPalette::PlaceholderText);
}

QVariant TEntriesModel::Hint(const QModelIndex& pIndex, const TItem& pItem) const {
  if (pIndex.column() != ecName || KindAt(pIndex) == TEntryKind::ekMore) return {};
  if (pItem.fFolder && IsIncomplete(*pItem.fFolder))
    return tr("%1\nSomething here could not be read, so the figures are incomplete.").arg(Shown(PathAt(pIndex)));
  return Shown(PathAt(pIndex));
}

QVariant TEntriesModel::data(const QModelIndex& pIndex, int pRole) const {
  const TItem* item = ItemAt(pIndex);
  if (!item) return {};
  switch (pRole) {
    case Qt::DisplayRole:
      return CellText(pIndex, *item);
    case Qt::DecorationRole:
      return pIndex.column() == ecName ? Decoration(pIndex) : QVariant();
    case Qt::TextAlignmentRole:
      if (pIndex.column() == ecFigure ||
          (pIndex.column() > ecFigure && IsAlignedRight(CataloguedColumn(pIndex.column()))))
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
      return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ForegroundRole:
      return Ink(pIndex);
    case Qt::FontRole: {
      if (KindAt(pIndex) != TEntryKind::ekGone) return {};
      QFont font;
      font.setStrikeOut(true);
      return font;
    }
    case Qt::ToolTipRole:
      return Hint(pIndex, *item);
    case Qt::AccessibleTextRole:
      if (pIndex.column() != ecName) return CellText(pIndex, *item);
      return tr("%1, %2").arg(CellText(pIndex, *item), CellText(pIndex.siblingAtColumn(ecFigure), *item));
    case erShare:
      return pIndex.column() == ecFigure ? ShareOf(pIndex, *item) : QVariant();
    case erKind:
      return static_cast<int>(KindAt(pIndex));
    case erIsIncomplete:
      return item->fFolder && IsIncomplete(*item->fFolder);
    case erIsScanning:
      return IsScanning(*item);
    default:
      return {};
  }
}

QVariant TEntriesModel::headerData(int pSection, Qt::Orientation pOrientation, int pRole) const {
  if (pOrientation != Qt::Horizontal || pSection < 0 || pSection >= EntryColumnCount()) return {};
  if (pRole == Qt::TextAlignmentRole && pSection > ecFigure && IsAlignedRight(CataloguedColumn(pSection)))
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  if (pRole != Qt::DisplayRole) return {};
  const TColumn column = pSection == ecFigure ? FigureColumn() : CataloguedColumn(pSection);
  return Shown(ColumnInfo(column).fCaption);
}

}  // namespace Vantrel::Window
