#include "presentation/charts/ChartData.h"

#include <algorithm>
#include <iterator>

#include "platform/text/Text.h"

namespace Vantrel::Charts {

namespace {

int64_t SumOf(int64_t pA, int64_t pB) {
  int64_t sum = 0;
  return __builtin_add_overflow(pA, pB, &sum) ? INT64_MAX : sum;
}

TChartItem RestOf(std::vector<TChartItem>::const_iterator pBegin, std::vector<TChartItem>::const_iterator pEnd,
                  const TValueFormat& pFormat) {
  TChartItem rest;
  rest.fIsRest = true;
  rest.fCount = 0;
  for (auto item = pBegin; item != pEnd; ++item) {
    rest.fValue = SumOf(rest.fValue, item->fValue);
    rest.fCount = SumOf(rest.fCount, item->fCount);
  }
  rest.fLabel = FormatValue(TColumn::mdItems, rest.fCount, pFormat) + (rest.fCount == 1 ? u" other" : u" others");
  return rest;
}

bool ComesFirst(const TChartItem& pA, const TChartItem& pB) {
  if (pA.fIsRest != pB.fIsRest) return pB.fIsRest;
  return pA.fValue != pB.fValue ? pA.fValue > pB.fValue : pA.fKey < pB.fKey;
}

}  // namespace

int64_t TotalOf(const std::vector<TChartItem>& pItems) {
  int64_t total = 0;
  for (const TChartItem& item : pItems) total = SumOf(total, std::max<int64_t>(item.fValue, 0));
  return total;
}

std::vector<TChartItem> LargestAndRest(std::vector<TChartItem> pItems, size_t pMost, bool pIsOrdered) {
  for (TChartItem& item : pItems) item.fValue = std::max<int64_t>(item.fValue, 0);
  const std::vector<TChartItem> inOrder = pIsOrdered ? pItems : std::vector<TChartItem>();
  std::stable_sort(pItems.begin(), pItems.end(), ComesFirst);
  const auto given = std::find_if(pItems.begin(), pItems.end(), [](const TChartItem& pItem) { return pItem.fIsRest; });
  size_t kept = static_cast<size_t>(given - pItems.begin());
  if (pItems.size() > pMost) kept = std::min(kept, pMost > 0 ? pMost - 1 : 0);
  std::optional<TChartItem> rest;
  if (kept < pItems.size())
    rest = RestOf(pItems.cbegin() + static_cast<ptrdiff_t>(kept), pItems.cend(), TValueFormat());
  std::vector<TChartItem> shown(std::make_move_iterator(pItems.begin()),
                                std::make_move_iterator(pItems.begin() + static_cast<ptrdiff_t>(kept)));
  if (pIsOrdered) {
    auto place = [&](const TChartItem& pItem) {
      return std::find_if(inOrder.begin(), inOrder.end(),
                          [&](const TChartItem& pOther) { return pOther.fKey == pItem.fKey; }) -
             inOrder.begin();
    };
    std::stable_sort(shown.begin(), shown.end(),
                     [&](const TChartItem& pA, const TChartItem& pB) { return place(pA) < place(pB); });
  }
  if (rest && pMost > 0) shown.push_back(std::move(*rest));
  return shown;
}

}  // namespace Vantrel::Charts
