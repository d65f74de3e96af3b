#pragma once

// The comparison of one text with one value, as all conditions on texts do it.

#include <memory>
#include <string>
#include <string_view>

#include "search/patterns/RegExPattern.h"
#include "search/patterns/WildcardMatcher.h"
#include "search/query/Operators.h"

namespace Vantrel::Search {

// Finds an ASCII text at the beginning, at the end or anywhere in another text, without regard to letter case and
// without folding that other text. No letter beyond ASCII folds to an ASCII one, so that gives the same answer.
class TAsciiText {
 public:
  explicit TAsciiText(std::u16string_view pText);
  static bool Fits(std::u16string_view pText);

  size_t Length() const { return fLower.size(); }
  // Whether the text, which is at least as long, has this one at that place.
  bool IsAt(const char16_t* pPlace) const {
    for (size_t i = 0; i < fLower.size(); ++i)
      if ((pPlace[i] | fCaseBits[i]) != fLower[i]) return false;
    return true;
  }
  bool Equals(std::u16string_view pText) const { return pText.size() == Length() && IsAt(pText.data()); }
  bool Begins(std::u16string_view pText) const { return pText.size() >= Length() && IsAt(pText.data()); }
  bool Ends(std::u16string_view pText) const {
    return pText.size() >= Length() && IsAt(pText.data() + pText.size() - Length());
  }
  bool IsIn(std::u16string_view pText) const { return FindIn(pText, 0) != std::u16string_view::npos; }
  // The first place at or behind pFrom where the other text has this one; npos if there is none.
  size_t FindIn(std::u16string_view pText, size_t pFrom) const;

 private:
  std::u16string fLower;     // each unit with its case bit set
  std::u16string fCaseBits;  // 0x20 for a letter, 0 for other units
};

// One comparison: operator, options and value. Immutable. Any thread.
class TTextTest {
 public:
  // If pNormalizes, the value and the texts are compared in Unicode form D. The value is expected in that form.
  TTextTest(TStringOperator pOperator, std::u16string_view pValue, TStringOperatorOptions pOptions = 0,
            bool pNormalizes = false);

  // May fold the text.
  bool Matches(PatternMatching::TMatchText& pText) const;
  bool Matches(std::u16string_view pText) const;
  // Whether MatchesPlain gives the answer, without folding.
  bool IsPlain() const { return fPlain != nullptr; }
  bool MatchesPlain(std::u16string_view pText) const;
  // The same where the units of the folded text are known. Most texts lack a unit, which is quickly seen.
  bool MatchesPlain(std::u16string_view pText, PatternMatching::TUnitSet pUnits) const {
    return (fUnits & ~pUnits) != 0 ? IsNegated(fOperator) : MatchesPlain(pText);
  }

  // With IsPlain: a part that each text holds in which the value is found. nullptr if there is none.
  const TAsciiText* FixedPart() const;

  TStringOperator Operator() const { return fOperator; }
  TStringOperatorOptions Options() const { return fOptions; }
  const std::u16string& Value() const { return fValue; }
  std::u16string_view FoldedValue() const { return fFoldedValue; }
  int64_t Cost() const;  // without that of finding the text
  // Why a regular expression is not valid. Empty for a valid one and for all else.
  std::u16string ErrorText() const;
  std::u16string Warning() const;

  void AppendOperator(std::u16string& pText) const;
  void AppendValue(std::u16string& pText) const;

 private:
  // "begin*middle*end", each part in ASCII and perhaps empty.
  struct TPlainParts;

  void Prepare();
  void PreparePlain();
  bool Found(PatternMatching::TMatchText& pText) const;
  bool FoundIn(std::u16string_view pText, std::u16string_view pValue) const;
  bool MatchesWildcards(PatternMatching::TMatchText& pText) const;

  TStringOperator fOperator;
  TStringOperator fPositive;  // the operator without its negation
  TStringOperatorOptions fOptions;
  bool fNormalizes;
  bool fHasSemicolon = false;
  std::u16string fValue;
  std::u16string fFoldedValue;
  PatternMatching::TUnitSet fUnits = 0;  // units that a folded text must have
  std::shared_ptr<const PatternMatching::IWildcardMatcher> fWildcards;
  TRef<PatternMatching::TRegExPattern> fRegEx;
  std::shared_ptr<const TPlainParts> fPlain;
};

// A value as the query language writes it: in double quotes if it would otherwise be read differently.
void AppendQueryValue(std::u16string& pText, std::u16string_view pValue);

}  // namespace Vantrel::Search
