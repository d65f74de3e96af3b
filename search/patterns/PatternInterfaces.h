#pragma once

// The interfaces of patterns and their lists.

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "model/columns/MetaData.h"
#include "search/patterns/MatchText.h"

namespace Vantrel::PatternMatching {

class TPatternItem;

// Kept in files: the numbers stay.
enum class TPatternType : uint8_t { ptyInclude = 0, ptyExclude = 1 };
enum class TPatternClass : uint8_t { pcWildcard = 0, pcRegEx = 1, pcExact = 2 };

// The column that a pattern looks at.
using TPatternTarget = TPropertyKey;
using TPatternTypes = std::set<TPatternType>;
using TPatternTargets = std::set<TPatternTarget>;

// Names for people. EUnknownEnumException for a value that is none.
std::u16string PatternClassToString(TPatternClass pClass);
std::u16string PatternTypeToString(TPatternType pType);

// The attributes of an XML element, in the order in which they are written.
using TElementAttributes = std::vector<std::pair<std::u16string, std::u16string>>;

// Takes elements as they are written; the floor that knows XML implements it.
class IElementWriter {
 public:
  virtual ~IElementWriter() = default;
  virtual void BeginElement(std::u16string_view pName, const TElementAttributes& pAttributes) = 0;
  virtual void EndElement() = 0;
};

// Says which files and folders are taken in or left out: a text of one of three kinds, matched against one column. In
// use a pattern does not change but for its active flag; any thread may match then.
class IPattern : public IInterface {
 public:
  // Whether the value of the target column matches. An item without a value is matched as an empty text. The type and
  // the active flag do not count here.
  virtual bool Matches(TPatternItem& pItem) = 0;
  virtual bool MatchesString(std::u16string_view pText) = 0;
  // True when the pattern accepts everything and need not be asked.
  virtual bool MatchesAll() const = 0;
  // For an include pattern on the full path: whether the folder itself or something beneath it could match. The path
  // may end with a delimiter.
  virtual bool FullPathCanBeReached(std::u16string_view pFolderPath) const = 0;
  // The target that the text gets when it is typed: the full path when it holds a path delimiter, else the name.
  virtual TPatternTarget GuessTarget(std::u16string_view pText) const = 0;

  virtual TPatternClass PatternClass() const = 0;
  // The body of the text form, without the prefixes that a list writes in front.
  virtual std::u16string ToString() const = 0;
  // The pattern as a condition of the query language: "name:*.tmp".
  virtual std::u16string ToExpression() const = 0;
  // Takes over everything of a pattern of the same class; EInvalidArgumentValue for another one.
  virtual void Assign(const IPattern& pSource) = 0;
  // Whether both are of one kind, match alike, and have the same target, type and active flag.
  virtual bool Equals(const IPattern& pOther) const = 0;
  // The attributes of the pattern's XML element. Reading fails with EInvalidArgumentValue ("Empty patterns are not
  // allowed!" and the like), and the pattern is left as it was.
  virtual void ReadFromXML(const TElementAttributes& pAttributes) = 0;
  virtual TElementAttributes WriteToXML() const = 0;

  virtual const std::u16string& GetPattern() const = 0;
  virtual void SetPattern(std::u16string_view pText) = 0;
  virtual const TPatternTarget& GetTarget() const = 0;
  virtual void SetTarget(const TPatternTarget& pTarget) = 0;
  virtual TPatternType GetPatternType() const = 0;
  virtual void SetPatternType(TPatternType pType) = 0;
  virtual bool GetActive() const = 0;
  virtual void SetActive(bool pActive) = 0;

  // What is wrong with the pattern, for people: an expression that does not compile, an unknown group. Empty when
  // nothing is. Such a pattern matches nothing.
  virtual std::u16string GetErrorText() const = 0;
  // What went wrong while matching; empty when nothing did.
  virtual std::u16string GetWarning() const { return {}; }
};

// How a list is turned into text.
struct TPatternsToStringRepresentationOptions {
  bool ActivePatternsOnly = false;                     // skip inactive patterns
  TPatternTypes IncludedPatternTypes;                  // when not empty, only patterns of these types
  TPatternTargets IncludedPatternTargets;              // when not empty, only patterns on these targets
  bool AddUncheckedPrefixForInactivePatterns = false;  // mark inactive patterns with "<||"
  std::u16string Delimiter;                            // between patterns

