#include "search/query/Parser.h"

#include <list>
#include <utility>

#include "platform/text/Text.h"

namespace Vantrel::Search {

namespace {

using TTerms = std::list<TExpressionRef>;

constexpr const char* kQuoteHint = "A word that is to be searched for stands in double quotes, as in \"AND\" or \"(\".";

}  // namespace

// One query on its way. Every open parenthesis has a group: conditions joined by OR, the last of which is a list of
// conditions joined by AND. Terms of a closed group move to the outer one without being copied.
class TExpressionParser::TRun {
 public:
  TRun(std::u16string_view pQuery, const TLexerGrammar& pGrammar)
      : fQuery(pQuery), fGrammar(pGrammar), fLexer(pQuery, pGrammar) {}

  TExpressionRef Parse() {
    fGroups.emplace_back();
    for (fToken = fLexer.NextToken(); fToken.fTokenType != TTokenType::EndOfFileToken; fToken = fLexer.NextToken())
      TakeToken();
    FailOnMissingValue();
    if (fGroups.size() > 1) {
      throw EQueryError("The \"(\" is not closed", "Each \"(\" needs a \")\".", fGroups.back().fBegin, 1);
    }
    FailOnMissingCondition();
    TGroup whole = std::move(fGroups.back());
    if (whole.fAll.empty() && whole.fAny.empty()) return MakeRef<TExpressionAnd>(std::vector<TExpressionRef>());
    CloseAll(whole);
    return Joined(false, std::move(whole.fAny));
  }

 private:
  struct TGroup {
    TTerms fAny;
    TTerms fAll;
    size_t fBegin = 0;  // of the "("
  };

  TExpressionRef Joined(bool pByAnd, TTerms pTerms) const {
    if (pTerms.size() == 1) return std::move(pTerms.front());
    return fGrammar.Join(pByAnd, {std::make_move_iterator(pTerms.begin()), std::make_move_iterator(pTerms.end())});
  }

  // Makes one alternative of the conditions joined by AND.
  void CloseAll(TGroup& pGroup) const { pGroup.fAny.push_back(Joined(true, std::exchange(pGroup.fAll, {}))); }

  void TakeToken() {
    switch (fToken.fTokenType) {
      case TTokenType::PropertyToken:
        FailOnMissingValue();
        fProperty = fToken;
        return;
      case TTokenType::OperatorToken:
        fOperator = fToken;
        return;
      case TTokenType::ValueToken:
        return TakeValue();
      case TTokenType::InvalidToken:
        throw EQueryError(fToken.fProblem, fToken.fHint, fToken.fPosition, fToken.fLength);
      default:
        break;
    }
    FailOnMissingValue();
    if (fToken.fTokenType == TTokenType::ConjunctionToken)
      TakeConjunction();
    else if (fToken.fTokenType == TTokenType::StartMarkerToken)
      OpenGroup();
    else
      CloseGroup();
  }

  void TakeValue() {
    const TProperty* property =
        IsSet(fProperty) ? fGrammar.FindProperty(fProperty.fTokenString) : &fGrammar.DefaultProperty();
    const TOperatorWord* word = IsSet(fOperator) ? fGrammar.OperatorAt(fOperator.fTokenString) : nullptr;
    const std::u16string_view typed = fQuery.substr(fToken.fPosition, fToken.fLength);
    try {
      AddTerm(property->fSettings.fPropertyFunction(word ? &word->fOperator : nullptr, typed));
    } catch (const EQueryOperatorError& error) {
      throw error.At(fOperator.fPosition);
    } catch (const EQueryError& error) {
      throw error.At(fToken.fPosition);
    }
    fProperty.Initialize();
    fOperator.Initialize();
  }

  void AddTerm(TExpressionRef pTerm) {
    fGroups.back().fAll.push_back(std::move(pTerm));
    fConjunction.Initialize();
  }

  void TakeConjunction() {
    if (fGroups.back().fAll.empty() || IsSet(fConjunction)) FailAtWord("in front of", fToken);
    if (!fGrammar.ConjunctionAt(fToken.fTokenString)->fIsAnd) CloseAll(fGroups.back());
    fConjunction = fToken;
  }

  void OpenGroup() {
    fGroups.emplace_back();
    fGroups.back().fBegin = fToken.fPosition;
    // The condition that a conjunction in front of the group needs is the group.
    fConjunction.Initialize();
  }

  void CloseGroup() {
    if (fGroups.size() == 1) throw EQueryError("There is no \"(\" for this \")\"", kQuoteHint, fToken.fPosition, 1);
    FailOnMissingCondition();
    TGroup group = std::move(fGroups.back());
    fGroups.pop_back();
    if (group.fAll.empty())
      throw EQueryError("There is no condition between \"(\" and \")\"", kQuoteHint, group.fBegin,
                        fToken.fPosition + 1 - group.fBegin);
    TTerms& outer = fGroups.back().fAll;
    if (group.fAny.empty()) {
      outer.splice(outer.end(), group.fAll);
    } else {
      CloseAll(group);
      outer.push_back(Joined(false, std::move(group.fAny)));
    }
  }

  // --- errors --------------------------------------------------------------------------------------------------------

  static bool IsSet(const TLexerToken& pToken) { return pToken.fTokenType != TTokenType::EndOfFileToken; }

  [[noreturn]] static void FailAtWord(const char* pSide, const TLexerToken& pWord) {
    throw EQueryError(std::string("A condition is missing ") + pSide + " " + ToQuotedDisplay(pWord.fTokenString),
                      kQuoteHint, pWord.fPosition, pWord.fLength);
  }

  void FailOnMissingCondition() const {
    if (IsSet(fConjunction)) FailAtWord("behind", fConjunction);
  }

  void FailOnMissingValue() const {
    const TLexerToken& head = IsSet(fOperator) ? fOperator : fProperty;
    if (!IsSet(head)) return;
    const TProperty* property = IsSet(fProperty) ? fGrammar.FindProperty(fProperty.fTokenString) : nullptr;
    throw EQueryError("A value is missing behind " + ToQuotedDisplay(head.fTokenString),
                      property ? "Write, for example, " + property->fSettings.fExample : kQuoteHint, head.fPosition,
                      head.fLength);
  }

  const std::u16string_view fQuery;
  const TLexerGrammar& fGrammar;
  TExpressionLexer fLexer;
  TLexerToken fToken;
  TLexerToken fProperty, fOperator;  // in front of the value that comes next
  TLexerToken fConjunction;          // in front of the condition that comes next
  std::vector<TGroup> fGroups;
};

TExpressionRef TExpressionParser::Parse(std::u16string_view pQuery) const {
  return TRun(pQuery, *fGrammar).Parse();
}

}  // namespace Vantrel::Search
