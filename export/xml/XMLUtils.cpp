#include "export/xml/XMLUtils.h"

#include <algorithm>
#include <optional>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::XML {

namespace {

// The number of units from the start of the text that XML can hold.
size_t HeldPrefix(std::u16string_view pText) {
  for (size_t at = 0; at < pText.size(); ++at) {
    const char16_t unit = pText[at];
    if (unit >= 0x20 && unit < 0xD800) continue;
    if (unit < 0x20 ? unit != u'\t' && unit != u'\n' && unit != u'\r' : unit >= 0xFFFE || IsTrailSurrogate(unit))
      return at;
    if (!IsLeadSurrogate(unit)) continue;
    if (at + 1 == pText.size() || !IsTrailSurrogate(pText[at + 1])) return at;
    ++at;
  }
  return pText.size();
}

// Calls one function with each part that XML can hold, and the other with each unit that it cannot hold.
template <class THeld, class TLost>
void SplitByHeld(std::u16string_view pText, THeld pHeld, TLost pLost) {
  while (!pText.empty()) {
    const size_t held = HeldPrefix(pText);
    if (held > 0) pHeld(pText.substr(0, held));
    pText.remove_prefix(held);
    if (pText.empty()) return;
    pLost(pText[0]);
    pText.remove_prefix(1);
  }
}

// The value of a decimal or hexadecimal digit; 16 for other characters.
uint32_t DigitValue(char16_t pChar) {
  const char16_t folded = FoldAscii(pChar);
  if (folded >= u'0' && folded <= u'9') return folded - u'0';
  return folded >= u'a' && folded <= u'f' ? folded - u'a' + 10 : 16;
}

// Reads a number of at least one digit. No value when it is larger than any character's number.
std::optional<uint32_t> ReadCharacterNumber(std::u16string_view pDigits, uint32_t pBase) {
  uint32_t number = 0;
  for (const char16_t digit : pDigits) {
    const uint32_t value = DigitValue(digit);
    if (value >= pBase) return {};
    number = number * pBase + value;
    if (number > 0x10FFFF) return {};
  }
  if (pDigits.empty()) return {};
  return number;
}

// The character for an entity name between "&" and ";". No value for unknown names.
std::optional<uint32_t> ReadEntity(std::u16string_view pName) {
  if (pName == u"amp") return u'&';
  if (pName == u"lt") return u'<';
  if (pName == u"gt") return u'>';
  if (pName == u"quot") return u'"';
  if (pName == u"apos") return u'\'';
  if (!pName.starts_with(u'#')) return {};
  pName.remove_prefix(1);
  const bool hexadecimal = pName.starts_with(u'x') || pName.starts_with(u'X');
  const auto number = ReadCharacterNumber(pName.substr(hexadecimal ? 1 : 0), hexadecimal ? 16 : 10);
  const bool isCharacter = number && *number != 0 && (*number & 0xFFFFF800) != 0xD800;
  return isCharacter ? number : std::nullopt;
}

const TXMLAttribute* Find(TXMLAttributeSpan pAttributes, std::u16string_view pName) {
  const auto found = std::find_if(pAttributes.begin(), pAttributes.end(), [&](const TXMLAttribute& pAttribute) {
    return SameTextAscii(pAttribute.fName, pName);
  });
  return found == pAttributes.end() ? nullptr : &*found;
}

// The text with U+FFFD for each unit that XML cannot hold.
std::u16string Replaced(std::u16string_view pText) {
  std::u16string result;
  SplitByHeld(
      pText, [&](std::u16string_view pHeld) { result += pHeld; }, [&](char16_t) { result += u'\xFFFD'; });
  return result;
}

std::u16string ExactOf(const TXMLAttribute* pEscaped, std::u16string_view pPlain) {
  if (pEscaped != nullptr) {
    std::u16string exact = TXMLUtils::UnescapeUnits(pEscaped->fValue);
    if (Replaced(exact) == pPlain) return exact;
  }
  return std::u16string(pPlain);
}

}  // namespace

std::u16string TXMLUtils::HtmlEncode(std::u16string_view pText) {
  std::u16string result;
  result.reserve(pText.size());
  for (const char16_t unit : pText) {
    switch (unit) {
      case u'&':
        result += u"&amp;";
        break;
      case u'<':
        result += u"&lt;";
        break;
      case u'>':
        result += u"&gt;";
        break;
      case u'"':
        result += u"&quot;";
        break;
      case u'\'':
        result += u"&#39;";
        break;
      default:
        result += unit;
    }
  }
  return result;
}

