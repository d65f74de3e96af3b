#include "window/panes/QueryEdit.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QTextCharFormat>
#include <algorithm>

#include "search/query/Syntax.h"
#include "search/query/SyntaxColorizing.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

using Search::TColoredToken;
using Search::TTokenType;

namespace {

// Longer texts stay plain: each letter typed would colour all of them.
constexpr qsizetype kLongestColoured = 4000;

// The colours are made for a white ground. On a dark one they get light.
QColor ColourOf(const TColoredToken& pToken, const QPalette& pPalette) {
  if (pToken.fTokenType == TTokenType::ValueToken) return pPalette.color(QPalette::Text);
  const QColor color = QColor::fromRgb(pToken.fColor);
  constexpr int kDark = 128;
  constexpr float kLight = 0.72F;
  if (pPalette.color(QPalette::Base).lightness() >= kDark) return color;
  return QColor::fromHslF(std::max(0.0F, color.hslHueF()), std::min(0.85F, color.hslSaturationF()), kLight);
}

}  // namespace

TQueryEdit::TQueryEdit(QWidget* pParent) : QLineEdit(pParent) {
  setClearButtonEnabled(true);
  connect(this, &QLineEdit::textChanged, this, [this] {
    fErrorLength = 0;
    Colour();
  });
}

void TQueryEdit::MarkError(size_t pBegin, size_t pLength) {
  // A place behind the text, such as that of a missing value, is shown at its end.
  const int size = static_cast<int>(text().size());
  fErrorBegin = std::clamp(static_cast<int>(pBegin), 0, std::max(0, size - 1));
  fErrorLength = std::clamp(static_cast<int>(pLength), 1, std::max(1, size - fErrorBegin));
  Colour();
}

void TQueryEdit::ForgetError() {
  fErrorLength = 0;
  Colour();
}

void TQueryEdit::changeEvent(QEvent* pEvent) {
  QLineEdit::changeEvent(pEvent);
  if (pEvent->type() == QEvent::PaletteChange) Colour();
}

// A line edit takes formats for parts of its text from input methods alone.
void TQueryEdit::Colour() {
  static const Search::TDSMLexerGrammar grammar{Search::TQuerySettings()};
  QList<QInputMethodEvent::Attribute> attributes;
  const auto add = [&](int pBegin, int pLength, const QTextCharFormat& pFormat) {
    attributes.append({QInputMethodEvent::TextFormat, pBegin - cursorPosition(), pLength, pFormat});
  };
  if (text().size() <= kLongestColoured) {
    for (const TColoredToken& token : Search::TDSMSyntaxColorizing(grammar).GetColorMapping(FromQString(text()))) {
      QTextCharFormat format;
      format.setForeground(ColourOf(token, palette()));
      add(static_cast<int>(token.fPosition), static_cast<int>(token.fLength), format);
    }
  }
  if (fErrorLength > 0) {
    QTextCharFormat format;
    format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    format.setUnderlineColor(QColor(0xE0, 0x30, 0x30));
    add(fErrorBegin, fErrorLength, format);
  }
  QInputMethodEvent event({}, attributes);
  QCoreApplication::sendEvent(this, &event);
}

}  // namespace Vantrel::Window
