// The texts of sort orders, columns and separators, both ways; what is refused.

#include <gtest/gtest.h>

#include "model/options/MediaSettings.h"

namespace Vantrel::Exporting {
namespace {

constexpr int kColumns = static_cast<int>(TColumn::mdCount);

TEST(MediaSettings, EveryOrderComesBackFromItsText) {
  for (int column = 0; column < kColumns; ++column) {
    for (const bool descending : {false, true}) {
      const std::optional<TSortOrder> order = TSortOrder{static_cast<TColumn>(column), descending};
      std::optional<TSortOrder> read;
      EXPECT_TRUE(TryParseSortOrder(SortOrderText(order), read));
      EXPECT_EQ(read, order);
    }
  }
  std::optional<TSortOrder> none = TSortOrder();
  EXPECT_TRUE(TryParseSortOrder(SortOrderText(std::nullopt), none));
  EXPECT_FALSE(none);
}

TEST(MediaSettings, OrdersAsPeopleTypeThem) {
  const struct {
    std::u16string_view fText;
    TColumn fColumn;
    bool fDescending;
  } cases[] = {{u"size", TColumn::mdSize, true},
               {u"NAME", TColumn::mdName, false},
               {u"name,DESCENDING", TColumn::mdName, true},
               {u"LastChange", TColumn::mdLastChange, true},
               {u"lastchange,Ascending", TColumn::mdLastChange, false},
               {u"attributes", TColumn::mdAttributes, false},
               {u"percentofparent", TColumn::mdPercentOfParent, true}};
  for (const auto& item : cases) {
    std::optional<TSortOrder> order;
    ASSERT_TRUE(TryParseSortOrder(item.fText, order));
    EXPECT_EQ(*order, (TSortOrder{item.fColumn, item.fDescending}));
  }
  for (const std::u16string_view wrong : {u"sizes", u",", u",ascending", u"size,up", u"size ascending", u" size",
                                          u"size,ascending,descending", u"size;name"}) {
    std::optional<TSortOrder> order = TSortOrder{TColumn::mdOwner, false};
    EXPECT_FALSE(TryParseSortOrder(wrong, order));
    EXPECT_EQ(order, (TSortOrder{TColumn::mdOwner, false}));
  }
}

TEST(MediaSettings, ColumnsBothWays) {
  std::vector<TColumn> all;
  for (int column = 0; column < kColumns; ++column) all.push_back(static_cast<TColumn>(column));
  std::vector<TColumn> read{TColumn::mdOwner};
  EXPECT_TRUE(TryParseColumns(ColumnsText(all), read));
  EXPECT_EQ(read, all);
  EXPECT_EQ(ColumnsText({TColumn::mdFullPath, TColumn::mdSize}), u"FullPath;Size");
  EXPECT_TRUE(TryParseColumns(u"SIZE;name;size", read));
  EXPECT_EQ(read, (std::vector{TColumn::mdSize, TColumn::mdName, TColumn::mdSize}));
  EXPECT_TRUE(TryParseColumns(u"name,size,files", read));
  EXPECT_EQ(read, (std::vector{TColumn::mdName, TColumn::mdSize, TColumn::mdFiles}));
  for (const std::u16string_view wrong : {u";", u"size;;name", u";size", u"size,,name", u"size;nam", u"size ;name"}) {
    EXPECT_FALSE(TryParseColumns(wrong, read));
    EXPECT_EQ(read.size(), 3u);
  }
  EXPECT_TRUE(TryParseColumns(u"", read));
  EXPECT_TRUE(read.empty());
}

TEST(MediaSettings, SeparatorsBothWays) {
  for (const std::u16string_view separator : {u",", u";", u"\t", u"::", u"  ", u"\x00A7", u"a\tb"}) {
    std::u16string read;
    EXPECT_TRUE(TryParseSeparator(SeparatorText(separator), read));
    EXPECT_EQ(read, separator);
  }
  std::u16string separator;
  for (const std::u16string_view tab : {u"TAB", u"tab", u"\t"}) {
    EXPECT_TRUE(TryParseSeparator(tab, separator));
    EXPECT_EQ(separator, u"\t");
  }
  for (const std::u16string_view wrong : {u"", u"\"", u",\"", u"\n", u"\r\n", u",\r"})
    EXPECT_FALSE(TryParseSeparator(wrong, separator));
  EXPECT_EQ(separator, u"\t");
}

}  // namespace
}  // namespace Vantrel::Exporting
