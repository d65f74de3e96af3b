#pragma once

#include <string_view>

namespace Kiv {

// Whether a name matches a list of wildcard masks joined with ";" ("*.jpg;*.png"): "*" stands for any run, "?" for one
// character, letter case does not count, spaces count in name and mask. "*.*" alone matches every name; within a list,
// and in "*." or "a.*", the dot is a character like any other. This is the shell's match with the flags for multiple
// masks and unstripped spaces; on Windows the system's own call. Any thread.
bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks);

}  // namespace Kiv
