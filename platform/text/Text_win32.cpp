#include <algorithm>
#include <iterator>

#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

extern "C" NTSYSAPI WCHAR NTAPI RtlUpcaseUnicodeChar(WCHAR);

namespace Vantrel {

using namespace Win32;

namespace {

// "I" is the only ASCII letter for which some languages have their own rule.
bool LanguageKeepsAscii() {
  static const bool keeps = [] {
    wchar_t lower = 0;
    return LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_LOWERCASE | LCMAP_LINGUISTIC_CASING, L"I", 1, &lower, 1,
                         nullptr, nullptr, 0) == 1 &&
           lower == L'i';
  }();
  return keeps;
}

struct TRange {
  char16_t fFirst;
  char16_t fLast;
};

// East Asian wide and fullwidth blocks of the basic plane. Single wide symbols outside these blocks count as narrow.
constexpr TRange kWide[] = {{0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3041, 0x33FF}, {0x3400, 0x4DBF},
                            {0x4E00, 0xA4CF}, {0xA960, 0xA97F}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},
                            {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}};

bool IsZeroWidth(char16_t pChar) {
  if ((pChar >= 0x200B && pChar <= 0x200F) || (pChar >= 0xFE00 && pChar <= 0xFE0F) || pChar == 0xFEFF ||
      (pChar >= 0x1160 && pChar <= 0x11FF) || (pChar >= 0x300 && pChar <= 0x36F))
    return true;
  const wchar_t text = pChar;
  WORD type = 0;
  return GetStringTypeW(CT_CTYPE3, &text, 1, &type) && (type & C3_NONSPACING) != 0 && (type & C3_ALPHA) == 0;
}

}  // namespace

std::u16string ToLowerLinguistic(std::u16string_view pText) {
  std::u16string result(pText);
  if (pText.empty()) return result;
  if (LanguageKeepsAscii() && std::all_of(pText.begin(), pText.end(), [](char16_t pChar) { return pChar < 0x80; })) {
    std::transform(pText.begin(), pText.end(), result.begin(), FoldAscii);
    return result;
  }
  const int length = static_cast<int>(pText.size());  // the mapping never changes the number of units
  LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_LOWERCASE | LCMAP_LINGUISTIC_CASING, Wide(pText.data()), length,
                reinterpret_cast<wchar_t*>(result.data()), length, nullptr, nullptr, 0);
  return result;
}

int CodePointWidth(char32_t pCode) {
  if (pCode < 0x300) return 1;
  if (pCode >= 0x10000) {
    const bool wide = (pCode >= 0x1F300 && pCode <= 0x1F64F) || (pCode >= 0x1F680 && pCode <= 0x1F6FF) ||
                      (pCode >= 0x1F900 && pCode <= 0x1FAFF) || (pCode >= 0x20000 && pCode <= 0x3FFFD);
    return wide ? 2 : 1;
  }
  const auto code = static_cast<char16_t>(pCode);
  if (IsZeroWidth(code)) return 0;
  return std::any_of(std::begin(kWide), std::end(kWide),
                     [&](const TRange& pRange) { return code >= pRange.fFirst && code <= pRange.fLast; })
             ? 2
             : 1;
}

char16_t UpcaseUnitBeyondAscii(char16_t pChar) {
  return static_cast<char16_t>(RtlUpcaseUnicodeChar(static_cast<WCHAR>(pChar)));
}

}  // namespace Vantrel
