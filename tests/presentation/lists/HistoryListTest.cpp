// Growth between scans, complete and incomplete ones.

#include <gmock/gmock.h>

#include "platform/text/Text.h"
#include "presentation/lists/HistoryList.h"

namespace Vantrel::Presentation {
namespace {

using testing::ElementsAre;

THistoryEntry Scan(int64_t pDay, int64_t pSize) {
  THistoryEntry entry;
  entry.fId = 1'000 + pDay;
  entry.fDate = {TKivFileTime::kUnixEpoch + pDay * TKivFileTime::kTicksPerDay};
  entry.fSize = pSize;
  return entry;
}

TEST(HistoryList, GrowthIsAgainstTheScanBefore) {
  std::vector<THistoryEntry> entries{Scan(0, 0), Scan(1, 200), Scan(2, 150), Scan(3, 150)};
  TList list = HistoryList(u"/data", entries);
  auto cells = [&](size_t pRow) {
    std::vector<std::string> texts;
    TValueFormat format;
    format.fPlainByteValues = true;
    for (size_t i : {1u, 5u, 6u})
      texts.push_back(ToUtf8(FormatValue(list.fColumns[i].fColumn, list.fRows[pRow].fValues[i], format)));
    return texts;
  };
  EXPECT_EQ(list.fColumns.size(), 8u);
  EXPECT_THAT(cells(0), ElementsAre("0", "", ""));
  EXPECT_THAT(cells(1), ElementsAre("200", "200", ""));
  EXPECT_THAT(cells(2), ElementsAre("150", "-50", "-25.0 %"));
  EXPECT_THAT(cells(3), ElementsAre("150", "0", "0.0 %"));
  EXPECT_EQ(std::get<std::u16string>(list.fRows[3].fValues[7]), u"1003");
  EXPECT_EQ(list.fRows[3].fKey, u"1003");

  entries[1].fExcludedObjects = 12;
  list = HistoryList(u"/data", entries);
  ASSERT_EQ(list.fColumns.size(), 9u);
  for (const auto& row : list.fRows) EXPECT_EQ(row.fValues.size(), 9u);
  EXPECT_EQ(std::get<int64_t>(list.fRows[1].fValues[7]), 12);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(list.fRows[2].fValues[7]));
}

// A whole scan is compared with a whole one, another one with a scan that lacks as much.
TEST(HistoryList, IncompleteScansAreNeverComparedSilently) {
  std::vector<THistoryEntry> entries{Scan(0, 100), Scan(1, 40), Scan(2, 110), Scan(3, 45), Scan(4, 46)};
  for (const size_t i : {1u, 3u}) entries[i].fUnreadFolders = 2;
  entries[4].fUnreadFolders = 7;
  const TList list = HistoryList(u"/data", entries);
  ASSERT_EQ(list.fColumns.size(), 9u);
  EXPECT_EQ(list.fColumns[7].fCaption, u"Not Read");
  std::vector<TMetaDataValue> growth, unread;
  for (const auto& row : list.fRows) {
    growth.push_back(row.fValues[5]);
    unread.push_back(row.fValues[7]);
  }
  const TMetaDataValue none;
  EXPECT_EQ(growth, (std::vector<TMetaDataValue>{none, none, int64_t{10}, int64_t{5}, none}));
  EXPECT_EQ(unread, (std::vector<TMetaDataValue>{int64_t{0}, int64_t{2}, int64_t{0}, int64_t{2}, int64_t{7}}));
}

}  // namespace
}  // namespace Vantrel::Presentation
