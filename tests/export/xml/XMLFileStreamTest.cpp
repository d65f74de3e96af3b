// Layout to the byte, escaping, every text there and back, sinks that fail.

#include <gmock/gmock.h>

#include "export/xml/XMLFileStream.h"
#include "export/xml/XMLParser.h"
#include "export/xml/XMLUtils.h"
#include "platform/system/Errors.h"
#include "tests/support/ByteStrings.h"
#include "tests/support/NastyText.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::XML;
using Vantrel::Testing::TNastyText;
using Vantrel::Testing::TStringSink;
using Vantrel::Testing::TStringSource;

TXMLAttributes Attribute(std::u16string_view pValue) {
  TXMLAttributes attributes;
  attributes.Add("a", pValue);
  return attributes;
}

// The exact texts of every element and of its attribute "a", by the reading side.
class TExactTexts final : public Vantrel::XML::IXMLHandler {
 public:
  std::vector<std::u16string> fTexts;
  void StartElement(std::u16string_view, TXMLAttributeSpan pAttributes) override {
    fText.clear();
    fValue = TXMLUtils::ExactValue(pAttributes, u"A", u"none");
    fEscaped = std::u16string(TXMLUtils::GetValueFromAttributeByQName(pAttributes, u"escaped", u""));
  }
  void Characters(std::u16string_view pText) override { fText = pText; }
  void EndElement(std::u16string_view pName) override {
    if (pName != u"E") return;
    const TXMLAttribute escaped{u"Escaped", fEscaped};
    fTexts.push_back(fEscaped.empty() ? fText : TXMLUtils::ExactText({&escaped, 1}, fText));
    fTexts.push_back(fValue);
  }

 private:
  std::u16string fText, fEscaped, fValue;
};

}  // namespace

TEST(XMLFileStream, IsLaidOutToTheByte) {
  TStringSink sink;
  TXMLFileStream stream(sink);
  TXMLAttributes attributes;
  attributes.Add("Type", u"TRoot");
  attributes.Add("n", -5);
  attributes.Add("m", UINT64_MAX);
  attributes.AddBoolean("b", true);
  stream.StartDocument();
  stream.ProcessingInstruction("style", "href=\"x\"");
  stream.StartElement("Root", attributes);
  stream.AddElement("Application", "a & b");
  stream.AddElement("Empty", u"");
  stream.AddElement("Count", int64_t{INT64_MIN});
  stream.AddBooleanElement("IsCompared", false);
  stream.StartElement("Folder");
  stream.EndElement("Folder");
  attributes.Clear();
  attributes.Add("q", "\"'\t");
  stream.StartElement("Mixed", attributes);
  stream.Characters(u"text");
  stream.AddElement("b", u"bold");
  stream.StartElement("i");
  stream.AddElement("u", attributes);
  stream.EndElement("i");
  stream.Characters(u"more");
  stream.EndElement("Mixed");
  // 2020-01-01 00:00 UTC is 132223104000000000 = 30785590 * 2^32 + 1761935360.
  stream.WriteFileTimeToXMLFile("LastChangeDate", {132'223'104'000'000'000});
  stream.WriteFileTimeToXMLFile("CreationDate", {-1});
  stream.EndElement("Root");
  stream.EndDocument();
  EXPECT_EQ(sink.fBytes,
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n"
            "<?style href=\"x\"?>\r\n"
            "<Root Type=\"TRoot\" n=\"-5\" m=\"18446744073709551615\" b=\"-1\">\r\n"
            "<Application>a &amp; b</Application>\r\n"
            "<Empty/>\r\n"
            "<Count>-9223372036854775808</Count>\r\n"
            "<IsCompared>0</IsCompared>\r\n"
            "<Folder/>\r\n"
            "<Mixed q=\"&quot;'&#9;\">text<b>bold</b><i>\r\n"
            "<u q=\"&quot;'&#9;\"/>\r\n"
            "</i>more</Mixed>\r\n"
            "<LastChangeDate Low=\"1761935360\" High=\"30785590\"/>\r\n"
            "<CreationDate Low=\"4294967295\" High=\"4294967295\"/>\r\n"
            "</Root>\r\n");
}

TEST(XMLFileStream, RefusesWhatWouldNotBeADocument) {
  TStringSink sink;
  TXMLFileStream stream(sink);
  EXPECT_THROW(stream.StartDocument("1.0", "ISO-8859-1"), EInvalidArgumentValue);
  EXPECT_THROW(stream.EndDocument(), EInvalidOperation);
  EXPECT_THROW(stream.Characters(u"x"), EInvalidOperation);
  EXPECT_THROW(stream.ProcessingInstruction("x", "a ?> b"), EInvalidArgumentValue);
  stream.StartElement("ab");
  EXPECT_THROW(stream.StartDocument(), EInvalidOperation);
  EXPECT_THROW(stream.EndElement("b"), EInvalidArgumentValue);
  EXPECT_THROW(stream.EndDocument(), EInvalidOperation);
  stream.EndElement("ab");
  EXPECT_THROW(stream.EndElement("ab"), EInvalidArgumentValue);
  EXPECT_THROW(stream.StartElement("second"), EInvalidOperation);
}

TEST(XMLFileStream, EveryTextComesBackIdentical) {
  TNastyText nasty(4);
  std::vector<std::u16string> written;
  TStringSink sink;
  TXMLFileStream stream(sink);
  stream.StartDocument();
  stream.StartElement("All");
  for (int i = 0; i < 20'000; ++i) {
    written.push_back(nasty.Next(i % 5000 == 0 ? 5000 : 12));
    written.push_back(nasty.Next());
    stream.AddElement("E", written[written.size() - 2], Attribute(written.back()));
  }
  stream.EndElement("All");
  stream.EndDocument();
  TExactTexts texts;
  TStringSource source(sink.fBytes);
  Vantrel::XML::TXMLParser(texts).Parse(source);
  ASSERT_EQ(texts.fTexts.size(), written.size());
  for (size_t i = 0; i < written.size(); ++i) ASSERT_EQ(texts.fTexts[i], written[i]) << i;
}

TEST(XMLFileStream, EveryFailureOfTheSinkIsTold) {
  const auto write = [](TStringSink& pSink) {
    TXMLFileStream stream(pSink);
    stream.StartElement("All");
    for (int i = 0; i < 20'000; ++i) stream.AddElement("Element", u"text of an element");
    stream.EndElement("All");
    stream.EndDocument();
  };
  TStringSink good;
  write(good);
  ASSERT_GT(good.fWrites, 5);
  for (int failing = 0; failing < good.fWrites; ++failing) {
    TStringSink sink;
    sink.fFailingWrite = failing;
    EXPECT_THROW(write(sink), EOSError);
  }
}
