#include "platform/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

// Long enough for every Linux file name, so that a name is appended in one piece.
constexpr size_t kChunk = 256;

// Widens eight characters. False, with the target undefined, when one of them is not ASCII.
bool WidenEightAscii(const char* pSource, char16_t* pTarget) {
  uint64_t word;
  std::memcpy(&word, pSource, sizeof(word));
  if ((word & 0x8080808080808080u) != 0) return false;
  for (size_t i = 0; i < sizeof(word); ++i) pTarget[i] = static_cast<unsigned char>(pSource[i]);
  return true;
}

// Widens ASCII from the start of the text, a machine word at a time. Stops at the first other byte or after kChunk.
size_t WidenAscii(std::string_view pBytes, char16_t* pTarget) {
  const size_t length = std::min(pBytes.size(), kChunk);
  const char* source = pBytes.data();
  size_t at = 0;
  while (at + 8 <= length && WidenEightAscii(source + at, pTarget + at)) at += 8;
  // The rest of an ASCII name is widened in one more word, which overlaps the word before it.
  if (at < length && at + 8 > length && length >= 8 && WidenEightAscii(source + length - 8, pTarget + length - 8))
    return length;
  for (; at < length && static_cast<unsigned char>(source[at]) < 0x80; ++at)
    pTarget[at] = static_cast<unsigned char>(source[at]);
  return at;
}

// pUndecodable returns the unit for a byte that is no part of a UTF-8 sequence.
template <class TUndecodable>
void AppendDecoded(std::u16string& pTarget, std::string_view pBytes, TUndecodable pUndecodable) {
  char16_t buffer[kChunk];
  while (!pBytes.empty()) {
    size_t widened = WidenAscii(pBytes, buffer);
    pTarget.append(buffer, widened);
    pBytes.remove_prefix(widened);
    while (!pBytes.empty() && static_cast<unsigned char>(pBytes[0]) >= 0x80) {
      TDecoded decoded = DecodeUtf8(pBytes);
      if (decoded.fLength == 0) {
        pTarget += pUndecodable(static_cast<unsigned char>(pBytes[0]));
        pBytes.remove_prefix(1);
      } else {
        AppendCodePoint(pTarget, decoded.fCode);
        pBytes.remove_prefix(decoded.fLength);
      }
    }
  }
}

void AppendUtf8(std::string& pTarget, char32_t pCode) {
  if (pCode < 0x80) {
    pTarget += static_cast<char>(pCode);
    return;
  }
  if (pCode < 0x800) {
    pTarget += static_cast<char>(0xC0 | (pCode >> 6));
  } else {
    if (pCode < 0x10000) {
      pTarget += static_cast<char>(0xE0 | (pCode >> 12));
    } else {
      pTarget += static_cast<char>(0xF0 | (pCode >> 18));
      pTarget += static_cast<char>(0x80 | ((pCode >> 12) & 0x3F));
    }
    pTarget += static_cast<char>(0x80 | ((pCode >> 6) & 0x3F));
  }
  pTarget += static_cast<char>(0x80 | (pCode & 0x3F));
}

// Calls pUse with each code point. A lone surrogate is passed as it is.
template <class TUse>
void ForEachCodePoint(std::u16string_view pText, TUse pUse) {
  for (size_t at = 0; at < pText.size(); ++at) {
    char32_t code = pText[at];
    if ((code & 0xFC00) == 0xD800 && at + 1 < pText.size() && (pText[at + 1] & 0xFC00) == 0xDC00) {
      code = 0x10000 + ((code & 0x3FF) << 10) + (pText[at + 1] & 0x3FF);
      ++at;
    }
    pUse(code);
  }
}

bool IsSurrogate(char32_t pCode) {
  return (pCode & 0xFFFFF800) == 0xD800;
}
bool IsUndecodedByte(char32_t pCode) {
  return pCode >= 0xDC80 && pCode <= 0xDCFF;
}

// False, with nothing appended, when the text holds anything but ASCII.
bool AppendAscii(std::string& pTarget, std::u16string_view pText) {
  char16_t all = 0;
  for (const char16_t unit : pText) all |= unit;
  if (all >= 0x80) return false;
  pTarget.append(pText.begin(), pText.end());
  return true;
}

// Bidirectional controls can make a name look like another one, so they are shown as escapes like control characters.
bool IsBidirectionalControl(char32_t pCode) {
  return pCode == 0x061C || pCode == 0x200E || pCode == 0x200F || (pCode >= 0x202A && pCode <= 0x202E) ||
         (pCode >= 0x2066 && pCode <= 0x2069);
}

