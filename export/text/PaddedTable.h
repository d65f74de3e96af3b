#pragma once

// Tables of fixed width for people: padding, shortening, captions with their unit.

#include <string>
#include <string_view>
#include <vector>

#include "model/columns/MetaData.h"

namespace Vantrel::Exporting {

// Makes a table of fixed width line by line. Cells are padded with blanks to the widest text of their column; numbers
// are aligned right. All texts are UTF-8 and safe to show. Widths are in terminal columns. Measure every row before
// making the first.
class TPaddedTable {
 public:
  TPaddedTable() = default;
  // pColumns tells how cells are aligned.
  TPaddedTable(std::vector<TColumn> pColumns, std::string pSeparator);

  // pCells has one cell per column.
  void Measure(const std::vector<std::string>& pCells);
  // Narrows a column so that rows take at most pMaximumWidth columns. The column keeps a minimum width.
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

// The caption of a column. It includes the unit if all values share one and do not show it: "Size (MB)".
std::string CaptionWithUnit(std::u16string_view pCaption, TColumn pColumn, const TValueFormat& pFormat);

// Cuts the text to pWidth display columns. If something was cut, the last column is an ellipsis.
std::string ShortenedToWidth(std::string_view pUtf8, int pWidth);

}  // namespace Vantrel::Exporting
