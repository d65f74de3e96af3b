#pragma once

// What a search for duplicates looks for, and which properties are compared.

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Vantrel::Search {

enum class TDuplicatesSearchMode : uint8_t { DuplicateFiles, DuplicateFolders, UniqueFiles };

// The properties that files can share. The last three are their contents, by one checksum or another.
enum class TDuplicatesCompareType : uint8_t { ctName, ctSize, ctLastChange, ctFastChecksum, ctMD5, ctSHA256 };
using TDuplicatesCompareTypes = std::vector<TDuplicatesCompareType>;

inline bool ComparesBy(const TDuplicatesCompareTypes& pTypes, TDuplicatesCompareType pType) {
  return std::find(pTypes.begin(), pTypes.end(), pType) != pTypes.end();
}
inline bool ComparesContents(const TDuplicatesCompareTypes& pTypes) {
  return std::any_of(pTypes.begin(), pTypes.end(),
                     [](TDuplicatesCompareType pType) { return pType >= TDuplicatesCompareType::ctFastChecksum; });
}

}  // namespace Vantrel::Search
