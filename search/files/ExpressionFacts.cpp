#include "search/files/ExpressionFacts.h"

#include <algorithm>
#include <cstddef>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::Search {

namespace {

constexpr size_t kNone = std::u16string_view::npos;

bool IsDigit(char16_t pUnit) {
  return pUnit >= u'0' && pUnit <= u'9';
}

bool IsPunctuation(char16_t pUnit) {
  return pUnit > u' ' && pUnit < 0x7F && !IsDigit(pUnit) && !(FoldAscii(pUnit) >= u'A' && FoldAscii(pUnit) <= u'Z') &&
         !(FoldAscii(pUnit) >= u'a' && FoldAscii(pUnit) <= u'z');
}

bool IsOneOf(char16_t pUnit, std::u16string_view pUnits) {
  return pUnits.find(pUnit) != kNone;
}

// Reads an expression once, from its start to its end.
class TReader {
 public:
  TReader(std::u16string_view pExpression, bool pCaseSensitive) : fText(pExpression), fCaseSensitive(pCaseSensitive) {
    fFacts.fStaysInLine = true;
    fFacts.fCaseSensitive = pCaseSensitive;
  }

  TExpressionFacts Read() {
    while (fAt < fText.size())
      if (!ReadPart()) return {};
    EndRun();
    if (fHasAlternatives) fFacts.fText.clear();
    return std::move(fFacts);
  }

 private:
  char16_t Next(size_t pAhead = 1) const { return fAt + pAhead < fText.size() ? fText[fAt + pAhead] : u'\0'; }

  // False at a construct that is not understood.
  bool ReadPart() {
    const char16_t unit = fText[fAt];
    switch (unit) {
      case u'\\':
        return ReadEscape();
      case u'[':
        return ReadClass();
      case u'(':
        return BeginGroup();
      case u')':
        --fDepth;
        EndRun();
        break;
      case u'|':
        fHasAlternatives = fHasAlternatives || fDepth == 0;
        EndRun();
        break;
      case u'.':
      case u'^':
      case u'$':
        EndRun();
        break;
      case u'*':
      case u'?':
      case u'+':
        Repeat(unit == u'+');
        return true;
      case u'{':
        return ReadCount();
      default:
        AddLiteral(unit);
        return true;
    }
    ++fAt;
    return true;
  }

  void AddLiteral(char16_t pUnit) {
    ++fAt;
    // Both stand for a character beyond ASCII too.
    const bool hasTwin = !fCaseSensitive && (pUnit >= 0x80 || IsOneOf(pUnit, u"kKsS"));
    if (hasTwin || pUnit < 0x20)
      EndRun();
    else if (fDepth == 0)
      fRun += pUnit;
    if (pUnit < 0x20) fFacts.fStaysInLine = false;
  }

  bool ReadEscape() {
    const char16_t unit = Next();
    fAt += 2;
    if (IsPunctuation(unit)) {
      --fAt;
      AddLiteral(unit);
      return true;
    }
    EndRun();
    if (IsOneOf(unit, u"wdbBt")) return true;
    fFacts.fStaysInLine = false;
    return IsOneOf(unit, u"sSWDhHvV");
  }

  bool ReadClass() {
    EndRun();
    ++fAt;
    if (fAt < fText.size() && fText[fAt] == u'^') {
      fFacts.fStaysInLine = false;
      ++fAt;
    }
    for (bool isFirst = true; fAt < fText.size() && (isFirst || fText[fAt] != u']'); isFirst = false) {
      const char16_t unit = fText[fAt];
      if (unit < 0x20 || (unit == u'[' && IsOneOf(Next(), u":.="))) return false;
      if (unit == u'\\') {
        if (IsOneOf(Next(), u"sSWDhHvV"))
          fFacts.fStaysInLine = false;
        else if (!IsPunctuation(Next()) && !IsOneOf(Next(), u"wdt"))
          return false;
        ++fAt;
      }
      ++fAt;
    }
    ++fAt;
    return true;
  }

  bool BeginGroup() {
    EndRun();
    ++fDepth;
    ++fAt;
    if (fAt >= fText.size() || !IsOneOf(fText[fAt], u"?*")) return true;
    if (!fText.substr(fAt).starts_with(u"?:")) return false;
    fAt += 2;
    return true;
  }

  bool ReadCount() {
    size_t at = fAt + 1;
    const size_t digits = at;
    while (at < fText.size() && IsDigit(fText[at])) ++at;
    if (at == digits) return false;
    const bool isAtLeastOnce =
        !std::all_of(fText.begin() + static_cast<std::ptrdiff_t>(digits),
                     fText.begin() + static_cast<std::ptrdiff_t>(at), [](char16_t pUnit) { return pUnit == u'0'; });
    if (at < fText.size() && fText[at] == u',') ++at;
    while (at < fText.size() && IsDigit(fText[at])) ++at;
    if (at >= fText.size() || fText[at] != u'}') return false;
    fAt = at;
    Repeat(isAtLeastOnce);
    return true;
  }

  // A repeat of what stands before it.
  void Repeat(bool pIsAtLeastOnce) {
    ++fAt;
    if (fAt < fText.size() && IsOneOf(fText[fAt], u"?+")) ++fAt;  // lazy or possessive
    if (!pIsAtLeastOnce && !fRun.empty()) {
      const bool isPair = IsTrailSurrogate(fRun.back()) && fRun.size() > 1;
      fRun.resize(fRun.size() - (isPair ? 2 : 1));
    }
    EndRun();
  }

  void EndRun() {
    if (fRun.size() > fFacts.fText.size()) fFacts.fText = fRun;
    fRun.clear();
  }

  const std::u16string_view fText;
  const bool fCaseSensitive;
  size_t fAt = 0;
  int fDepth = 0;
  bool fHasAlternatives = false;  // outside all groups
  std::u16string fRun;            // literals one after the other
  TExpressionFacts fFacts;
};

}  // namespace

TExpressionFacts FactsOfExpression(std::u16string_view pExpression) {
  constexpr std::u16string_view kIgnoreCase = u"(?i)";
  const bool ignoresCase = pExpression.starts_with(kIgnoreCase);
  if (ignoresCase) pExpression.remove_prefix(kIgnoreCase.size());
  return TReader(pExpression, !ignoresCase).Read();
}

}  // namespace Vantrel::Search
