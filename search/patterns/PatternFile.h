#pragma once

// Patterns as users give them: from a file or a switch, with what is wrong with them.

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// One pattern in the text form, for roots of this system. EPatternError, with a message that names the pattern, for one
// that cannot be taken or would match nothing because something is wrong with it.
TRef<IPattern> CreateCheckedPattern(std::u16string_view pText, TPatternType pDefaultType);

// Reads a list, one pattern per line, empty lines skipped, from a text file: UTF-8, or UTF-16 with a byte-order mark.
// The paths to be matched are the system's. All or nothing: EPatternError names the file and, where one is to blame,
// the line and the pattern. pCreate makes a pattern of a line.
TRef<IPatterns> CreatePatternsFromFile(const std::u16string& pPath, TPatternType pDefaultType,
                                       TRef<IPattern> (*pCreate)(std::u16string_view,
                                                                 TPatternType) = CreateCheckedPattern);

}  // namespace Vantrel::PatternMatching
