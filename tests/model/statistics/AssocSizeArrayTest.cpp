// Statistics against a plain map, from many threads; keys, shares, colours.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <set>
#include <thread>

#include "model/statistics/AssocSizeArray.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/Failures.h"

namespace Vantrel {
namespace {

using TReference = std::map<std::u16string, TBasicSizeValues>;

std::u16string KeyText(unsigned pNumber) {
  return FromUtf8(".x" + std::to_string(pNumber));
}

// What a fresh look at the array shows, through every way of looking.
void ExpectSame(const ICustomAssocSizeArray& pArray, const TReference& pReference) {
  TReference shown;
  for (const TKeyedSizeValues& entry : pArray.GetEntries()) {
    EXPECT_TRUE(shown.emplace(TextOfKey(entry.fKey), entry.fValues).second) << "a key twice";
  }
  TReference expected;
  for (const auto& [key, values] : pReference) {
    TBasicSizeValues found;
    EXPECT_EQ(pArray.Find(key, found), !values.IsZero());
    EXPECT_EQ(found, values);
    if (!values.IsZero()) expected.emplace(key, values);
  }
  EXPECT_EQ(shown, expected);
  EXPECT_EQ(pArray.Count(), expected.size());
}

class TRandomArrays {
 public:
  TRandomArrays(unsigned pSeed, unsigned pKeys) : fRandom(pSeed), fKeys(pKeys) {
    for (auto& array : fArrays) array = MakeRef<TExtensionSizeArray>();
  }

  void Step() {
    size_t target = Below(fArrays.size());
    size_t other = (target + 1 + Below(fArrays.size() - 1)) % fArrays.size();
    switch (Below(8)) {
      case 0:
      case 1:
        AddOne(target);
        break;
      case 2:
      case 3:
        AddSpan(target);
        break;
      case 4:
        fArrays[target]->AddArray(*fArrays[other]);
        for (const auto& [key, values] : fReferences[other]) fReferences[target][key] += values;
        break;
      case 5:
        fArrays[target]->SubtractArray(*fArrays[other]);
        for (const auto& [key, values] : fReferences[other]) fReferences[target][key] -= values;
        break;
      case 6:
        fArrays[target] = fArrays[other]->Clone();
        fReferences[target] = fReferences[other];
        break;
      default:
        if (Below(4) != 0) return;
        fArrays[target]->Clear();
        fReferences[target].clear();
    }
    ExpectSame(*fArrays[target], fReferences[target]);
  }

 private:
  size_t Below(size_t pEnd) { return fRandom() % pEnd; }
  // Small numbers, so that subtraction often hits zero and sums of merges of merges stay in range.
  TBasicSizeValues Values() { return {static_cast<int64_t>(Below(2)), static_cast<int64_t>(Below(2)), 1}; }

  void AddOne(size_t pTarget) {
    std::u16string key = KeyText(static_cast<unsigned>(Below(fKeys)));
    TBasicSizeValues values = Values();
    fArrays[pTarget]->Add(key, values);
    fReferences[pTarget][key] += values;
  }

  void AddSpan(size_t pTarget) {
    std::map<TKeyId, TBasicSizeValues> sorted;
    for (size_t i = Below(fKeys + 1); i > 0; --i) {
      sorted[TExtensionSizeArray::KeyOf(KeyText(static_cast<unsigned>(Below(fKeys))))] = Values();
    }
    std::vector<TKeyedSizeValues> entries;
    for (const auto& [key, values] : sorted) {
      entries.push_back({key, values});
      fReferences[pTarget][TextOfKey(key)] += values;
    }
    fArrays[pTarget]->Add(entries);
  }

