#pragma once

// Matches names against wildcard masks, by the system's call and by the program's own matcher.

#include <string_view>

namespace Vantrel {

// Whether a name matches a list of wildcard masks joined with ";" ("*.jpg;*.png"). "*" stands for any run, "?" for one
// character. Letter case is ignored; spaces count in name and mask. "*.*" alone matches every name. Within a list, and
// in "*." or "a.*", the dot is an ordinary character. An empty mask matches the empty name, but an empty text after the
// last ";" is no mask. This is the shell's match with the flags for multiple masks and unstripped spaces; on Windows it
// is the system's own call. Allocates nothing for names and masks below 1,024 units. Any thread.
bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks);

// The same, but blanks at the beginning of a mask are ignored: " *.jpg; *.png". On Windows the system's own call.
bool MatchesWildcardsStripped(std::u16string_view pName, std::u16string_view pMasks);

// The program's own matcher, used by the calls above where the system has none. Both systems compile it, so tests can
// compare it with the system's. Allocates nothing. The work is at most name times masks. Any thread.
namespace OwnWildcards {

bool Matches(std::u16string_view pName, std::u16string_view pMasks);
bool MatchesStripped(std::u16string_view pName, std::u16string_view pMasks);

// For names and masks whose units are already in upper case by UpcaseUnit. Units are compared directly, which saves the
// folding when one name is matched against many masks.
bool MatchesFolded(std::u16string_view pFoldedName, std::u16string_view pFoldedMasks);
bool MatchesFoldedStripped(std::u16string_view pFoldedName, std::u16string_view pFoldedMasks);

}  // namespace OwnWildcards

}  // namespace Vantrel
