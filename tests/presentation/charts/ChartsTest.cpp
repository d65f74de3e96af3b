// Charts: what holds for every chart of any data and size, axes, and the data of a scanned root.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <set>

#include "platform/text/Text.h"
#include "presentation/charts/ChartAxis.h"
#include "presentation/charts/ChartSources.h"
#include "presentation/charts/Charts.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"

namespace Vantrel::Testing {
namespace {

using namespace Charts;
using namespace Drawing;

const TEstimatedTextMeasure kMeasure;

TBox BoxOf(const TText& pText) {
  const double width = kMeasure.Width(pText.fText, pText.fFontSize);
  const double left = pText.fPoint.fX - (pText.fAnchor == TAnchor::anMiddle ? width / 2
                                         : pText.fAnchor == TAnchor::anEnd  ? width
                                                                            : 0);
  return {left, pText.fPoint.fY - 0.75 * pText.fFontSize, width, 0.95 * pText.fFontSize};
}

TBox BoxOf(const std::vector<TPoint>& pPoints) {
  TBox box{1e9, 1e9, 0, 0};
  double right = -1e9;
  double bottom = -1e9;
  for (const TPoint& point : pPoints) {
    box.fLeft = std::min(box.fLeft, point.fX);
    box.fTop = std::min(box.fTop, point.fY);
    right = std::max(right, point.fX);
    bottom = std::max(bottom, point.fY);
  }
  return {box.fLeft, box.fTop, right - box.fLeft, bottom - box.fTop};
}

TBox BoxOf(const TForm& pForm) {
  if (const auto* rectangle = std::get_if<TRectangle>(&pForm)) return rectangle->fBox;
  if (const auto* line = std::get_if<TPolyline>(&pForm)) return BoxOf(line->fPoints);
  if (const auto* polygon = std::get_if<TPolygon>(&pForm)) return BoxOf(polygon->fPoints);
  if (const auto* text = std::get_if<TText>(&pForm)) return BoxOf(*text);
  const auto& wedge = std::get<TWedge>(pForm);
  const double r = wedge.fOuterRadius;
  return {wedge.fCenter.fX - r, wedge.fCenter.fY - r, 2 * r, 2 * r};
}

bool Overlap(const TBox& pA, const TBox& pB) {
  constexpr double kTouch = 0.01;
  return pA.fLeft < pB.Right() - kTouch && pB.fLeft < pA.Right() - kTouch && pA.fTop < pB.Bottom() - kTouch &&
         pB.fTop < pA.Bottom() - kTouch;
}

// What holds for every drawing of a chart.
void CheckDrawing(const TDrawing& pDrawing) {
  const TBox page{-0.5, -0.5, pDrawing.fWidth + 1, pDrawing.fHeight + 1};
  std::vector<const TText*> texts;
  for (const TShape& shape : pDrawing.fShapes) {
    const TBox box = BoxOf(shape.fForm);
    for (const double number : {box.fLeft, box.fTop, box.fWidth, box.fHeight}) ASSERT_TRUE(std::isfinite(number));
    ASSERT_GE(box.fWidth, 0);
    ASSERT_GE(box.fHeight, 0);
    ASSERT_TRUE(box.fLeft >= page.fLeft && box.fTop >= page.fTop && box.Right() <= page.Right() &&
                box.Bottom() <= page.Bottom())
        << "a shape of kind " << shape.fForm.index() << " leaves the picture: " << box.fLeft << ", " << box.fTop << ", "
        << box.fWidth << " x " << box.fHeight;
    ASSERT_LT(shape.fSubject, static_cast<int>(pDrawing.fSubjects.size()));
    if (const auto* text = std::get_if<TText>(&shape.fForm)) texts.push_back(text);
  }
  for (size_t i = 0; i < texts.size(); ++i)
    for (size_t k = 0; k < i; ++k)
      ASSERT_FALSE(Overlap(BoxOf(*texts[i]), BoxOf(*texts[k])))
          << ToUtf8(texts[i]->fText) << " overlaps " << ToUtf8(texts[k]->fText);
}

const std::u16string kLabels[] = {u"movies",
                                  u"a",
                                  std::u16string(255, u'W'),
                                  std::u16string(255, u'\u4E2D'),
                                  u"\u05E9\u05DC\u05D5\u05DD \u202E.txt",
                                  u"<&\"'>\x1B[31m",
                                  std::u16string(1, 0xDCFF),
                                  u"with many short words in one name"};

TChartData RandomData(std::mt19937& pRandom, int pLevels = 3) {
  TChartData data;
  data.fTitle = u"Folders of /data";
  const size_t count = pRandom() % 30;
  for (size_t i = 0; i < count; ++i) {
    TChartItem item;
    item.fKey = FromUtf8("key " + std::to_string(i));
    item.fLabel = kLabels[pRandom() % std::size(kLabels)];
    // From 0 to beyond what a double holds exactly, but so that the sum of all fits.
    item.fValue = pRandom() % 4 == 0 ? 0 : static_cast<int64_t>(std::exp2(pRandom() % 580 / 10.0));
    if (pLevels > 1) {
      item.fChildren = RandomData(pRandom, pLevels - 1).fItems;
      for (TChartItem& child : item.fChildren) child.fValue = item.fValue / 30;
    }
    data.fItems.push_back(std::move(item));
  }
  return data;
}

TTimeSeries RandomSeries(std::mt19937& pRandom) {
  TTimeSeries series;
  series.fTitle = u"History of /data";
  int64_t time = TKivFileTime::kUnixEpoch + static_cast<int64_t>(1.6e9) * TKivFileTime::kTicksPerSecond;
  const auto step = static_cast<int64_t>(std::exp2(pRandom() % 280 / 10.0)) * TKivFileTime::kTicksPerSecond;
  for (size_t i = pRandom() % 40; i > 0; --i) {
    time += static_cast<int64_t>(pRandom() % 3) * step;
    series.fPoints.push_back({{pRandom() % 20 == 0 ? 0 : time},
                              static_cast<int64_t>(1e12) + static_cast<int64_t>(pRandom() % 1000000),
                              pRandom() % 9 == 0});
  }
  return series;
}

TEST(Charts, AnyChartOfAnySizeStaysInsideAndNoTextsOverlap) {
  std::mt19937 random(7);
  const std::pair<double, double> sizes[] = {{1000, 700}, {3840, 2160}, {320, 240}, {120, 900},
                                             {900, 90},   {40, 30},     {1, 1},     {0, 50}};
  for (int round = 0; round < 15; ++round) {
    for (const auto& [width, height] : sizes) {
      TChartSettings settings;
      settings.fWidth = width;
      settings.fHeight = height;
      settings.fMostItems = random() % 25;
      settings.fDark = random() % 2 == 0;
      TChartData data = RandomData(random);
      data.fIsOrdered = random() % 2 == 0;
      const TTimeSeries series = RandomSeries(random);
      for (int type = 0; type <= static_cast<int>(TChartType::ctArea); ++type) {
        SCOPED_TRACE(testing::Message() << "round " << round << ", type " << type << ", " << width << " x " << height);
        const auto chartType = static_cast<TChartType>(type);
        CheckDrawing(IsOverTime(chartType) ? MakeChart(chartType, series, settings, kMeasure)
                                           : MakeChart(chartType, data, settings, kMeasure));
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(Charts, TheLargestAndOthersMakeUpTheWhole) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    const std::vector<TChartItem> items = RandomData(random, 1).fItems;
    const size_t most = 1 + random() % 12;
    const bool ordered = round % 2 == 0;
    const std::vector<TChartItem> shown = LargestAndRest(items, most, ordered);
    ASSERT_EQ(shown.size(), std::min(items.size(), most));
    ASSERT_EQ(TotalOf(shown), TotalOf(items));
    if (items.size() <= most) continue;
    ASSERT_TRUE(shown.back().fIsRest);
    ASSERT_EQ(shown.back().fCount, static_cast<int64_t>(items.size() - most + 1));
    // No item that was left out is larger than one that is shown.
    std::set<std::u16string> keys;
    for (size_t i = 0; i + 1 < shown.size(); ++i) keys.insert(shown[i].fKey);
    for (const TChartItem& item : items)
      for (size_t i = 0; i + 1 < shown.size() && !keys.contains(item.fKey); ++i)
        ASSERT_LE(item.fValue, shown[i].fValue);
  }
}

// Wedges of each ring: side by side, together the whole circle, each in proportion to its value.
TEST(Charts, WedgesMakeUpTheCircleInProportion) {
  TChartData data;
  for (const auto& [key, value] : {std::pair{u"a", 50}, {u"b", 30}, {u"c", 15}, {u"d", 5}}) {
    TChartItem item{key, key, value, {}, {}, 1, false};
    for (const char16_t* child : {u"x", u"y"}) item.fChildren.push_back({child, child, value / 2, {}, {}, 1, false});
    data.fItems.push_back(item);
  }
  for (const TChartType type : {TChartType::ctPie, TChartType::ctRing}) {
    const TDrawing drawing = MakeChart(type, data, {}, kMeasure);
    std::vector<TWedge> inner;
    double outer = 0;
    for (const TShape& shape : drawing.fShapes) {
      const auto* wedge = std::get_if<TWedge>(&shape.fForm);
      if (wedge == nullptr) continue;
      const bool isInner = inner.empty() || wedge->fInnerRadius == inner.front().fInnerRadius;
      if (isInner) inner.push_back(*wedge);
      if (!isInner) outer += wedge->fSweep;
      EXPECT_NEAR(wedge->fSweep / 360, static_cast<double>(drawing.fSubjects[size_t(shape.fSubject)].fValue) / 100,
                  1e-9);
      // The middle of the wedge belongs to it.
      const double angle = (wedge->fBegin + wedge->fSweep / 2) * std::numbers::pi / 180;
      const double radius = (wedge->fInnerRadius + wedge->fOuterRadius) / 2;
      EXPECT_EQ(SubjectAt(drawing,
                          {wedge->fCenter.fX + radius * std::sin(angle), wedge->fCenter.fY - radius * std::cos(angle)}),
                shape.fSubject);
    }
    ASSERT_EQ(inner.size(), 4u);
    double end = 0;
    for (const TWedge& wedge : inner) {
      EXPECT_NEAR(wedge.fBegin, end, 1e-9);
      end = wedge.fBegin + wedge.fSweep;
    }
    EXPECT_NEAR(end, 360, 1e-9);
    // Halves of 15 and of 5, cut to whole numbers, are 14 and 4.
    EXPECT_NEAR(outer, type == TChartType::ctRing ? 360 * 0.98 : 0, 1e-6);
  }
}

TEST(Charts, AKeyHasOneColorInEveryChart) {
  const std::u16string key = u".iso";
  std::set<TColor> colors;
  for (const TChartType type : {TChartType::ctBar, TChartType::ctColumn, TChartType::ctPie, TChartType::ctRing}) {
    TChartData data;
    data.fItems = {{u".a", u".a", 7, {}, {}, 1, false}, {key, key, 5, {}, {}, 1, false}};
    if (type == TChartType::ctPie) std::swap(data.fItems[0], data.fItems[1]);
    if (type == TChartType::ctBar) data.fItems.erase(data.fItems.begin());
    const TDrawing drawing = MakeChart(type, data, {}, kMeasure);
    for (const TShape& shape : drawing.fShapes)
      if (shape.fSubject != kNoSubject && drawing.fSubjects[size_t(shape.fSubject)].fKey == key)
        colors.insert(shape.fPaint.fFill);
  }
  EXPECT_EQ(colors, std::set<TColor>{CommonColorPalette().GetColorForKey(key)});
}

// --- axes ----------------------------------------------------------------------------------------------------------

TEST(ChartAxis, StepsAreRoundInTheUnitOfTheLabels) {
  struct TCase {
    double fLeast;
    double fMost;
    TColumn fColumn;
    std::vector<std::string> fLabels;
  };
  const double kb = 1024;
  const double gb = kb * kb * kb;
  const TCase cases[] = {
      {0, 700 * kb, TColumn::mdSize, {"0 KB", "200 KB", "400 KB", "600 KB", "800 KB"}},
      {0, 1.5 * gb, TColumn::mdSize, {"0.0 GB", "0.5 GB", "1.0 GB", "1.5 GB"}},
      {0, 3, TColumn::mdSize, {"0 B", "1 B", "2 B", "3 B"}},
      {0, 1023 * gb, TColumn::mdSize, {"0 GB", "500 GB", "1,000 GB", "1,500 GB"}},
      {0, 8e18, TColumn::mdSize, {"0 TB", "2,000,000 TB", "4,000,000 TB", "6,000,000 TB", "8,000,000 TB"}},
      {0, 12345, TColumn::mdFiles, {"0", "5,000", "10,000", "15,000"}},
      {0, 0, TColumn::mdFiles, {"0", "1"}},
      {100 * gb, 103 * gb, TColumn::mdSize, {"100 GB", "101 GB", "102 GB", "103 GB"}},
  };
  for (const TCase& test : cases) {
    const TAxis axis = MakeValueAxis(test.fLeast, test.fMost, 5, test.fColumn, {});
    std::vector<std::string> labels;
    for (const TTick& tick : axis.fTicks) labels.push_back(ToUtf8(tick.fLabel));
    EXPECT_EQ(labels, test.fLabels) << test.fMost;
  }
}

TEST(ChartAxis, CoversEveryRangeWithFewRoundSteps) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 1000; ++round) {
    const double most = std::exp2(static_cast<double>(random() % 630) / 10);
    const double least = random() % 2 ? 0 : most * static_cast<double>(random() % 1000) / 1000;
    const int steps = 2 + static_cast<int>(random() % 9);
    const TColumn column = random() % 2 ? TColumn::mdSize : TColumn::mdFiles;
    const TAxis axis = MakeValueAxis(least, most, steps, column, {});
    SCOPED_TRACE(testing::Message() << least << " to " << most << " in " << steps);
    ASSERT_LE(axis.fLeast, least);
    ASSERT_GE(axis.fMost, most);
    ASSERT_LE(axis.fTicks.size(), static_cast<size_t>(steps) + 1);
    ASSERT_EQ(axis.fTicks.front().fValue, axis.fLeast);
    ASSERT_EQ(axis.fTicks.back().fValue, axis.fMost);
    // The step as a number of its unit has one digit that is not 0: 1, 2 or 5.
    double step = axis.fTicks[1].fValue - axis.fTicks[0].fValue;
    if (column == TColumn::mdSize) {
      const std::string label = ToUtf8(axis.fTicks.back().fLabel);
      for (const char* unit : {" KB", " MB", " GB", " TB"}) {
        step /= 1024;
        if (label.ends_with(unit)) break;
      }
      if (label.ends_with(" B") && label.find_first_of("KMGT") == std::string::npos) step *= std::exp2(40);
    }
    const double mantissa = step / std::pow(10, std::floor(std::log10(step) + 1e-6));
    ASSERT_TRUE(std::abs(mantissa - 1) < 1e-3 || std::abs(mantissa - 2) < 1e-3 || std::abs(mantissa - 5) < 1e-3)
        << step << " " << mantissa;
  }
}

TKivFileTime Local(const char* pUtc) {
  TKivFileTime time;
  EXPECT_TRUE(TryParseIso(pUtc, time));
  int64_t offset = 0;
  LocalOffset(time, offset);
  return {time.fTicks - offset * TKivFileTime::kTicksPerSecond};
}

TEST(ChartAxis, TimesBeginAtRoundDates) {
  const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
      {"2021-03-05", "2026-11-21", {"2022", "2023", "2024", "2025", "2026"}},
      {"2026-01-15", "2026-05-20", {"2026-02", "2026-03", "2026-04", "2026-05"}},
      {"2026-02-26",
       "2026-03-03",
       {"2026-02-26", "2026-02-27", "2026-02-28", "2026-03-01", "2026-03-02", "2026-03-03"}},
      {"2026-01-15T05:00:00", "2026-01-15T16:00:00", {"01-15 06:00", "01-15 09:00", "01-15 12:00", "01-15 15:00"}},
      {"2026-11-01", "2026-11-30", {"2026-11-02", "2026-11-09", "2026-11-16", "2026-11-23", "2026-11-30"}},
  };
  for (const auto& [first, last, expected] : cases) {
    std::vector<std::string> labels;
    for (const TTick& tick : MakeTimeAxis(Local(first), Local(last), 6).fTicks) labels.push_back(ToUtf8(tick.fLabel));
    EXPECT_EQ(labels, expected);
  }
}

// --- the data of a root --------------------------------------------------------------------------------------------

void ExpectWholes(TMemoryRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.Root().GetTopFolder();
  const bool isAllocated = pRoot.Root().GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated;
  const int64_t whole = isAllocated ? top->GetAllocated() : top->GetSize();
  ASSERT_GT(whole, 0);
  for (const TChartData& data : {FoldersData(pRoot.Root(), 3), ExtensionsData(pRoot.Root()),
                                 FileTypesData(pRoot.Root()), OwnersData(pRoot.Root()), FileAgesData(pRoot.Root())}) {
    EXPECT_EQ(TotalOf(data.fItems), whole) << ToUtf8(data.fTitle);
    for (const TChartItem& item : data.fItems) {
      if (item.fChildren.empty()) continue;
      EXPECT_EQ(TotalOf(item.fChildren), item.fValue) << ToUtf8(item.fLabel);
    }
  }
}

TEST(ChartSources, AddUpToTheRoot) {
  for (const bool hasFolders : {true, false}) {
    for (const bool keepFiles : {true, false}) {
      TMemoryRoot root;
      TRandomTree random(11);
      for (int i = 0; i < 3; ++i) random.AddFile(root.Top());
      root.Top().AddFile(u"large", 1 << 30);
      if (hasFolders) random.AddFolder(root.Top(), 4);
      root.fOptions->CollectOwners = true;
      root.fOptions->KeepFiles = keepFiles;
      root.Scan();
      ExpectWholes(root);
    }
  }
}

}  // namespace
}  // namespace Vantrel::Testing