  std::mt19937 fRandom;
  unsigned fKeys;
  std::array<TRef<ICustomAssocSizeArray>, 3> fArrays;
  std::array<TReference, 3> fReferences;
};

// Two keys stay packed, 16 and 17 stand at the edge where the map takes over, 60 cross it in one step.
TEST(AssocSizeArray, RandomOperationsAgreeWithAMap) {
  for (unsigned keys : {2u, 5u, 16u, 17u, 18u, 60u}) {
    for (unsigned seed = 1; seed <= 10; ++seed) {
      SCOPED_TRACE(testing::Message() << keys << " keys, seed " << seed);
      TRandomArrays arrays(seed, keys);
      // Merges of merges double each time: 60 steps keep the sums far from the end of 64 bits.
      for (int step = 0; step < 60; ++step) arrays.Step();
      if (testing::Test::HasFailure()) return;
    }
  }
}

// Every number of records before, and every way in which three neighbouring keys can be old or new.
TEST(AssocSizeArray, AddingAFewKeysWorksAtEveryFillLevel) {
  std::vector<TKeyId> ids;
  for (unsigned i = 0; i < 60; ++i) ids.push_back(TExtensionSizeArray::KeyOf(KeyText(i)));
  std::sort(ids.begin(), ids.end());
  for (size_t before = 0; before <= 20; ++before) {
    for (size_t first = 0; first < 2 * before + 2; ++first) {
      auto array = MakeRef<TExtensionSizeArray>();
      TReference reference;
      auto add = [&](std::vector<size_t> pPositions) {
        std::vector<TKeyedSizeValues> entries;
        for (size_t position : pPositions) {
          entries.push_back({ids[position], {static_cast<int64_t>(position), 7, 1}});
          reference[TextOfKey(ids[position])] += entries.back().fValues;
        }
        array->Add(entries);
      };
      for (size_t i = 0; i < before; ++i) add({2 * i + 1});
      add({first, first + 1, first + 3});
      ExpectSame(*array, reference);
    }
  }
}

TEST(AssocSizeArray, KeysAreNormalised) {
  TExtensionSizeArray& extensions = *new TExtensionSizeArray;
  TRef<ICustomAssocSizeArray> extensionsHolder(&extensions);
  extensions.Add(u".TXT", {10, 16, 1});
  extensions.Add(u".txt", {5, 8, 1});
  extensions.Add(u".\u00C4", {1, 1, 1});
  extensions.Add(u".\u00E4", {2, 2, 1});
  extensions.Add(u"", {3, 4, 1});
  ExpectSame(extensions, {{u".txt", {15, 24, 2}}, {u".\u00E4", {3, 3, 2}}, {u"<no extension>", {3, 4, 1}}});
  TBasicSizeValues values;
  EXPECT_TRUE(extensions.Find(u"", values));
  EXPECT_EQ(values.fSize, 3);
  EXPECT_TRUE(extensions.Find(u".tXt", values));
  EXPECT_FALSE(extensions.Find(u".never-seen-anywhere", values));
  EXPECT_EQ(extensions.GetColorForKey(u".TXT"), extensions.GetColorForKey(u".txt"));

  TRef<ICustomAssocSizeArray> owners = MakeRef<TUserSizeArray>();
  owners->Add(u"Root", {1, 1, 1});
  owners->Add(u"root", {2, 2, 1});
  owners->Add(u"", {4, 4, 1});
  ExpectSame(*owners, {{u"Root", {1, 1, 1}}, {u"root", {2, 2, 1}}, {u"<unknown owner>", {4, 4, 1}}});
}

TEST(AssocSizeArray, ARecordIsReplacedButNeverByNothing) {
  TRef<ICustomAssocSizeArray> array = MakeRef<TExtensionSizeArray>();
  TBasicSizeValues values{1, 2, 3};
  array->Add(u".a", {10, 10, 10});
  array->SetRecord(u".A", &values);
  ExpectSame(*array, {{u".a", {1, 2, 3}}});
  EXPECT_EQ(Vantrel::Testing::MessageOf<EInvalidArgumentValue>([&] { array->SetRecord(u".A", nullptr); }),
            "The content of a size array must not be nil. Index: .A");
  ExpectSame(*array, {{u".a", {1, 2, 3}}});
}

// Millionths, halves to even. References this large swallow the small summand, so that halves are met exactly.
TEST(AssocSizeArray, SharesAreRoundedMillionths) {
  struct TCase {
    int64_t fValue;
    int64_t fReference;
    int64_t fShare;
  };
  for (const TCase& each : std::vector<TCase>{{1, 3, 333333},
                                              {2, 3, 666667},
                                              {3, 3, 1000000},
                                              {1'000'000, 2'000'000'000'000, 0},
                                              {3'000'000, 2'000'000'000'000, 2},
                                              {5'000'000, 2'000'000'000'000, 2},
                                              {5'000'001, 2'000'000'000'000, 3}}) {
    TRef<ICustomAssocSizeArray> array = MakeRef<TExtensionSizeArray>();
    array->Add(u".a", {0, each.fValue, 1});
    TSizeValues reference;
    reference.fAllocated = each.fReference;
    EXPECT_EQ(array->GetValueOfKey(u".a", TColumn::mdPercentOfParent, reference, TColumn::mdAllocated), each.fShare)
        << each.fValue << " of " << each.fReference;
    // The folder's plain size is 0, and so is the share in it.
    EXPECT_EQ(array->GetValueOfKey(u".a", TColumn::mdPercentOfParent, reference, TColumn::mdSize), 0);
    EXPECT_EQ(array->GetValueOfKey(u".a", TColumn::mdAllocated, reference, TColumn::mdSize), each.fValue);
    EXPECT_EQ(array->GetValueOfKey(u".b", TColumn::mdAllocated, reference, TColumn::mdSize), 0);
    EXPECT_EQ(array->GetValueOfKey(u".b", TColumn::mdPercentOfParent, reference, TColumn::mdSize), 0);
  }
  TRef<ICustomAssocSizeArray> array = MakeRef<TExtensionSizeArray>();
  array->Add(u".a", {7, 0, 2});
  EXPECT_EQ(array->GetValueOfKey(u".a", TColumn::mdAverageFileSize, {}, TColumn::mdSize), 3) << "7 bytes in 2 files";
  EXPECT_EQ(array->GetValueOfKey(u".b", TColumn::mdAverageFileSize, {}, TColumn::mdSize), 0);
}

TEST(AssocSizeArray, SortedKeysFollowEveryChange) {
  using TKeys = std::vector<std::u16string>;
  TRef<ICustomAssocSizeArray> array = MakeRef<TExtensionSizeArray>();
  array->Add(u".z", {5, 100, 2});
  array->Add(u".m", {5, 300, 1});
  array->Add(u".a", {9, 200, 3});
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdSize), (TKeys{u".a", u".m", u".z"}));
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdAllocated), (TKeys{u".m", u".a", u".z"}));
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdFiles), (TKeys{u".a", u".z", u".m"}));
  array->Add(u".z", {0, 0, 2});
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdFiles), (TKeys{u".z", u".a", u".m"}));
  TRef<ICustomAssocSizeArray> other = MakeRef<TExtensionSizeArray>();
  other->Add(u".a", {9, 200, 3});
  array->SubtractArray(*other);
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdFiles), (TKeys{u".z", u".m"}));
  array->AddArray(*other);
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdFiles), (TKeys{u".z", u".a", u".m"}));
  array->Clear();
  EXPECT_EQ(array->GetKeysSorted(TColumn::mdFiles), TKeys{});
  // mdCount stands for the default column.
  TCustomAssocSizeArray::TSizeArrayComparer byDefault(TColumn::mdCount, TColumn::mdFiles);
  EXPECT_LT(byDefault.Compare({InternKey(u".a"), {1, 1, 9}}, {InternKey(u".b"), {5, 5, 8}}), 0);
}

