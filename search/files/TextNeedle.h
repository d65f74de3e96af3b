#pragma once

// Finds a text in raw bytes, in one encoding.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "search/files/ByteScan.h"

namespace Vantrel::Search {

enum class TTextEncoding : uint8_t { teUtf8, teUtf16LittleEndian, teUtf16BigEndian };

// A text as the bytes that stand for it. Immutable; any thread.
//
// Without regard to letter case, each letter also matches its upper and lower case, as file systems compare names. The
// forms of a letter may differ in length.
//
// The search looks for the two rarest bytes of the text at once and compares the whole text only where both are found.
// A bit that differs between the forms of a letter is left out of that comparison.
class TTextNeedle {
 public:
  // The text must not be empty. What UTF-8 does not decode, as Text.h has it, stands for its byte in UTF-8.
  TTextNeedle(std::u16string_view pText, TTextEncoding pEncoding, bool pCaseSensitive);

  // The first place where the whole text stands in the bytes; npos when there is none.
  size_t FindIn(std::string_view pBytes, size_t pFrom = 0) const;
  // Whether the whole text stands at this place.
  bool IsAt(std::string_view pBytes, size_t pPosition) const;
  // The most bytes that the text can take.
  size_t LongestMatch() const { return fLongest; }

  // A byte at a fixed distance from the start of every match.
  struct TAnchor {
    size_t fCharacter = 0;  // counted from the text's first one
    size_t fOffset = 0;
    TByteSet fBytes;
    int fFrequency = 0;
  };
  // The rarest first; at least one.
  const std::vector<TAnchor>& Anchors() const { return fAnchors; }

 private:
  // A character in all its forms. The first one is that of the text itself.
  using TForms = std::vector<std::string>;
  void AddCharacter(std::u16string_view pCharacter, TTextEncoding pEncoding, bool pCaseSensitive);
  void ChooseAnchors();
  static TAnchor AnchorAt(const TForms& pForms, size_t pByte);

  std::vector<TForms> fCharacters;
  std::string fOnlyForm;  // of the text, when it has a single one; else empty
  std::vector<TAnchor> fAnchors;
  TBytePair fPair;  // the two rarest ones; twice the same one in a text of one byte
  size_t fLongest = 0;
};

}  // namespace Vantrel::Search
