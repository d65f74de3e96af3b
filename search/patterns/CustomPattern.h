#pragma once

// The base of patterns: text, target, type, active flag, XML attributes.

#include <atomic>

#include "search/patterns/PatternInterfaces.h"
#include "search/patterns/PatternItem.h"

namespace Vantrel::PatternMatching {

// Base of all patterns: text, target, type and active flag.
class TCustomPattern : public TInterfaced<IPattern> {
 public:
  bool Matches(TPatternItem& pItem) override;
  bool MatchesString(std::u16string_view pText) override;
  bool MatchesAll() const override { return false; }
  bool FullPathCanBeReached(std::u16string_view pFolderPath) const override;
  TPatternTarget GuessTarget(std::u16string_view pText) const override;
  void Assign(const IPattern& pSource) override;
  bool Equals(const IPattern& pOther) const override;
  void ReadFromXML(const TElementAttributes& pAttributes) override;
  TElementAttributes WriteToXML() const override;

  const std::u16string& GetPattern() const override { return fPattern; }
  void SetPattern(std::u16string_view pText) override;
  const TPatternTarget& GetTarget() const override { return fTarget; }
  void SetTarget(const TPatternTarget& pTarget) override;
  TPatternType GetPatternType() const override { return fPatternType; }
  void SetPatternType(TPatternType pType) override { fPatternType = pType; }
  bool GetActive() const override { return fActive.load(std::memory_order_relaxed); }
  void SetActive(bool pActive) override { fActive.store(pActive, std::memory_order_relaxed); }
  std::u16string GetErrorText() const override { return {}; }

  char16_t PathDelimiter() const { return fPathDelimiter; }
  // The name that stands for the class in files.
  virtual std::u16string_view ClassName() const = 0;

 protected:
  // The delimiter is that of the roots whose paths will be matched. EInvalidArgumentValue for an empty text.
  TCustomPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType, char16_t pPathDelimiter);

  virtual bool MatchesText(TMatchText& pText) = 0;
  // The text or the target has changed. Constructors call it, since a base class cannot.
  virtual void Prepare() {}
  // Whether a pattern of the same class, target, type and active flag matches alike.
  virtual bool SameMatches(const TCustomPattern& pOther) const = 0;
  // Whether the folder could be on the way to a match; asked for rooted texts only. It is folded, as the
  // text to compare it with has to be: letter case does not count.
  virtual bool MayLieBeneath(std::u16string_view pFolder) const = 0;
  std::u16string_view FoldedPattern() const { return fFoldedPattern; }
  // What the class keeps besides.
  virtual void WriteMore(TElementAttributes&) const {}
  virtual void ReadMore(const TElementAttributes&) {}
  virtual void AssignMore(const TCustomPattern&) {}

  // A value that ends with a delimiter is matched a second time without it, where values are paths.
  bool HasTrailingDelimiter(std::u16string_view pText) const {
    return fIsPathValued && pText.size() > 1 && pText.back() == fPathDelimiter;
  }
  // How the query language calls the target ("name:"), and a value as it stands there.
  std::u16string ExpressionKeyword() const;
  static std::u16string ExpressionValue(std::u16string_view pText);

 private:
  void TakeText(std::u16string_view pText);
  void TakeTarget(const TPatternTarget& pTarget);

  std::u16string fPattern;
  std::u16string fFoldedPattern;  // of fPattern
  TPatternTarget fTarget;
  const TColumnInfo* fColumn = nullptr;  // of fTarget; nullptr for a column that this program does not know
  bool fIsPathValued = false;            // of fTarget
  TPatternType fPatternType;
  const char16_t fPathDelimiter;
  std::atomic<bool> fActive{true};
};

// The value of an attribute; empty when it is not there.
std::u16string_view FindAttribute(const TElementAttributes& pAttributes, std::u16string_view pName);
// Booleans in files: "-1" and "0"; any other number but 0 reads as true.
std::u16string BooleanText(bool pValue);
bool BooleanOf(std::u16string_view pText);

// In double quotes, those inside doubled.
std::u16string Quoted(std::u16string_view pText);
// The text without the quote that it begins with, and the one that it ends with, if any; doubled quotes stand for one.
std::u16string Unquoted(std::u16string_view pText);

}  // namespace Vantrel::PatternMatching
