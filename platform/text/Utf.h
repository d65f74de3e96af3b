#pragma once

// Single characters: decoding, width, and upper case as file systems compare names.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// Functions on single characters, for code that walks a text. Text.h has the functions on whole texts.

struct TDecoded {
  char32_t fCode = 0;
  uint32_t fLength = 0;  // in bytes; 0 when the text does not begin with a well-formed sequence
};

// Decodes the first character of UTF-8 text, which must not be empty. Overlong forms, surrogates and codes above
// U+10FFFF do not decode.
TDecoded DecodeUtf8(std::string_view pBytes);

// Appends the character as one or two units. The code is at most U+10FFFF.
inline void AppendCodePoint(std::u16string& pTarget, char32_t pCode) {
  if (pCode >= 0x10000) {
    pTarget += static_cast<char16_t>(0xD7C0 + (pCode >> 10));
    pTarget += static_cast<char16_t>(0xDC00 + (pCode & 0x3FF));
  } else {
    pTarget += static_cast<char16_t>(pCode);
  }
}

// A character above U+FFFF is a lead and a trail surrogate. Neither is a character alone.
constexpr bool IsLeadSurrogate(char16_t pUnit) {
  return (pUnit & 0xFC00) == 0xD800;
}
constexpr bool IsTrailSurrogate(char16_t pUnit) {
  return (pUnit & 0xFC00) == 0xDC00;
}

// Terminal columns: 0, 1 or 2.
int CodePointWidth(char32_t pCode);

// Used by UpcaseUnit.
char16_t UpcaseUnitBeyondAscii(char16_t pChar);

// Upper case of one UTF-16 unit as Windows' file systems compare names: one unit becomes one unit, whatever the
// language. Runs for every unit of every name compared with a pattern, so the ASCII case is inline.
inline char16_t UpcaseUnit(char16_t pChar) {
  if (pChar < 0x80) return pChar >= u'a' && pChar <= u'z' ? static_cast<char16_t>(pChar - (u'a' - u'A')) : pChar;
  return UpcaseUnitBeyondAscii(pChar);
}

}  // namespace Vantrel
