#pragma once

// The base class of patterns: text, target, type, active flag, XML attributes.

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
  // The class's name in files.
  virtual std::u16string_view ClassName() const = 0;

 protected:
  // pPathDelimiter is the delimiter of the roots whose paths will be matched. EInvalidArgumentValue for an empty text.
  TCustomPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType, char16_t pPathDelimiter);

  virtual bool MatchesText(TMatchText& pText) = 0;
  // Called after the text or the target has changed. Constructors call it too, because the base class's cannot.
  virtual void Prepare() {}
  // Whether the other pattern matches the same values. It has the same class, target, type and active flag.
  virtual bool SameMatches(const TCustomPattern& pOther) const = 0;
  // Whether the folder could lead to a match. Called only for patterns whose text is a rooted path. pFolder is folded,
  // because letter case does not count; the text compared with it must be folded too.
  virtual bool MayLieBeneath(std::u16string_view pFolder) const = 0;
  std::u16string_view FoldedPattern() const { return fFoldedPattern; }
  // Writes the attributes that the derived class keeps.
  virtual void WriteMore(TElementAttributes&) const {}
  virtual void ReadMore(const TElementAttributes&) {}
  virtual void AssignMore(const TCustomPattern&) {}

  // If values are paths, a value that ends with a delimiter is matched a second time without it.
  bool HasTrailingDelimiter(std::u16string_view pText) const {
    return fIsPathValued && pText.size() > 1 && pText.back() == fPathDelimiter;
  }
  // The target's keyword in the query language, such as "name:", and a value, which is not empty, as the query
  // language writes it.
  std::u16string ExpressionKeyword() const;
  static std::u16string ExpressionValue(std::u16string_view pText);

 private:
  void TakeText(std::u16string_view pText);
  void TakeTarget(const TPatternTarget& pTarget);

  std::u16string fPattern;
  std::u16string fFoldedPattern;  // fPattern in folded form
  TPatternTarget fTarget;
  const TColumnInfo* fColumn = nullptr;  // of fTarget; nullptr for a column unknown to this program
  bool fIsPathValued = false;            // whether fTarget's values are paths
  TPatternType fPatternType;
  const char16_t fPathDelimiter;
  std::atomic<bool> fActive{true};
};

// The value of an attribute, or an empty text if it is missing.
std::u16string_view FindAttribute(const TElementAttributes& pAttributes, std::u16string_view pName);
// Booleans in files are "-1" and "0". Any other number except 0 reads as true.
std::u16string BooleanText(bool pValue);
bool BooleanOf(std::u16string_view pText);

// The text in double quotes. Quotes inside it are doubled.
std::u16string Quoted(std::u16string_view pText);
// The text without its first and last quote, if any. Doubled quotes become single ones.
std::u16string Unquoted(std::u16string_view pText);

}  // namespace Vantrel::PatternMatching
