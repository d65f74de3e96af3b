#include "export/text/DelimitedText.h"

#include "platform/text/Text.h"

namespace Vantrel::Exporting {

namespace {

// Also of a field that ends like a separator: "a:" before "::" would be read as "a" before a field that begins with
// ":".
bool HoldsSeparator(std::string_view pText, const std::string& pSeparator) {
  return (std::string(pText) + pSeparator).find(pSeparator) < pText.size();
}

bool NeedsQuotes(std::string_view pText, const std::string& pSeparator) {
  // One by one: the library looks for one character in many at a time, but for one of several in one after the other.
  auto holds = [pText](char pCharacter) { return pText.find(pCharacter) != std::string_view::npos; };
  return holds('"') || holds('\r') || holds('\n') || (holds(pSeparator.front()) && HoldsSeparator(pText, pSeparator));
}

bool LooksLikeFormula(std::string_view pText) {
  return !pText.empty() && std::string_view("=+-@\t\r").find(pText.front()) != std::string_view::npos;
}

}  // namespace

TValueFormat WithoutMisleadingGroups(TValueFormat pFormat, const TDelimitedFormat& pDelimited) {
  if (ToUtf8(pFormat.fThousandsSeparator) == pDelimited.fSeparator ||
      pFormat.fThousandsSeparator == pFormat.fDecimalSeparator)
    pFormat.fThousandsSeparator.clear();
  return pFormat;
}

void AppendTextField(std::string& pLine, std::u16string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  AppendUtf8Escaped(pLine, pText);
  if (pFormat.fNeutralizeFormulas && LooksLikeFormula(std::string_view(pLine).substr(begin)))
    pLine.insert(begin, 1, '\'');
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

}  // namespace Vantrel::Exporting
