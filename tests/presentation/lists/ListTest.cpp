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
}

}  // namespace
}  // namespace Vantrel::Presentation
