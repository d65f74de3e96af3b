#pragma once

// What a condition looks at, and the keyword for it.

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "model/columns/MetaData.h"
#include "search/query/FileFacts.h"

namespace Vantrel::Search {

// A column of the catalogue, or a property that stands inside a file.
using TValueTarget = std::variant<TColumn, TFileProperty>;

// The keyword under which the query language knows the target, "size:" or "mdata:Title:".
std::u16string KeywordOf(const TValueTarget& pTarget);

}  // namespace Vantrel::Search
