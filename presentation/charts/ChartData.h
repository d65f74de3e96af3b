#pragma once

// What a chart shows: named values, or values over time.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/columns/MetaData.h"
#include "model/statistics/ColorPalette.h"

namespace Vantrel::Charts {

struct TChartItem {
  std::u16string fKey;                // decides the colour: the same key has the same colour in every chart
  std::u16string fLabel;              // as found; charts make it fit to be shown
  int64_t fValue = 0;                 // negative values count as 0
  std::optional<TColor> fColor;       // none: that of the key
  std::vector<TChartItem> fChildren;  // the parts of the value, for charts with several levels
  int64_t fCount = 1;                 // more than one: the item stands for so many others
  bool fIsRest = false;               // "others"; it has no colour of its own
};

struct TChartData {
  std::u16string fTitle;
  TColumn fColumn = TColumn::mdSize;  // says how the values are formatted
  // The items have an order of their own, such as that of ages. Otherwise the largest come first.
  bool fIsOrdered = false;
  std::vector<TChartItem> fItems;
};

struct TTimePoint {
  TKivFileTime fTime;  // points without a date are not shown
  int64_t fValue = 0;
  bool fIsIncomplete = false;  // the value is too small by an unknown amount
};

struct TTimeSeries {
  std::u16string fTitle;
  TColumn fColumn = TColumn::mdSize;
  std::vector<TTimePoint> fPoints;
};

// The sum of the items' values. A sum beyond the range of integers becomes the largest integer.
int64_t TotalOf(const std::vector<TChartItem>& pItems);

// The largest items, at most pMost with "others", which stands for all that are left out. So the total stays the same.
// Equal values are ordered by key. Items in an order of their own keep it; then the smallest go into "others", which
// stands at the end. Items that already stand for others go there as well.
std::vector<TChartItem> LargestAndRest(std::vector<TChartItem> pItems, size_t pMost, bool pIsOrdered = false);

}  // namespace Vantrel::Charts
