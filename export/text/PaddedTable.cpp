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

size_t Blanks(int pWanted, int pTaken) {
  return static_cast<size_t>(std::max(0, pWanted - pTaken));
}

}  // namespace

TPaddedTable::TPaddedTable(std::vector<TColumn> pColumns, std::string pSeparator)
    : fColumns(std::move(pColumns)), fWidths(fColumns.size()), fSeparator(std::move(pSeparator)) {}

void TPaddedTable::Measure(const std::vector<std::string>& pCells) {
  for (size_t i = 0; i < pCells.size(); ++i) fWidths[i] = std::max(fWidths[i], DisplayWidth(pCells[i]));
}

void TPaddedTable::LimitRowWidth(size_t pColumn, int pMaximumWidth) {
  int rowWidth = DisplayWidth(fSeparator) * (static_cast<int>(fWidths.size()) - 1);
  for (int width : fWidths) rowWidth += width;
  int& limited = fWidths[pColumn];
  limited = std::min(limited, std::max(kLeastLimitedWidth, limited - (rowWidth - pMaximumWidth)));
}

std::string TPaddedTable::Row(const std::vector<std::string>& pCells) const {
  std::string line;
  for (size_t i = 0; i < pCells.size(); ++i) {
    if (i > 0) line += fSeparator;
    const std::string cell = ShortenedToWidth(pCells[i], fWidths[i]);
    const std::string blanks(Blanks(fWidths[i], DisplayWidth(cell)), ' ');
    const bool isRight = AlignmentOf(fColumns[i]) == TAlignment::alRight;
    line += isRight ? blanks + cell : cell + blanks;
  }
  return line;
}

std::string TPaddedTable::Underline() const {
  std::string line;
  for (size_t i = 0; i < fWidths.size(); ++i) {
    if (i > 0) line += fSeparator;
    line.append(static_cast<size_t>(fWidths[i]), '-');
  }
  return line;
}

std::string CaptionWithUnit(std::u16string_view pCaption, TColumn pColumn, const TValueFormat& pFormat) {
  std::string text = ToUtf8(pCaption);
  // A plain number of bytes carries no unit.
  const bool sharesUnit = !pFormat.fPlainByteValues && pFormat.fSizeUnit != TSizeUnit::suAutomatic;
  if (sharesUnit && ColumnInfo(pColumn).fKind == TColumnKind::ckSize)
    text += " (" + ToUtf8(UnitName(pFormat.fSizeUnit)) + ")";
  return text;
}

std::string ShortenedToWidth(std::string_view pUtf8, int pWidth) {
  if (DisplayWidth(pUtf8) <= pWidth) return std::string(pUtf8);
  std::string shortened;
  int width = 0;
  size_t position = 0;
  while (position < pUtf8.size()) {
    size_t end = position + 1;
    while (end < pUtf8.size() && (static_cast<unsigned char>(pUtf8[end]) & 0xC0) == 0x80) ++end;
    const std::string_view character = pUtf8.substr(position, end - position);
    width += DisplayWidth(character);
    if (width > pWidth - 1) break;
    shortened += character;
    position = end;
  }
  return shortened + "…";
}

}  // namespace Vantrel::Exporting
