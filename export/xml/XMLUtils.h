#pragma once

// Values in XML: HTML encoding, numbers, halves of file times, and names that XML cannot hold.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Vantrel::XML {

// An attribute as read. The parser owns the texts.
struct TXMLAttribute {
  std::u16string_view fName;
  std::u16string_view fValue;
};
using TXMLAttributeSpan = std::span<const TXMLAttribute>;

// Converts values of attributes and texts in XML files, both ways.
class TXMLUtils {
 public:
  // & < > " ' become &amp; &lt; &gt; &quot; &#39; and back. Decoding also takes &apos; and decimal or hexadecimal
  // character references. Any other text after "&" stays unchanged.
  static std::u16string HtmlEncode(std::u16string_view pText);
  static std::u16string HtmlDecode(std::u16string_view pText);

  // The value of the first attribute of that name. ASCII letter case does not count.
  static std::u16string_view GetValueFromAttributeByQName(TXMLAttributeSpan pAttributes, std::u16string_view pName,
                                                          std::u16string_view pDefault);

  // The text without XML white space at its ends.
  static std::u16string_view Trimmed(std::u16string_view pText);

  // Reads a decimal number of 64 bits, with or without a sign. For anything else it returns false and leaves pValue
  // unchanged, also for an empty text, blanks or a number out of range.
  static bool TryReadInteger(std::u16string_view pText, int64_t& pValue);
  // Any integer except zero is true.
  static bool TryReadBoolean(std::u16string_view pText, bool& pValue);

  // A file time is stored as two numbers of 32 bits. Reading accepts them signed or unsigned, and returns false for
  // numbers with more bits.
  static uint32_t LowHalf(int64_t pTicks) { return static_cast<uint32_t>(static_cast<uint64_t>(pTicks)); }
  static uint32_t HighHalf(int64_t pTicks) { return static_cast<uint32_t>(static_cast<uint64_t>(pTicks) >> 32); }
  static bool TryJoinHalves(int64_t pLow, int64_t pHigh, int64_t& pTicks);

  // XML 1.0 cannot hold every file name, not even escaped. It excludes control characters other than tab, line feed and
  // CR, and U+FFFE, U+FFFF and lone surrogates. A byte of a Linux name that is not UTF-8 is kept as one of these units.
  //
  // Such a unit is written as U+FFFD, and another attribute of the element holds the exact text. It is named "Escaped"
  // for the element's own text. For an attribute's value, it has that attribute's name with "Escaped" added. In the
  // exact text the backslash is doubled, and each unit that XML cannot hold is written as \uXXXX.
  static constexpr std::u16string_view kEscapedSuffix = u"Escaped";
  static bool IsEscapedForm(std::u16string_view pAttributeName);
  static bool CanHold(std::u16string_view pText);
  static std::u16string EscapeUnits(std::u16string_view pText);
  static std::u16string UnescapeUnits(std::u16string_view pText);

  // The exact text. The escaped form is used if it exists and matches the plain form. A user who edits the file by hand
  // changes only the plain form.
  static std::u16string ExactText(TXMLAttributeSpan pAttributes, std::u16string_view pText);
  static std::u16string ExactValue(TXMLAttributeSpan pAttributes, std::u16string_view pName,
                                   std::u16string_view pDefault);
};

}  // namespace Vantrel::XML
