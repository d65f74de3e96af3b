#include "search/query/AdaptedExpression.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "platform/text/Text.h"
#include "search/query/ValueExpressions.h"

namespace Vantrel::Search {

// Adds the steps from the last to the first, so a step's successors exist before it does. Lists nest as deep as a text
// is long, so the walk has a stack of its own.
class TAdaptedExpression::TBuilder {
 public:
  TBuilder(TAdaptedExpression& pResult, TSearchAbilities pAbilities) : fResult(pResult), fAbilities(pAbilities) {}

  void Build(const IExpression& pRoot) {
    Enter(pRoot, kYes, kNo);
    while (!fStack.empty()) {
      TList& list = fStack.back();
      if (list.fOrder.empty()) {
        const int32_t entry = list.fEntry;
        fStack.pop_back();
        Leave(entry);
        continue;
      }
      const IExpression& child = *list.fOrder.back();
      list.fOrder.pop_back();
      // fEntry is where the next child begins, or what the list means once it has no more.
      Enter(child, list.fIsAnd ? list.fEntry : list.fIfYes, list.fIsAnd ? list.fIfNo : list.fEntry);
    }
  }

 private:
  struct TList {
    std::vector<const IExpression*> fOrder;  // the last one comes next
    bool fIsAnd;
    int32_t fIfYes, fIfNo, fEntry;
  };

  void Enter(const IExpression& pNode, int32_t pIfYes, int32_t pIfNo) {
    if (dynamic_cast<const TExpressionList*>(&pNode) == nullptr) {
      AddStep(static_cast<const TCondition&>(pNode), pIfYes, pIfNo);
      return;
    }
    const bool isAnd = dynamic_cast<const TExpressionAnd*>(&pNode) != nullptr;
    TList list{{}, isAnd, pIfYes, pIfNo, isAnd ? pIfYes : pIfNo};
    for (const TExpressionRef& child : pNode.Children()) list.fOrder.push_back(child.get());
    std::stable_sort(list.fOrder.begin(), list.fOrder.end(),
                     [](const IExpression* pA, const IExpression* pB) { return pA->Cost() < pB->Cost(); });
    fStack.push_back(std::move(list));
  }

  void Leave(int32_t pEntry) { (fStack.empty() ? fResult.fEntry : fStack.back().fEntry) = pEntry; }

  void AddStep(const TCondition& pCondition, int32_t pIfYes, int32_t pIfNo) {
    const TSearchAbilities needs = pCondition.Needs();
    if ((needs & ~fAbilities) != 0) {
      throw ENotSupportedException("Expression type not supported in this configuration: " +
                                   ToUtf8(pCondition.ClassName()));
    }
    fResult.fNeeds |= needs;
    const auto* text = dynamic_cast<const TStringExpression*>(&pCondition);
    if (text != nullptr && text->Target() == TValueTarget(TColumn::mdName)) ++fNameConditions;
    fResult.fFoldsNames = fNameConditions >= kManyNameConditions;
    fResult.fSteps.push_back({&pCondition, pIfYes, pIfNo});
    Leave(static_cast<int32_t>(fResult.fSteps.size() - 1));
  }

  // Folding a name takes about as long as three plain comparisons.
  static constexpr int kManyNameConditions = 4;

  TAdaptedExpression& fResult;
  const TSearchAbilities fAbilities;
  std::vector<TList> fStack;
  int fNameConditions = 0;
};

namespace {

// Only conditions that every match must fulfil limit the level.
int64_t DeepestLevelOf(const IExpression& pRoot) {
  int64_t deepest = std::numeric_limits<int64_t>::max();
  const auto ask = [&](const IExpression& pNode) {
    if (const auto* level = dynamic_cast<const TRecursionLevelExpression*>(&pNode))
      deepest = std::min(deepest, level->DeepestLevel());
  };
  ask(pRoot);
  if (dynamic_cast<const TExpressionAnd*>(&pRoot) != nullptr)
    for (const TExpressionRef& child : pRoot.Children()) ask(*child);
  return deepest;
}

}  // namespace

TFileSet TAdaptedExpression::MatchesOf(const TFileBlock& pBlock, const IFolderData& pFolder, TSearchItem& pItem,
                                       std::vector<TFileSet>& pRoom) const {
  const auto matchSingly = [&](int32_t pStep, TFileSet pFiles) {
    return TFileBlock::Select(pFiles, [&](size_t pFile) {
      pItem.SetEntry(TEntryView(pBlock.Files(), pBlock[pFile], &pFolder));
      return MatchesFrom(pStep, pItem);
    });
  };
  TFileSet undecided = pBlock.All();
  if (fEntry < 0) return fEntry == kYes ? undecided : 0;
  if (fFoldsNames) return matchSingly(fEntry, undecided);
  TFileSet matching = 0;
  pRoom.resize(fSteps.size());  // the files that have reached each step; all zero between two calls
  const auto send = [&](TFileSet pFiles, int32_t pStep) {
    if (pStep >= 0) {
      pRoom[static_cast<size_t>(pStep)] |= pFiles;
    } else {
      undecided &= ~pFiles;
      if (pStep == kYes) matching |= pFiles;
    }
  };
  send(undecided, fEntry);
  for (int32_t at = fEntry; undecided != 0; --at) {
    const TFileSet files = std::exchange(pRoom[static_cast<size_t>(at)], 0);
    if (files == 0) continue;
    const TStep& step = fSteps[static_cast<size_t>(at)];
    if (const std::optional<TFileSet> tested = step.fCondition->MatchesOf(pBlock, files)) {
      send(*tested, step.fIfYes);
      send(files & ~*tested, step.fIfNo);
    } else {
      matching |= matchSingly(at, files);
      undecided &= ~files;
    }
  }
  return matching;
}

std::vector<const TCondition*> TAdaptedExpression::Conditions() const {
  std::vector<const TCondition*> conditions;
  std::unordered_set<const TCondition*> seen;
  for (const TStep& step : fSteps)
    if (seen.insert(step.fCondition).second) conditions.push_back(step.fCondition);
  return conditions;
}

std::vector<std::u16string> TAdaptedExpression::Warnings() const {
  std::vector<std::u16string> warnings;
  for (const TCondition* condition : Conditions())
    if (std::u16string warning = condition->GetWarning(); !warning.empty()) warnings.push_back(std::move(warning));
  return warnings;
}

TAdaptedExpression AdaptExpression(TExpressionRef pRoot, TSearchAbilities pAbilities) {
  TAdaptedExpression result;
  TAdaptedExpression::TBuilder(result, pAbilities).Build(*pRoot);
  result.fDeepestLevel = DeepestLevelOf(*pRoot);
  result.fRoot = std::move(pRoot);
  return result;
}

}  // namespace Vantrel::Search
