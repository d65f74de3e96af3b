#pragma once

// Such a list as text for people and as lines for programs.

#include "export/text/DelimitedText.h"
#include "export/text/ListTables.h"
#include "export/walk/HierarchicalExport.h"

namespace Vantrel::Exporting {

// Write a list to an output. False when the output could not take it all; no further line is tried then.

// For people: title, captions, underline, and a row per line in columns of fixed width. Set apart by an empty line from
// what the output already holds.
bool WriteListAsText(const TListTable& pTable, const TValueFormat& pFormat, ILineOutput& pOutput);

// For programs: a line per row, the captions in the first when pWithHeader; no title. Numbers are not grouped where the
// thousands separator could be taken for that of the fields or of the decimals.
bool WriteListAsDelimited(const TListTable& pTable, const TValueFormat& pFormat, const TDelimitedFormat& pDelimited,
                          bool pWithHeader, ILineOutput& pOutput);
// The same as settings say that are in effect.
bool WriteListAsDelimited(const TListTable& pTable, const TMediaSettings& pSettings, ILineOutput& pOutput);

}  // namespace Vantrel::Exporting
