#pragma once

// Writes a list as text for people or as lines for programs.

#include <functional>

#include "export/text/DelimitedText.h"
#include "export/walk/HierarchicalExport.h"
#include "presentation/lists/List.h"

namespace Vantrel::Exporting {

// These functions write a list to an output. They return false when the output cannot take a line, and then try no
// further line.

// Writes a list for people: title, captions, underline, and one row per line in columns of fixed width. An empty line
// separates it from earlier output.
bool WriteListAsText(const Presentation::TList& pList, const TValueFormat& pFormat, ILineOutput& pOutput);

// Writes a list for programs: one row per line, without a title. With pWithHeader the first line holds the captions.
// Numbers are not grouped if the group separator could be taken for that of the fields or the decimals.
bool WriteListAsDelimited(const Presentation::TList& pList, const TValueFormat& pFormat,
                          const TDelimitedFormat& pDelimited, bool pWithHeader, ILineOutput& pOutput);
// The same, with the format from the effective settings.
bool WriteListAsDelimited(const Presentation::TList& pList, const TMediaSettings& pSettings, ILineOutput& pOutput);

// A list of millions of rows, of which only a part is made at a time. It is called to hand its parts to pTake, in their
// order, with the same title and columns; there is at least one part. It ends when pTake returns false, and returns
// whether all were taken.
using TTakeListPart = std::function<bool(const Presentation::TList& pPart)>;
using TListInParts = std::function<bool(const TTakeListPart& pTake)>;

// The same for such a list. Text goes through the parts twice, since the width of a column depends on all rows.
bool WriteListAsText(const TListInParts& pParts, const TValueFormat& pFormat, ILineOutput& pOutput);
bool WriteListAsDelimited(const TListInParts& pParts, const TMediaSettings& pSettings, ILineOutput& pOutput);

}  // namespace Vantrel::Exporting
