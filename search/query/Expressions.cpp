#include "search/query/Expressions.h"

#include <algorithm>
#include <utility>

namespace Vantrel::Search {

namespace {

constexpr int64_t kMostCost = int64_t{1} << 60;

// Takes a destroyed list's children. While one list's children are released, lists beneath it end up here as well, so
// a chain of lists is released one after the other.
thread_local std::vector<TExpressionRef>* gReleasing = nullptr;

template <class TList>
TExpressionRef Join(std::vector<TExpressionRef> pChildren) {
  if (pChildren.size() == 1) return std::move(pChildren.front());
  const auto isSameKind = [](const TExpressionRef& pChild) {
    return dynamic_cast<const TList*>(pChild.get()) != nullptr && !pChild->Children().empty();
  };
  if (std::none_of(pChildren.begin(), pChildren.end(), isSameKind)) return MakeRef<TList>(std::move(pChildren));
  std::vector<TExpressionRef> merged;
  for (TExpressionRef& child : pChildren) {
    if (isSameKind(child))
      merged.insert(merged.end(), child->Children().begin(), child->Children().end());
    else
      merged.push_back(std::move(child));
  }
  return MakeRef<TList>(std::move(merged));
}

}  // namespace

const std::vector<TExpressionRef>& IExpression::Children() const {
  static const std::vector<TExpressionRef> none;
  return none;
}

TExpressionList::TExpressionList(std::vector<TExpressionRef> pChildren) : fChildren(std::move(pChildren)) {
  for (const TExpressionRef& child : fChildren) fCost = std::min(fCost + child->Cost(), kMostCost);
}

TExpressionList::~TExpressionList() {
  if (gReleasing != nullptr) {
    std::move(fChildren.begin(), fChildren.end(), std::back_inserter(*gReleasing));
    return;
  }
  std::vector<TExpressionRef> releasing = std::move(fChildren);
  gReleasing = &releasing;
  while (!releasing.empty()) {
    TExpressionRef next = std::move(releasing.back());
    releasing.pop_back();
    next.reset();
  }
  gReleasing = nullptr;
}

TExpressionRef JoinAnd(std::vector<TExpressionRef> pChildren) {
  return Join<TExpressionAnd>(std::move(pChildren));
}

TExpressionRef JoinOr(std::vector<TExpressionRef> pChildren) {
  return Join<TExpressionOr>(std::move(pChildren));
}

TExpressionRef JoinAlternatives(std::vector<TExpressionRef> pChildren) {
  return Join<TMultiExpression>(std::move(pChildren));
}

namespace {

void AppendLeaf(std::u16string& pText, const IExpression& pLeaf) {
  const auto& condition = static_cast<const TCondition&>(pLeaf);
  condition.AppendHead(pText);
  condition.AppendValue(pText);
}

// Alternatives differ only in their values.
void AppendAlternatives(std::u16string& pText, const IExpression& pExpression) {
  const std::vector<TExpressionRef>& children = pExpression.Children();
  for (size_t i = 0; i < children.size(); ++i) {
    if (i == 0) {
      AppendLeaf(pText, *children[i]);
    } else {
      pText += u';';
      static_cast<const TCondition&>(*children[i]).AppendValue(pText);
    }
  }
}

}  // namespace

std::u16string ExpressionToText(const IExpression& pExpression) {
  struct TFrame {
    const IExpression* fList;
    size_t fNext;
    bool fHasParentheses;
  };
  std::u16string text;
  std::vector<TFrame> stack;
  const auto write = [&](const IExpression& pNode) {
    if (dynamic_cast<const TMultiExpression*>(&pNode) != nullptr) {
      AppendAlternatives(text, pNode);
    } else if (dynamic_cast<const TExpressionList*>(&pNode) == nullptr) {
      AppendLeaf(text, pNode);
    } else {
      const bool isInside = !stack.empty();
      if (isInside) text += u'(';
      stack.push_back({&pNode, 0, isInside});
    }
  };
  write(pExpression);
  while (!stack.empty()) {
    TFrame& frame = stack.back();
    if (frame.fNext == frame.fList->Children().size()) {
      if (frame.fHasParentheses) text += u')';
      stack.pop_back();
      continue;
    }
    const bool isAnd = dynamic_cast<const TExpressionAnd*>(frame.fList) != nullptr;
    if (frame.fNext > 0) text += isAnd ? u" AND " : u" OR ";
    write(*frame.fList->Children()[frame.fNext++]);
  }
  return text;
}

}  // namespace Vantrel::Search