// Four workers add, merge and read at once; whatever the order, the sum is the same.
TEST(AssocSizeArray, ThreadsAddUp) {
  constexpr int threads = 4;
  constexpr int rounds = 2000;
  TRef<ICustomAssocSizeArray> parent = MakeRef<TExtensionSizeArray>();
  TRef<ICustomAssocSizeArray> top = MakeRef<TExtensionSizeArray>();
  auto work = [&](unsigned pThread) {
    TRef<ICustomAssocSizeArray> own = MakeRef<TExtensionSizeArray>();
    for (int round = 0; round < rounds; ++round) {
      // Keys of all threads overlap, and together they cross the edge to the map.
      std::set<TKeyId> ids = {TExtensionSizeArray::KeyOf(KeyText(static_cast<unsigned>(round) % 23)),
                              TExtensionSizeArray::KeyOf(KeyText(pThread + 10))};
      std::vector<TKeyedSizeValues> entries;
      for (TKeyId id : ids) entries.push_back({id, {1, 2, 1}});
      parent->Add(entries);
      own->Add(entries);
      if (round % 100 == 0) {
        (void)parent->GetKeysSorted(TColumn::mdSize);
        (void)parent->Clone();
      }
    }
    top->AddArray(*own);
  };
  std::vector<std::thread> workers;
  for (unsigned i = 0; i < threads; ++i) workers.emplace_back(work, i);
  for (std::thread& worker : workers) worker.join();

  TReference reference;
  for (unsigned thread = 0; thread < threads; ++thread) {
    for (int round = 0; round < rounds; ++round) {
      for (unsigned key : std::set<unsigned>{static_cast<unsigned>(round) % 23, thread + 10}) {
        reference[KeyText(key)] += {1, 2, 1};
      }
    }
  }
  ExpectSame(*parent, reference);
  ExpectSame(*top, reference);
}

TEST(AssocSizeArray, InterningFromManyThreadsGivesOneIdPerText) {
  constexpr unsigned texts = 3000;
  std::vector<std::vector<TKeyId>> ids(4, std::vector<TKeyId>(texts));
  std::vector<const std::u16string*> seen(texts);
  auto text = [](unsigned pNumber) { return FromUtf8("interned " + std::to_string(pNumber)); };
  std::vector<std::thread> workers;
  for (std::vector<TKeyId>& own : ids) {
    workers.emplace_back([&own, &text] {
      for (unsigned i = 0; i < texts; ++i) own[i] = InternKey(text(i));
    });
  }
  for (std::thread& worker : workers) worker.join();
  std::set<TKeyId> distinct(ids[0].begin(), ids[0].end());
  EXPECT_EQ(distinct.size(), texts);
  for (unsigned i = 0; i < texts; ++i) {
    EXPECT_EQ(TextOfKey(ids[0][i]), text(i));
    for (const auto& own : ids) EXPECT_EQ(own[i], ids[0][i]);
  }
  TKeyId found = 0;
  EXPECT_FALSE(FindInternedKey(u"never interned", found));
}

