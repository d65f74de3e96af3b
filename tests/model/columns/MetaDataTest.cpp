// How values are formatted, found and compared; size records.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "model/columns/MetaData.h"
#include "model/columns/SizeData.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "platform/text/Text.h"

namespace Vantrel {
namespace {

std::string Formatted(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat = {}) {
  return ToUtf8(FormatValue(pColumn, pValue, pFormat));
}

TEST(MetaData, SizesAreWrittenInTheLargestUnitThatFits) {
  const std::pair<int64_t, std::string_view> cases[] = {
      {0, "0 B"},
      {1, "1 B"},
      {1023, "1,023 B"},
      {1024, "1.0 KB"},
      {1280, "1.3 KB"},  // 1.25: halves away from zero
      {-1280, "-1.3 KB"},
      {1536, "1.5 KB"},
      {1048524, "1,023.9 KB"},  // 1023.949
      {1048535, "1.0 MB"},      // 1023.960 would round to 1,024.0 KB
      {-1048535, "-1.0 MB"},
      {1288490, "1.2 MB"},
      {1073741823, "1.0 GB"},
      {1099511627775, "1.0 TB"},
      {1099511627776, "1.0 TB"},
      {1125899906842624, "1,024.0 TB"},
      {std::numeric_limits<int64_t>::max(), "8,388,608.0 TB"},
      {std::numeric_limits<int64_t>::min(), "-8,388,608.0 TB"},
  };
  for (const auto& [size, text] : cases) EXPECT_EQ(Formatted(TColumn::mdSize, size), text) << size;
}

TEST(MetaData, DecimalUnitsArePowersOfAThousand) {
  TValueFormat format;
  format.fDecimalUnits = true;
  const std::pair<int64_t, std::string_view> cases[] = {
      {0, "0 B"},
      {999, "999 B"},
      {1000, "1.0 kB"},
      {-1250, "-1.3 kB"},  // halves away from zero
      {999'949, "999.9 kB"},
      {999'950, "1.0 MB"},  // would round to 1,000.0 kB
      {1'048'576, "1.0 MB"},
      {1'500'000'000, "1.5 GB"},
      {999'949'999'999, "999.9 GB"},
      {1'000'000'000'000'000, "1,000.0 TB"},
      {std::numeric_limits<int64_t>::min(), "-9,223,372.0 TB"},  // 9,223,372.036854775808
  };
  for (const auto& [size, text] : cases) EXPECT_EQ(Formatted(TColumn::mdSize, size, format), text) << size;
  format.fSizeUnit = TSizeUnit::suKB;
  EXPECT_EQ(Formatted(TColumn::mdSize, int64_t{6300}, format), "6.3 kB");
}

TEST(MetaData, SizesFollowTheFormat) {
  TValueFormat format;
  format.fSizeUnit = TSizeUnit::suMB;
  EXPECT_EQ(Formatted(TColumn::mdAllocated, int64_t{1}, format), "0.0 MB");
  EXPECT_EQ(Formatted(TColumn::mdAllocated, int64_t{52429}, format), "0.1 MB");  // 0.0500002
  EXPECT_EQ(Formatted(TColumn::mdAllocated, int64_t{1048575}, format), "1.0 MB");
  format.fSizeUnit = TSizeUnit::suGB;
  EXPECT_EQ(Formatted(TColumn::mdSize, int64_t{5'000'000'000'000}, format), "4,656.6 GB");
  format.fDecimals = 3;
  format.fShowUnits = false;
  format.fThousandsSeparator = u".";
  format.fDecimalSeparator = u",";
  EXPECT_EQ(Formatted(TColumn::mdSize, int64_t{5'000'000'000'000}, format), "4.656,613");
  EXPECT_EQ(Formatted(TColumn::mdPercentOfParent, 0.5, format), "50,000");
  format.fDecimals = 0;
  EXPECT_EQ(Formatted(TColumn::mdSize, int64_t{5'000'000'000'000}, format), "4.657");
  format.fPlainByteValues = true;
  EXPECT_EQ(Formatted(TColumn::mdSize, int64_t{1234567}, format), "1234567");
  EXPECT_EQ(Formatted(TColumn::mdFiles, int64_t{1234567}, format), "1234567");
}

TEST(MetaData, OtherKindsOfValues) {
  EXPECT_EQ(Formatted(TColumn::mdFiles, int64_t{999}), "999");
  EXPECT_EQ(Formatted(TColumn::mdFiles, int64_t{1000}), "1,000");
  EXPECT_EQ(Formatted(TColumn::mdFolders, int64_t{-1234567}), "-1,234,567");
  EXPECT_EQ(Formatted(TColumn::mdPercentOfParent, 0.4321), "43.2 %");
  EXPECT_EQ(Formatted(TColumn::mdPercentOfParent, 1.0), "100.0 %");
  EXPECT_EQ(Formatted(TColumn::mdPercentOfParent, 0.0004), "0.0 %");
  EXPECT_EQ(Formatted(TColumn::mdPercentOfParent, std::nan("")), "");
  EXPECT_EQ(Formatted(TColumn::mdLastChange, TKivFileTime{}), "");
  EXPECT_EQ(Formatted(TColumn::mdName, std::u16string(u"a\nb")), "a\nb");
  EXPECT_EQ(Formatted(TColumn::mdSize, {}), "");
  EXPECT_EQ(Formatted(TColumn::mdAttributes, int64_t{kAttributeArchive | kAttributeHidden}), "-H-A------");
  EXPECT_EQ(Formatted(TColumn::mdAttributes, int64_t{0}), "----------");
  EXPECT_EQ(Formatted(TColumn::mdCompression, int64_t{compr_no | compr_yes}), "partly");
}

// Keys and names are kept in files: two columns with one key would be read as each other.
TEST(MetaData, EveryColumnIsFoundByItsOwnKeyAndName) {
  std::set<TPropertyKey> keys;
  for (int i = 0; i < static_cast<int>(TColumn::mdCount); ++i) {
    const TColumnInfo& info = ColumnInfo(static_cast<TColumn>(i));
    EXPECT_TRUE(keys.insert(info.fKey).second) << i;
    EXPECT_EQ(FindColumn(info.fKey), &info);
    EXPECT_EQ(FindColumn(info.fName), &info);
  }
  EXPECT_EQ(FindColumn(u"pAtHlEnGtH"), &ColumnInfo(TColumn::mdPathLength));
  EXPECT_EQ(FindColumn(u"nosuch"), nullptr);
  EXPECT_EQ(FindColumn(TPropertyKey{}), nullptr);
  auto hex = [](const TPropertyKey& pKey) {
    std::string text;
    for (uint8_t byte : pKey.fFormatId) {
      text += "0123456789ABCDEF"[byte >> 4];
      text += "0123456789ABCDEF"[byte & 15];
    }
    return text + " " + std::to_string(pKey.fPropertyId);
  };
  EXPECT_EQ(hex(ColumnInfo(TColumn::mdName).fKey), "B0461F53EAF64DA1B879BEA641BF670E 61");
  EXPECT_EQ(hex(ColumnInfo(TColumn::mdFullPath).fKey), "DE632DE042534BAB85C4CA3BE18AA0F6 1");
}

TEST(MetaData, NoValueComesFirst) {
  EXPECT_TRUE(CompareValues({}, int64_t{-5}) < 0);
  EXPECT_TRUE(CompareValues(int64_t{-5}, int64_t{3}) < 0);
  EXPECT_TRUE(CompareValues(std::u16string(u"\uFF41"), std::u16string(u"\U0001F600")) > 0) << "by code units";
  EXPECT_TRUE(CompareValues(TKivFileTime{2}, TKivFileTime{1}) > 0);
  EXPECT_TRUE(CompareValues({}, {}) == 0);
}

TEST(SizeData, RecordsAnswerTheirColumns) {
  auto full = MakeRef<TSizeData>(TSizeValues{{1536, 4096, 12}, 3, compr_no});
  EXPECT_EQ(ToUtf8(full->ToString()), "1.5 KB (4.0 KB allocated), 12 files, 3 folders");
  EXPECT_EQ(full->GetValue(TColumn::mdItems), TMetaDataValue(int64_t{15}));
  EXPECT_EQ(full->GetValue(TColumn::mdAverageFileSize), TMetaDataValue(int64_t{128}));
  EXPECT_EQ(full->GetValue(TColumn::mdName), TMetaDataValue());
  auto basic = MakeRef<TBasicSizeData>();
  EXPECT_TRUE(basic->IsZero());
  EXPECT_EQ(basic->GetValue(TColumn::mdAverageFileSize), TMetaDataValue());
  basic->Assign(*full);
  EXPECT_EQ(ToUtf8(basic->ToString()), "1.5 KB (4.0 KB allocated), 12 files");
  EXPECT_EQ(basic->GetValue(TColumn::mdFolders), TMetaDataValue());
  // A record that counts no folders leaves none behind.
  full->Assign(*basic);
  EXPECT_EQ(full->GetFolders(), 0);
  full->Assign(*MakeRef<TSizeData>(TSizeValues{{0, 0, 1}, 1, compr_yes}));
  EXPECT_EQ(ToUtf8(full->ToString()), "0 B (0 B allocated), 1 file, 1 folder");
  EXPECT_EQ(full->GetCompression(), compr_yes);
  full->SetFiles(0);
  EXPECT_FALSE(full->IsZero()) << "a folder is something";
}

}  // namespace
}  // namespace Vantrel
