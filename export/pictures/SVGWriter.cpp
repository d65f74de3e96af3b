#include "export/pictures/SVGWriter.h"

#include <fmt/format.h>

#include <cmath>
#include <numbers>
#include <string>
#include <string_view>

#include "export/pictures/PNGEncoder.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::Pictures {

using namespace Drawing;

namespace {

// Fonts that are as wide as the estimated measure takes them, or narrower.
constexpr std::string_view kFonts = "Segoe UI,Roboto,Helvetica,Arial,Liberation Sans,DejaVu Sans,sans-serif";

// With at most two decimals: a hundredth of a pixel is not seen.
std::string Number(double pNumber) {
  std::string text = fmt::format("{:.2f}", pNumber);
  text.resize(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string Color(TColor pColor) {
  return fmt::format("#{:06x}", pColor & 0xFFFFFF);
}

// One line of text for XML. Two code points are characters of Unicode but not of XML.
void AppendEscaped(std::string& pTarget, std::u16string_view pLine) {
  const std::string shown = ToDisplay(pLine);
  for (std::string_view rest = shown; !rest.empty();) {
    const TDecoded decoded = DecodeUtf8(rest);
    const size_t length = std::max<size_t>(decoded.fLength, 1);
    if (rest[0] == '&')
      pTarget += "&amp;";
    else if (rest[0] == '<')
      pTarget += "&lt;";
    else if (rest[0] == '>')
      pTarget += "&gt;";
    else if (decoded.fLength == 0 || decoded.fCode == 0xFFFE || decoded.fCode == 0xFFFF)
      pTarget += "\xEF\xBF\xBD";
    else
      pTarget += rest.substr(0, length);
    rest.remove_prefix(length);
  }
}

std::string TitleElement(std::u16string_view pText) {
  std::string element = "<title>";
  while (true) {
    const size_t end = pText.find(u'\n');
    AppendEscaped(element, pText.substr(0, end));
    if (end == std::u16string_view::npos) break;
    element += '\n';
    pText.remove_prefix(end + 1);
  }
  return element + "</title>";
}

std::string PaintAttributes(const TPaint& pPaint, bool pIsText = false) {
  std::string attributes = pPaint.fOpacity > 0 || !pPaint.fLineWidth ? fmt::format(" fill=\"{}\"", Color(pPaint.fFill))
                                                                     : std::string(" fill=\"none\"");
  if (pPaint.fOpacity < 1 && !attributes.ends_with("\"none\""))
    attributes += fmt::format(" fill-opacity=\"{}\"", Number(pPaint.fOpacity));
  if (pPaint.fLineWidth <= 0) return attributes;
  attributes += fmt::format(" stroke=\"{}\" stroke-width=\"{}\" stroke-linejoin=\"round\"", Color(pPaint.fLine),
                            Number(pPaint.fLineWidth));
  if (pPaint.fDashed) attributes += " stroke-dasharray=\"4 3\"";
  if (pIsText) attributes += " paint-order=\"stroke\"";  // the rim lies behind the letters
  return attributes;
}

std::string PointAt(TPoint pCenter, double pRadius, double pDegrees) {
  const double angle = pDegrees * std::numbers::pi / 180;
  return Number(pCenter.fX + pRadius * std::sin(angle)) + " " + Number(pCenter.fY - pRadius * std::cos(angle));
}

// A whole circle is drawn as two halves, since an arc must not end where it begins.
std::string CirclePath(TPoint pCenter, double pRadius) {
  const std::string r = Number(pRadius);
  return fmt::format("M{}A{} {} 0 1 1 {}A{} {} 0 1 1 {}Z", PointAt(pCenter, pRadius, 0), r, r,
                     PointAt(pCenter, pRadius, 180), r, r, PointAt(pCenter, pRadius, 0));
}

std::string WedgePath(const TWedge& pWedge) {
  const TPoint center = pWedge.fCenter;
  const double end = pWedge.fBegin + pWedge.fSweep;
  const std::string outer = Number(pWedge.fOuterRadius);
  const std::string inner = Number(pWedge.fInnerRadius);
  constexpr double kWhole = 359.999;
  if (pWedge.fSweep >= kWhole)
    return CirclePath(center, pWedge.fOuterRadius) +
           (pWedge.fInnerRadius > 0 ? CirclePath(center, pWedge.fInnerRadius) : std::string());
  const int large = pWedge.fSweep > 180 ? 1 : 0;
  const std::string arc = fmt::format("M{}A{} {} 0 {} 1 {}", PointAt(center, pWedge.fOuterRadius, pWedge.fBegin), outer,
                                      outer, large, PointAt(center, pWedge.fOuterRadius, end));
  if (pWedge.fInnerRadius <= 0) return arc + "L" + Number(center.fX) + " " + Number(center.fY) + "Z";
  return arc + fmt::format("L{}A{} {} 0 {} 0 {}Z", PointAt(center, pWedge.fInnerRadius, end), inner, inner, large,
                           PointAt(center, pWedge.fInnerRadius, pWedge.fBegin));
}

std::string Points(const std::vector<TPoint>& pPoints) {
  std::string text;
  for (const TPoint& point : pPoints)
    text.append(text.empty() ? "" : " ").append(Number(point.fX)).append(",").append(Number(point.fY));
  return text;
}

std::string Base64(std::string_view pBytes) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((pBytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < pBytes.size(); i += 3) {
    const size_t count = std::min<size_t>(pBytes.size() - i, 3);
    uint32_t bits = 0;
    for (size_t k = 0; k < 3; ++k) bits = bits << 8 | (k < count ? static_cast<unsigned char>(pBytes[i + k]) : 0u);
    for (size_t k = 0; k < 4; ++k) text += k <= count ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

// The element's name and attributes, without brackets, and what is inside the element.
struct TElement {
  std::string fStart;
  std::string fContent;
};

TElement ElementOf(const TRectangle& pRectangle, const TPaint& pPaint) {
  const TBox& box = pRectangle.fBox;
  return {fmt::format("rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"", Number(box.fLeft), Number(box.fTop),
                      Number(box.fWidth), Number(box.fHeight)) +
              PaintAttributes(pPaint),
          {}};
}

TElement ElementOf(const TWedge& pWedge, const TPaint& pPaint) {
  return {"path fill-rule=\"evenodd\" d=\"" + WedgePath(pWedge) + "\"" + PaintAttributes(pPaint), {}};
}

TElement ElementOf(const TPolyline& pLine, const TPaint& pPaint) {
  return {"polyline points=\"" + Points(pLine.fPoints) + "\"" + PaintAttributes(pPaint), {}};
}

TElement ElementOf(const TPolygon& pPolygon, const TPaint& pPaint) {
  return {"polygon points=\"" + Points(pPolygon.fPoints) + "\"" + PaintAttributes(pPaint), {}};
}

TElement ElementOf(const TText& pText, const TPaint& pPaint) {
  std::string start = fmt::format("text x=\"{}\" y=\"{}\" font-size=\"{}\"", Number(pText.fPoint.fX),
                                  Number(pText.fPoint.fY), Number(pText.fFontSize));
  if (pText.fAnchor != TAnchor::anStart)
    start += pText.fAnchor == TAnchor::anMiddle ? " text-anchor=\"middle\"" : " text-anchor=\"end\"";
  if (pText.fBold) start += " font-weight=\"bold\"";
  std::string content;
  AppendEscaped(content, pText.fText);
  return {start + PaintAttributes(pPaint, true), std::move(content)};
}

TElement ElementOf(const TBitmap& pBitmap, const TPaint&) {
  if (pBitmap.fPixels.empty()) return {"g", {}};
  return {fmt::format("image x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" xlink:href=\"data:image/png;base64,{}\"",
                      Number(pBitmap.fPoint.fX), Number(pBitmap.fPoint.fY), pBitmap.fWidth, pBitmap.fHeight,
                      Base64(EncodePNG(pBitmap.fWidth, pBitmap.fHeight, pBitmap.fPixels))),
          {}};
}

}  // namespace

void WriteSVG(const TDrawing& pDrawing, IByteSink& pSink) {
  const std::string width = Number(pDrawing.fWidth);
  const std::string height = Number(pDrawing.fHeight);
  // Texts do not take the pointer, so the tooltip is that of the shape below. Blanks in names are kept.
  pSink.Write(
      fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
                  "width=\"{0}\" height=\"{1}\" viewBox=\"0 0 {0} {1}\" font-family=\"{2}\" "
                  "xml:space=\"preserve\">\n<style>text{{pointer-events:none;white-space:pre}}</style>\n",
                  width, height, kFonts));
  pSink.Write(TitleElement(pDrawing.fTitle) + "\n");
  pSink.Write(
      fmt::format("<rect width=\"{}\" height=\"{}\" fill=\"{}\"/>\n", width, height, Color(pDrawing.fBackground)));
  for (const TShape& shape : pDrawing.fShapes) {
    TElement element = std::visit([&](const auto& pForm) { return ElementOf(pForm, shape.fPaint); }, shape.fForm);
    if (shape.fSubject != kNoSubject)
      element.fContent = TitleElement(pDrawing.fSubjects[static_cast<size_t>(shape.fSubject)].fHint) + element.fContent;
    const std::string name = element.fStart.substr(0, element.fStart.find(' '));
    pSink.Write(element.fContent.empty() ? "<" + element.fStart + "/>\n"
                                         : "<" + element.fStart + ">" + element.fContent + "</" + name + ">\n");
  }
  pSink.Write("</svg>\n");
}

}  // namespace Vantrel::Pictures
