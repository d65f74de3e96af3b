#pragma once

// The export settings of one kind of output, and their texts.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/columns/MetaData.h"

namespace Vantrel::Exporting {

// The kinds of output that have export settings of their own. The numbers are kept in option files.
enum class TMediaType : uint8_t { mtText = 2, mtCSV = 5, mtXML = 6 };

// Which nodes an export takes in, as a set of bits.
enum TIncludedObject : uint32_t {
  ioFolders = 1 << 0,     // folders, and with them the header line of the columns
  ioFileGroups = 1 << 1,  // the "[Files]" nodes
  ioFiles = 1 << 2,       // every single file
};
using TIncludedObjectTypes = uint32_t;
constexpr TIncludedObjectTypes kAllObjectTypes = ioFolders | ioFileGroups | ioFiles;

// How many levels below the top an export goes.
struct TRecursionLevel {
  static constexpr int32_t kUnlimited = 2147483647;
  int32_t fLevel = kUnlimited;
  bool fFullExpand = true;  // nobody has chosen a level: each use may put in a better default
  bool operator==(const TRecursionLevel&) const = default;
};

// The order of siblings; equal ones stay in the order of the tree: by size, the largest first, then by name.
struct TSortOrder {
  TColumn fColumn = TColumn::mdSize;
  bool fDescending = true;
  bool operator==(const TSortOrder&) const = default;
};

// The export settings of one kind of output.
struct TMediaSettings {
  bool fIncludeHeader = true;         // the captions of the columns and, in a report, the block above the table
  bool fIncludeExpandedOnly = false;  // only what a view shows expanded; without a view, no effect
  TIncludedObjectTypes fIncludedObjectTypes = ioFolders | ioFileGroups;
  bool fUsePlainByteValues = false;  // sizes as bare numbers of bytes; a unit chosen for this kind of output goes first
  bool fShowUnits = true;            // without it numbers stand alone
  bool fOverrideUnits = false;       // the two fields below count; otherwise the global options' unit does
  TSizeUnit fSizeUnit = TSizeUnit::suMB;
  bool fAutomaticUnit = true;
  std::u16string fSeparator = u"  ";
  std::u16string fAlternativeSeparator = u"\t";
  bool fUseAlternativeSeparator = false;
  TRecursionLevel fRecursionLevel;
  std::optional<TSortOrder> fSortOrder;  // none: the order of the tree
  std::vector<TColumn> fColumns;         // none: those of the exporter
  int64_t fSmallestFolder = 0;           // bytes; smaller folders and files are left out
  bool fByteOrderMark = false;           // at the beginning of a file
  bool fNeutralizeFormulas = false;      // names that a spreadsheet would take for a formula are made harmless

  const std::u16string& Separator() const { return fUseAlternativeSeparator ? fAlternativeSeparator : fSeparator; }
};

// What the settings are before anybody has changed them.
TMediaSettings DefaultMediaSettings(TMediaType pMedia);

// "size", "name,ascending", "lastchange,descending": a column's name and, where it is not the usual one, the direction;
// numbers and dates begin with the largest, texts with the first. False, and nothing changed, for anything else; an
// empty text stands for no order.
bool TryParseSortOrder(std::u16string_view pText, std::optional<TSortOrder>& pOrder);
std::u16string SortOrderText(const std::optional<TSortOrder>& pOrder);
// "name;size;files": column names. An empty text stands for none.
bool TryParseColumns(std::u16string_view pText, std::vector<TColumn>& pColumns);
std::u16string ColumnsText(const std::vector<TColumn>& pColumns);
// "TAB", in any letter case, stands for the tab character; one that holds a double quote or a line break is refused.
bool TryParseSeparator(std::u16string_view pText, std::u16string& pSeparator);
std::u16string SeparatorText(std::u16string_view pSeparator);

}  // namespace Vantrel::Exporting
