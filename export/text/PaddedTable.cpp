#include "export/text/PaddedTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/text/Text.h"
#include "presentation/lists/List.h"

namespace Vantrel::Exporting {

using Vantrel::Presentation::AlignmentOf;
using Vantrel::Presentation::TAlignment;

namespace {

constexpr int kLeastLimitedWidth = 12;
constexpr int kHidden = -1;
// Shorter bars say too little, longer ones no more.
constexpr int kLeastBarWidth = 3;
constexpr int kMostBarWidth = 20;
// Parts of a whole that are worth a look.
constexpr double kLargeShare = 0.25;
constexpr double kHugeShare = 0.5;

// The columns that leave a table that is too wide, in this order.
constexpr TColumn kLeaving[] = {TColumn::mdCreation, TColumn::mdLastAccess, TColumn::mdAttributes, TColumn::mdOwner,
                                TColumn::mdName,     TColumn::mdFolders,    TColumn::mdLastChange, TColumn::mdFiles,
                                TColumn::mdSize,     TColumn::mdAllocated,  TColumn::mdSizeChange};

std::string Blanks(int pWanted, int pTaken) {
  return std::string(static_cast<size_t>(std::max(0, pWanted - pTaken)), ' ');
}

std::string_view SequenceOf(TInk pInk) {
  switch (pInk) {
    case TInk::ikTitle:
      return "\033[1m";
    case TInk::ikFaint:
      return "\033[2m";
    case TInk::ikFolder:
      return "\033[1;34m";
    case TInk::ikGood:
      return "\033[32m";
    case TInk::ikWarning:
      return "\033[33m";
    case TInk::ikBad:
      return "\033[91m";
    default:
      return {};
  }
}

TInk InkOfShare(const TRowLook& pRow) {
  if (!pRow.fShare || pRow.fIsWhole) return TInk::ikNone;
  if (*pRow.fShare >= kHugeShare) return TInk::ikBad;
  return *pRow.fShare >= kLargeShare ? TInk::ikWarning : TInk::ikNone;
}

// Growth fills the disk.
TInk InkOfChange(std::string_view pText) {
  if (pText.starts_with('+')) return TInk::ikBad;
  return pText.starts_with('-') ? TInk::ikGood : TInk::ikNone;
}

bool IsChange(TColumn pColumn) {
  return pColumn == TColumn::mdSizeChange || pColumn == TColumn::mdSizeChangePercent ||
         pColumn == TColumn::mdAllocatedChange || pColumn == TColumn::mdFileChange;
}

}  // namespace

std::string Painted(std::string_view pUtf8, TInk pInk, const TLineLook& pLook) {
  std::string text(pUtf8);
  const std::string_view sequence = SequenceOf(pInk);
  if (!pLook.fHasColors || sequence.empty() || text.empty()) return text;
  return std::string(sequence).append(text).append("\033[0m");
}

std::string BarText(double pShare, int pWidth, int pPartsOfBlock) {
  const int steps = pWidth * std::max(pPartsOfBlock, 1);
  if (steps <= 0) return {};
  const double share = std::clamp(pShare, 0.0, 1.0);
  const int filled = std::max(static_cast<int>(std::lround(share * steps)), share > 0 ? 1 : 0);
  if (pPartsOfBlock <= 1) return std::string(static_cast<size_t>(filled), '#');
  static constexpr std::string_view kEighths[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
  std::string bar;
  for (int i = 0; i < filled / pPartsOfBlock; ++i) bar += "█";
  return bar.append(kEighths[filled % pPartsOfBlock * 8 / pPartsOfBlock]);
}

TPaddedTable::TPaddedTable(std::vector<TColumn> pColumns, std::string pSeparator)
    : fColumns(std::move(pColumns)), fWidths(fColumns.size()), fSeparator(std::move(pSeparator)) {
  const auto shares = std::find_if(fColumns.begin(), fColumns.end(), [](TColumn pColumn) {
    return pColumn == TColumn::mdPercentOfParent || pColumn == TColumn::mdPercentOfRoot;
  });
  if (shares != fColumns.end()) fShares = static_cast<size_t>(shares - fColumns.begin());
}

void TPaddedTable::MeasureCaptions(const std::vector<std::string>& pCells) {
  for (size_t i = 0; i < pCells.size(); ++i) fWidths[i] = std::max(fWidths[i], DisplayWidth(pCells[i]));
}

void TPaddedTable::Measure(const std::vector<std::string>& pCells, std::optional<double> pShare) {
  MeasureCaptions(pCells);
  fLargestShare = std::max(fLargestShare, pShare.value_or(0));
  if (fShares) fSharesWidth = std::max(fSharesWidth, DisplayWidth(pCells[*fShares]));
}

int TPaddedTable::RowWidth() const {
  int width = -DisplayWidth(fSeparator);
  for (const int column : fWidths)
    if (column != kHidden) width += column + DisplayWidth(fSeparator);
  return width;
}

// How much wider the rows are than a line, if a name takes at most half of it.
int TPaddedTable::ExcessOver(int pWidth) const {
  return RowWidth() - std::max(0, fWidths[NameColumn()] - pWidth / 2) - pWidth;
}

// The first column names the rows, unless a path does. Of several sizes the first one leads, and so with their changes.
bool TPaddedTable::IsNeeded(size_t pColumn) const {
  using TPredicate = bool (*)(TColumn);
  const auto isFirst = [&](TPredicate pIsOfKind) {
    const auto end = fColumns.begin() + static_cast<ptrdiff_t>(pColumn);
    return pIsOfKind(fColumns[pColumn]) && std::none_of(fColumns.begin(), end, pIsOfKind);
  };
  if (fColumns[pColumn] == TColumn::mdName) return NameColumn() == pColumn;
  return pColumn == 0 ||
         isFirst([](TColumn pOther) { return pOther == TColumn::mdSize || pOther == TColumn::mdAllocated; }) ||
         isFirst(
             [](TColumn pOther) { return pOther == TColumn::mdSizeChange || pOther == TColumn::mdAllocatedChange; });
}

size_t TPaddedTable::NameColumn() const {
  const auto path = std::find(fColumns.begin(), fColumns.end(), TColumn::mdFullPath);
  return path == fColumns.end() ? 0 : static_cast<size_t>(path - fColumns.begin());
}

// Hides the column when the rows are too wide with it.
void TPaddedTable::DropColumn(TColumn pColumn, int pWidth) {
  for (size_t i = 0; i < fColumns.size(); ++i)
    if (fColumns[i] == pColumn && !IsNeeded(i) && ExcessOver(pWidth) > 0) fWidths[i] = kHidden;
}

// A bar stands before the text, so it costs no more than what the caption leaves free, if a line has no more room.
void TPaddedTable::MakeRoomForBars(int pWidth) {
  if (!fLook.fHasBars || !fShares || fWidths[*fShares] == kHidden) return;
  const int room = fWidths[*fShares] - fSharesWidth - 1 + std::max(0, pWidth - RowWidth());
  const int width = std::min(room, kMostBarWidth);
  if (width < kLeastBarWidth || fLargestShare * width < 1) return;
  fBarWidth = width;
  fWidths[*fShares] = std::max(fWidths[*fShares], fBarWidth + 1 + fSharesWidth);
}

void TPaddedTable::Fit(TLineWidth pLine, const TLineLook& pLook, bool pColumnsMayLeave) {
  fLook = pLook;
  if (pLine.fColumns <= 0 || fColumns.empty()) return;
  fLineColumns = pLine.fColumns;
  if (pColumnsMayLeave)
    for (const TColumn column : kLeaving) DropColumn(column, pLine.fColumns);
  MakeRoomForBars(pLine.fColumns);
  if (!pLine.fIsTerminal) return;
  int& name = fWidths[NameColumn()];
  name = std::min(name, std::max(kLeastLimitedWidth, name - (RowWidth() - pLine.fColumns)));
}

// A cell as wide as its column.
std::string TPaddedTable::Cell(const std::string& pText, size_t pColumn, const TRowLook& pRow) const {
  const TColumn column = fColumns[pColumn];
  const int width = fWidths[pColumn];
  const bool isPath = column == TColumn::mdFullPath;
  const std::string text = isPath ? PathShortenedToWidth(pText, width) : ShortenedToWidth(pText, width);
  const std::string blanks = Blanks(width, DisplayWidth(text));
  if (pColumn == NameColumn()) return Painted(text, pRow.fName, fLook) + blanks;
  if (pColumn == fShares && pRow.fShare) {
    const std::string bar = BarText(*pRow.fShare, fBarWidth, fLook.fPartsOfBlock);
    const TInk ink = InkOfShare(pRow);
    return Painted(bar, ink, fLook) + Blanks(width, DisplayWidth(bar) + DisplayWidth(text)) + Painted(text, ink, fLook);
  }
  const std::string painted = IsChange(column) ? Painted(text, InkOfChange(text), fLook) : text;
  return AlignmentOf(column) == TAlignment::alRight ? blanks + painted : painted + blanks;
}

std::string TPaddedTable::Row(const std::vector<std::string>& pCells, const TRowLook& pRow) const {
  std::string line;
  bool isFirst = true;
  for (size_t i = 0; i < pCells.size(); ++i) {
    if (fWidths[i] == kHidden) continue;
    if (!std::exchange(isFirst, false)) line += fSeparator;
    line += Cell(pCells[i], i, pRow);
  }
  if (fLineColumns > 0) line.resize(line.find_last_not_of(' ') + 1);
  return line;
}

std::string TPaddedTable::Captions(const std::vector<std::string>& pCells) const {
  return Painted(Row(pCells), TInk::ikTitle, fLook);
}

std::string TPaddedTable::Underline() const {
  std::string line;
  for (const int width : fWidths) {
    if (width == kHidden) continue;
    if (!line.empty()) line += fSeparator;
    line.append(static_cast<size_t>(width), '-');
  }
  if (fLineColumns > 0) line.resize(std::min(line.size(), static_cast<size_t>(fLineColumns)));
  return Painted(line, TInk::ikFaint, fLook);
}

std::string CaptionWithUnit(std::u16string_view pCaption, TColumn pColumn, const TValueFormat& pFormat) {
  std::string text = ToUtf8(pCaption);
  // A plain number of bytes carries no unit.
  const bool sharesUnit = !pFormat.fPlainByteValues && pFormat.fSizeUnit != TSizeUnit::suAutomatic;
  if (sharesUnit && ColumnInfo(pColumn).fKind == TColumnKind::ckSize)
    text += " (" + ToUtf8(UnitName(pFormat.fSizeUnit, pFormat.fDecimalUnits)) + ")";
  return text;
}

namespace {

// The length in bytes of the character at a position.
size_t LengthOfCharacter(std::string_view pUtf8, size_t pPosition) {
  size_t end = pPosition + 1;
  while (end < pUtf8.size() && (static_cast<unsigned char>(pUtf8[end]) & 0xC0) == 0x80) ++end;
  return end - pPosition;
}

// The longest beginning that takes at most pWidth columns.
std::string_view Beginning(std::string_view pUtf8, int pWidth) {
  size_t end = 0;
  while (end < pUtf8.size()) {
    const size_t length = LengthOfCharacter(pUtf8, end);
    pWidth -= DisplayWidth(pUtf8.substr(end, length));
    if (pWidth < 0) break;
    end += length;
  }
  return pUtf8.substr(0, end);
}

}  // namespace

std::string ShortenedToWidth(std::string_view pUtf8, int pWidth) {
  if (DisplayWidth(pUtf8) <= pWidth) return std::string(pUtf8);
  return std::string(Beginning(pUtf8, pWidth - 1)) + "…";
}

std::string PathShortenedToWidth(std::string_view pUtf8, int pWidth) {
  if (DisplayWidth(pUtf8) <= pWidth) return std::string(pUtf8);
  const std::string_view front = Beginning(pUtf8, pWidth / 3);
  std::string_view end = pUtf8.substr(front.size());
  while (!end.empty() && DisplayWidth(end) > pWidth - 1 - DisplayWidth(front))
    end.remove_prefix(LengthOfCharacter(end, 0));
  return std::string(front).append("…").append(end);
}

}  // namespace Vantrel::Exporting
