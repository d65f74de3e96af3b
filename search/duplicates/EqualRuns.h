#pragma once

// Finds the entries of a list that share their keys.

#include <algorithm>
#include <span>
#include <vector>

namespace Vantrel::Search {

// Sorts the entries by their keys and visits all entries that share theirs with at least one other, those of one key at
// a time.
template <class TEntry, class TKeysOf, class TVisit>
void ForEachEqualRun(std::vector<TEntry>& pEntries, const TKeysOf& pKeysOf, const TVisit& pVisit) {
  std::sort(pEntries.begin(), pEntries.end(),
            [&](const TEntry& pA, const TEntry& pB) { return pKeysOf(pA) < pKeysOf(pB); });
  for (size_t begin = 0, end = 0; begin < pEntries.size(); begin = end) {
    while (end < pEntries.size() && pKeysOf(pEntries[end]) == pKeysOf(pEntries[begin])) ++end;
    if (end - begin > 1) pVisit(std::span<TEntry>(pEntries).subspan(begin, end - begin));
  }
}

}  // namespace Vantrel::Search
