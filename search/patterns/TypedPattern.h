#pragma once

// Patterns as users type them on a command line. A path without wildcards means the folder or file there.

#include <string_view>

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// Works like CreateCheckedPattern, but a path without wildcards means the folder or file at the path and everything
// beneath it. "/data/cache" and "/data/cache/" become "/data/cache;/data/cache/*". A path that begins with "." starts
// at the current folder. A path such as "src/build" means all folders of that name, wherever they are. EPatternError.
TRef<IPattern> CreateTypedPattern(std::u16string_view pText, TPatternType pDefaultType);

}  // namespace Vantrel::PatternMatching
