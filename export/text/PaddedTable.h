#pragma once

// Tables of fixed width for people: padding, shortening, captions with their unit.

#include <string>
#include <string_view>
#include <vector>

#include "model/columns/MetaData.h"

namespace Vantrel::Exporting {

// A table of fixed width, line by line: cells padded with blanks to the widest text of their column, numbers to the
// right. All texts are UTF-8 and safe to show; widths are columns of a terminal. Every row is measured before the first
// is made.
class TPaddedTable {
 public:
  TPaddedTable() = default;
  // The columns say how cells are aligned.
  TPaddedTable(std::vector<TColumn> pColumns, std::string pSeparator);

  // One cell per column.
  void Measure(const std::vector<std::string>& pCells);
  // Makes a column narrower, but not below a least width, so that rows take at most so many columns in all.
  void LimitRowWidth(size_t pColumn, int pMaximumWidth);

  // A cell that is too wide is shortened.
  std::string Row(const std::vector<std::string>& pCells) const;
  // The line under the captions: "-" over the width of each column.
  std::string Underline() const;

 private:
  std::vector<TColumn> fColumns;
  std::vector<int> fWidths;
  std::string fSeparator;
};

// The caption of a column, with the unit where all values of the column share one that they do not name: "Size (MB)".
std::string CaptionWithUnit(std::u16string_view pCaption, TColumn pColumn, const TValueFormat& pFormat);

// The text cut to so many display columns, the last of them an ellipsis when something was cut.
std::string ShortenedToWidth(std::string_view pUtf8, int pWidth);

}  // namespace Vantrel::Exporting
