// Text that is shortened to a width.

#include <gtest/gtest.h>

#include "platform/text/Text.h"
#include "presentation/drawing/TextMeasure.h"

namespace Vantrel::Testing {
namespace {

using namespace Drawing;

// Each unit is half as wide as the font is high.
class TPlainMeasure final : public ITextMeasure {
 public:
  double Width(std::u16string_view pText, double pFontSize) const override {
    return static_cast<double>(pText.size()) * pFontSize / 2;
  }
};

TEST(TextMeasure, FitsAndKeepsCharactersWhole) {
  const TPlainMeasure measure;
  const std::tuple<std::u16string, double, std::u16string> cases[] = {
      {u"report.txt", 50, u"report.txt"},
      {u"report.txt", 49, u"report.t\u2026"},
      {u"report.txt", 10, u"r\u2026"},
      {u"report.txt", 9, u""},
      {u"", 0, u""},
      {u"to do.txt", 20, u"to\u2026"},
      {u"e\u0301e\u0301e\u0301", 20, u"e\u0301\u2026"},  // an accent stays with its letter
      {u"\U0001F600\U0001F600\U0001F600", 20, u"\U0001F600\u2026"}};
  for (const auto& [text, width, expected] : cases)
    EXPECT_EQ(ToUtf8(FitText(text, 10, width, measure)), ToUtf8(expected)) << width;
}

TEST(TextMeasure, ShownTextHasNoControls) {
  EXPECT_EQ(ToUtf8(ShownText(u"a\nb\x1B\u202E")), "a\\nb\\x1B\\u202E");
}

// Without the mark the digits would stand to the left of a name in Arabic and their unit to the right of it.
TEST(TextMeasure, FiguresStayBehindNames) {
  EXPECT_EQ(ToUtf8(NameAndFigure(u"usr", u"2 KB")), "usr  2 KB");
  for (const char16_t* name : {u"\u0639\u0631\u0628", u"a \u05E9", u"\U0001E900"})
    EXPECT_EQ(ToUtf8(NameAndFigure(name, u"2 KB")), ToUtf8(name) + "\u200E  2 KB");
}

}  // namespace
}  // namespace Vantrel::Testing
