#pragma once

// Masks prepared for matching; plain comparisons and look-ups where these give the general match's answers.

#include <cstdint>
#include <memory>
#include <string_view>

#include "search/patterns/MatchText.h"

namespace Vantrel::PatternMatching {

// How a matcher decides.
enum class TWildcardShape : uint8_t {
  wsAll,         // "*": without a look
  wsPlain,       // "*part*", "begin*", "*end", "begin*end", a text without wildcards: by comparing
  wsExtensions,  // "*.jpg;*.png": by one look-up
  wsMixed,       // a list of these, perhaps with others among them
  wsGeneral      // all else: by the general match
};

// A list of wildcard masks, prepared once and matched often. Any thread; a text belongs to one.
class IWildcardMatcher {
 public:
  virtual ~IWildcardMatcher() = default;
  // What MatchesWildcards says of the text and the masks. Allocates nothing.
  virtual bool Matches(TMatchText& pText) const = 0;
  virtual TWildcardShape Shape() const = 0;
};

// The cheapest matcher that gives the same answers as MatchesWildcards(…, pMasks): plain comparisons for "*part*",
// "begin*", "*end" and texts without wildcards, one look-up for lists of extensions, the general matcher for all else.
std::unique_ptr<const IWildcardMatcher> CreateWildcardMatcher(std::u16string_view pMasks);

// The general matcher whatever the masks are: our own on folded texts; on Windows the system's.
std::unique_ptr<const IWildcardMatcher> CreateGeneralMatcher(std::u16string_view pMasks);

}  // namespace Vantrel::PatternMatching
