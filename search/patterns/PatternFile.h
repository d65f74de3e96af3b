#pragma once

// Reads patterns that users give in a file or by a switch, and reports what is wrong with them.

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// Makes a pattern from its text form, for roots of this system. EPatternError, with a message that names the pattern,
// if it is not accepted or a mistake in it keeps it from matching anything.
TRef<IPattern> CreateCheckedPattern(std::u16string_view pText, TPatternType pDefaultType);

// Reads a list from a text file with one pattern per line. Empty lines are skipped. The file is UTF-8, or UTF-16 with a
// byte-order mark. Patterns match paths of this system. If one pattern fails, no list is returned. The EPatternError
// names the file and, if one line is wrong, the line and the pattern. pCreate makes a pattern from a line.
TRef<IPatterns> CreateFromFile(const std::u16string& pPath, TPatternType pDefaultType,
                               TRef<IPattern> (*pCreate)(std::u16string_view, TPatternType) = CreateCheckedPattern);

}  // namespace Vantrel::PatternMatching
