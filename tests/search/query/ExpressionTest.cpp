// Trees of conditions: printed and read again, nested deeply, and adapted to targets.

#include <gtest/gtest.h>

#include <random>

#include "model/statistics/TopSizeList.h"
#include "model/tree/FileTable.h"
#include "search/query/AdaptedExpression.h"
#include "search/query/Expressions.h"
#include "search/query/FileExpressions.h"
#include "search/query/SearchItem.h"
#include "tests/search/query/QueryText.h"
#include "tests/support/Failures.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/NastyText.h"

namespace Vantrel::Search {

namespace {

// Trees that a query can become, made at random.
class TRandomTree {
 public:
  explicit TRandomTree(uint32_t pSeed) : fRandom(pSeed), fTexts(pSeed + 1) {}

  TExpressionRef Next(int pDepth) {
    if (pDepth == 0 || Below(3) == 0) return Leaf();
    std::vector<TExpressionRef> children;
    for (size_t count = 1 + Below(4); count > 0; --count) children.push_back(Next(pDepth - 1));
    return Below(2) == 0 ? JoinAnd(std::move(children)) : JoinOr(std::move(children));
  }

 private:
  size_t Below(size_t pEnd) { return fRandom() % pEnd; }
  TOperator Comparison() { return static_cast<TOperator>(Below(6)); }
  TBinaryOperator YesOrNo() { return static_cast<TBinaryOperator>(Below(2)); }

  // Without what has a meaning in names: wildcards, delimiters. The rest is quoted where it must be.
  std::u16string Text() {
    std::u16string text = fTexts.Next(4);
    std::erase_if(text, [](char16_t pUnit) { return std::u16string_view(u"*?/").find(pUnit) != std::u16string::npos; });
    static const std::u16string kMore[] = {u"",  u" ", u",", u";",   u"(",      u")",
                                           u"=", u"<", u"~", u"AND", u"size:5", u"5"};
    return text + kMore[Below(std::size(kMore))];
  }

  TTextTest Test() {
    static constexpr TStringOperator kOperators[] = {TStringOperator::Equals,     TStringOperator::Contains,
                                                     TStringOperator::NotEquals,  TStringOperator::Matches,
                                                     TStringOperator::NotMatches, TStringOperator::MatchesRegEx};
    const TStringOperator comparison = kOperators[Below(std::size(kOperators))];
    if (comparison == TStringOperator::MatchesRegEx) return {comparison, u"^[a, b](c)+\"$"};
    const bool isMask = comparison == TStringOperator::Matches || comparison == TStringOperator::NotMatches;
    return {comparison, Text() + (isMask ? u"*" : u"")};
  }

  TTimespan Span() {
    const int64_t from = kTestNow.fTicks - static_cast<int64_t>(Below(1'000'000)) * 1'000'000'007;
    switch (Below(3)) {
      case 0:
        return {TTimespan::kEarliest, from};
      case 1:
        return {from, TTimespan::kLatest};
      default:
        return {from, from + static_cast<int64_t>(Below(3)) * TKivFileTime::kTicksPerDay};
    }
  }

  TExpressionRef Leaf() {
    switch (Below(10)) {
      case 0:
        return MakeRef<TSizeExpression>(Comparison(), static_cast<int64_t>(fRandom()) << Below(31));
      case 1:
        return MakeRef<TNumericExpression>(TColumn::mdPathLength, Comparison(), static_cast<int64_t>(fRandom()));
      case 2:
        return MakeRef<TTimespanExpression>(TColumn::mdCreation, Span());
      case 3:
        return MakeRef<TAttributeExpression>(static_cast<TAttributesOperator>(Below(2)),
                                             kAttributeHidden | (Below(2) ? kAttributeOffline : 0));
      case 4:
        return MakeRef<TFileTypeGroupExpression>(YesOrNo(), u"Software Development");
      case 5:
        return MakeRef<TFileContentExpression>(YesOrNo(), TContentSearch{u"x" + Text(), false, false});
      case 6:
        return MakeRef<TMetaDataExpression>(TFileProperty::fpTitle, Test());
      case 7:
        return MakeRef<TParentFolderNameExpression>(Test());
      case 8:
        return MakeRef<TInvalidShortcutExpression>(YesOrNo());
      default:
        return MakeRef<TStringExpression>(Below(2) ? TColumn::mdName : TColumn::mdOwner, Test());
    }
  }

