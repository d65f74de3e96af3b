#include "search/query/Lexer.h"

#include <algorithm>

#include "platform/text/Text.h"
#include "search/patterns/CustomPattern.h"

namespace Vantrel::Search {

namespace {

// No size is longer, with all separators. A bound keeps the look ahead short.
constexpr size_t kLongestNumber = 64;

constexpr const char* kUnclosed = "The quote is not closed";
constexpr const char* kUnclosedHint = "Write \" at its end. A quote inside a quoted text is doubled.";
constexpr const char* kBehindQuote = "A quoted text must end there";
constexpr const char* kBehindQuoteHint =
    "Put a blank behind the closing quote. A quote inside a quoted text is doubled.";

bool IsDigit(char16_t pUnit) {
  return pUnit >= u'0' && pUnit <= u'9';
}

bool IsLetter(char16_t pUnit) {
  return FoldAscii(pUnit) >= u'a' && FoldAscii(pUnit) <= u'z';
}

bool EndsWord(char16_t pUnit) {
  return std::u16string_view(u" ,()").find(pUnit) != kNone;
}

}  // namespace

void TLexerToken::Set_(TTokenType pType, std::u16string_view pString, std::u16string_view pRawString,
                       size_t pPosition) {
  fTokenType = pType;
  fTokenString = pString;
  fTokenRawString = pRawString;
  fPosition = pPosition;
}

// --- grammar ---------------------------------------------------------------------------------------------------------

void TLexerGrammar::RegisterProperty(TProperty pProperty) {
  fLongestKeyword = std::max(fLongestKeyword, pProperty.fIdentifier.size());
  fProperties.push_back(std::move(pProperty));
}

void TLexerGrammar::RegisterOperator(TOperatorWord pOperator) {
  fOperators.push_back(std::move(pOperator));
}

void TLexerGrammar::RegisterConjunction(TConjunction pConjunction) {
  fConjunctions.push_back(std::move(pConjunction));
}

const TProperty* TLexerGrammar::PropertyAt(std::u16string_view pText) const {
  const TProperty* found = nullptr;
  // Most words begin with no keyword, and a look at the colon saves the comparisons.
  if (pText.substr(0, fLongestKeyword).find(u':') == kNone) return nullptr;
  for (const TProperty& property : fProperties) {
    const size_t length = property.fIdentifier.size();
    if (SameTextAscii(pText.substr(0, length), property.fIdentifier) &&
        (found == nullptr || length > found->fIdentifier.size()))
      found = &property;
  }
  return found;
}

const TOperatorWord* TLexerGrammar::OperatorAt(std::u16string_view pText) const {
  const TOperatorWord* found = nullptr;
  for (const TOperatorWord& word : fOperators)
    if (pText.starts_with(word.fIdentifier) &&
        (found == nullptr || word.fIdentifier.size() > found->fIdentifier.size()))
      found = &word;
  return found;
}

const TConjunction* TLexerGrammar::ConjunctionAt(std::u16string_view pText) const {
  for (const TConjunction& conjunction : fConjunctions) {
    const size_t length = conjunction.fIdentifier.size();
    if (!pText.starts_with(conjunction.fIdentifier)) continue;
    if (!IsLetter(pText[0]) || pText.size() == length || EndsWord(pText[length])) return &conjunction;
  }
  return nullptr;
}

const TProperty* TLexerGrammar::FindProperty(std::u16string_view pIdentifier) const {
  const auto found = std::find_if(fProperties.begin(), fProperties.end(),
                                  [&](const TProperty& pProperty) { return pProperty.fIdentifier == pIdentifier; });
  return found == fProperties.end() ? nullptr : &*found;
}

TExpressionRef TLexerGrammar::Join(bool pByAnd, std::vector<TExpressionRef> pConditions) const {
  const auto found = std::find_if(fConjunctions.begin(), fConjunctions.end(),
                                  [&](const TConjunction& pConjunction) { return pConjunction.fIsAnd == pByAnd; });
  return found->fFunction(std::move(pConditions));
}

// --- lexer -----------------------------------------------------------------------------------------------------------

TExpressionLexer::TExpressionLexer(std::u16string_view pText, const TLexerGrammar& pGrammar)
    : fText(pText), fGrammar(pGrammar) {
  FindPairs();
}

// All pairs in one walk, so that a query of nothing but parentheses takes no longer than any other.
void TExpressionLexer::FindPairs() {
  fPairs.resize(fText.size());
  std::vector<size_t> open;
  for (size_t at = 0; at < fText.size(); ++at) {
    if (fText[at] == u' ') open.clear();
    if (fText[at] == u'(') open.push_back(at);
    if (fText[at] != u')' || open.empty()) continue;
    fPairs[open.back()] = at;
    open.pop_back();
  }
}

TLexerToken TExpressionLexer::NextToken() {
  if (fPending.empty()) LexNext();
  TLexerToken token = std::move(fPending.front());
  fPending.pop_front();
  return token;
}

void TExpressionLexer::SkipBlanks() {
  fAt = std::min(fText.find_first_not_of(u' ', fAt), fText.size());
}

void TExpressionLexer::Push(TTokenType pType, std::u16string_view pString, size_t pEnd) {
  TLexerToken token;
  token.Set_(pType, pString, fText.substr(fTokenEnd, pEnd - fTokenEnd), fAt);
  token.fLength = pEnd - fAt;
  fPending.push_back(std::move(token));
  fAt = fTokenEnd = pEnd;
}

void TExpressionLexer::PushAdded(std::u16string_view pIdentifier) {
  TLexerToken token;
  token.Set_(TTokenType::PropertyToken, pIdentifier, {}, fAt);
  fPending.push_back(std::move(token));
}

void TExpressionLexer::LexNext() {
  SkipBlanks();
  const std::u16string_view rest = fText.substr(fAt);
  if (rest.empty()) return Push(TTokenType::EndOfFileToken, {}, fAt);
  if (rest[0] == u'(') return Push(TTokenType::StartMarkerToken, u"(", fAt + 1);
  if (rest[0] == u')') return Push(TTokenType::EndMarkerToken, u")", fAt + 1);
  if (const TConjunction* conjunction = fGrammar.ConjunctionAt(rest))
    return Push(TTokenType::ConjunctionToken, conjunction->fIdentifier, fAt + conjunction->fIdentifier.size());
  LexCondition(fGrammar.PropertyAt(rest));
}

// Adds the tokens of one condition: the property and the operator, if they are typed, and the value, if it is.
void TExpressionLexer::LexCondition(const TProperty* pProperty) {
  if (pProperty != nullptr)
    Push(TTokenType::PropertyToken, pProperty->fIdentifier, fAt + pProperty->fIdentifier.size());
  size_t blanksBegin = fAt;
  SkipBlanks();
  const size_t operatorBegin = fAt;
  const TOperatorWord* const word = fGrammar.OperatorAt(fText.substr(fAt));
  if (word != nullptr) {
    fAt += word->fIdentifier.size();
    blanksBegin = fAt;
    SkipBlanks();
  }
  const bool hasHead = pProperty != nullptr || word != nullptr;
  const bool isRegEx = word != nullptr && std::holds_alternative<TStringOperator>(word->fOperator);
  const bool isMissing = hasHead && IsValueMissing(blanksBegin, isRegEx);
  const size_t valueBegin = fAt;
  TValue value{fAt};
  if (!isMissing) value = FindValueEnd(pProperty ? &pProperty->fSettings : nullptr, isRegEx);

  fAt = operatorBegin;
  if (pProperty == nullptr && !isMissing && !isRegEx && value.fProblem == nullptr) {
    const std::u16string_view property = fGrammar.ClassifyValue(fText.substr(valueBegin, value.fEnd - valueBegin));
    if (property != fGrammar.DefaultProperty().fIdentifier) PushAdded(property);
  }
  if (word != nullptr) Push(TTokenType::OperatorToken, word->fIdentifier, fAt + word->fIdentifier.size());
  if (isMissing) return;
  fAt = valueBegin;
  PushValue(value);
}

void TExpressionLexer::PushValue(const TValue& pValue) {
  const std::u16string_view typed = fText.substr(fAt, pValue.fEnd - fAt);
  if (pValue.fProblem != nullptr) {
    Push(TTokenType::InvalidToken, typed, pValue.fEnd);
    TLexerToken& token = fPending.back();
    token.fProblem = pValue.fProblem;
    token.fHint = pValue.fHint;
    token.fLength -= pValue.fProblemBegin - token.fPosition;
    token.fPosition = pValue.fProblemBegin;
    return;
  }
  const bool isQuoted = typed.starts_with(u'"') && BehindQuotes(fAt, false).fEnd == pValue.fEnd;
  const std::u16string text = isQuoted ? PatternMatching::Unquoted(typed) : std::u16string(typed);
  Push(TTokenType::ValueToken, text, pValue.fEnd);
}

// Blanks may stand between the keyword, the operator and the value. But behind a blank, what begins another condition
// is no value.
bool TExpressionLexer::IsValueMissing(size_t pBlanksBegin, bool pIsRegEx) const {
  const std::u16string_view rest = fText.substr(fAt);
  if (rest.empty() || rest[0] == u')' || rest[0] == u',') return true;
  if (pBlanksBegin == fAt) return rest[0] == u'(' && (pIsRegEx || fPairs[fAt] == 0);
  return rest[0] == u'(' || fGrammar.ConjunctionAt(rest) != nullptr || fGrammar.PropertyAt(rest) != nullptr;
}

// Where the value that begins here ends. A "(" belongs to the value if its ")" stands in it too, as in "copy(1).txt".
TExpressionLexer::TValue TExpressionLexer::FindValueEnd(const TPropertySettings* pSettings, bool pIsRegEx) const {
  const size_t begin = fAt;
  const std::u16string_view ends = pSettings != nullptr ? std::u16string_view(pSettings->fIgnoreChars) : u" ";
  const bool isList = !pIsRegEx && (pSettings == nullptr || pSettings->fCommaUse == TCommaUse::cuList);
  bool isPartBegin = true;
  size_t at = begin;
  while (at < fText.size()) {
    const char16_t unit = fText[at];
    if (isPartBegin && unit == u'"') {
      const TValue quoted = BehindQuotes(at, isList);
      if (quoted.fProblem != nullptr) return quoted;
      at = quoted.fEnd;
      isPartBegin = false;
      if (!isList || at == fText.size() || (fText[at] != u',' && fText[at] != u';')) break;
      continue;
    }
    isPartBegin = false;
    if (unit == u' ' && pSettings != nullptr && pSettings->fTakesAges && AgeContinues(begin, at)) {
      at = EndOfWord(at + 1);
      break;
    }
    if (unit == u')' || (unit == u'(' && (pIsRegEx || fPairs[at] == 0))) break;
    if (unit == u',' && (pIsRegEx || !CommaContinues(begin, at, pSettings))) break;
    if (unit != u',' && ends.find(unit) != kNone) break;
    isPartBegin = isList && (unit == u';' || (unit == u',' && pSettings != nullptr));
    at = unit == u'(' ? fPairs[at] + 1 : at + 1;
  }
  return {at};
}

// The end of the quoted text that begins at pBegin. Behind it, a value must end or its list go on.
TExpressionLexer::TValue TExpressionLexer::BehindQuotes(size_t pBegin, bool pTakesList) const {
  size_t at = pBegin + 1;
  for (;; at += 2) {
    at = fText.find(u'"', at);
    if (at == kNone) return {fText.size(), kUnclosed, kUnclosedHint, pBegin};
    if (fText.substr(at + 1, 1) != u"\"") break;
  }
  ++at;
  const bool ends = at == fText.size() || EndsWord(fText[at]) || (pTakesList && fText[at] == u';');
  if (ends) return {at};
  return {EndOfWord(at), kBehindQuote, kBehindQuoteHint, at};
}

// Whether a "," stands there, between two digits.
bool TExpressionLexer::IsBetweenDigits(size_t pAt) const {
  return pAt > 0 && pAt + 1 < fText.size() && fText[pAt] == u',' && IsDigit(fText[pAt - 1]) && IsDigit(fText[pAt + 1]);
}

bool TExpressionLexer::CommaContinues(size_t pBegin, size_t pAt, const TPropertySettings* pSettings) const {
  const std::u16string_view rest = fText.substr(pAt + 1);
  if (rest.empty() || EndsWord(rest[0]) || rest[0] == u';') return false;
  const bool isInNumber = pAt > pBegin && IsBetweenDigits(pAt);
  // Without a keyword, "1,000KB" is a number and "foo,bar" means OR.
  if (pSettings == nullptr) {
    if (!isInNumber) return false;
    size_t end = pAt;
    while (end - pBegin <= kLongestNumber && IsBetweenDigits(end)) end = EndOfWord(end + 1);
    return end - pBegin <= kLongestNumber && fGrammar.IsNumber(fText.substr(pBegin, end - pBegin));
  }
  switch (pSettings->fCommaUse) {
    case TCommaUse::cuEnds:
      return false;
    case TCommaUse::cuThousands:
      return isInNumber;
    default:
      return fGrammar.PropertyAt(rest) == nullptr;
  }
}

bool TExpressionLexer::AgeContinues(size_t pBegin, size_t pAt) const {
  const std::u16string_view number = fText.substr(pBegin, pAt - pBegin);
  if (number.empty() || number.size() > 3 || !std::all_of(number.begin(), number.end(), IsDigit)) return false;
  return fGrammar.IsUnit(fText.substr(pAt + 1, EndOfWord(pAt + 1) - pAt - 1));
}

size_t TExpressionLexer::EndOfWord(size_t pAt) const {
  return std::min(fText.find_first_of(u" ,()", pAt), fText.size());
}

}  // namespace Vantrel::Search
