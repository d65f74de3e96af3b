#pragma once

// Splits a query into tokens: the tokens, the grammar that says which words there are, and the lexer.

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "search/query/Expressions.h"
#include "search/query/Operators.h"

namespace Vantrel::Search {

enum class TTokenType : uint8_t {
  PropertyToken = 0,
  OperatorToken = 1,
  ConjunctionToken = 2,
  ValueToken = 3,
  StartMarkerToken = 4,
  EndMarkerToken = 5,
  InvalidToken = 6,
  EndOfFileToken = 7
};

struct TLexerToken {
  TTokenType fTokenType = TTokenType::EndOfFileToken;
  std::u16string fTokenString;     // as interpreted: keywords in their own letter case, a quoted value without quotes
  std::u16string fTokenRawString;  // as typed, with the blanks in front of it; empty for a keyword that was added
  size_t fPosition = 0;            // in the query, behind those blanks
  size_t fLength = 0;              // of what was typed, without those blanks
  const char* fProblem = nullptr;  // of an invalid token: what is wrong, and what would be right
  const char* fHint = nullptr;

  void Initialize() { *this = {}; }
  void Set_(TTokenType pType, std::u16string_view pString, std::u16string_view pRawString, size_t pPosition);
};

// An operator of the language: a comparison, or a regular expression.
using TQueryOperator = std::variant<TOperator, TStringOperator>;

// Builds the condition of a property from its value as typed, with quotes. pOperator is nullptr if none was typed.
// EQueryError, with the place counted from the value's beginning.
using TPropertyFunction = std::function<TExpressionRef(const TQueryOperator* pOperator, std::u16string_view pValue)>;

// What a "," means behind a value without quotes. In front of a blank, a "(", a ")" or a keyword it always means OR.
enum class TCommaUse : uint8_t {
  cuList,       // separates alternatives of the property, as ";" does
  cuText,       // belongs to the text
  cuThousands,  // between two digits it belongs to the number
  cuEnds        // always means OR
};

struct TPropertySettings {
  TPropertyFunction fPropertyFunction;
  std::u16string fIgnoreChars = u" ";  // end a value
  TCommaUse fCommaUse = TCommaUse::cuList;
  bool fTakesAges = false;  // "3 days" is one value
  std::string fExample;     // of a condition, for messages
};

struct TProperty {
  std::u16string fIdentifier;  // with the ":" at its end
  TPropertySettings fSettings;
};

using TConjunctionFunction = std::function<TExpressionRef(std::vector<TExpressionRef> pConditions)>;
struct TConjunction {
  std::u16string fIdentifier;
  bool fIsAnd;
  TConjunctionFunction fFunction;
};

struct TOperatorWord {
  std::u16string fIdentifier;
  TQueryOperator fOperator;
};

// The words of a query language.
class TLexerGrammar {
 public:
  // Says which property a value without a keyword belongs to: its identifier.
  using TClassifier = std::function<std::u16string_view(std::u16string_view pValue)>;

  virtual ~TLexerGrammar() = default;
  void RegisterProperty(TProperty pProperty);
  void RegisterOperator(TOperatorWord pOperator);
  void RegisterConjunction(TConjunction pConjunction);
  // The first one registered is the default.
  const TProperty& DefaultProperty() const { return fProperties.front(); }
  const std::vector<TProperty>& Properties() const { return fProperties; }

  // The word with which the text begins, the longest one; nullptr if there is none. Letter case does not count for
  // properties. A conjunction of letters must end there.
  const TProperty* PropertyAt(std::u16string_view pText) const;
  const TOperatorWord* OperatorAt(std::u16string_view pText) const;
  const TConjunction* ConjunctionAt(std::u16string_view pText) const;
  const TProperty* FindProperty(std::u16string_view pIdentifier) const;
  // The function that joins conditions by AND or by OR.
  TExpressionRef Join(bool pByAnd, std::vector<TExpressionRef> pConditions) const;

  // The property of a value without a keyword.
  virtual std::u16string_view ClassifyValue(std::u16string_view pValue) const = 0;
  // Whether a text with a "," between digits is a number as a whole.
  virtual bool IsNumber(std::u16string_view pText) const = 0;
  // Whether a number and this word behind a blank are one value.
  virtual bool IsUnit(std::u16string_view pWord) const = 0;

 private:
  std::vector<TProperty> fProperties;
  size_t fLongestKeyword = 0;
  std::vector<TOperatorWord> fOperators;
  std::vector<TConjunction> fConjunctions;
};

// Splits one query. It never fails: what is wrong becomes an invalid token. The raw texts of all tokens, one behind the
// other, are the query. One thread.
class TExpressionLexer {
 public:
  // Both must live as long as the lexer.
  TExpressionLexer(std::u16string_view pText, const TLexerGrammar& pGrammar);

  // The next token. At the end it is EndOfFileToken, again and again.
  TLexerToken NextToken();

 private:
  struct TValue {
    size_t fEnd;
    const char* fProblem = nullptr;
    const char* fHint = nullptr;
    size_t fProblemBegin = 0;
  };

  void FindPairs();
  void SkipBlanks();
  void LexNext();
  void LexCondition(const TProperty* pProperty);
  bool IsValueMissing(size_t pBlanksBegin, bool pIsRegEx) const;
  TValue FindValueEnd(const TPropertySettings* pSettings, bool pIsRegEx) const;
  TValue BehindQuotes(size_t pBegin, bool pTakesList) const;
  bool IsBetweenDigits(size_t pAt) const;
  bool CommaContinues(size_t pBegin, size_t pAt, const TPropertySettings* pSettings) const;
  bool AgeContinues(size_t pBegin, size_t pAt) const;
  size_t EndOfWord(size_t pAt) const;
  void Push(TTokenType pType, std::u16string_view pString, size_t pEnd);
  void PushAdded(std::u16string_view pIdentifier);
  void PushValue(const TValue& pValue);

  const std::u16string_view fText;
  const TLexerGrammar& fGrammar;
  std::vector<size_t> fPairs;  // for each "(", its ")" if no blank stands between them, else 0
  size_t fAt = 0;
  size_t fTokenEnd = 0;  // of the last token
  std::deque<TLexerToken> fPending;
};

}  // namespace Vantrel::Search
