#pragma once

// The width of text in pixels, and text shortened to a width.

#include <string>
#include <string_view>

namespace Vantrel::Drawing {

// Tells how wide a text is. Each way to draw has its own fonts, so each brings its own measure. Any thread.
class ITextMeasure {
 public:
  virtual ~ITextMeasure() = default;
  // The width in pixels of one line of text whose font has the given size in pixels.
  virtual double Width(std::u16string_view pText, double pFontSize) const = 0;
};

// For pictures whose reader picks the font, as with SVG. Gives the width in the widest of the usual sans-serif fonts,
// soXX
class TEstimatedTextMeasure final : public ITextMeasure {
 public:
  double Width(std::u16string_view pText, double pFontSize) const override;
};

// The text as it may be shown in a picture: control characters, bidirectional overrides and undecodable bytes become
// visible escapes such as \n and \xFF. All texts of drawings have this form.
std::u16string ShownText(std::u16string_view pText);

// A name and a figure in one line. After a name in Hebrew or Arabic an invisible mark keeps the figure to the right of
// it.
std::u16string NameAndFigure(std::u16string_view pName, std::u16string_view pFigure);

// The text, or its beginning and "…", so that it is at most pWidth wide. Empty if not even one character fits.
// Characters of several units, and letters with their combining marks, are not torn apart.
std::u16string FitText(std::u16string_view pText, double pFontSize, double pWidth, const ITextMeasure& pMeasure);

}  // namespace Vantrel::Drawing
