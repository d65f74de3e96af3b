#pragma once

// Finds a text in raw bytes, in UTF-8 and in UTF-16 of both byte orders at once.

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "search/files/ByteScan.h"
#include "search/files/TextNeedle.h"

namespace Vantrel::Search {

// Immutable; any thread.
//
// An ASCII letter is the same byte in all encodings. Only the distance between two of them differs: it is about twice
// as long in UTF-16. So one pass looks for the two rarest ASCII letters of the text at both distances, and compares the
// whole text in each encoding only where it finds them. A text with fewer than two such letters takes a pass for each
// encoding.
class TAnyEncodingNeedle {
 public:
  // As TTextNeedle has it.
  TAnyEncodingNeedle(std::u16string_view pText, bool pCaseSensitive);

  bool IsIn(std::string_view pBytes) const;
  // The most bytes that the text can take.
  size_t LongestMatch() const { return fLongest; }

 private:
  struct TEncoded {
    TTextNeedle fNeedle;
    size_t fOffset = 0;  // of the first byte of the pair
  };

  void ChoosePair();

  std::vector<TEncoded> fEncoded;  // UTF-8 first
  size_t fLongest = 0;
  std::optional<TBytePair> fPair;
};

}  // namespace Vantrel::Search
