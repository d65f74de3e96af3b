#pragma once

// Patterns as users give them: from a file or a switch, with what is wrong with them.

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// Reads a list, one pattern per line, empty lines skipped, from a text file: UTF-8, or UTF-16 with a byte-order mark.
// The paths to be matched are the system's. All or nothing: EPatternError names the file and, where one is to blame,
// the line and the pattern. A pattern that would match nothing because something is wrong with it is refused as well.
TRef<IPatterns> CreatePatternsFromFile(const std::u16string& pPath, TPatternType pDefaultType);

// One pattern as users type it, for roots of this system, refused as above; the message names the pattern.
TRef<IPattern> CreateCheckedPattern(std::u16string_view pText, TPatternType pDefaultType);

}  // namespace Vantrel::PatternMatching
