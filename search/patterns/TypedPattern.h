#pragma once

// Patterns as people type them on a command line: those that name a folder mean that folder.

#include <string_view>

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// As CreateCheckedPattern, but a path without wildcards means the folder, or the file, at the path, and all beneath it:
// "/data/cache" and "/data/cache/" become "/data/cache;/data/cache/*". A path that begins with "." is taken from the
// current folder; one such as "src/build" means folders so called, wherever they lie. EPatternError.
TRef<IPattern> CreateTypedPattern(std::u16string_view pText, TPatternType pDefaultType);

}  // namespace Vantrel::PatternMatching