  std::mt19937 fRandom;
  Testing::TNastyText fTexts;
};

}  // namespace

TEST(Expressions, PrintedTreesReadBackAsTheSameTrees) {
  TRandomTree trees(77);
  for (int run = 0; run < 1'000; ++run) {
    const TExpressionRef tree = trees.Next(4);
    const std::u16string text = ExpressionToText(*tree);
    try {
      const TExpressionRef read = ParseQuery(text);
      ASSERT_EQ(DumpTree(*read), DumpTree(*tree)) << ToUtf8(text);
      ASSERT_EQ(ExpressionToText(*read), text) << "differs in what is not Unicode";
    } catch (const EQueryError& error) {
      FAIL() << DescribeQueryError(text, error);
    }
  }
}

TEST(Expressions, NestingHasNoLimit) {
  TTopSizeEntry file;
  file.fName = u"a";
  TSearchItem item(u'/');
  item.SetEntry(TEntryView(file));

  EXPECT_EQ(DumpTree(*ParseQuery(std::u16string(1'000, u'(') + u"a" + std::u16string(1'000, u')'))), "String[name:a]");
  // AND and OR in turn, so that each level stays a list: x AND (a OR (x AND (a OR …))).
  constexpr size_t kLevels = 40'000;
  std::u16string query;
  for (size_t level = 0; level < kLevels; ++level) query += level % 2 == 0 ? u"!=x (" : u"a,(";
  query += u"a" + std::u16string(kLevels, u')');
  TExpressionRef deep = ParseQuery(query);
  EXPECT_TRUE(AdaptExpression(deep, 0).Matches(item));
  file.fName = u"x";
  item.SetEntry(TEntryView(file));
  EXPECT_FALSE(AdaptExpression(deep, 0).Matches(item));
  const std::u16string printed = ExpressionToText(*deep);
  deep = ParseQuery(printed);
  EXPECT_EQ(ExpressionToText(*deep), printed);

  // Lists of the same kind merge from both sides, without work that grows with the square.
  std::u16string left(kLevels, u'('), right;
  for (size_t level = 0; level < kLevels; ++level) left += u"a)", right += u"a (";
  right += u"a" + std::u16string(kLevels, u')');
  EXPECT_EQ(ParseQuery(left)->Children().size(), kLevels);
  EXPECT_EQ(ParseQuery(right)->Children().size(), kLevels + 1);
}

TEST(Expressions, TenThousandConditions) {
  std::u16string query;
  for (int i = 0; i < 10'000; ++i) query += (i == 0 ? u"name:n" : u" OR name:n") + FromUtf8(std::to_string(i)) + u"x";
  const TAdaptedExpression adapted = AdaptExpression(ParseQuery(query), 0);
  EXPECT_EQ(adapted.Conditions().size(), 10'000u);
  TSearchItem item(u'/');
  TTopSizeEntry file;
  const auto matches = [&](const char16_t* pName) {
    file.fName = pName;
    item.SetEntry(TEntryView(file));
    return adapted.Matches(item);
  };
  EXPECT_TRUE(matches(u"N9999X"));
  EXPECT_TRUE(matches(u"n0x"));
  EXPECT_FALSE(matches(u"n10000x"));
}

TEST(AdaptedExpression, RefusesWhatTheTargetCannotAnswer) {
  const auto refusal = [](std::u16string_view pQuery, TSearchAbilities pAbilities) {
    return Testing::MessageOf<ENotSupportedException>([&] { AdaptExpression(ParseQuery(pQuery), pAbilities); });
  };
  const std::string message = "Expression type not supported in this configuration: ";
  const struct {
    const char16_t* fQuery;
    TSearchAbilities fNeeds;
    const char* fClass;
  } cases[] = {{u"a (b OR content:c)", saContents, "TFileContentExpression"},
               {u"mdata:title:x", saProperties, "TMetaDataExpression"},
               {u"keyword:x", saProperties, "TStringExpression"},
               {u"datetaken:2024", saProperties, "TTimespanExpression"},
               {u"mdata:brokenlink:yes", saShortcuts, "TInvalidShortcutExpression"},
               {u"mdata:emptyfolder:yes", saEmptyFolders, "TEmptyFolderExpression"}};
  for (const auto& expected : cases) {
    EXPECT_EQ(refusal(expected.fQuery, kAllSearchAbilities & ~expected.fNeeds), message + expected.fClass);
    EXPECT_EQ(refusal(expected.fQuery, expected.fNeeds), "");
    EXPECT_EQ(AdaptExpression(ParseQuery(expected.fQuery), kAllSearchAbilities).Needs(), expected.fNeeds);
  }
  EXPECT_EQ(
      refusal(u"name:a path:b ext:c audio attribute:h size:1 allocated:1 accessed:2024 created:2024 modified:2024 "
              u"owner:x mdata:depth:1 mdata:pathlength:1",
              0),
      "");
}

TEST(AdaptedExpression, KnowsHowDeepAWalkMustGo) {
  const auto deepest = [](std::u16string_view pQuery) { return AdaptExpression(ParseQuery(pQuery), 0).DeepestLevel(); };
  constexpr int64_t kAny = std::numeric_limits<int64_t>::max();
  EXPECT_EQ(deepest(u"mdata:depth:<3"), 2);
  EXPECT_EQ(deepest(u"a mdata:depth:<=3 mdata:depth:<=5"), 3);
  EXPECT_EQ(deepest(u"mdata:depth:2-4"), 4);
  EXPECT_EQ(deepest(u"a OR mdata:depth:1"), kAny);
  EXPECT_EQ(deepest(u"mdata:depth:>1"), kAny);
}

namespace {

// Trees of conditions on the values of a listing, and names made of the same few letters, so that about half match.
class TValueTree {
 public:
  explicit TValueTree(uint32_t pSeed) : fRandom(pSeed) {}
  size_t Below(size_t pEnd) { return fRandom() % pEnd; }

  std::u16string Text(size_t pLength) {
    constexpr std::u16string_view kUnits = u"abABä.";
    std::u16string text;
    for (size_t i = 0; i < pLength; ++i) text += kUnits[Below(kUnits.size())];
    return text;
  }

  TExpressionRef Next(int pDepth) {
    if (pDepth == 0) return Leaf();
    std::vector<TExpressionRef> children;
    for (size_t count = 1 + Below(3); count > 0; --count) children.push_back(Next(pDepth - 1));
    return Below(2) == 0 ? JoinAnd(std::move(children)) : JoinOr(std::move(children));
  }

 private:
  TExpressionRef Leaf() {
    const auto comparison = static_cast<TOperator>(Below(6));
    switch (Below(9)) {
      case 0:
        return MakeRef<TSizeExpression>(comparison, static_cast<int64_t>(Below(10)));
      case 1:
        return MakeRef<TNumericExpression>(Below(2) ? TColumn::mdAllocated : TColumn::mdPathLength, comparison, 15);
      case 2: {
        constexpr TColumn kDates[] = {TColumn::mdLastAccess, TColumn::mdLastChange, TColumn::mdCreation};
        return MakeRef<TTimespanExpression>(kDates[Below(3)], TTimespan{3, static_cast<int64_t>(3 + Below(5))});
      }
      case 3:
        return MakeRef<TAttributeExpression>(static_cast<TAttributesOperator>(Below(2)), kAttributeHidden);
      default:
        return MakeRef<TStringExpression>(Below(3) ? TColumn::mdName : TColumn::mdExtension, Test());
    }
  }

  TTextTest Test() {
    const auto test = static_cast<TStringOperator>(Below(12));
    const bool isMask = test == TStringOperator::Matches || test == TStringOperator::NotMatches;
    const std::u16string mask = Text(Below(2)) + u"*" + Text(Below(3)) + u"*" + Text(Below(2));
    return {test, isMask ? mask : Text(Below(4))};
  }

  std::mt19937 fRandom;
};

// Asks each condition by itself, whatever the order.
bool MatchesSlowly(const IExpression& pExpression, TSearchItem& pItem) {
  if (const auto* leaf = dynamic_cast<const TCondition*>(&pExpression)) return leaf->Matches(pItem);
  const bool isAnd = dynamic_cast<const TExpressionAnd*>(&pExpression) != nullptr;
  bool result = isAnd;
  for (const TExpressionRef& child : pExpression.Children())
    if (MatchesSlowly(*child, pItem) != isAnd) result = !isAnd;
  return result;
}

}  // namespace

TEST(AdaptedExpression, FilesOfATableMatchTogetherAsEachDoesByItself) {
  constexpr size_t kFiles = 2 * TFileBlock::kMost + 22, kBegin = 7;
  TValueTree trees(19);
  Testing::TMemoryRoot root;
  root.Scan();
  const IFolderData& folder = *root.fRoot->GetTopFolder();
  size_t found = 0, asked = 0;
  for (int run = 0; run < 400; ++run) {
    TFileTableBuilder builder;
    const auto value = [&trees] { return static_cast<int64_t>(trees.Below(10)); };
    for (size_t i = 0; i < kFiles; ++i) {
      const size_t length = trees.Below(20) == 0 ? 200 : trees.Below(12);
      const TAttributes attributes = trees.Below(2) ? kAttributeHidden : 0;
      builder.Add(trees.Text(length), {value(), 2 * value(), {value()}, {value()}, {value()}, attributes}, kNoKey);
    }
    const TRef<const TFileTable> files = builder.Build();
    const TExpressionRef tree = trees.Next(static_cast<int>(trees.Below(4)));
    const TAdaptedExpression adapted = AdaptExpression(tree, 0);
    std::vector<TFileSet> room;
    TSearchItem together(u'/'), alone(u'/');
    together.SetFolder(u"/memory", 1);
    alone.SetFolder(u"/memory", 1);
    for (size_t begin = kBegin; begin < kFiles; begin += TFileBlock::kMost) {
      const TFileBlock block(*files, begin, kFiles);
      const TFileSet matching = adapted.MatchesOf(block, folder, together, room);
      for (size_t i = 0; i < block.Count(); ++i) {
        alone.SetEntry(TEntryView(*files, (*files)[begin + i], &folder));
        const bool matches = MatchesSlowly(*tree, alone);
        ASSERT_EQ((matching >> i & 1) != 0, matches)
            << ToUtf8(ExpressionToText(*tree)) << " of " << ToUtf8(files->NameAt(begin + i));
        found += matches ? 1 : 0;
        ++asked;
      }
      ASSERT_EQ(matching & ~block.All(), 0u) << "a file behind the last one";
    }
  }
  EXPECT_GT(found, asked / 4) << "too few match for a test";
  EXPECT_LT(found, asked / 4 * 3) << "too many match for a test";
}

}  // namespace Vantrel::Search
