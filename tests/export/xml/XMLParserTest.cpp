// Events, every truncation, refusals with their place, limits against endless input, cancellation.

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "export/xml/XMLParser.h"
#include "platform/text/Text.h"
#include "tests/support/ByteStrings.h"
#include "tests/support/Failures.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::XML;
using testing::HasSubstr;
using Vantrel::Testing::TStringSource;
using Vantrel::XML::TXMLAttributeSpan;

// All events as one text: "<name a=value|>", "[text]", "</name>".
class TEventLog final : public IXMLHandler {
 public:
  std::string fLog;
  void StartElement(std::u16string_view pName, TXMLAttributeSpan pAttributes) override {
    fLog += "<" + ToUtf8(pName);
    for (const auto& attribute : pAttributes)
      fLog += " " + ToUtf8(attribute.fName) + "=" + ToUtf8(attribute.fValue) + "|";
    fLog += ">";
  }
  void EndElement(std::u16string_view pName) override { fLog += "</" + ToUtf8(pName) + ">"; }
  void Characters(std::u16string_view pText) override { fLog += "[" + ToUtf8(pText) + "]"; }
};

// Counts, and does something at each start of an element.
class TCounter final : public IXMLHandler {
 public:
  size_t fElements = 0;
  size_t fUnits = 0;
  std::function<void()> fAtStart;
  void StartElement(std::u16string_view, TXMLAttributeSpan pAttributes) override {
    ++fElements;
    for (const auto& attribute : pAttributes) fUnits += attribute.fValue.size();
    if (fAtStart) fAtStart();
  }
  void EndElement(std::u16string_view) override {}
  void Characters(std::u16string_view pText) override { fUnits += pText.size(); }
};

// Gives a beginning, then the same piece again and again with its number in it, and never ends.
class TEndlessSource final : public IByteSource {
 public:
  explicit TEndlessSource(std::string pStart, std::function<std::string(size_t)> pPiece)
      : fRest(std::move(pStart)), fPiece(std::move(pPiece)) {}
  uint64_t fGiven = 0;
  size_t Read(char* pBuffer, size_t pLength) override {
    while (fRest.size() < pLength) fRest += fPiece(fNumber++);
    std::memcpy(pBuffer, fRest.data(), pLength);
    fRest.erase(0, pLength);
    fGiven += pLength;
    return pLength;
  }

 private:
  std::string fRest;
  std::function<std::string(size_t)> fPiece;
  size_t fNumber = 0;
};

std::string EventsOf(std::string_view pDocument, size_t pPiece = 1 << 20) {
  TEventLog log;
  TStringSource source(pDocument, pPiece);
  EXPECT_TRUE(TXMLParser(log).Parse(source));
  return log.fLog;
}

// What a document is refused with, "" when it is not.
std::string ErrorOf(IByteSource& pSource, IXMLHandler& pHandler) {
  return Vantrel::Testing::MessageOf<EXMLError>([&] { TXMLParser(pHandler).Parse(pSource); });
}
std::string ErrorOf(std::string_view pDocument) {
  TCounter counter;
  TStringSource source(pDocument);
  return ErrorOf(source, counter);
}

std::string Utf16(std::u16string_view pText, bool pLittleEndian) {
  std::string bytes;
  for (const char16_t unit : pText) {
    bytes += static_cast<char>(pLittleEndian ? unit & 0xFF : unit >> 8);
    bytes += static_cast<char>(pLittleEndian ? unit >> 8 : unit & 0xFF);
  }
  return bytes;
}

std::string Repeated(std::string_view pText, size_t pTimes) {
  std::string result;
  result.reserve(pText.size() * pTimes);
  for (size_t i = 0; i < pTimes; ++i) result += pText;
  return result;
}

constexpr std::string_view kSmall =
    "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"no\"?>\r\n<!-- x --><?style x?>\n"
    "<Root a='1&amp;&#x1F600;' b=\"&lt;\t&#9;\r\n\xC3\xA9\">te<![CDATA[<x>]]>xt<!-- c -->&#13;\r\n"
    "<e/> <\xC3\xA9>\xE2\x82\xAC eight or more\xF0\x9F\x98\x80</\xC3\xA9></Root>";
constexpr std::string_view kSmallEvents =
    "<Root a=1&\xF0\x9F\x98\x80| b=< \t \xC3\xA9|>[te<x>xt\r\n]<e></e>[ ]<\xC3\xA9>[\xE2\x82\xAC eight or "
    "more\xF0\x9F\x98\x80]</\xC3\xA9></Root>";

TEST(XMLParser, GivesEveryEventInOrder) {
  for (const size_t piece : {1, 2, 3, 1000}) EXPECT_EQ(EventsOf(kSmall, piece), kSmallEvents);
}

TEST(XMLParser, ReadsUtf16) {
  const std::u16string body = u"\xFEFF<?xml version='1.0' encoding='UTF-16'?><\xE9 a='\U0001F600'>\x20AC</\xE9>";
  for (const bool little : {false, true})
    EXPECT_EQ(EventsOf(Utf16(body, little)), "<\xC3\xA9 a=\xF0\x9F\x98\x80|>[\xE2\x82\xAC]</\xC3\xA9>");
}

