#pragma once

// The tree of conditions that a query becomes: IExpression, its leaves, and the lists that join them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system/Errors.h"
#include "platform/threads/Interface.h"
#include "search/query/FileBlock.h"

// How a query is answered.
//
//   text --TDSMExpressionParser--> tree of IExpression --AdaptExpression--> TAdaptedExpression
//
// The tree is what the query says: it can be printed, compared, stored and shown. It never changes, and any thread may
// read it. A search adapts it to what it searches: conditions that cannot be answered there are refused, the cheap ones
// come first, and the tree becomes a flat list of steps. The search's threads share that list. Each thread has its own
// TSearchItem, into which it sets one entry after the other.
//
// Trees may be nested as deep as a text is long. So nothing here calls itself: printing, comparing, adapting, matching
// and destroying all use a stack of their own.

namespace Vantrel::Search {

class IExpression;
class TSearchItem;

using TExpressionRef = TRef<const IExpression>;

constexpr auto kNone = std::u16string_view::npos;  // no place in a text

// What the target of a search can answer beyond names, paths, levels, extensions, attributes, sizes and the three
// dates, which every target has.
enum TSearchAbility : uint32_t {
  saContents = 1,     // IFileFacts::ContentsMatch
  saProperties = 2,   // IFileFacts::GetProperty
  saShortcuts = 4,    // IFileFacts::IsInvalidShortcut
  saEmptyFolders = 8  // IFileFacts::IsEmptyFolder
};
using TSearchAbilities = uint32_t;
constexpr TSearchAbilities kAllSearchAbilities = saContents | saProperties | saShortcuts | saEmptyFolders;

// A target cannot answer a condition. The text names the condition's class and shows the condition.
class ENotSupportedException : public EException {
 public:
  using EException::EException;
};

// A node of the tree. Immutable; any thread.
class IExpression : public IInterface {
 public:
  // The class's name, "TSizeExpression".
  virtual std::u16string_view ClassName() const = 0;
  // The joined conditions. Empty for a leaf.
  virtual const std::vector<TExpressionRef>& Children() const;
  // How long one test takes, roughly in nanoseconds. That of a list is the sum.
  virtual int64_t Cost() const = 0;
  virtual TSearchAbilities Needs() const { return 0; }
  // What to tell the user after a search, such as that a regular expression gave up. Empty for nothing.
  virtual std::u16string GetWarning() const { return {}; }
};

// A leaf. A missing text is matched as an empty one. A missing number or date matches nothing.
class TCondition : public TInterfaced<IExpression> {
 public:
  // Any thread; each with its own item.
  virtual bool Matches(TSearchItem& pItem) const = 0;
  // Those of some files in a table that match, all at once. No value if the condition must see each file as an item;
  // the answer is then the same for all files.
  virtual std::optional<TFileSet> MatchesOf(const TFileBlock&, TFileSet) const { return std::nullopt; }
  // The keyword and the operator, such as "size:>"; and the value behind them, in quotes where it needs them.
  virtual void AppendHead(std::u16string& pText) const = 0;
  virtual void AppendValue(std::u16string& pText) const = 0;
};

// Joins conditions. Base of the three lists.
class TExpressionList : public TInterfaced<IExpression> {
 public:
  ~TExpressionList() override;
  TExpressionList(const TExpressionList&) = delete;
  TExpressionList& operator=(const TExpressionList&) = delete;
  const std::vector<TExpressionRef>& Children() const override { return fChildren; }
  int64_t Cost() const override { return fCost; }

 protected:
  explicit TExpressionList(std::vector<TExpressionRef> pChildren);

 private:
  std::vector<TExpressionRef> fChildren;
  int64_t fCost = 0;
};

// All conditions must hold. Without any, everything matches: that is the empty query.
class TExpressionAnd final : public TExpressionList {
 public:
  explicit TExpressionAnd(std::vector<TExpressionRef> pChildren) : TExpressionList(std::move(pChildren)) {}
  std::u16string_view ClassName() const override { return u"TExpressionAnd"; }
};

// At least one condition must hold.
class TExpressionOr final : public TExpressionList {
 public:
  explicit TExpressionOr(std::vector<TExpressionRef> pChildren) : TExpressionList(std::move(pChildren)) {}
  std::u16string_view ClassName() const override { return u"TExpressionOr"; }
};

// The alternatives of one property, at least one of which must hold: "name:*.txt;*.log". All children are leaves that
// differ only in the value.
class TMultiExpression final : public TExpressionList {
 public:
  explicit TMultiExpression(std::vector<TExpressionRef> pChildren) : TExpressionList(std::move(pChildren)) {}
  std::u16string_view ClassName() const override { return u"TMultiExpression"; }
};

// Joins conditions. Lists of the same kind are merged into one. A single condition stays as it is.
TExpressionRef JoinAnd(std::vector<TExpressionRef> pChildren);
TExpressionRef JoinOr(std::vector<TExpressionRef> pChildren);
// The alternatives of one property, which are all leaves.
TExpressionRef JoinAlternatives(std::vector<TExpressionRef> pChildren);

// The tree as a query that reads back into an equal tree.
std::u16string ExpressionToText(const IExpression& pExpression);

}  // namespace Vantrel::Search
