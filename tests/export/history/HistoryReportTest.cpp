// Growth between scans; the chart of one scan, of equal ones and of thousands.

#include <gmock/gmock.h>

#include <random>

#include "export/history/HistoryReport.h"
#include "export/text/ListExport.h"
#include "platform/text/Text.h"
#include "tests/support/LineList.h"

namespace Vantrel::Exporting {
namespace {

using testing::ElementsAre;
using Vantrel::History::THistoryEntry;

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

TEST(HistoryReportTest, GrowthIsAgainstTheScanBefore) {
  std::vector<THistoryEntry> entries{Scan(0, 0), Scan(1, 200), Scan(2, 150), Scan(3, 150)};
  TListTable table = HistoryList(u"/data", entries);
  auto cells = [&](size_t pRow) {
    std::vector<std::string> texts;
    TValueFormat format;
    format.fPlainByteValues = true;
    for (size_t i : {1u, 5u, 6u})
      texts.push_back(ToUtf8(FormatValue(table.fColumns[i].fColumn, table.fRows[pRow][i], format)));
    return texts;
  };
  EXPECT_EQ(table.fColumns.size(), 8u);
  EXPECT_THAT(cells(0), ElementsAre("0", "", ""));
  EXPECT_THAT(cells(1), ElementsAre("200", "200", ""));
  EXPECT_THAT(cells(2), ElementsAre("150", "-50", "-25.0 %"));
  EXPECT_THAT(cells(3), ElementsAre("150", "0", "0.0 %"));
  EXPECT_EQ(std::get<std::u16string>(table.fRows[3][7]), u"1003");

  entries[1].fExcludedObjects = 12;
  table = HistoryList(u"/data", entries);
  ASSERT_EQ(table.fColumns.size(), 9u);
  for (const auto& row : table.fRows) EXPECT_EQ(row.size(), 9u);
  EXPECT_EQ(std::get<int64_t>(table.fRows[1][7]), 12);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(table.fRows[2][7]));
}

// A whole scan is compared with a whole one, another one with a scan that lacks as much.
TEST(HistoryReportTest, IncompleteScansAreNeverComparedSilently) {
  std::vector<THistoryEntry> entries{Scan(0, 100), Scan(1, 40), Scan(2, 110), Scan(3, 45), Scan(4, 46)};
  for (const size_t i : {1u, 3u}) entries[i].fUnreadFolders = 2;
  entries[4].fUnreadFolders = 7;
  const TListTable table = HistoryList(u"/data", entries);
  ASSERT_EQ(table.fColumns.size(), 9u);
  EXPECT_EQ(table.fColumns[7].fCaption, u"Not Read");
  std::vector<TMetaDataValue> growth, unread;
  for (const auto& row : table.fRows) {
    growth.push_back(row[5]);
    unread.push_back(row[7]);
  }
  const TMetaDataValue none;
  EXPECT_EQ(growth, (std::vector<TMetaDataValue>{none, none, int64_t{10}, int64_t{5}, none}));
  EXPECT_EQ(unread, (std::vector<TMetaDataValue>{int64_t{0}, int64_t{2}, int64_t{0}, int64_t{2}, int64_t{7}}));
  entries.resize(2);
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
