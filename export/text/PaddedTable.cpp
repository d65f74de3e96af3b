#include "export/text/PaddedTable.h"

#include <algorithm>
#include <utility>

#include "platform/text/Text.h"
#include "presentation/lists/List.h"

namespace Vantrel::Exporting {

using Vantrel::Presentation::AlignmentOf;
using Vantrel::Presentation::TAlignment;

namespace {

constexpr int kLeastLimitedWidth = 12;
constexpr int kHidden = -1;

// The columns that leave a table that is too wide, in this order.
constexpr TColumn kLeaving[] = {TColumn::mdCreation, TColumn::mdLastAccess, TColumn::mdAttributes, TColumn::mdOwner,
                                TColumn::mdName,     TColumn::mdFolders,    TColumn::mdLastChange, TColumn::mdFiles,
                                TColumn::mdSize,     TColumn::mdAllocated,  TColumn::mdSizeChange};

size_t Blanks(int pWanted, int pTaken) {
  return static_cast<size_t>(std::max(0, pWanted - pTaken));
}

}  // namespace

TPaddedTable::TPaddedTable(std::vector<TColumn> pColumns, std::string pSeparator)
    : fColumns(std::move(pColumns)), fWidths(fColumns.size()), fSeparator(std::move(pSeparator)) {}

void TPaddedTable::Measure(const std::vector<std::string>& pCells) {
  for (size_t i = 0; i < pCells.size(); ++i) fWidths[i] = std::max(fWidths[i], DisplayWidth(pCells[i]));
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

void TPaddedTable::Fit(TLineWidth pLine, bool pColumnsMayLeave) {
  if (pLine.fColumns <= 0 || fColumns.empty()) return;
  fLineColumns = pLine.fColumns;
  if (pColumnsMayLeave)
    for (const TColumn column : kLeaving) DropColumn(column, pLine.fColumns);
  if (!pLine.fIsTerminal) return;
  int& name = fWidths[NameColumn()];
  name = std::min(name, std::max(kLeastLimitedWidth, name - (RowWidth() - pLine.fColumns)));
}

std::string TPaddedTable::Row(const std::vector<std::string>& pCells) const {
  std::string line;
  bool isFirst = true;
  for (size_t i = 0; i < pCells.size(); ++i) {
    if (fWidths[i] == kHidden) continue;
    if (!std::exchange(isFirst, false)) line += fSeparator;
    const bool isPath = fColumns[i] == TColumn::mdFullPath;
    const std::string cell =
        isPath ? PathShortenedToWidth(pCells[i], fWidths[i]) : ShortenedToWidth(pCells[i], fWidths[i]);
    const std::string blanks(Blanks(fWidths[i], DisplayWidth(cell)), ' ');
    const bool isRight = AlignmentOf(fColumns[i]) == TAlignment::alRight;
    line += isRight ? blanks + cell : cell + blanks;
  }
  if (fLineColumns > 0) line.resize(line.find_last_not_of(' ') + 1);
  return line;
}

std::string TPaddedTable::Underline() const {
  std::string line;
  for (const int width : fWidths) {
    if (width == kHidden) continue;
    if (!line.empty()) line += fSeparator;
    line.append(static_cast<size_t>(width), '-');
  }
  if (fLineColumns > 0) line.resize(std::min(line.size(), static_cast<size_t>(fLineColumns)));
  return line;
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
