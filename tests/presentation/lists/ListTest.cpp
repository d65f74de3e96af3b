// Sorting the rows of a list.

#include <gmock/gmock.h>

#include "presentation/lists/List.h"

namespace Vantrel::Presentation {
namespace {

using testing::ElementsAre;

std::vector<std::u16string> Keys(const TList& pList) {
  std::vector<std::u16string> keys;
  for (const TListRow& row : pList.fRows) keys.push_back(row.fKey);
  return keys;
}

TEST(List, SortsByEveryKindOfValueAndKeepsTheOrderOfEqualRows) {
  const TKivFileTime early{100}, late{200};
  const TMetaDataValue none;
  TList list{u"",
             {{u"Name", TColumn::mdName},
              {u"Size", TColumn::mdSize},
              {u"Share", TColumn::mdPercentOfRoot},
              {u"Date", TColumn::mdLastChange}},
             {{{u"b", int64_t{-5}, 0.5, late}, u"1"},
              {{u"B", int64_t{30}, 0.25, none}, u"2"},
              {{u"a", int64_t{30}, 0.5, early}, u"3"},
              {{u"b", none, 0.25, late}, u"4"}}};
  SortRows(list, 0, false);  // code units: capitals first
  EXPECT_THAT(Keys(list), ElementsAre(u"2", u"3", u"1", u"4"));
  SortRows(list, 0, true);
  EXPECT_THAT(Keys(list), ElementsAre(u"1", u"4", u"3", u"2"));
  SortRows(list, 1, false);
  EXPECT_THAT(Keys(list), ElementsAre(u"4", u"1", u"3", u"2"));
  SortRows(list, 1, true);
  EXPECT_THAT(Keys(list), ElementsAre(u"3", u"2", u"1", u"4"));
  SortRows(list, 2, true);
  EXPECT_THAT(Keys(list), ElementsAre(u"3", u"1", u"2", u"4"));
  SortRows(list, 3, false);
  EXPECT_THAT(Keys(list), ElementsAre(u"2", u"3", u"1", u"4"));

  // Few rows keep their order by any way of sorting.
  TList many{u"", {{u"Size", TColumn::mdSize}}, {}};
  for (int64_t i = 0; i < 1000; ++i) many.fRows.push_back({{i % 3}, std::u16string(1, static_cast<char16_t>(i))});
  SortRows(many, 0, true);
  for (int64_t i = 0; i < 1000; ++i) {
    const int64_t expected = i < 333 ? 3 * i + 2 : i < 666 ? 3 * (i - 333) + 1 : 3 * (i - 666);
    ASSERT_EQ(many.fRows[static_cast<size_t>(i)].fKey, std::u16string(1, static_cast<char16_t>(expected)));
  }
}

}  // namespace
}  // namespace Vantrel::Presentation
