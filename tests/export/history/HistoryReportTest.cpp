// The chart of one scan, of equal ones, of incomplete ones and of thousands.

#include <gmock/gmock.h>

#include <random>

#include "export/history/HistoryReport.h"

namespace Vantrel::Exporting {
namespace {

using testing::ElementsAre;
using Vantrel::Presentation::THistoryEntry;

constexpr int64_t kDay = TKivFileTime::kTicksPerDay;

THistoryEntry Scan(int64_t pDay, int64_t pSize) {
  THistoryEntry entry;
  entry.fId = 1'000 + pDay;
  entry.fDate = {TKivFileTime::kUnixEpoch + 20'000 * kDay + pDay * kDay + kDay / 2};
  entry.fSize = pSize;
  return entry;
}

// The lines without their margin, and without trailing blanks.
std::vector<std::string> Plot(const std::vector<std::string>& pLines) {
  std::vector<std::string> plot;
  for (const std::string& line : pLines)
    if (const size_t bar = line.find('|'); bar != std::string::npos) plot.push_back(line.substr(bar + 1));
  return plot;
}

TEST(HistoryReportTest, IncompleteScansAreMarked) {
  std::vector<THistoryEntry> entries{Scan(0, 100), Scan(1, 40)};
  entries[1].fUnreadFolders = 2;
  EXPECT_THAT(Plot(HistoryChart(entries, 18)), ElementsAre("*.........", "", "", "", "", "", "", "          ?"));
}

TEST(HistoryReportTest, OneScanAndEqualSizesAreOneLine) {
  EXPECT_TRUE(HistoryChart({}).empty());
  EXPECT_THAT(Plot(HistoryChart({Scan(0, 77)})), ElementsAre("*"));
  // 80 columns without "1.0 KB |" are 72; the scan in the middle falls on column 71 / 2, rounded up.
  const auto lines = HistoryChart({Scan(0, 1024), Scan(2, 1024), Scan(4, 1024)});
  EXPECT_THAT(Plot(lines), ElementsAre("*" + std::string(35, '.') + "*" + std::string(34, '.') + "*"));
  EXPECT_EQ(lines.size(), 3u);
}

// By hand: 8 rows from 700 down to 0 in steps of 100.
TEST(HistoryReportTest, RowsAndColumnsAreInProportion) {
  const auto lines = HistoryChart({Scan(0, 0), Scan(5, 700), Scan(10, 310)}, 18);  // "700 B |" leaves 11 columns
  EXPECT_THAT(Plot(lines), ElementsAre("     *....", "", "", "", "          *", "", "", "*...."));

  // Both are 1.177 MB.
  const auto close = HistoryChart({Scan(0, 1'234'567), Scan(5, 1'234'666)});
  EXPECT_THAT(close.front(), testing::StartsWith("1,234,666 B |"));
  EXPECT_THAT(close[7], testing::StartsWith("1,234,567 B |*"));
}

TEST(HistoryReportTest, FitsWhateverThereIsAndShowsBothExtremes) {
  std::mt19937_64 random(3);
  for (int round = 0; round < 300; ++round) {
    std::vector<THistoryEntry> entries;
    const int count = 1 + static_cast<int>(random() % (round % 10 == 0 ? 5'000 : 20));
    const int64_t most = round % 7 == 0 ? INT64_MAX : int64_t{1} << (random() % 60);
    for (int i = 0; i < count; ++i)
      entries.push_back(Scan(round % 3 == 0 ? 0 : i * static_cast<int64_t>(1 + random() % 2), random() % most));
    std::sort(entries.begin(), entries.end(),
              [](const THistoryEntry& pA, const THistoryEntry& pB) { return pA.fDate < pB.fDate; });
    const int width = 40 + static_cast<int>(random() % 60);
    const auto lines = HistoryChart(entries, width);
    ASSERT_LE(lines.size(), 10u);
    for (const std::string& line : lines) ASSERT_LE(line.size(), static_cast<size_t>(width));
    const auto plot = Plot(lines);
    EXPECT_NE(plot.front().find('*'), std::string::npos);
    EXPECT_NE(plot.back().find('*'), std::string::npos);
  }
}

}  // namespace
}  // namespace Vantrel::Exporting
