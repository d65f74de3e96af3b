#include "search/patterns/Patterns.h"

#include <algorithm>

#include "platform/text/WildcardMatch.h"

namespace Vantrel::PatternMatching {

void TCustomPatterns::AssignFromString(std::u16string_view pText) {
  fItems.clear();
  while (!pText.empty()) {
    const size_t end = std::min(pText.find(u'\t'), pText.size());
    if (end > 0) fItems.emplace_back(pText.substr(0, end));
    pText.remove_prefix(std::min(end + 1, pText.size()));
  }
  Changed();
}

std::u16string TCustomPatterns::ToString() const {
  std::u16string text;
  for (const std::u16string& item : fItems) {
    if (!text.empty()) text += u'\t';
    text += item;
  }
  return text;
}

void TCustomPatterns::Assign(const TCustomPatterns& pSource) {
  fItems = pSource.fItems;
  Changed();
}

void TCustomPatterns::AssignWithoutUnchecked(const TCustomPatterns& pSource) {
  fItems = pSource.fItems;
  std::erase_if(fItems, PatternIsUnchecked);
  Changed();
}

void TPatterns::Changed() {
  fJoined.clear();
  for (const std::u16string& item : Items()) {
    if (PatternIsUnchecked(item)) continue;
    if (!fJoined.empty()) fJoined += u';';
    fJoined += item;
  }
}

bool TPatterns::Matches(std::u16string_view pName) const {
  return fMatchAll || MatchesWildcardsStripped(pName, fJoined);
}

std::u16string TPatterns::GetMatchingPattern(std::u16string_view pName) const {
  const auto found = std::find_if(Items().begin(), Items().end(), [&](const std::u16string& pItem) {
    return !PatternIsUnchecked(pItem) && MatchesWildcardsStripped(pName, pItem);
  });
  return found == Items().end() ? std::u16string() : *found;
}

}  // namespace Vantrel::PatternMatching
