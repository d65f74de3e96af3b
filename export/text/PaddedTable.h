#pragma once

// Tables of fixed width for people: padding, shortening, captions with their unit.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export/walk/HierarchicalExport.h"
#include "model/columns/MetaData.h"

namespace Vantrel::Exporting {

// The colours of texts, as terminals have them in their own shades.
enum class TInk : uint8_t { ikNone, ikTitle, ikFaint, ikFolder, ikGood, ikWarning, ikBad };
// The text in a colour, where the output has colours.
std::string Painted(std::string_view pUtf8, TInk pInk, const TLineLook& pLook);

// A bar as wide as pWidth columns for 1, without blanks at its end. What is not 0 has a bar.
std::string BarText(double pShare, int pWidth, int pPartsOfBlock);

// What a row shows beside its cells.
struct TRowLook {
  TInk fName = TInk::ikNone;
  std::optional<double> fShare{};  // for the bar, and the colour of large shares
  bool fIsWhole = false;           // its share says nothing
};

// Makes a table of fixed width line by line. Cells are padded with blanks to the widest text of their column; numbers
// are aligned right. All texts are UTF-8 and safe to show. Widths are in terminal columns. Measure every row, then fit
// the table into the output's lines, before making the first.
//
// Where the output shows bars, the first column of shares has them, in the room that the other columns leave.
// If even the longest one took less than a column, there are none.
class TPaddedTable {
 public:
  TPaddedTable() = default;
  // pColumns tells how cells are aligned.
  TPaddedTable(std::vector<TColumn> pColumns, std::string pSeparator);

  // The column that has bars where the output shows them.
  std::optional<TColumn> ShareColumn() const { return fShares ? std::optional(fColumns[*fShares]) : std::nullopt; }
  // pCells has one cell per column.
  void Measure(const std::vector<std::string>& pCells, std::optional<double> pShare = {});
  void MeasureCaptions(const std::vector<std::string>& pCells);
  // Narrows the table to the width of a line. Columns leave first, if they may, those that are missed least before
  // others. The first column stays, and so do the path, the first size, shares and changes. Then, on a terminal, the
  // names are shortened, but not below 12 columns. A name counts with at most half of a line when columns leave.
  void Fit(TLineWidth pLine, const TLineLook& pLook, bool pColumnsMayLeave);

  // A cell that is too wide is shortened.
  std::string Row(const std::vector<std::string>& pCells, const TRowLook& pRow = {}) const;
  std::string Captions(const std::vector<std::string>& pCells) const;
  // The line under the captions: "-" over the width of each column, no longer than a line.
  std::string Underline() const;

 private:
  int RowWidth() const;
  int ExcessOver(int pWidth) const;
  size_t NameColumn() const;
  bool IsNeeded(size_t pColumn) const;
  void DropColumn(TColumn pColumn, int pWidth);
  void MakeRoomForBars(int pWidth);
  std::string Cell(const std::string& pText, size_t pColumn, const TRowLook& pRow) const;

  std::vector<TColumn> fColumns;
  std::vector<int> fWidths;  // kHidden for a column that has left
  std::string fSeparator;
  int fLineColumns = 0;  // of a line, 0: any number; rows then end with blanks
  TLineLook fLook;
  std::optional<size_t> fShares;  // the first column of shares
  int fSharesWidth = 0;           // of its texts without the caption
  double fLargestShare = 0;
  int fBarWidth = 0;  // 0: no bars
};

// The caption of a column. It includes the unit if all values share one and do not show it: "Size (MB)".
std::string CaptionWithUnit(std::u16string_view pCaption, TColumn pColumn, const TValueFormat& pFormat);

// Cuts the text to pWidth display columns. If something was cut, the last column is an ellipsis.
std::string ShortenedToWidth(std::string_view pUtf8, int pWidth);
// The same for a path, which is cut in its middle, so that the name at its end stays.
std::string PathShortenedToWidth(std::string_view pUtf8, int pWidth);

}  // namespace Vantrel::Exporting
