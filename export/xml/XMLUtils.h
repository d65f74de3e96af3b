#pragma once

// Values in XML: HTML encoding, numbers, halves of file times, names that XML cannot hold.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Vantrel::XML {

// An attribute as it was read. The texts belong to the parser.
struct TXMLAttribute {
  std::u16string_view fName;
  std::u16string_view fValue;
};
using TXMLAttributeSpan = std::span<const TXMLAttribute>;

// Values of attributes and texts in XML files, both ways.
class TXMLUtils {
 public:
  // & < > " ' become &amp; &lt; &gt; &quot; &#39; and back. The way back also takes &apos; and references to characters
  // by number, decimal and hexadecimal; whatever else follows a "&" stays as it is.
  static std::u16string HtmlEncode(std::u16string_view pText);
  static std::u16string HtmlDecode(std::u16string_view pText);

  // The value of the first attribute of that name, ASCII letters compared without regard to case.
  static std::u16string_view GetValueFromAttributeByQName(TXMLAttributeSpan pAttributes, std::u16string_view pName,
                                                          std::u16string_view pDefault);

  // A decimal number of 64 bits, with a sign or without; false, with the target untouched, for everything else, such as
  // an empty text, blanks or a number that does not fit.
  static bool TryReadInteger(std::u16string_view pText, int64_t& pValue);
  // Any integer but zero is true.
  static bool TryReadBoolean(std::u16string_view pText, bool& pValue);

  // A file time is stored as two numbers of 32 bits. Reading takes them signed and unsigned, and returns false for what
  // has more bits.
  static uint32_t LowHalf(int64_t pTicks) { return static_cast<uint32_t>(static_cast<uint64_t>(pTicks)); }
  static uint32_t HighHalf(int64_t pTicks) { return static_cast<uint32_t>(static_cast<uint64_t>(pTicks) >> 32); }
  static bool TryJoinHalves(int64_t pLow, int64_t pHigh, int64_t& pTicks);

  // Not every file name can stand in XML 1.0, not even escaped: control characters other than tab, line feed and CR,
  // U+FFFE, U+FFFF and lone surrogates cannot, and a byte of a Linux name that is not UTF-8 is kept as one of these.
  // Such a unit is written as U+FFFD, and the exact text goes into one more attribute of the element: named "Escaped"
  // for the element's own text, and as the attribute with "Escaped" behind it for an attribute's value. Its form is
  // plain: the backslash is doubled, and each unit that XML cannot hold is written as \uXXXX.
  static constexpr std::u16string_view kEscapedSuffix = u"Escaped";
  static bool IsEscapedForm(std::u16string_view pAttributeName);
  static bool CanHold(std::u16string_view pText);
  static std::u16string EscapeUnits(std::u16string_view pText);
  static std::u16string UnescapeUnits(std::u16string_view pText);

  // The exact text. Takes the escaped form where there is one and it fits to the plain one: who edited a file by hand
  // changed the latter.
  static std::u16string ExactText(TXMLAttributeSpan pAttributes, std::u16string_view pText);
  static std::u16string ExactValue(TXMLAttributeSpan pAttributes, std::u16string_view pName,
                                   std::u16string_view pDefault);
};

}  // namespace Vantrel::XML
