// Values both ways, and what is refused.

#include <gmock/gmock.h>

#include "export/xml/XMLUtils.h"
#include "tests/support/NastyText.h"

namespace {

using Vantrel::Testing::TNastyText;
using Vantrel::XML::TXMLAttribute;
using Vantrel::XML::TXMLUtils;

TEST(XMLUtils, HtmlEncodingGoesBothWays) {
  EXPECT_EQ(TXMLUtils::HtmlEncode(u"R&D <\"it's\">"), u"R&amp;D &lt;&quot;it&#39;s&quot;&gt;");
  const std::pair<std::u16string_view, std::u16string_view> kDecoded[] = {
      {u"&amp;lt;&lt;&gt;&quot;&#39;&apos;", u"&lt;<>\"''"},
      {u"&#65;&#x41;&#X1f600;&#0065;", u"AA\U0001F600A"},
      {u"&nbsp; &AMP; & &; &# &#; &#x; &#xg; &amp", u"&nbsp; &AMP; & &; &# &#; &#x; &#xg; &amp"},
      {u"&#0; &#xD800; &#x110000; &#99999999999; &#-1;", u"&#0; &#xD800; &#x110000; &#99999999999; &#-1;"},
      {u"a&&amp;", u"a&&"},
      {u"", u""},
  };
  for (const auto& [encoded, decoded] : kDecoded) EXPECT_EQ(TXMLUtils::HtmlDecode(encoded), decoded);
  TNastyText nasty(1);
  for (int i = 0; i < 20'000; ++i) {
    const std::u16string text = nasty.Next();
    ASSERT_EQ(TXMLUtils::HtmlDecode(TXMLUtils::HtmlEncode(text)), text);
    ASSERT_EQ(TXMLUtils::UnescapeUnits(TXMLUtils::EscapeUnits(text)), text);
    ASSERT_TRUE(TXMLUtils::CanHold(TXMLUtils::EscapeUnits(text)));
  }
}

TEST(XMLUtils, ReadsNumbersAndRefusesEverythingElse) {
  const std::pair<std::u16string_view, int64_t> kNumbers[] = {{u"0", 0},
                                                              {u"-1", -1},
                                                              {u"+7", 7},
                                                              {u"007", 7},
                                                              {u"9223372036854775807", INT64_MAX},
                                                              {u"-9223372036854775808", INT64_MIN}};
  for (const auto& [text, number] : kNumbers) {
    int64_t value = 99;
    EXPECT_TRUE(TXMLUtils::TryReadInteger(text, value));
    EXPECT_EQ(value, number);
    bool truth = number == 0;
    EXPECT_TRUE(TXMLUtils::TryReadBoolean(text, truth));
    EXPECT_EQ(truth, number != 0);
  }
  for (const char16_t* text : {u"", u"-", u"+", u" 1", u"1 ", u"1.0", u"1e3", u"0x10", u"--1", u"\xFF11", u"true",
                               u"9223372036854775808", u"-9223372036854775809", u"18446744073709551616"}) {
    int64_t value = 99;
    bool truth = true;
    EXPECT_FALSE(TXMLUtils::TryReadInteger(text, value));
    EXPECT_FALSE(TXMLUtils::TryReadBoolean(text, truth));
    EXPECT_EQ(value, 99);
  }
}

TEST(XMLUtils, FileTimesSurviveTheirHalves) {
  for (const int64_t ticks : {int64_t{0}, int64_t{1}, int64_t{-1}, INT64_MIN, INT64_MAX, int64_t{0x1234'5678'9ABC'DEF0},
                              int64_t{0xFFFF'FFFF}, int64_t{1} << 32}) {
    int64_t joined = 99;
    EXPECT_TRUE(TXMLUtils::TryJoinHalves(TXMLUtils::LowHalf(ticks), TXMLUtils::HighHalf(ticks), joined));
    EXPECT_EQ(joined, ticks);
    // As a writer with signed halves has it.
    EXPECT_TRUE(TXMLUtils::TryJoinHalves(static_cast<int32_t>(TXMLUtils::LowHalf(ticks)),
                                         static_cast<int32_t>(TXMLUtils::HighHalf(ticks)), joined));
    EXPECT_EQ(joined, ticks);
  }
  int64_t joined = 0;
  EXPECT_FALSE(TXMLUtils::TryJoinHalves(int64_t{1} << 32, 0, joined));
  EXPECT_FALSE(TXMLUtils::TryJoinHalves(0, int64_t{INT32_MIN} - 1, joined));
}

TEST(XMLUtils, TheExactFormCountsOnlyWhileItFits) {
  const TXMLAttribute attributes[] = {
      {u"fullpath", u"/a\xFFFD"}, {u"fullpathEscaped", u"/a\\uDCFF"}, {u"escaped", u"\\u0001\\\\"}};
  EXPECT_EQ(TXMLUtils::ExactValue(attributes, u"FullPath", u""), u"/a\xDCFF");
  EXPECT_EQ(TXMLUtils::ExactValue(attributes, u"Path", u"none"), u"none");
  EXPECT_EQ(TXMLUtils::ExactText(attributes, u"\xFFFD\\"), u"\x1\\");
  EXPECT_EQ(TXMLUtils::ExactText(attributes, u"edited\\"), u"edited\\");
  // What is no escape stays as it is.
  EXPECT_EQ(TXMLUtils::UnescapeUnits(u"\\x\\u12\\u12G4\\"), u"\\x\\u12\\u12G4\\");
}

}  // namespace
