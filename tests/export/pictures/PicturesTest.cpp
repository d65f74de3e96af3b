// SVG files read by an XML parser, PNG files decoded with zlib.

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "export/pictures/PNGEncoder.h"
#include "export/pictures/SVGWriter.h"
#include "export/xml/XMLParser.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "presentation/drawing/TextMeasure.h"
#include "tests/support/ByteStrings.h"
#include "tests/support/NastyText.h"

namespace Vantrel::Testing {
namespace {

using namespace Drawing;
using namespace Pictures;

// The names and texts of all elements, in order.
class TElements final : public XML::IXMLHandler {
 public:
  std::vector<std::string> fTitles;
  std::vector<std::string> fTexts;
  std::vector<std::string> fImages;
  void StartElement(std::u16string_view pName, XML::TXMLAttributeSpan pAttributes) override {
    fName = pName;
    if (pName == u"image") fImages.push_back(ToUtf8(pAttributes.back().fValue));
  }
  void EndElement(std::u16string_view) override { fName.clear(); }
  void Characters(std::u16string_view pText) override {
    if (fName == u"title") fTitles.push_back(ToUtf8(pText));
    if (fName == u"text") fTexts.push_back(ToUtf8(pText));
  }

 private:
  std::u16string fName;
};

TElements Read(const TDrawing& pDrawing) {
  TStringSink sink;
  WriteSVG(pDrawing, sink);
  TStringSource source(sink.fBytes);
  TElements elements;
  EXPECT_TRUE(XML::TXMLParser(elements).Parse(source)) << sink.fBytes;
  return elements;
}

TEST(SVG, TextAndTooltipsSurviveAsTheyAreShown) {
  TDrawing drawing;
  drawing.fTitle = u"<&\"'>\uFFFE";
  drawing.fSubjects = {{u"key", 1, u"a  b]]>\n\x1B[31m \xDC80\xD800"}};
  drawing.fShapes = {{TRectangle{{0, 0, 5, 5}}, {}, 0}, {TText{u"1 < 2  &amp;", {1, 2}}, {}, kNoSubject}};
  const TElements elements = Read(drawing);
  // Escapes of controls and of what is no text, as in all that the program shows; U+FFFD for a noncharacter.
  EXPECT_EQ(elements.fTitles, (std::vector<std::string>{"<&\"'>\uFFFD", "a  b]]>\n\\x1B[31m \\x80\\uD800"}));
  EXPECT_EQ(elements.fTexts, std::vector<std::string>{"1 < 2  &amp;"});
}

TEST(SVG, IsWellFormedWhateverTheTextsHold) {
  TNastyText nasty(1);
  for (int round = 0; round < 300; ++round) {
    TDrawing drawing;
    drawing.fWidth = drawing.fHeight = 100;
    drawing.fTitle = nasty.Next();
    drawing.fSubjects = {{nasty.Next(), 1, nasty.Next()}};
    drawing.fShapes = {{TRectangle{{0, 0, 5, 5}}, {}, 0},
                       {TText{nasty.Next(), {1, 2}, 12, TAnchor::anEnd, true}, {.fLine = 1, .fLineWidth = 2}, 0},
                       {TWedge{{50, 50}, 10, 20, 350, 360}, {}, 0},
                       {TPolygon{}, {}, 0},
                       {TPolyline{{{1, 1e300}, {-1, 0}}}, {.fOpacity = 0.5, .fDashed = true}, kNoSubject}};
    Read(drawing);
    ASSERT_FALSE(HasFailure());
  }
}

// --- PNG -----------------------------------------------------------------------------------------------------------

uint32_t NumberAt(std::string_view pBytes, size_t pAt) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(pBytes.at(pAt + i));
  return number;
}

// A plain decoder of what PNG allows for three bytes per pixel and the filters none, left and above.
std::vector<uint32_t> Decode(std::string_view pFile, int& pWidth) {
  EXPECT_EQ(pFile.substr(0, 8), "\x89PNG\r\n\x1A\n");
  std::string packed;
  uint32_t height = 0;
  for (size_t at = 8; at < pFile.size();) {
    const size_t length = NumberAt(pFile, at);
    const std::string_view type = pFile.substr(at + 4, 4);
    const std::string_view data = pFile.substr(at + 8, length);
    const auto* checked = reinterpret_cast<const Bytef*>(type.data());
    EXPECT_EQ(NumberAt(pFile, at + 8 + length), crc32(0, checked, static_cast<uInt>(length + 4))) << type;
    if (type == "IHDR") pWidth = static_cast<int>(NumberAt(data, 0));
    if (type == "IHDR") height = NumberAt(data, 4);
    if (type == "IDAT") packed += data;
    at += length + 12;
  }
  const size_t stride = static_cast<size_t>(pWidth) * 3;
  uLongf size = (stride + 1) * height;
  std::vector<Bytef> rows(size);
  EXPECT_EQ(uncompress(rows.data(), &size, reinterpret_cast<const Bytef*>(packed.data()), packed.size()), Z_OK);
  std::vector<uint32_t> pixels;
  std::vector<Bytef> above(stride);
  for (size_t y = 0; y < height; ++y) {
    const Bytef* row = rows.data() + y * (stride + 1);
    std::vector<Bytef> line(stride);
    for (size_t i = 0; i < stride; ++i) {
      const int added = row[0] == 1 ? (i < 3 ? 0 : line[i - 3]) : row[0] == 2 ? above[i] : 0;
      line[i] = static_cast<Bytef>(row[1 + i] + added);
    }
    for (size_t i = 0; i < stride; i += 3)
      pixels.push_back(uint32_t{line[i]} << 16 | uint32_t{line[i + 1]} << 8 | line[i + 2]);
    above = line;
  }
  return pixels;
}

TEST(PNG, GivesItsPixelsBack) {
  std::mt19937 random(1);
  for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {300, 200}, {1, 5000}}) {
    std::vector<uint32_t> pixels(static_cast<size_t>(width * height));
    for (size_t i = 0; i < pixels.size(); ++i)
      pixels[i] = (i % 2 ? random() : static_cast<uint32_t>(i * 0x010203)) & 0xFFFFFF;
    std::vector<uint32_t> opaque = pixels;
    for (uint32_t& pixel : opaque) pixel |= 0xFF000000;
    int decodedWidth = 0;
    EXPECT_EQ(Decode(EncodePNG(width, height, opaque), decodedWidth), pixels);
    EXPECT_EQ(decodedWidth, width);
  }
  EXPECT_THROW(EncodePNG(2, 2, std::vector<uint32_t>(3)), EInvalidArgumentValue);
  EXPECT_THROW(EncodePNG(0, 0, {}), EInvalidArgumentValue);
}

}  // namespace
}  // namespace Vantrel::Testing
