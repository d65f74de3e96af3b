#pragma once

// The export settings of each kind of output, and their parsing from text.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/columns/MetaData.h"

namespace Vantrel::Exporting {

// The kinds of output that have their own export settings. Option files hold these numbers.
enum class TMediaType : uint8_t { mtText = 2, mtCSV = 5, mtXML = 6 };

// The nodes that an export includes, as bits.
enum TIncludedObject : uint32_t {
  ioFolders = 1 << 0,     // folders, and the header line of the columns
  ioFileGroups = 1 << 1,  // the "[Files]" nodes
  ioFiles = 1 << 2,       // every single file
};
using TIncludedObjectTypes = uint32_t;
constexpr TIncludedObjectTypes kAllObjectTypes = ioFolders | ioFileGroups | ioFiles;

// How many levels below the top folder an export goes.
struct TRecursionLevel {
  static constexpr int32_t kUnlimited = 2147483647;
  int32_t fLevel = kUnlimited;
  bool fFullExpand = true;  // no level was chosen: each use may apply a better default
  bool operator==(const TRecursionLevel&) const = default;
};

// The order of siblings. Equal ones keep the order of the tree: by size, the largest first, then by name.
struct TSortOrder {
  TColumn fColumn = TColumn::mdSize;
  bool fDescending = true;
  bool operator==(const TSortOrder&) const = default;
};

// The export settings of one kind of output.
struct TMediaSettings {
  bool fIncludeHeader = true;         // the captions of the columns and, in a report, the block above the table
  bool fIncludeExpandedOnly = false;  // only what a view shows expanded; no effect without a view
  TIncludedObjectTypes fIncludedObjectTypes = ioFolders | ioFileGroups;
  // sizes as bare numbers of bytes; a unit set for this kind of output takes precedence
  bool fUsePlainByteValues = false;
  bool fShowUnits = true;       // else numbers have no unit
  bool fOverrideUnits = false;  // use the two fields below instead of the global options' unit
  TSizeUnit fSizeUnit = TSizeUnit::suMB;
  bool fAutomaticUnit = true;
  bool fDecimalUnits = false;  // units are powers of 1,000, not of 1,024
  std::u16string fSeparator = u"  ";
  std::u16string fAlternativeSeparator = u"\t";
  bool fUseAlternativeSeparator = false;
  TRecursionLevel fRecursionLevel;
  std::optional<TSortOrder> fSortOrder;  // none: the order of the tree
  std::vector<TColumn> fColumns;         // none: the exporter's own columns
  int64_t fSmallestFolder = 0;           // bytes; smaller folders and files are left out
  double fSmallestShare = 0;             // the same as a share of the whole, from 0 to 1
  std::optional<int64_t> fMostRows;      // of what lies in one folder; 0: all; none: each use has a default
  bool fShowUnchanged = false;           // after a comparison, not only what changed
  bool fByteOrderMark = false;           // at the beginning of a file
  bool fNeutralizeFormulas = false;      // make names harmless that a spreadsheet would take for a formula

  const std::u16string& Separator() const { return fUseAlternativeSeparator ? fAlternativeSeparator : fSeparator; }
};

// The settings before any change by the user.
TMediaSettings DefaultMediaSettings(TMediaType pMedia);

// Parses "size", "name,ascending", "lastchange,descending": a column's name and an optional direction. By default
// numbers and dates begin with the largest, texts with the first. An empty text means no order. For anything else
// returns false and changes nothing.
bool TryParseSortOrder(std::u16string_view pText, std::optional<TSortOrder>& pOrder);
std::u16string SortOrderText(const std::optional<TSortOrder>& pOrder);
// Parses column names: "name;size;files" or "name,size,files". An empty text means no columns.
bool TryParseColumns(std::u16string_view pText, std::vector<TColumn>& pColumns);
std::u16string ColumnsText(const std::vector<TColumn>& pColumns);
// Parses a share of the whole: "1%", "0.5 %". False when it is none from 0 to 100.
bool TryParseShare(std::u16string_view pText, double& pShare);
std::u16string ShareText(const double& pShare);
// Parses a number of rows; an empty text means none.
bool TryParseRows(std::u16string_view pText, std::optional<int64_t>& pRows);
std::u16string RowsText(const std::optional<int64_t>& pRows);
// Parses a separator. "TAB", in any letter case, is the tab character. A double quote or a line break is refused.
bool TryParseSeparator(std::u16string_view pText, std::u16string& pSeparator);
std::u16string SeparatorText(std::u16string_view pSeparator);

}  // namespace Vantrel::Exporting
