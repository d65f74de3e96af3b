#include "export/DelimitedText.h"

#include "platform/Text.h"

namespace Kiv::Hierarchical::Exporting::Text {

namespace {

bool NeedsQuotes(std::string_view pText, std::string_view pSeparator) {
  return pText.find_first_of("\"\r\n") != std::string_view::npos || pText.find(pSeparator) != std::string_view::npos;
}

// Puts what stands in the line from pBegin on into quotes, where it needs them.
void QuoteField(std::string& pLine, size_t pBegin, std::string_view pSeparator) {
  if (!NeedsQuotes(std::string_view(pLine).substr(pBegin), pSeparator)) return;
  const std::string field = pLine.substr(pBegin);
  pLine.resize(pBegin);
  pLine += '"';
  for (const char character : field) pLine.append(character == '"' ? 2 : 1, character);
  pLine += '"';
}

bool LooksLikeFormula(std::u16string_view pText) {
  return !pText.empty() && std::u16string_view(u"=+-@\t\r").find(pText.front()) != std::u16string_view::npos;
}

}  // namespace

void AppendTextField(std::string& pLine, std::u16string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  if (pFormat.fNeutralizeFormulas && LooksLikeFormula(pText)) pLine += '\'';
  AppendUtf8Escaped(pLine, pText);
  QuoteField(pLine, begin, pFormat.fSeparator);
}

void AppendOwnField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  pLine += pText;
  QuoteField(pLine, begin, pFormat.fSeparator);
}

}  // namespace Kiv::Hierarchical::Exporting::Text