TEST(XMLParser, PiecesOfTheSourceDoNotShow) {
  // Characters of each length lie across the borders of whatever pieces the parser reads.
  const std::string text = Repeated("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", 100'000);
  const std::string document = "<r a=\"" + text + "\">" + text + "</r>";
  EXPECT_EQ(EventsOf(document), "<r a=" + text + "|>[" + text + "]</r>");
}

TEST(XMLParser, EveryTruncationIsAnError) {
  for (size_t length = 0; length < kSmall.size(); ++length)
    EXPECT_THAT(ErrorOf(kSmall.substr(0, length)), HasSubstr("Line ")) << length;
  EXPECT_EQ(ErrorOf(kSmall), "");
}

TEST(XMLParser, RefusesWithMessageAndPlace) {
  using namespace std::string_literals;
  const std::pair<std::string, std::string> kRefused[] = {
      {"", "Line 1, column 1: no element found"},
      {"<a>\n<b>\n</a>", "Line 3, column 3: mismatched tag"},
      {"<a x='1'\nx='2'/>", "Line 2, column 1: duplicate attribute"},
      {"<a>\n &nbsp;</a>", "Line 2, column 2: undefined entity"},
      {"<a/>\ntext", "Line 2, column 1: junk after document element"},
      {"<a/><b/>", "Line 1, column 5: junk after document element"},
      {"<a>\0</a>"s, "Line 1, column 4: not well-formed (invalid token)"},
      {"<a>&#0;</a>", "Line 1, column 4: reference to invalid character number"},
      {"<a>\x01</a>", "Line 1, column 4: not well-formed (invalid token)"},
      {"<a>\xE9</a>", "Line 1, column 4: not well-formed (invalid token)"},
      {"<a>\xED\xA0\x80</a>", "Line 1, column 4: not well-formed (invalid token)"},
      {"<a>\xEF\xBF\xBE</a>", "Line 1, column 4: not well-formed (invalid token)"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a/>", "encoding \"ISO-8859-1\" is not accepted"},
      {"<?xml version='1.0' encoding='US-ASCII'?><a/>", "encoding \"US-ASCII\" is not accepted"},
      {"<?xml version='1.0' encoding='x-none'?><a/>", "encoding \"x-none\" is not accepted"},
      {"<?xml version='1.0' encoding='UTF-16'?><a/>", "encoding"},
      {"<!DOCTYPE a><a/>", "a document type declaration is not accepted"},
      {"<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a/>", "a document type declaration is not accepted"},
      {"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", "a document type declaration is not accepted"},
      {"<!DOCTYPE a [<!ENTITY % p SYSTEM 'http://x/'> %p;]><a/>", "a document type declaration is not accepted"},
  };
  for (const auto& [document, message] : kRefused) EXPECT_THAT(ErrorOf(document), HasSubstr(message)) << document;
}

TEST(XMLParser, DepthHasALimit) {
  const auto nested = [](size_t pDepth) { return Repeated("<a>", pDepth) + Repeated("</a>", pDepth); };
  EXPECT_EQ(ErrorOf(nested(kDeepestNesting)), "");
  EXPECT_THAT(ErrorOf(nested(kDeepestNesting + 1)), HasSubstr("nested more than 100000 levels deep"));
  TEndlessSource endless("", [](size_t) { return Repeated("<a>\n", 1000); });
  TCounter counter;
  EXPECT_THAT(ErrorOf(endless, counter), HasSubstr("Line 100001, column 1"));
}

TEST(XMLParser, LongTokensHaveALimit) {
  const std::string kilobytes(64 * 1024, 'x');
  TCounter counter;
  // Long, but not too long: 32 MB.
  EXPECT_EQ(ErrorOf("<a b='" + Repeated(kilobytes, 512) + "'/>"), "");
  for (const char* start : {"<a b='", "<a ", "<", "<a><![CDATA[", "<a>", "<!--", "<?x "}) {
    const bool attributes = std::string_view(start) == "<a ";
    TEndlessSource endless(start, [&](size_t pNumber) {
      return attributes ? "n" + std::to_string(pNumber) + "='" + kilobytes + "' " : kilobytes;
    });
    EXPECT_THAT(ErrorOf(endless, counter), HasSubstr("longer than 64 MB")) << start;
    EXPECT_LT(endless.fGiven, 2 * kLongestToken) << start;
  }
}

TEST(XMLParser, MemoryForNamesHasALimit) {
  const std::string name(16 * 1024, 'x');
  TEndlessSource endless("<a>", [&](size_t pNumber) { return "<" + name + std::to_string(pNumber) + "/>"; });
  TCounter counter;
  EXPECT_THAT(ErrorOf(endless, counter), HasSubstr("more memory than the 512 MB"));
  // All of it has been given back.
  EXPECT_EQ(ErrorOf("<a b='" + Repeated(name, 1024) + "'/>"), "");
}

TEST(XMLParser, StopsWhenTheHandlerOrTheSourceThrows) {
  TCounter counter;
  counter.fAtStart = [&] {
    if (counter.fElements == 2) throw std::out_of_range("enough");
  };
  TStringSource document("<a>text<b>more</b><c/></a>");
  EXPECT_THROW(TXMLParser(counter).Parse(document), std::out_of_range);
  EXPECT_EQ(counter.fElements, 2u);
  EXPECT_EQ(counter.fUnits, 4u);

  TStringSource failing("<a>");
  failing.fFails = true;
  counter = {};
  EXPECT_THROW(TXMLParser(counter).Parse(failing), EOSError);
}

TEST(XMLParser, IsCancelledBetweenPieces) {
  TEndlessSource endless("<a>", [](size_t) { return Repeated("<b/>", 1000); });
  TCounter counter;
  std::vector<uint64_t> told;
  EXPECT_FALSE(
      TXMLParser(counter).Parse(endless, [&](uint64_t pBytes) { return told.push_back(pBytes), told.size() < 4; }));
  EXPECT_EQ(told.size(), 4u);
  EXPECT_EQ(told.front(), 0u);
  EXPECT_EQ(told.back(), endless.fGiven);
  EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
}

}  // namespace
