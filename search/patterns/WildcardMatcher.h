#pragma once

// Wildcard masks prepared for matching. Plain comparisons and look-ups replace the general match if they give its
// answers.

#include <cstdint>
#include <memory>
#include <string_view>

#include "search/patterns/MatchText.h"

namespace Vantrel::PatternMatching {

// How a matcher decides.
enum class TWildcardShape : uint8_t {
  wsAll,         // "*": matches without reading the text
  wsPlain,       // "*part*", "begin*", "*end", "begin*end", or no wildcards: by comparing
  wsExtensions,  // "*.jpg;*.png": by one look-up
  wsMixed,       // a list of these, perhaps with other masks
  wsGeneral      // everything else: by the general match
};

// A list of wildcard masks, prepared once and matched often. Any thread may use the matcher, but a text belongs to one
// thread.
class IWildcardMatcher {
 public:
  virtual ~IWildcardMatcher() = default;
  // The same answer as MatchesWildcards gives for the text and the masks. Allocates nothing.
  virtual bool Matches(TMatchText& pText) const = 0;
  virtual TWildcardShape Shape() const = 0;
};

// Whether the text holds "*" or "?".
bool HasWildcards(std::u16string_view pText);

// The cheapest matcher that answers like MatchesWildcards(…, pMasks). Plain comparisons serve "*part*", "begin*",
// "*end" and texts without wildcards. One look-up serves lists of extensions. The general matcher serves everything
// else.
std::unique_ptr<const IWildcardMatcher> CreateWildcardMatcher(std::u16string_view pMasks);

// The general matcher for any masks. It is our own on folded texts; on Windows it is the system's.
std::unique_ptr<const IWildcardMatcher> CreateGeneralMatcher(std::u16string_view pMasks);

}  // namespace Vantrel::PatternMatching
