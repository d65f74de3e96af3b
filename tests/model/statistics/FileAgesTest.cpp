// Intervals, ages, labels, statistics by age.

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>

#include "model/options/GlobalOptions.h"
#include "model/statistics/FileAges.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/Failures.h"

namespace Vantrel {
namespace {

using Vantrel::Testing::MessageOf;

TRef<IFileAges> AgesOf(std::u16string_view pText) {
  TRef<IFileAges> ages = MakeRef<TFileAges>();
  ages->SetAsString(pText);
  return ages;
}

TRef<IFileAges> DefaultAges() {
  return AgesOf(FromUtf8(TGlobalOptions().FileAges));
}

TEST(FileAges, TheDefaultListSortsAgesIntoSevenIntervals) {
  TRef<IFileAges> ages = DefaultAges();
  const std::pair<int64_t, int> cases[] = {
      {-400, 0}, {0, 0},   {1, 0},      {2, 1},          {7, 1},          {8, 2},
      {30, 2},   {31, 3},  {182, 3},    {183, 4},        {365, 4},        {366, 5},
      {730, 5},  {731, 6}, {10'000, 6}, {2147483647, 6}, {2147483648, 6}, {std::numeric_limits<int64_t>::max(), 6}};
  for (const auto& [age, index] : cases) EXPECT_EQ(ages->GetIndexOfMatchingInterval(age), index) << age;
  EXPECT_EQ(MakeRef<TFileAges>()->GetIndexOfMatchingInterval(0), -1);
}

TEST(FileAges, AgesAreDaysBegun) {
  constexpr int64_t day = TKivFileTime::kTicksPerDay;
  const TKivFileTime now{400'000 * day};
  EXPECT_EQ(FileAgeInDays(now, now), 0);
  EXPECT_EQ(FileAgeInDays(now, {now.fTicks - 1}), 1);
  EXPECT_EQ(FileAgeInDays(now, {now.fTicks - day}), 1);
  EXPECT_EQ(FileAgeInDays(now, {now.fTicks - day - 1}), 2);
  EXPECT_EQ(FileAgeInDays(now, {now.fTicks + 10 * day}), -10);
  EXPECT_EQ(FileAgeInDays(now, {}), 400'000);
  // Damaged dates must not overflow.
  EXPECT_EQ(FileAgeInDays(now, {std::numeric_limits<int64_t>::min()}), 400'000);
  EXPECT_LT(FileAgeInDays(now, {std::numeric_limits<int64_t>::max()}), 0);
}

TEST(FileAges, MomentsBeforeNow) {
  TRef<IFileAges> ages = AgesOf(u"-9000000000000000000;0;2;365;2147483647;9000000000000000000");
  int64_t before = TKivFileTime::Now().fTicks;
  int64_t moment = ages->FileAgeFromNow(2).fTicks + 2 * TKivFileTime::kTicksPerDay;
  int64_t after = TKivFileTime::Now().fTicks;
  EXPECT_LE(before, moment);
  EXPECT_LE(moment, after);
  EXPECT_GT(ages->FileAgeFromNow(1), ages->FileAgeFromNow(2));
  EXPECT_GT(ages->FileAgeFromNow(0).fTicks, after);
  EXPECT_FALSE(ages->FileAgeFromNow(4).IsSet());
  EXPECT_FALSE(ages->FileAgeFromNow(5).IsSet());
}

TEST(FileAges, TextIsReadForgivingly) {
  EXPECT_EQ(AgesOf(u" 30; 7 ;x;;7;1")->GetAsString(), u"1;7;30");
  EXPECT_EQ(AgesOf(u"5")->GetAsString(), u"5");
  TRef<IFileAges> ages = AgesOf(u"1;2");
  for (std::u16string_view text : {u"", u";;", u"abc", u"1,5", u"99999999999999999999"}) {
    std::string utf8(text.begin(), text.end());
    EXPECT_EQ(MessageOf<EInvalidArgumentValue>([&] { ages->SetAsString(text); }),
              "TFileAges.SetAsString: Given string (\"" + utf8 + "\") conatins no parsable data.");
    EXPECT_EQ(ages->GetAsString(), u"1;2") << "the list stays as it was";
  }
  EXPECT_TRUE(ages->EqualsTo(*AgesOf(u"2;1")));
  EXPECT_FALSE(ages->EqualsTo(*AgesOf(u"1;2;3")));
}

TEST(FileAges, XmlAttributesAndAssignment) {
  using TAttributesList = std::vector<std::pair<std::u16string, std::u16string>>;
  TAttributesList attributes = {{u"Name", u"x"},  {u"Days_30", u"12"}, {u"Days_", u""},
                                {u"Days_7", u""}, {u"days_5", u""},    {u"Days_x", u"9"}};
  EXPECT_EQ(TFileAges::CreateFromXML(attributes)->GetAsString(), u"7;30");
  TRef<IFileAges> ages = AgesOf(u"3");
  ages->Assign(*AgesOf(u"4;5"));
  EXPECT_EQ(ages->GetAsString(), u"4;5");
  EXPECT_EQ(MessageOf<EInvalidArgumentValue>([&] { ages->Assign(*MakeRef<TFileAges>()); }),
            "TDistributionList.Assign: Count of list is lower 1 (0) after assign from given enumerable");
  EXPECT_EQ(ages->GetAsString(), u"4;5");
  for (int index : {-1, 2}) {
    EXPECT_NE(MessageOf<EInvalidArgumentValue>([&] { ages->GetItem(index); }), "");
    EXPECT_NE(MessageOf<EInvalidArgumentValue>([&] { ages->GetLabel(index); }), "");
    EXPECT_NE(MessageOf<EInvalidArgumentValue>([&] { ages->GetColor(index); }), "");
    EXPECT_NE(MessageOf<EInvalidArgumentValue>([&] { ages->FileAgeFromNow(index); }), "");
  }
}

TEST(FileAges, Labels) {
  TRef<IFileAges> ages = DefaultAges();
  const std::u16string_view labels[] = {u"up to 1 day",        u"1 day - 1 week",    u"1 week - 1 month",
                                        u"1 month - 6 months", u"6 months - 1 year", u"1 year - 2 years",
                                        u"over 2 years"};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(ages->GetLabel(i), labels[i]);
  EXPECT_EQ(AgesOf(u"90")->GetLabel(0), u"any age");
  EXPECT_EQ(FileAgeLabelFromDays(6), u"6 days");
  EXPECT_EQ(FileAgeLabelFromDays(29), u"4 weeks");
  EXPECT_EQ(FileAgeLabelFromDays(364), u"12 months");
}

TEST(FileAges, ColoursRunFromGreenToRed) {
  TRef<IFileAges> ages = DefaultAges();
  const TColor seven[] = {0x00D000, 0x57D000, 0x90D000, 0xC8E000, 0xE0B000, 0xE07000, 0xE04000};  // 0, 3, … 18
  for (int i = 0; i < 7; ++i) EXPECT_EQ(ages->GetColor(i), seven[i]) << i;
  EXPECT_EQ(AgesOf(u"1;2")->GetColor(1), 0xE0E000u);          // 10.5 rounds to 10
  EXPECT_EQ(AgesOf(u"1;2;3;4;5;6")->GetColor(1), 0x70D000u);  // 3.5 rounds to 4
  TRef<IFileAges> many = MakeRef<TFileAges>();
  for (int i = 1; i <= 100; ++i) many->Add(i);
  EXPECT_EQ(many->GetColor(99), 0xE00000u);  // 20.79 rounds to 21, one past the ramp
}

TEST(FileAgeDistribution, RefusesToBeWithoutIntervals) {
  EXPECT_EQ(MessageOf<EInvalidArgumentValue>([] { TFileAgeDistribution(nullptr, TDateType::dtLastChange); }),
            "TFileAgeDistribution.SetFileAges: Given IFileAges is nil.");
  TRef<IFileAgeDistribution> distribution = MakeRef<TFileAgeDistribution>(DefaultAges(), TDateType::dtLastChange);
  distribution->Add(6, {1, 1, 1});
  EXPECT_EQ(MessageOf<EInvalidArgumentValue>([&] { distribution->SetFileAges(MakeRef<TFileAges>()); }),
            "TFileAgeDistribution.SetFileAges: Count of given IFileAges is lower 1 (0), which is not allowed.");
  EXPECT_EQ(distribution->GetRecord(6), (TBasicSizeValues{1, 1, 1}));
  distribution->SetFileAges(AgesOf(u"1;2"));
  EXPECT_EQ(distribution->GetRecord(6), TBasicSizeValues{}) << "records of other intervals mean nothing any more";
}

TEST(FileAgeDistribution, AddsAndSubtractsLikeAPlainTable) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    TRef<IFileAges> ages = AgesOf(u"1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16;17;18;19;20");
    TRef<IFileAgeDistribution> total = MakeRef<TFileAgeDistribution>(ages, TDateType::dtCreation);
    std::map<int, TBasicSizeValues> expected;
    std::vector<TRef<IFileAgeDistribution>> children;
    for (int child = 0; child < 6; ++child) {
      TRef<IFileAgeDistribution> own = MakeRef<TFileAgeDistribution>(ages, TDateType::dtCreation);
      bool kept = child % 2 == 0;
      for (unsigned i = random() % 12; i > 0; --i) {
        int interval = static_cast<int>(random() % 20);
        TBasicSizeValues values{static_cast<int64_t>(random() % 1000), 512, 1};
        own->Add(interval, values);
        if (kept) expected[interval] += values;
      }
      total->AddDistribution(*own);
      if (!kept) children.push_back(own);
    }
    for (const auto& child : children) total->SubtractDistribution(*child);
    TRef<IFileAgeDistribution> clone = total->Clone();
    TRef<IFileAgeDistribution> assigned = MakeRef<TFileAgeDistribution>(AgesOf(u"1"), TDateType::dtLastChange);
    assigned->Assign(*total);
    total->Clear();
    for (int i = 0; i < 20; ++i) {
      EXPECT_EQ(clone->GetRecord(i), expected[i]) << "seed " << seed << " interval " << i;
      EXPECT_EQ(assigned->GetRecord(i), expected[i]);
      EXPECT_EQ(total->GetRecord(i), TBasicSizeValues{});
    }
    EXPECT_EQ(assigned->GetDateType(), TDateType::dtCreation);
    EXPECT_EQ(assigned->GetFileAges(), ages);
  }
}

}  // namespace
}  // namespace Vantrel