// The hashes come from a Python script over the texts' UTF-16-LE bytes.
TEST(ColorPalette, ColoursFollowTheHashUnlessTheUserChose) {
  EXPECT_EQ(HashOfKeyText(u""), 0x811C9DC5u);
  EXPECT_EQ(HashOfKeyText(u".txt"), 0x86CA1A13u);
  EXPECT_EQ(HashOfKeyText(u"\u00E4\u20AC"), 0xF6458ACDu);
  TColorPalette palette;
  EXPECT_EQ(palette.GetColorForKey(u".txt"), palette.GetColorForHash(0x86CA1A13u));
  palette.SetUserColors({{u".txt", 0x123456}});
  EXPECT_EQ(palette.GetColorForKey(u".txt"), 0x123456u);
  palette.SetUserColors({});
  EXPECT_EQ(palette.GetColorForKey(u".txt"), palette.GetColorForHash(0x86CA1A13u));
}

using TLight = std::array<double, 3>;

TLight LightOf(TColor pColor) {
  TLight light{};
  for (size_t i = 0; i < 3; ++i) {
    const double value = static_cast<double>(pColor >> (16 - 8 * i) & 0xFF) / 255;
    light[i] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  }
  return light;
}

TLight Times(const std::array<TLight, 3>& pMatrix, const TLight& pLight) {
  TLight product{};
  for (size_t i = 0; i < 3; ++i)
    for (size_t k = 0; k < 3; ++k) product[i] += pMatrix[i][k] * pLight[k];
  return product;
}

// Oklab, in which distances are as large as they are seen.
TLight Seen(const TLight& pLight) {
  TLight cones = Times({{{0.4122, 0.5363, 0.0514}, {0.2119, 0.6807, 0.1074}, {0.0883, 0.2817, 0.6300}}}, pLight);
  for (double& cone : cones) cone = std::cbrt(cone);
  return Times({{{0.2105, 0.7936, -0.0041}, {1.9780, -2.4286, 0.4506}, {0.0259, 0.7828, -0.8087}}}, cones);
}

// What full colour blindness of each kind makes of light, after Machado and others.
constexpr std::array<std::array<TLight, 3>, 4> kSights = {{
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {{{0.1523, 1.0526, -0.2049}, {0.1145, 0.7863, 0.0992}, {-0.0039, -0.0481, 1.0520}}},
    {{{0.3673, 0.8606, -0.2280}, {0.2801, 0.6725, 0.0474}, {-0.0118, 0.0429, 0.9689}}},
    {{{1.2555, -0.0767, -0.1788}, {-0.0784, 0.9308, 0.1476}, {0.0047, 0.6914, 0.3039}}},
}};

double ContrastOf(const TLight& pA, const TLight& pB) {
  auto luminance = [](const TLight& pLight) {
    return 0.2126 * pLight[0] + 0.7152 * pLight[1] + 0.0722 * pLight[2] + 0.05;
  };
  return std::max(luminance(pA), luminance(pB)) / std::min(luminance(pA), luminance(pB));
}

TEST(ColorPalette, ColoursDifferForTheColourBlindToo) {
  std::set<TColor> colors;
  const TColorPalette palette;
  for (uint32_t hash = 0; hash < 20; ++hash) colors.insert(palette.GetColorForHash(hash));
  ASSERT_EQ(colors.size(), 20u);
  for (const TColor color : colors) {
    EXPECT_GT(ContrastOf(LightOf(color), LightOf(0xFFFFFF)), 1.4) << std::hex << color << " on white";
    EXPECT_GT(ContrastOf(LightOf(color), LightOf(0x1B1F24)), 1.8) << std::hex << color << " on black";
    for (const TColor other : colors) {
      if (other <= color) continue;
      for (const auto& sight : kSights) {
        const TLight a = Seen(Times(sight, LightOf(color)));
        const TLight b = Seen(Times(sight, LightOf(other)));
        // About the distance between the most alike of eight colours recommended for everyone.
        EXPECT_GT(std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]), 0.06) << std::hex << color << " and " << other;
      }
    }
  }
}

}  // namespace
}  // namespace Vantrel