  // Everything, so that the text reads back into the same list: inactive patterns marked, tab characters between.
  static TPatternsToStringRepresentationOptions Default();
};

// An ordered list of patterns. Any thread; patterns may be added and removed while others read.
class IPatterns : public IInterface {
 public:
  // Parses one pattern in the text form and appends it. EInvalidArgumentValue for an empty text (argument "pPattern")
  // and for an unknown column in front.
  virtual TRef<IPattern> Add(std::u16string_view pPattern, TPatternType pDefaultType) = 0;
  virtual void Add(TRef<IPattern> pPattern) = 0;
  // Several in the text form, empty ones skipped. Nothing is added when one fails.
  virtual void AddStrings(const std::vector<std::u16string>& pPatterns, TPatternType pDefaultType) = 0;
  virtual void AddRange(const IPatterns& pPatterns) = 0;  // the same pattern objects
  virtual void Assign(const IPatterns& pPatterns) = 0;    // the same pattern objects instead of those it has

  // Whether some active pattern of the type matches the item.
  virtual bool Matches(TPatternItem& pItem, TPatternType pType) = 0;
  // The first active pattern, in list order, that matches; nullptr when none does.
  virtual TRef<IPattern> GetMatchingPattern(TPatternItem& pItem) = 0;
  // Whether a walk must not descend into the item.
  virtual bool StopTraversing(TPatternItem& pItem) = 0;
  // Whether the list lets every item in, so that it need not be asked.
  virtual bool MatchesAll() const = 0;

  virtual int Count(bool pActiveOnly, const TPatternTypes& pTypes) const = 0;  // no types: of every type
  virtual int Count() const = 0;
  virtual int IndexOf(const IPattern& pPattern) const = 0;  // of an equal pattern; -1 when there is none
  virtual bool Contains(const IPattern& pPattern) const = 0;
  virtual bool ContainsPattern(std::u16string_view pText) const = 0;  // a pattern of that text, letter case as typed
  virtual void Remove(const IPattern& pPattern) = 0;                  // the first equal one
  virtual void Clear() = 0;
  virtual bool Equal(const IPatterns& pOther) const = 0;     // equal patterns in the same order
  virtual TRef<IPattern> GetItem(int pIndex) const = 0;      // EInvalidArgumentValue for an index outside the list
  virtual std::vector<TRef<IPattern>> GetItems() const = 0;  // a snapshot, for walks
  virtual TRef<IPatterns> Clone() const = 0;                 // a new list of the same pattern objects

  // Sets the active flag of every pattern with one of the targets and one of the types; the change is told once.
  virtual void Activate(const TPatternTargets& pTargets, const TPatternTypes& pTypes, bool pActive) = 0;
  virtual std::u16string ToString(const TPatternsToStringRepresentationOptions& pOptions) const = 0;

  virtual char16_t GetPathDelimiter() const = 0;  // of the roots whose paths are matched
  virtual bool GetAutoSort() const = 0;
  virtual void SetAutoSort(bool pAutoSort) = 0;  // keeps the list in the order of TPatternComparer
  virtual bool GetEmptyPatternListMatchesAll() const = 0;
  virtual void SetEmptyPatternListMatchesAll(bool pValue) = 0;

  // The element TPatternList with one Pattern element for each pattern.
  virtual void WriteToXML(IElementWriter& pWriter) const = 0;
  // One Pattern element. Fails as IPattern::ReadFromXML does, and for a class that is not known.
  virtual void ReadFromXML(const TElementAttributes& pPattern) = 0;
  // The attributes of the list's own element: what it knows besides its patterns.
  virtual TElementAttributes WriteProperties() const = 0;
  virtual void ReadProperties(const TElementAttributes& pProperties) = 0;
};

}  // namespace Vantrel::PatternMatching
