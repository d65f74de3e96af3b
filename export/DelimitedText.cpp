#include "export/DelimitedText.h"

#include "platform/Text.h"

namespace Kiv::Hierarchical::Exporting::Text {

namespace {

// Without an early end, so that a compiler makes it one comparison of many characters at a time: hardly any field has one.
bool HoldsAnyOf(std::string_view pText, char pFirstOfSeparator) {
  bool found = false;
  for (const char character : pText)
    found |= (character == '"') | (character == '\r') | (character == '\n') | (character == pFirstOfSeparator);
  return found;
}

// Also of a field that ends like a separator: "a:" before "::" would be read as "a" before a field that begins with ":".
bool HoldsSeparator(std::string_view pText, const std::string& pSeparator) {
  return (std::string(pText) + pSeparator).find(pSeparator) < pText.size();
}

bool NeedsQuotes(std::string_view pText, const std::string& pSeparator) {
  return HoldsAnyOf(pText, pSeparator.front()) &&
         (pText.find_first_of("\"\r\n") != std::string_view::npos || HoldsSeparator(pText, pSeparator));
}

bool LooksLikeFormula(std::string_view pText) {
  return !pText.empty() && std::string_view("=+-@\t\r").find(pText.front()) != std::string_view::npos;
}

}  // namespace

void AppendTextField(std::string& pLine, std::u16string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  AppendUtf8Escaped(pLine, pText);
  if (pFormat.fNeutralizeFormulas && LooksLikeFormula(std::string_view(pLine).substr(begin))) pLine.insert(begin, 1, '\'');
  QuoteField(pLine, begin, pFormat);
}

void AppendEscapedField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  if (pFormat.fNeutralizeFormulas && LooksLikeFormula(pText)) pLine += '\'';
  pLine += pText;
  QuoteField(pLine, begin, pFormat);
}

void AppendOwnField(std::string& pLine, std::string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  pLine += pText;
  QuoteField(pLine, begin, pFormat);
}

void QuoteField(std::string& pLine, size_t pBegin, const TDelimitedFormat& pFormat) {
  if (!NeedsQuotes(std::string_view(pLine).substr(pBegin), pFormat.fSeparator)) return;
  const std::string field = pLine.substr(pBegin);
  pLine.resize(pBegin);
  pLine += '"';
  for (const char character : field) pLine.append(character == '"' ? 2 : 1, character);
  pLine += '"';
}

}  // namespace Kiv::Hierarchical::Exporting::Text