std::u16string TXMLUtils::HtmlDecode(std::u16string_view pText) {
  constexpr size_t kLongestName =
      16;  // looked for no further, so that a text full of "&" costs no square of its length
  std::u16string result;
  result.reserve(pText.size());
  while (!pText.empty()) {
    const size_t begin = std::min(pText.find(u'&'), pText.size());
    result += pText.substr(0, begin);
    pText.remove_prefix(begin);
    const size_t end = pText.substr(0, kLongestName).find(u';');
    const auto character = end == std::u16string_view::npos ? std::nullopt : ReadEntity(pText.substr(1, end - 1));
    if (character) {
      AppendCodePoint(result, *character);
    } else {
      result += pText.substr(0, 1);
    }
    pText.remove_prefix(character ? end + 1 : std::min<size_t>(1, pText.size()));
  }
  return result;
}

std::u16string_view TXMLUtils::GetValueFromAttributeByQName(TXMLAttributeSpan pAttributes, std::u16string_view pName,
                                                            std::u16string_view pDefault) {
  const TXMLAttribute* found = Find(pAttributes, pName);
  return found == nullptr ? pDefault : found->fValue;
}

std::u16string_view TXMLUtils::Trimmed(std::u16string_view pText) {
  constexpr std::u16string_view kBlanks = u" \t\r\n";
  const size_t begin = std::min(pText.find_first_not_of(kBlanks), pText.size());
  pText.remove_prefix(begin);
  return pText.substr(0, pText.find_last_not_of(kBlanks) + 1);
}

bool TXMLUtils::TryReadInteger(std::u16string_view pText, int64_t& pValue) {
  const bool negative = pText.starts_with(u'-');
  if (negative || pText.starts_with(u'+')) pText.remove_prefix(1);
  if (pText.empty()) return false;
  const uint64_t most = static_cast<uint64_t>(INT64_MAX) + (negative ? 1 : 0);
  uint64_t value = 0;
  for (const char16_t unit : pText) {
    if (unit < u'0' || unit > u'9') return false;
    const uint64_t digit = unit - u'0';
    if (value > (most - digit) / 10) return false;
    value = value * 10 + digit;
  }
  pValue = static_cast<int64_t>(negative ? 0 - value : value);
  return true;
}

bool TXMLUtils::TryReadBoolean(std::u16string_view pText, bool& pValue) {
  int64_t number = 0;
  if (!TryReadInteger(pText, number)) return false;
  pValue = number != 0;
  return true;
}

bool TXMLUtils::TryJoinHalves(int64_t pLow, int64_t pHigh, int64_t& pTicks) {
  const auto fits = [](int64_t pHalf) { return pHalf >= INT32_MIN && pHalf <= int64_t{UINT32_MAX}; };
  if (!fits(pLow) || !fits(pHigh)) return false;
  pTicks = static_cast<int64_t>(static_cast<uint64_t>(pHigh) << 32 | static_cast<uint32_t>(pLow));
  return true;
}

bool TXMLUtils::IsEscapedForm(std::u16string_view pAttributeName) {
  return pAttributeName.size() >= kEscapedSuffix.size() &&
         SameTextAscii(pAttributeName.substr(pAttributeName.size() - kEscapedSuffix.size()), kEscapedSuffix);
}

bool TXMLUtils::CanHold(std::u16string_view pText) {
  return HeldPrefix(pText) == pText.size();
}

std::u16string TXMLUtils::EscapeUnits(std::u16string_view pText) {
  std::u16string result;
  const auto addHeld = [&](std::u16string_view pHeld) {
    for (const char16_t unit : pHeld) result.append(unit == u'\\' ? 2 : 1, unit);
  };
  const auto addLost = [&](char16_t pUnit) {
    result += u"\\u";
    for (int shift = 12; shift >= 0; shift -= 4) result += u"0123456789ABCDEF"[(pUnit >> shift) & 0xF];
  };
  SplitByHeld(pText, addHeld, addLost);
  return result;
}

std::u16string TXMLUtils::UnescapeUnits(std::u16string_view pText) {
  std::u16string result;
  result.reserve(pText.size());
  while (!pText.empty()) {
    const auto number =
        pText.starts_with(u"\\u") && pText.size() >= 6 ? ReadCharacterNumber(pText.substr(2, 4), 16) : std::nullopt;
    result += number ? static_cast<char16_t>(*number) : pText[0];
    pText.remove_prefix(number ? 6 : pText.starts_with(u"\\\\") ? 2 : 1);
  }
  return result;
}

std::u16string TXMLUtils::ExactText(TXMLAttributeSpan pAttributes, std::u16string_view pText) {
  return ExactOf(Find(pAttributes, kEscapedSuffix), pText);
}

std::u16string TXMLUtils::ExactValue(TXMLAttributeSpan pAttributes, std::u16string_view pName,
                                     std::u16string_view pDefault) {
  const TXMLAttribute* plain = Find(pAttributes, pName);
  if (plain == nullptr) return std::u16string(pDefault);
  return ExactOf(Find(pAttributes, std::u16string(pName).append(kEscapedSuffix)), plain->fValue);
}

}  // namespace Vantrel::XML
