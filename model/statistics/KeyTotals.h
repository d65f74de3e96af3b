#pragma once

// Sums sizes by key for one folder after the other, and finds the keys of extensions through a cache.

#include <boost/unordered/unordered_flat_map.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/statistics/PackedSizeTable.h"

namespace Vantrel {

// Sums up sizes by key for one folder after the other. The keys are small integers, and few, so a table indexed by key
// finds the sum. Once it has grown, adding a file allocates nothing. Used by one thread.
class TKeyTotals {
 public:
  void Add(TKeyId pKey, const TBasicSizeValues& pValues);
  // The sums by ascending key. Valid until the next change.
  std::span<const TKeyedSizeValues> Sorted();
  void Clear();

 private:
  std::vector<uint32_t> fPositions;  // by key: 1 + index into the entries, 0 for none
  std::vector<TKeyedSizeValues> fEntries;
};

// Finds the key of a file name's extension through a cache, since interning takes a lock and folds letters. Used by one
// thread.
class TExtensionKeys {
 public:
  TKeyId KeyOfName(std::u16string_view pFileName);

 private:
  struct TTextHash {
    using is_transparent = void;  // look-up by view, without making a string
    size_t operator()(std::u16string_view pText) const { return std::hash<std::u16string_view>()(pText); }
  };
  boost::unordered_flat_map<std::u16string, TKeyId, TTextHash, std::equal_to<>> fKeys;
};

}  // namespace Vantrel
