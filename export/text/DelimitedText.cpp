#include "export/text/DelimitedText.h"

#include <algorithm>

#include "model/tree/CustomFolder.h"
#include "platform/text/Text.h"

namespace Vantrel::Exporting {

namespace {

// Whether the text holds the separator, or ends like its beginning. For example, the field "a:" before the separator
// "::" would be read as "a", and the next field would begin with ":".
bool HoldsSeparator(std::string_view pText, const std::string& pSeparator) {
  return (std::string(pText) + pSeparator).find(pSeparator) < pText.size();
}

bool NeedsQuotes(std::string_view pText, const std::string& pSeparator) {
  // Searches one character at a time, since the library searches fast only for a single character.
  auto holds = [pText](char pCharacter) { return pText.find(pCharacter) != std::string_view::npos; };
  return holds('"') || holds('\r') || holds('\n') || (holds(pSeparator.front()) && HoldsSeparator(pText, pSeparator));
}

bool LooksLikeFormula(std::string_view pText) {
  return !pText.empty() && std::string_view("=+-@\t\r").find(pText.front()) != std::string_view::npos;
}

// Whether the text after a backslash would be read as an escape.
bool ContinuesEscape(std::u16string_view pText) {
  const auto hasDigits = [pText](size_t pCount) {
    const auto isDigit = [](char16_t pUnit) {
      return (pUnit >= u'0' && pUnit <= u'9') || (pUnit >= u'A' && pUnit <= u'F');
    };
    return pText.size() > pCount &&
           std::all_of(pText.begin() + 1, pText.begin() + 1 + static_cast<int>(pCount), isDigit);
  };
  if (pText.starts_with(u'u')) return hasDigits(4) && pText[1] == u'D' && pText[2] >= u'8';
  return pText.starts_with(u'x') && hasDigits(2) &&
         (pText[1] >= u'8' || pText.starts_with(u"x5B") || pText.starts_with(u"x5C"));
}

}  // namespace

TMediaSettings TabSettings(TMediaSettings pText) {
  pText.fSeparator = u"\t";
  pText.fUseAlternativeSeparator = false;
  if (pText.fOverrideUnits) return pText;
  pText.fUsePlainByteValues = true;
  pText.fAutomaticUnit = true;
  return pText;
}

TValueFormat WithoutMisleadingGroups(TValueFormat pFormat, const TDelimitedFormat& pDelimited) {
  if (ToUtf8(pFormat.fThousandsSeparator) == pDelimited.fSeparator ||
      pFormat.fThousandsSeparator == pFormat.fDecimalSeparator)
    pFormat.fThousandsSeparator.clear();
  return pFormat;
}

void AppendTextField(std::string& pLine, std::u16string_view pText, const TDelimitedFormat& pFormat) {
  const size_t begin = pLine.size();
  AppendUnambiguous(pLine, pText);
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

void AppendUnambiguous(std::string& pTarget, std::u16string_view pText) {
  const size_t begin = pTarget.size();
  AppendUtf8Escaped(pTarget, pText);
  // Most names hold no backslash and no escape.
  if (pTarget.find('\\', begin) == std::string::npos) return;
  pTarget.resize(begin);
  for (size_t end = pText.find(u'\\'); end != std::u16string_view::npos; end = pText.find(u'\\')) {
    AppendUtf8Escaped(pTarget, pText.substr(0, end));
    pText.remove_prefix(end + 1);
    pTarget += ContinuesEscape(pText) ? "\\x5C" : "\\";
  }
  AppendUtf8Escaped(pTarget, pText);
}

void AppendName(std::string& pTarget, std::u16string_view pName, bool pIsFileGroup) {
  if (pIsFileGroup || pName != TFileGroupData::kName) return AppendUnambiguous(pTarget, pName);
  pTarget += "\\x5B";
  AppendUnambiguous(pTarget, pName.substr(1));
}

void AppendNameToPath(std::string& pPath, std::u16string_view pName, char pDelimiter, bool pIsFileGroup) {
  if (pPath.back() != pDelimiter) pPath += pDelimiter;
  // On Windows the delimiter is a backslash too.
  if (pDelimiter == '\\' && ContinuesEscape(pName)) pPath += "x5C";
  AppendName(pPath, pName, pIsFileGroup);
}

}  // namespace Vantrel::Exporting
