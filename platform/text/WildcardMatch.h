#pragma once

// Names against masks, by the system's call and by our own matcher.

#include <string_view>

namespace Vantrel {

// Whether a name matches a list of wildcard masks joined with ";" ("*.jpg;*.png"): "*" stands for any run, "?" for one
// character, letter case does not count, spaces count in name and mask. "*.*" alone matches every name; within a list,
// and in "*." or "a.*", the dot is a character like any other. An empty mask matches the empty name, but what follows
// the last ";" is no mask when it is empty. This is the shell's match with the flags for multiple masks and unstripped
// spaces; on Windows the system's own call. Allocates nothing for names and masks below 1,024 units. Any thread.
bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks);

// The same, but the blanks that a mask begins with do not count: " *.jpg; *.png". On Windows the system's own call.
bool MatchesWildcardsStripped(std::u16string_view pName, std::u16string_view pMasks);

// Our own matcher, behind the calls above where the system has none. It is compiled on both systems, so that it can be
// held against the system's. Allocates nothing; the work is at most name times masks. Any thread.
namespace OwnWildcards {

bool Matches(std::u16string_view pName, std::u16string_view pMasks);
bool MatchesStripped(std::u16string_view pName, std::u16string_view pMasks);

// For names and masks with every unit in upper case by UpcaseUnit: the letters are compared as they are, which saves
// the folding where one name meets many masks.
bool MatchesFolded(std::u16string_view pFoldedName, std::u16string_view pFoldedMasks);
bool MatchesFoldedStripped(std::u16string_view pFoldedName, std::u16string_view pFoldedMasks);

}  // namespace OwnWildcards

}  // namespace Vantrel
