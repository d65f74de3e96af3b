#pragma once

// The interfaces of patterns and of lists of patterns.

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

// Stored in files, so the numbers must not change.
enum class TPatternType : uint8_t { ptyInclude = 0, ptyExclude = 1 };
enum class TPatternClass : uint8_t { pcWildcard = 0, pcRegEx = 1, pcExact = 2 };

// The column that a pattern looks at.
using TPatternTarget = TPropertyKey;
using TPatternTypes = std::set<TPatternType>;
using TPatternTargets = std::set<TPatternTarget>;

// Names for users. EUnknownEnumException for an invalid value.
std::u16string PatternClassToString(TPatternClass pClass);
std::u16string PatternTypeToString(TPatternType pType);

// The attributes of an XML element, in writing order.
using TElementAttributes = std::vector<std::pair<std::u16string, std::u16string>>;

// Receives elements while they are written. The floor that knows XML implements it.
class IElementWriter {
 public:
  virtual ~IElementWriter() = default;
  virtual void BeginElement(std::u16string_view pName, const TElementAttributes& pAttributes) = 0;
  virtual void EndElement() = 0;
};

// Says which files and folders are taken in or left out. A pattern is a text of one of three kinds, matched against one
// column. After setup only its active flag changes. Any thread may match then.
class IPattern : public IInterface {
 public:
  // Whether the value of the target column matches. A missing value is matched as an empty text. The type and the
  // active flag do not count here.
  virtual bool Matches(TPatternItem& pItem) = 0;
  virtual bool MatchesString(std::u16string_view pText) = 0;
  // True when the pattern accepts everything and need not be asked.
  virtual bool MatchesAll() const = 0;
  // For an include pattern on the full path: whether it could match the folder itself or anything beneath it. The path
  // may end with a delimiter.
  virtual bool FullPathCanBeReached(std::u16string_view pFolderPath) const = 0;
  // The target that a typed text gets: the full path if the text holds a path delimiter, else the name.
  virtual TPatternTarget GuessTarget(std::u16string_view pText) const = 0;

  virtual TPatternClass PatternClass() const = 0;
  // The body of the text form, without the prefixes that a list writes.
  virtual std::u16string ToString() const = 0;
  // The pattern as a condition of the query language: "name:*.tmp".
  virtual std::u16string ToExpression() const = 0;
  // Copies everything from a pattern of the same class. EInvalidArgumentValue for another class.
  virtual void Assign(const IPattern& pSource) = 0;
  // Whether both have one class, match the same values, and have the same target, type and active flag.
  virtual bool Equals(const IPattern& pOther) const = 0;
  // The attributes of the pattern's XML element. Reading throws EInvalidArgumentValue ("Empty patterns are not
  // allowed!" and similar texts) and then leaves the pattern unchanged.
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

  // What is wrong with the pattern, in words for the user: an expression that does not compile, an unknown group. Empty
  // when nothing is wrong. A pattern with an error matches nothing.
  virtual std::u16string GetErrorText() const = 0;
  // What went wrong while matching. Empty when nothing did.
  virtual std::u16string GetWarning() const { return {}; }
};

// Options for turning a list into text.
struct TPatternsToStringRepresentationOptions {
  bool ActivePatternsOnly = false;                     // skip inactive patterns
  TPatternTypes IncludedPatternTypes;                  // when not empty, only patterns of these types
  TPatternTargets IncludedPatternTargets;              // when not empty, only patterns on these targets
  bool AddUncheckedPrefixForInactivePatterns = false;  // mark inactive patterns with "<||"
  std::u16string Delimiter;                            // between patterns

  // Options to write all patterns so that the text reads back into an equal list. Inactive patterns are marked and tab
  // characters separate the patterns.
  static TPatternsToStringRepresentationOptions Default();
};

// An ordered list of patterns. Any thread. Patterns may be added and removed while other threads read.
class IPatterns : public IInterface {
 public:
  // Parses one pattern in the text form and appends it. EInvalidArgumentValue for an empty text (argument "pPattern")
  // and for an unknown column in front.
  virtual TRef<IPattern> Add(std::u16string_view pPattern, TPatternType pDefaultType) = 0;
  virtual void Add(TRef<IPattern> pPattern) = 0;
  // Appends several patterns in the text form and skips empty ones. If one fails, none is added.
  virtual void AddStrings(const std::vector<std::u16string>& pPatterns, TPatternType pDefaultType) = 0;
  virtual void AddRange(const IPatterns& pPatterns) = 0;  // adds the same pattern objects, not copies
  virtual void Assign(const IPatterns& pPatterns) = 0;    // replaces the list by the same pattern objects

  // Whether some active pattern of the type matches the item.
  virtual bool Matches(TPatternItem& pItem, TPatternType pType) = 0;
  // The first active pattern, in list order, that matches; nullptr when none does.
  virtual TRef<IPattern> GetMatchingPattern(TPatternItem& pItem) = 0;
  // Whether a walk must not enter the item.
  virtual bool StopTraversing(TPatternItem& pItem) = 0;
  // Whether the list takes in every item and need not be asked.
  virtual bool MatchesAll() const = 0;

  virtual int Count(bool pActiveOnly, const TPatternTypes& pTypes) const = 0;  // an empty pTypes counts every type
  virtual int Count() const = 0;
  virtual int IndexOf(const IPattern& pPattern) const = 0;  // of the first equal pattern; -1 if none
  virtual bool Contains(const IPattern& pPattern) const = 0;
  // Whether a pattern has this text. Letter case counts.
  virtual bool ContainsPattern(std::u16string_view pText) const = 0;
  virtual void Remove(const IPattern& pPattern) = 0;  // removes the first equal pattern
  virtual void Clear() = 0;
  virtual bool Equal(const IPatterns& pOther) const = 0;     // whether both have equal patterns in the same order
  virtual TRef<IPattern> GetItem(int pIndex) const = 0;      // EInvalidArgumentValue for an index outside the list
  virtual std::vector<TRef<IPattern>> GetItems() const = 0;  // a copy of the list, for walks
  virtual TRef<IPatterns> Clone() const = 0;                 // a new list with the same pattern objects

  // Sets the active flag of every pattern with one of the targets and one of the types. Observers are told once.
  virtual void Activate(const TPatternTargets& pTargets, const TPatternTypes& pTypes, bool pActive) = 0;
  virtual std::u16string ToString(const TPatternsToStringRepresentationOptions& pOptions) const = 0;

  virtual char16_t GetPathDelimiter() const = 0;  // of the roots whose paths are matched
  virtual bool GetAutoSort() const = 0;
  virtual void SetAutoSort(bool pAutoSort) = 0;  // keeps the list in the order of TPatternComparer
  virtual bool GetEmptyPatternListMatchesAll() const = 0;
  virtual void SetEmptyPatternListMatchesAll(bool pValue) = 0;

  // Writes the element TPatternList with one Pattern element for each pattern.
  virtual void WriteToXML(IElementWriter& pWriter) const = 0;
  // Reads one Pattern element. Fails like IPattern::ReadFromXML, and also for an unknown class.
  virtual void ReadFromXML(const TElementAttributes& pPattern) = 0;
  // The attributes of the list's own element: its settings besides the patterns.
  virtual TElementAttributes WriteProperties() const = 0;
  virtual void ReadProperties(const TElementAttributes& pProperties) = 0;
};

}  // namespace Vantrel::PatternMatching
