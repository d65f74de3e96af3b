#pragma once

// Finds a text in raw bytes, in one encoding.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel::Search {

enum class TTextEncoding : uint8_t { teUtf8, teUtf16LittleEndian, teUtf16BigEndian };

// A text as the bytes that stand for it. Immutable; any thread.
//
// Without regard to letter case, each letter also matches its upper and lower case, as file systems compare names. The
// forms of a letter may differ in length.
//
// The search looks for the two rarest bytes of the text at once, 16 positions at a time, and compares the whole text
// only where both are found. A bit that differs between the forms of a letter is left out of that comparison.
class TTextNeedle {
 public:
  // The text must not be empty. What UTF-8 does not decode, as Text.h has it, stands for its byte in UTF-8.
  TTextNeedle(std::u16string_view pText, TTextEncoding pEncoding, bool pCaseSensitive);

  // The first place where the whole text stands in the bytes; npos when there is none.
  size_t FindIn(std::string_view pBytes, size_t pFrom = 0) const;
  // The most bytes that the text can take.
  size_t LongestMatch() const { return fLongest; }
  // Whether each form of the text holds a byte 0, which texts in UTF-8 do not.
  bool HasZero() const { return fHasZero; }

 private:
  // A character in all its forms. The first one is that of the text itself.
  using TForms = std::vector<std::string>;
  // A byte at a fixed distance from the start of every match. It is found where (byte | fMask) == fValue.
  struct TAnchor {
    size_t fOffset = 0;
    uint8_t fMask = 0;
    uint8_t fValue = 0;
    int fFrequency = 0;
  };

  void AddCharacter(std::u16string_view pCharacter, TTextEncoding pEncoding, bool pCaseSensitive);
  void ChooseAnchors();
  static TAnchor AnchorAt(const TForms& pForms, size_t pByte, size_t pOffset);
  bool IsAt(std::string_view pBytes, size_t pPosition) const;
  size_t FindSlowly(std::string_view pBytes, size_t pFrom) const;

  std::vector<TForms> fCharacters;
  std::string fOnlyForm;  // of the text, when it has a single one; else empty
  TAnchor fRarest;
  TAnchor fSecond;  // the same as the rarest one in a text of one byte
  size_t fLongest = 0;
  bool fHasZero = true;
};

}  // namespace Vantrel::Search