void AppendDisplay(std::string& pTarget, char32_t pCode) {
  if (pCode == '\n') {
    pTarget += "\\n";
  } else if (pCode == '\r') {
    pTarget += "\\r";
  } else if (pCode == '\t') {
    pTarget += "\\t";
  } else if (pCode < 0x20 || pCode == 0x7F) {
    fmt::format_to(std::back_inserter(pTarget), "\\x{:02X}", static_cast<uint32_t>(pCode));
  } else if (IsUndecodedByte(pCode)) {
    fmt::format_to(std::back_inserter(pTarget), "\\x{:02X}", static_cast<uint32_t>(pCode - 0xDC00));
  } else if (IsSurrogate(pCode) || IsBidirectionalControl(pCode) || pCode == 0x2028 || pCode == 0x2029 ||
             (pCode >= 0x80 && pCode < 0xA0)) {
    fmt::format_to(std::back_inserter(pTarget), "\\u{:04X}", static_cast<uint32_t>(pCode));
  } else {
    AppendUtf8(pTarget, pCode);
  }
}

template <class TView>
bool SameAscii(TView pA, TView pB) {
  if (pA.size() != pB.size()) return false;
  for (size_t i = 0; i < pA.size(); ++i) {
    if (pA[i] != pB[i] && FoldAscii(static_cast<char16_t>(pA[i])) != FoldAscii(static_cast<char16_t>(pB[i])))
      return false;
  }
  return true;
}

}  // namespace

TDecoded DecodeUtf8(std::string_view pBytes) {
  const auto lead = static_cast<unsigned char>(pBytes[0]);
  if (lead < 0x80) return {lead, 1};
  const uint32_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || pBytes.size() < length) return {};
  char32_t code = lead & (0x7F >> length);
  for (uint32_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(pBytes[i]);
    if ((next & 0xC0) != 0x80) return {};
    code = (code << 6) | (next & 0x3F);
  }
  // The leads C0 and C1 already excluded overlong two-byte forms. These tests exclude the longer ones.
  if (length == 3 && (code < 0x800 || IsSurrogate(code))) return {};
  if (length == 4 && (code < 0x10000 || code > 0x10FFFF)) return {};
  return {code, length};
}

void AppendFromNativeBytes(std::u16string& pTarget, std::string_view pBytes) {
  AppendDecoded(pTarget, pBytes, [](unsigned char pByte) { return static_cast<char16_t>(0xDC00 + pByte); });
}

std::u16string FromNativeBytes(std::string_view pBytes) {
  std::u16string result;
  AppendFromNativeBytes(result, pBytes);
  return result;
}

void AppendNativeBytes(std::string& pTarget, std::u16string_view pText) {
  if (AppendAscii(pTarget, pText)) return;
  ForEachCodePoint(pText, [&](char32_t pCode) {
    if (IsUndecodedByte(pCode))
      pTarget += static_cast<char>(pCode - 0xDC00);
    else
      AppendUtf8(pTarget, pCode);
  });
}

std::string ToNativeBytes(std::u16string_view pText) {
  std::string result;
  result.reserve(pText.size());
  AppendNativeBytes(result, pText);
  return result;
}

std::string ToUtf8(std::u16string_view pText) {
  std::string result;
  result.reserve(pText.size());
  ForEachCodePoint(pText, [&](char32_t pCode) { AppendUtf8(result, IsSurrogate(pCode) ? U'\xFFFD' : pCode); });
  return result;
}

void AppendUtf8Escaped(std::string& pTarget, std::u16string_view pText) {
  if (AppendAscii(pTarget, pText)) return;
  ForEachCodePoint(pText, [&](char32_t pCode) {
    if (IsSurrogate(pCode))
      AppendDisplay(pTarget, pCode);
    else
      AppendUtf8(pTarget, pCode);
  });
}

std::u16string FromUtf8(std::string_view pText) {
  std::u16string result;
  AppendDecoded(result, pText, [](unsigned char) { return u'\xFFFD'; });
  return result;
}

std::string ToDisplay(std::u16string_view pText) {
  std::string result;
  result.reserve(pText.size());
  ForEachCodePoint(pText, [&](char32_t pCode) { AppendDisplay(result, pCode); });
  return result;
}

std::string ToQuotedDisplay(std::u16string_view pText) {
  return "\"" + ToDisplay(pText) + "\"";
}

int DisplayWidth(std::string_view pUtf8) {
  int width = 0;
  while (!pUtf8.empty()) {
    TDecoded decoded = DecodeUtf8(pUtf8);
    width += decoded.fLength == 0 ? 1 : CodePointWidth(decoded.fCode);
    pUtf8.remove_prefix(std::max<size_t>(decoded.fLength, 1));
  }
  return width;
}

char16_t FoldAscii(char16_t pChar) {
  return pChar >= u'A' && pChar <= u'Z' ? pChar + (u'a' - u'A') : pChar;
}
bool SameTextAscii(std::u16string_view pA, std::u16string_view pB) {
  return SameAscii(pA, pB);
}
bool SameTextAscii(std::string_view pA, std::string_view pB) {
  return SameAscii(pA, pB);
}

bool TryParseInt64(std::string_view pText, int64_t& pValue) {
  int64_t value = 0;
  auto [end, error] = std::from_chars(pText.data(), pText.data() + pText.size(), value);
  if (error != std::errc() || end != pText.data() + pText.size()) return false;
  pValue = value;
  return true;
}

}  // namespace Vantrel
