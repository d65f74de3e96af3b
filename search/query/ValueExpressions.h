#pragma once

// Conditions on the values of a listing: texts, numbers, sizes, dates, attributes, and the recursion level.

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "model/tree/HierarchicalInterfaces.h"
#include "search/query/Expressions.h"
#include "search/query/Operators.h"
#include "search/query/TextTest.h"
#include "search/query/ValueTargets.h"

namespace Vantrel::Search {

// A text of the entry or of its file: name, path, extension, owner, creator, keywords. Of several texts, such as
// keywords, one must match; a negated condition holds if none does.
class TStringExpression final : public TCondition {
 public:
  // pKeyword is the keyword under which the condition reads back, if it is not that of the target. It must be a
  // literal.
  TStringExpression(TValueTarget pTarget, TTextTest pTest, std::u16string_view pKeyword = {})
      : fTarget(pTarget), fTest(std::move(pTest)), fKeyword(pKeyword) {}
  std::u16string_view ClassName() const override { return u"TStringExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  std::optional<TFileSet> MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override { fTest.AppendValue(pText); }
  int64_t Cost() const override;
  TSearchAbilities Needs() const override;
  std::u16string GetWarning() const override { return fTest.Warning(); }
  const TValueTarget& Target() const { return fTarget; }
  const TTextTest& Test() const { return fTest; }

 private:
  const TValueTarget fTarget;
  const TTextTest fTest;
  const std::u16string_view fKeyword;
};

// Whether a text property of the item's file passes the test. One of several texts must, or with a negated operator
// all.
bool TextPropertyMatches(TSearchItem& pItem, TFileProperty pProperty, const TTextTest& pTest);

// The name of the folder that holds the entry.
class TParentFolderNameExpression final : public TCondition {
 public:
  explicit TParentFolderNameExpression(TTextTest pTest) : fTest(std::move(pTest)) {}
  std::u16string_view ClassName() const override { return u"TParentFolderNameExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override { fTest.AppendValue(pText); }
  int64_t Cost() const override { return 15 + fTest.Cost(); }
  std::u16string GetWarning() const override { return fTest.Warning(); }

 private:
  const TTextTest fTest;
};

bool Compare(TOperator pOperator, int64_t pValue, int64_t pLimit);
std::u16string_view OperatorText(TOperator pOperator);

// A number of a listing: bytes on the disk, length of the path.
class TNumericExpression : public TCondition {
 public:
  TNumericExpression(TColumn pTarget, TOperator pOperator, int64_t pValue)
      : fTarget(pTarget), fOperator(pOperator), fValue(pValue) {}
  std::u16string_view ClassName() const override { return u"TNumericExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  std::optional<TFileSet> MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 30; }

 protected:
  const TColumn fTarget;
  const TOperator fOperator;
  const int64_t fValue;
};

// The size of a file. Folders have none in a search, on the disk as in a scan.
class TSizeExpression final : public TNumericExpression {
 public:
  TSizeExpression(TOperator pOperator, int64_t pBytes) : TNumericExpression(TColumn::mdSize, pOperator, pBytes) {}
  std::u16string_view ClassName() const override { return u"TSizeExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  std::optional<TFileSet> MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const override;
};

// A span of time, both ends included.
struct TTimespan {
  static constexpr int64_t kEarliest = std::numeric_limits<int64_t>::min();
  static constexpr int64_t kLatest = std::numeric_limits<int64_t>::max();
  int64_t fFrom = kEarliest;  // ticks of TKivFileTime
  int64_t fTo = kLatest;

  bool Holds(TKivFileTime pTime) const { return pTime.IsSet() && pTime.fTicks >= fFrom && pTime.fTicks <= fTo; }
  // As the query language writes it behind the keyword.
  std::u16string_view OperatorText() const;
  std::u16string ValueText() const;
};

// A date within a span.
class TTimespanExpression final : public TCondition {
 public:
  TTimespanExpression(TValueTarget pTarget, TTimespan pSpan) : fTarget(pTarget), fSpan(pSpan) {}
  std::u16string_view ClassName() const override { return u"TTimespanExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  std::optional<TFileSet> MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override { pText += fSpan.ValueText(); }
  int64_t Cost() const override;
  TSearchAbilities Needs() const override;

 private:
  const TValueTarget fTarget;
  const TTimespan fSpan;
};

// Whether all of the attributes are set; IsNotSet: whether one of them is missing.
class TAttributeExpression final : public TCondition {
 public:
  TAttributeExpression(TAttributesOperator pOperator, TAttributes pAttributes)
      : fOperator(pOperator), fAttributes(pAttributes) {}
  std::u16string_view ClassName() const override { return u"TAttributeExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  std::optional<TFileSet> MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 16; }

 private:
  bool Holds(TAttributes pAttributes) const;

  const TAttributesOperator fOperator;
  const TAttributes fAttributes;
};

// The attribute of a letter, as lists show attributes; 0 if there is none. And all letters.
TAttributes AttributeOfLetter(char16_t pLetter);
std::u16string AttributeLetters();

// How deep the entry lies: 1 is directly in the searched folder.
class TRecursionLevelExpression final : public TCondition {
 public:
  TRecursionLevelExpression(TOperator pOperator, int64_t pLevel) : fOperator(pOperator), fLevel(pLevel) {}
  std::u16string_view ClassName() const override { return u"TRecursionLevelExpression"; }
  bool Matches(TSearchItem& pItem) const override;
  void AppendHead(std::u16string& pText) const override;
  void AppendValue(std::u16string& pText) const override;
  int64_t Cost() const override { return 2; }
  // No deeper entry matches.
  int64_t DeepestLevel() const;

 private:
  const TOperator fOperator;
  const int64_t fLevel;
};

}  // namespace Vantrel::Search
