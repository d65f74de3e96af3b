#pragma once

// A tree of conditions made ready for one target of a search.

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "search/query/Expressions.h"
#include "search/query/SearchItem.h"

namespace Vantrel::Search {

// Tests items. The conditions stand in a flat list, cheap ones first within each AND and OR. Each says where to go on
// after yes and after no. So an AND stops at the first no, an OR at the first yes, and no depth of nesting matters.
// Immutable. Any thread, each with its own item.
class TAdaptedExpression {
 public:
  bool Matches(TSearchItem& pItem) const { return MatchesFrom(fEntry, pItem); }

  // The files of a block that match. Each condition tests all files that reach it before the next one does. What no
  // condition can test in this way goes through pItem, whose folder has been set; pFolder is that folder. pRoom belongs
  // to the thread and to this expression, and is kept from call to call, but not after an exception.
  TFileSet MatchesOf(const TFileBlock& pBlock, const IFolderData& pFolder, TSearchItem& pItem,
                     std::vector<TFileSet>& pRoom) const;

  // Whether the query is empty and takes everything.
  bool MatchesAll() const { return fSteps.empty() && fEntry == kYes; }
  // What the conditions ask of IFileFacts.
  TSearchAbilities Needs() const { return fNeeds; }
  // The conditions, each once, without their order.
  std::vector<const TCondition*> Conditions() const;
  // What to tell the user after the search, one line per condition.
  std::vector<std::u16string> Warnings() const;
  // No item beneath this recursion level can match, so a walk need not go deeper.
  int64_t DeepestLevel() const { return fDeepestLevel; }

 private:
  friend TAdaptedExpression AdaptExpression(TExpressionRef, TSearchAbilities);
  static constexpr int32_t kYes = -1, kNo = -2;
  struct TStep {
    const TCondition* fCondition;
    int32_t fIfYes;
    int32_t fIfNo;
  };
  class TBuilder;

  // Goes on at a step.
  bool MatchesFrom(int32_t pStep, TSearchItem& pItem) const {
    if (fFoldsNames) pItem.Name().Units();
    int32_t at = pStep;
    while (at >= 0) {
      const TStep& step = fSteps[static_cast<size_t>(at)];
      at = step.fCondition->Matches(pItem) ? step.fIfYes : step.fIfNo;
    }
    return at == kYes;
  }

  TExpressionRef fRoot;       // keeps the conditions alive
  std::vector<TStep> fSteps;  // each stands behind those that can follow it
  int32_t fEntry = kYes;
  bool fFoldsNames = false;  // so many conditions look at the name that folding it first saves time
  TSearchAbilities fNeeds = 0;
  int64_t fDeepestLevel = std::numeric_limits<int64_t>::max();
};

// Makes the tree ready for a target with these abilities. ENotSupportedException "Expression type not supported in this
// configuration: " and the class, if the target cannot answer a condition.
TAdaptedExpression AdaptExpression(TExpressionRef pRoot, TSearchAbilities pAbilities);

}  // namespace Vantrel::Search
