// Rows of the layout: a layout worked out by hand, and the row rule against a slow reference.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "presentation/treemap/SquarifiedLayout.h"

namespace Vantrel::Treemap {
namespace {

std::vector<TElementEntry> EntriesOf(const std::vector<double>& pValues) {
  std::vector<TElementEntry> entries(pValues.size());
  for (size_t i = 0; i < pValues.size(); ++i) entries[i].fValue = pValues[i];
  return entries;
}

// Areas 6, 6, 4, 3, 2, 2, 1 in 6 x 4 of some unit. Worked out on paper, row by row:
// down the left side 6 and 6 (1.5 after 2.7; with the 4 it would be 4); then across the top of 3 x 4 the 4 and the 3
// (1.8 after 2.25; with the 2 it would be 4.5); then 2, then 2, then 1.
TEST(SquarifiedLayout, MatchesALayoutByHand) {
  std::vector<TElementEntry> entries = EntriesOf({6, 6, 4, 3, 2, 2, 1});
  std::vector<TLayoutRow> rows;
  LayOut({100, 200, 700, 600}, false, entries, rows);
  std::vector<size_t> counts;
  for (const TLayoutRow& row : rows) counts.push_back(row.fCount);
  EXPECT_EQ(counts, (std::vector<size_t>{2, 2, 1, 1, 1}));
  const std::vector<TTreemapRect> expected = {{100, 200, 400, 400}, {100, 400, 400, 600}, {400, 200, 571, 433},
                                              {571, 200, 700, 433}, {400, 433, 520, 600}, {520, 433, 640, 600},
                                              {640, 433, 700, 600}};
  for (size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(entries[i].fRect, expected[i]) << "entry " << i;
  EXPECT_FLOAT_EQ(entries[2].fWidth, 1200.0f / 7);
  EXPECT_FLOAT_EQ(entries[2].fHeight, 700.0f / 3);
  EXPECT_DOUBLE_EQ(entries[6].fCumulativeArea, 600 * 400 / 100);
}

// Only the last entry of a row is examined, an equal ratio goes on, and an entry of value 0 closes nothing.
TEST(SquarifiedLayout, ClosesARowByItsLastEntryOnly) {
  const auto firstRow = [](const TTreemapRect& pRect, const std::vector<double>& pValues, bool pKeep = false) {
    std::vector<TElementEntry> entries = EntriesOf(pValues);
    std::vector<TLayoutRow> rows;
    LayOut(pRect, pKeep, entries, rows);
    return rows.at(0).fCount;
  };
  // 8 x 4 in units: 8 alone is 2 x 4, ratio 2. With another 8 each is 4 x 2: equal, so it goes on. With a third, each
  // is 6 x 1.33: the row ends.
  EXPECT_EQ(firstRow({0, 0, 800, 400}, {8, 8, 8, 8}), 2u);
  // 1 and 9 in 10 x 10: 1 alone is 0.1 x 10, ratio 100. The 9 makes a square of 1 x 9 of itself, ratio 9; that the 1 is
  // 1 x 1 does not matter. Then 90 of 100: 10 x 9, ratio 1.1.
  EXPECT_EQ(firstRow({0, 0, 100, 100}, {1, 9, 90}), 3u);
  EXPECT_EQ(firstRow({0, 0, 800, 400}, {8, 0, 8, 8, 8}), 2u) << "the 0 goes on, and then any ratio is greater";
  EXPECT_EQ(firstRow({0, 0, 0, 400}, {8, 7, 1}), 3u) << "without a width all ratios are 0";
  // Along the longer side of 8 x 4: 8 alone is 8 x 1, ratio 8. Two are 4 x 2, three 2.7 x 3, four 2 x 4.
  EXPECT_EQ(firstRow({0, 0, 800, 400}, {8, 8, 8, 8}, true), 3u);
}

// The literal rule, with sums that are added up anew each time.
double ReferenceRatio(const std::vector<double>& pAreas, size_t pFirst, size_t pLast, double pLength) {
  double row = 0;
  for (size_t i = pFirst; i <= pLast; ++i) row += pAreas[i];
  if (pLength <= 0 || row == 0) return 0;
  const double across = row / pLength * 100;
  const double along = pLength * (pAreas[pLast] / row);
  return across == 0 || along == 0 ? 0 : std::max(across / along, along / across);
}

// Replays the rows that were made. A decision is wrong unless the ratios are equal but for the last digits of a float.
void CheckRows(const TTreemapRect& pRect, bool pKeep, const std::vector<double>& pValues) {
  std::vector<TElementEntry> entries = EntriesOf(pValues);
  std::vector<TLayoutRow> rows;
  LayOut(pRect, pKeep, entries, rows);
  double sum = 0;
  for (const double value : pValues) sum += value;
  std::vector<double> areas;
  for (const double value : pValues) areas.push_back(value * static_cast<double>(pRect.Area()) / sum / 100);
  double width = pRect.Width();
  double height = pRect.Height();
  constexpr double kFloat = 1e-4;
  size_t next = 0;
  for (const TLayoutRow& row : rows) {
    ASSERT_EQ(row.fFirst, next);
    const bool isColumn = pKeep ? height > width : width >= height;
    ASSERT_TRUE(row.fIsColumn == isColumn || std::abs(width - height) <= kFloat) << width << " x " << height;
    const double length = row.fIsColumn ? height : width;
    next = row.fFirst + row.fCount;
    double area = areas[row.fFirst];
    for (size_t i = row.fFirst + 1; i < next; area += areas[i++])
      ASSERT_LE(ReferenceRatio(areas, row.fFirst, i, length),
                ReferenceRatio(areas, row.fFirst, i - 1, length) * (1 + kFloat))
          << "entry " << i << " should have begun a new row";
    if (next < areas.size()) {
      ASSERT_GE(ReferenceRatio(areas, row.fFirst, next, length),
                ReferenceRatio(areas, row.fFirst, next - 1, length) * (1 - kFloat))
          << "entry " << next << " should have gone into the row";
    }
    (row.fIsColumn ? width : height) -= area / length * 100;
    for (size_t i = row.fFirst; i < next; ++i)
      ASSERT_NEAR(static_cast<double>(entries[i].fWidth) * entries[i].fHeight, areas[i] * 100,
                  1e-4 * areas[i] * 100 + 1e-6);
  }
  ASSERT_EQ(next, pValues.size());
}

TEST(SquarifiedLayout, FollowsTheRowRuleOnRandomValues) {
  for (uint32_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<double> values(1 + random() % 60);
    for (double& value : values) value = static_cast<double>(1 + (random() % 100'000 << random() % 12));
    if (seed % 4 != 0) std::sort(values.rbegin(), values.rend());
    const auto left = static_cast<int32_t>(random() % 500);
    const auto width = static_cast<int32_t>(20 + random() % 900);
    const auto height = static_cast<int32_t>(20 + random() % 900);
    CheckRows({left, 7, left + width, 7 + height}, seed % 3 == 0, values);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace Vantrel::Treemap
