#pragma once

// The subjects by which options are grouped for people.

#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"

namespace Vantrel {

// The subject of an option: "Scan", "Reports", "Mail".
std::string_view SubjectOf(const TOptionInfo& pOption);
// All subjects, in the order of their options.
std::vector<std::string_view> OptionSubjects();

}  // namespace Vantrel
