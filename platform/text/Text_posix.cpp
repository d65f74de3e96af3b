#include <unicode/uchar.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

// Turkish and Azeri map "I" to a lower case letter of their own. All other languages map ASCII to ASCII.
bool LanguageKeepsAscii() {
  static const bool keeps = [] {
    char language[ULOC_LANG_CAPACITY] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_getLanguage(uloc_getDefault(), language, sizeof language, &error);
    return U_FAILURE(error) || (std::strcmp(language, "tr") != 0 && std::strcmp(language, "az") != 0);
  }();
  return keeps;
}

// Windows' table holds only pairs that map back, so the micro sign does not become a Greek letter.
char16_t LookUpUpcase(char16_t pChar) {
  const auto lower = static_cast<UChar32>(pChar);
  const UChar32 upper = u_toupper(lower);
  return upper < 0x10000 && u_tolower(upper) == lower ? static_cast<char16_t>(upper) : pChar;
}

}  // namespace

std::u16string ToLowerLinguistic(std::u16string_view pText) {
  std::u16string result(pText);
  if (LanguageKeepsAscii() && std::all_of(pText.begin(), pText.end(), [](char16_t pChar) { return pChar < 0x80; })) {
    std::transform(pText.begin(), pText.end(), result.begin(), FoldAscii);
    return result;
  }
  // A letter may grow to three units. A second call handles the rare text that outgrows its own length.
  for (;;) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = u_strToLower(result.data(), static_cast<int32_t>(result.size()), pText.data(),
                                  static_cast<int32_t>(pText.size()), nullptr, &error);
    const bool tooShort = error == U_BUFFER_OVERFLOW_ERROR;
    if (!tooShort && U_FAILURE(error)) return std::u16string(pText);
    result.resize(static_cast<size_t>(length));
    if (!tooShort) return result;
  }
}

int CodePointWidth(char32_t pCode) {
  if (pCode < 0x300) return 1;
  const auto code = static_cast<UChar32>(pCode);
  const int type = u_charType(code);
  // Terminals draw the Hangul vowels and final consonants U+1160..U+11FF into the preceding syllable.
  if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR ||
      (pCode >= 0x1160 && pCode <= 0x11FF))
    return 0;
  const int width = u_getIntPropertyValue(code, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_FULLWIDTH || width == U_EA_WIDE ? 2 : 1;
}

char16_t UpcaseUnitBeyondAscii(char16_t pChar) {
  // Covers Latin, Greek, Cyrillic and Armenian letters. Higher characters are rare or have no case.
  static const auto table = [] {
    std::array<char16_t, 0x600> result{};
    for (size_t unit = 0; unit < result.size(); ++unit) result[unit] = LookUpUpcase(static_cast<char16_t>(unit));
    return result;
  }();
  if (pChar < table.size()) return table[pChar];
  const bool caseless = (pChar >= 0x2E00 && pChar < 0xA640) || (pChar >= 0xAC00 && pChar < 0xFB00);
  return caseless ? pChar : LookUpUpcase(pChar);
}

}  // namespace Vantrel
