#pragma once

// Single characters: decoding, width, upper case as file systems compare.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// Single characters, for those who walk a text one by one. Text.h serves everyone else.

struct TDecoded {
  char32_t fCode = 0;
  uint32_t fLength = 0;  // in bytes; 0 when the first byte begins no well-formed sequence
};

// The first character of UTF-8 text that is not empty. Overlong forms, surrogates and codes above U+10FFFF do not
// decode.
TDecoded DecodeUtf8(std::string_view pBytes);

// The character in one or two units; the code is at most U+10FFFF.
inline void AppendCodePoint(std::u16string& pTarget, char32_t pCode) {
  if (pCode >= 0x10000) {
    pTarget += static_cast<char16_t>(0xD7C0 + (pCode >> 10));
    pTarget += static_cast<char16_t>(0xDC00 + (pCode & 0x3FF));
  } else {
    pTarget += static_cast<char16_t>(pCode);
  }
}

// The two halves of a character beyond U+FFFF. Alone, neither is a character.
constexpr bool IsLeadSurrogate(char16_t pUnit) {
  return (pUnit & 0xFC00) == 0xD800;
}
constexpr bool IsTrailSurrogate(char16_t pUnit) {
  return (pUnit & 0xFC00) == 0xDC00;
}

// Terminal columns: 0, 1 or 2.
int CodePointWidth(char32_t pCode);

// Serves UpcaseUnit.
char16_t UpcaseUnitBeyondAscii(char16_t pChar);

// Upper case of one UTF-16 unit as Windows' file systems compare names: one unit to one unit, whatever the language.
// Runs for every unit of every name that meets a pattern, so that ASCII is inline.
inline char16_t UpcaseUnit(char16_t pChar) {
  if (pChar < 0x80) return pChar >= u'a' && pChar <= u'z' ? static_cast<char16_t>(pChar - (u'a' - u'A')) : pChar;
  return UpcaseUnitBeyondAscii(pChar);
}

}  // namespace Vantrel
