// The report's layout, hostile names, depth, outputs that fail.

#include <gmock/gmock.h>

#include "export/text/RootDescription.h"
#include "export/text/TextExport.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/FakeTree.h"
#include "tests/support/LineList.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Exporting;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using Vantrel::Exporting::ShortenedToWidth;
using Vantrel::Exporting::TFormattedTextExport;
using Vantrel::Testing::TFakeFolder;
using Vantrel::Testing::TFakeRoot;
using Vantrel::Testing::TLineList;

constexpr uint32_t kAccessDenied = 13;  // on Linux; on Windows another error, which is all the same here

TSizeValues Values(int64_t pSize, int64_t pAllocated, int64_t pFiles, int64_t pFolders) {
  TSizeValues values;
  values.fSize = pSize;
  values.fAllocated = pAllocated;
  values.fFiles = pFiles;
  values.fFolders = pFolders;
  return values;
}

// A path without a volume, so that the head block is the same on every machine.
TRef<TFakeRoot> MakeRoot() {
  auto root = MakeRef<TFakeRoot>(u"/no such place");
  root->fTop = MakeRef<TFakeFolder>(u"no such place", Values(3 << 20, 4 << 20, 1234, 2));
  root->fTop->Add(MakeRef<TFakeFolder>(u"big", Values(2 << 20, 3 << 20, 1200, 0)));
  root->fTop->Add(MakeRef<TFakeFolder>(u"[Files]", Values(1 << 20, 1 << 20, 34, 0), TKivFileTime{}, true));
  root->fTop->Add(MakeRef<TFakeFolder>(u"empty", Values(0, 0, 0, 0)));
  root->fProgress.fFiles = 1234;
  root->fProgress.fFolders = 3;
  root->fDuration = 2000;
  return root;
}

class TReport {
 public:
  TGlobalOptions fOptions;
  TMediaSettings fSettings;
  TLineList fOutput;

  TReport() {
    fOptions.ExportTitle = "Title";
    fSettings.fRecursionLevel = {1, false};
  }
  std::vector<std::string> Of(TFakeRoot& pRoot) {
    TFormattedTextExport report(fSettings, fOptions, "Vantrel");
    fComplete = report.Export(pRoot, fOutput);
    return fOutput.fLines;
  }
  bool fComplete = false;
};

TEST(FormattedReport, IsLaidOutToTheColumn) {
  TReport report;
  EXPECT_THAT(report.Of(*MakeRoot()),
              ElementsAre("Title",                                                                          //
                          "  /no such place - 4.0 MB - 1,234 files - 2 folders",                            //
                          "",                                                                               //
                          "Name            Allocated    Size  Files  Folders  % of Parent  Last Change",    //
                          "--------------  ---------  ------  -----  -------  -----------  -----------",    //
                          "/no such place     4.0 MB  3.0 MB  1,234        2      100.0 %             ",    //
                          "  big              3.0 MB  2.0 MB  1,200        0       75.0 %             ",    //
                          "  [Files]          1.0 MB  1.0 MB     34        0       25.0 %             ",    //
                          "  empty               0 B     0 B      0        0        0.0 %             ",    //
                          "",                                                                               //
                          "Scanned 1,234 files and 3 folders in 2.00 seconds (618 entries per second)."));  // 1237 / 2
  EXPECT_TRUE(report.fComplete);
}

TEST(FormattedReport, NamesTheProgramAndTheMomentUnlessATitleIsSet) {
  TReport report;
  report.fOptions.ExportTitle.clear();
  const std::string before = FormatShortDate(TKivFileTime::Now());
  const std::string title = report.Of(*MakeRoot()).front();
  EXPECT_THAT(title, testing::AnyOf(StartsWith("Vantrel Report, " + before + "  "),
                                    StartsWith("Vantrel Report, " + FormatShortDate(TKivFileTime::Now()) + "  ")));
}

TEST(FormattedReport, ASecondReportIsSetApart) {
  TReport report;
  report.fOutput.fLines = {"1", "2", "3", "4", "5"};  // five lines are no report yet
  EXPECT_EQ(report.Of(*MakeRoot())[5], "Title");
  const size_t first = report.fOutput.fLines.size();
  const std::vector<std::string> lines = report.Of(*MakeRoot());
  EXPECT_THAT(
      std::vector(lines.begin() + static_cast<ptrdiff_t>(first), lines.begin() + static_cast<ptrdiff_t>(first) + 4),
      ElementsAre("", "", "________________________________________________", "Title"));
}

TEST(FormattedReport, LongNamesAreShortenedOnATerminalOnly) {
  auto root = MakeRoot();
  root->fTop->Add(MakeRef<TFakeFolder>(std::u16string(200, u'n'), Values(1, 1, 1, 0)));
  TReport narrow;
  narrow.fOutput.fWidth = {80, true};
  for (const std::string& line : narrow.Of(*root)) EXPECT_LE(DisplayWidth(line), 80) << line;
  for (const TLineWidth width : {TLineWidth(), TLineWidth{80, false}}) {
    TReport wide;
    wide.fOutput.fWidth = width;
    EXPECT_THAT(wide.Of(*root), testing::Contains(HasSubstr(std::string(200, 'n'))));
  }

  EXPECT_EQ(ShortenedToWidth("abcdef", 6), "abcdef");
  EXPECT_EQ(ShortenedToWidth("abcdefg", 6), "abcde…");
  EXPECT_EQ(ShortenedToWidth("日本語", 4), "日…");  // two columns each: a second one would need five
  EXPECT_EQ(PathShortenedToWidth("/usr/lib/x/libm.so", 12), "/usr…libm.so");
  EXPECT_EQ(PathShortenedToWidth("/日本/語.so", 10), "/日…/語.so");  // 3 columns, 1 and 6
}

// 24 eighths of a bar of 3 columns, 160 of one of 20, each rounded; "#" has whole columns alone.
TEST(FormattedReport, BarsAreAsLongAsTheShares) {
  EXPECT_EQ(BarText(1, 3, 8), "███");
  EXPECT_EQ(BarText(0.5, 3, 8), "█▌");
  EXPECT_EQ(BarText(0.75, 20, 8), "███████████████");
  EXPECT_EQ(BarText(0.26, 20, 8), "█████▎");  // 41.6 eighths: 42
  EXPECT_EQ(BarText(0.26, 20, 2), "█████");   // 10.4 halves: 10
  EXPECT_EQ(BarText(0.0001, 20, 8), "▏");     // not nothing
  EXPECT_EQ(BarText(0.0001, 20, 1), "#");
  EXPECT_EQ(BarText(0.26, 20, 1), "#####");
  EXPECT_EQ(BarText(0, 20, 8), "");
  EXPECT_EQ(BarText(1, 0, 8), "");
  EXPECT_EQ(BarText(7, 2, 1), "##");  // a tree that changes may have shares above the whole
}

std::string WithoutColors(std::string pLine) {
  for (size_t begin = pLine.find('\033'); begin != pLine.npos; begin = pLine.find('\033'))
    pLine.erase(begin, pLine.find('m', begin) + 1 - begin);
  return pLine;
}

TEST(FormattedReport, BarsTakeTheRoomThatIsLeftAndColoursNone) {
  const std::vector<std::pair<int, std::string>> bars = {{60, "########"}, {80, "######"}, {132, "###############"}};
  for (const auto& [width, bar] : bars) {
    TReport plain, coloured;
    plain.fOutput.fWidth = coloured.fOutput.fWidth = {width, true};
    plain.fOutput.fLook = {false, true, 1};
    coloured.fOutput.fLook = {true, true, 1};
    const std::vector<std::string> lines = plain.Of(*MakeRoot());
    const std::vector<std::string> painted = coloured.Of(*MakeRoot());
    ASSERT_EQ(lines.size(), painted.size());
    for (size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(WithoutColors(painted[i]), lines[i]);
      EXPECT_LE(DisplayWidth(lines[i]), i < 3 || i + 1 == lines.size() ? INT_MAX : width) << lines[i];
    }
    // 75 % of 10 columns, of 8 and of 20: the table without bars takes 53 columns (without "Folders" and "Last
    // Change"), 75 and 75. The caption of the shares has 3 columns to spare.
    EXPECT_THAT(lines, testing::Contains(testing::ContainsRegex(" big .* " + bar + " +75.0 %$"))) << width;
    EXPECT_THAT(painted, testing::Contains(HasSubstr("\033[91m75.0 %\033[0m")));
    EXPECT_THAT(painted, testing::Contains(HasSubstr("\033[1;34m  big\033[0m ")));
  }
  TReport file;
  for (const std::string& line : file.Of(*MakeRoot()))
    EXPECT_THAT(line, testing::AllOf(Not(HasSubstr("#")), Not(HasSubstr("\033"))));
}

TEST(FormattedReport, TellsWhatADriveHoldsBesideTheTree) {
  auto root = MakeRoot();  // 4 MB on the disk
  root->fStorage.fMountPoint = u"/no such place";
  root->fStorage.fUsedBytes = 10 << 20;
  const auto told = [&] { return UnseenInformation(*root, TValueFormat()); };
  EXPECT_EQ(told(), "Not in this tree: 6.0 MB of 10.0 MB in use");
  root->fStorage.fDeletedBytes = 1 << 20;
  root->fStorage.fReservedBytes = 2 << 20;
  EXPECT_EQ(told(),
            "Not in this tree: 6.0 MB of 10.0 MB in use, 1.0 MB of it deleted files still open; 2.0 MB reserved");
  root->fStorage.fUsedBytes = 4 << 20;
  EXPECT_EQ(told(), "");
  root->fStorage.fUsedBytes = 10 << 20;
  root->fStorage.fMountPoint = u"/no";
  EXPECT_EQ(told(), "");
}

// No more rows of a folder than the limit, and one row for the others: 2 + 1 MB of 3, of 4 on the disk.
TEST(FormattedReport, OneRowSumsUpWhatALimitLeavesOut) {
  auto root = MakeRoot();
  root->fTop->Add(MakeRef<TFakeFolder>(u"more", Values(5 << 20, 5 << 20, 7, 3)));
  TReport report;
  report.fSettings.fMostRows = 1;
  const std::vector<std::string> lines = report.Of(*root);
  EXPECT_THAT(lines[5], StartsWith("/no such place"));
  EXPECT_THAT(lines[6], StartsWith("  more"));
  EXPECT_THAT(lines[7], testing::MatchesRegex("  … and 3 more +4.0 MB +3.0 MB +1,234 +2 +.*"));
  EXPECT_EQ(lines[8], "");
}

// The whole row is 75 columns wide. Folders take 9 of them, the last change 13, files 7, size 8.
TEST(FormattedReport, ColumnsLeaveWhenALineIsTooNarrow) {
  const auto captions = [](int pColumns, bool pChosen) {
    TReport report;
    report.fOutput.fWidth = {pColumns, false};
    if (pChosen) report.fSettings.fColumns = {TColumn::mdName, TColumn::mdFolders, TColumn::mdLastChange};
    return report.Of(*MakeRoot())[3];
  };
  EXPECT_EQ(captions(75, false), "Name            Allocated    Size  Files  Folders  % of Parent  Last Change");
  EXPECT_EQ(captions(74, false), "Name            Allocated    Size  Files  % of Parent  Last Change");
  EXPECT_EQ(captions(65, false), "Name            Allocated    Size  Files  % of Parent");
  EXPECT_EQ(captions(52, false), "Name            Allocated    Size  % of Parent");
  EXPECT_EQ(captions(10, false), "Name            Allocated  % of Parent");
  EXPECT_EQ(captions(10, true), "Name            Folders  Last Change");
}

TEST(FormattedReport, WalksDownTenThousandLevels) {
  constexpr int kLevels = 10'000;
  auto root = MakeRef<TFakeRoot>(u"/deep");
  root->fTop = MakeRef<TFakeFolder>(u"deep", Values(1, 1, 1, kLevels));
  TRef<TFakeFolder> folder = root->fTop;
  std::vector<TRef<TFakeFolder>> chain;
  for (int i = 0; i < kLevels; ++i) {
    folder = folder->Add(MakeRef<TFakeFolder>(u"d", Values(1, 1, 1, kLevels - 1 - i)));
    chain.push_back(folder);
  }
  TReport report;
  report.fSettings.fRecursionLevel = {};
  report.fOutput.fWidth = {80, true};  // 10,000 lines of 20,000 blanks would be 200 MB
  const std::vector<std::string> lines = report.Of(*root);
  EXPECT_EQ(lines.size(), 3u + 2 + 1 + kLevels + 2);
  // Taken apart from the bottom: releasing the top first would recurse ten thousand times.
  root->fTop->Dispose();
  for (auto& link : chain) link->Dispose();
}

TEST(FormattedReport, StopsAtTheFirstLineThatCannotBeWritten) {
  for (size_t capacity = 0; capacity < 11; ++capacity) {
    TReport report;
    report.fOutput.fCapacity = capacity;
    report.Of(*MakeRoot());
    EXPECT_FALSE(report.fComplete);
    EXPECT_EQ(report.fOutput.fRefused, 1) << "after " << capacity << " lines";
  }
}

TEST(ScanSummary, TellsWhatIsMissingInPathOrder) {
  auto root = MakeRoot();
  root->AddError(u"/x/c", kAccessDenied);
  root->AddError(u"/x/a\n", kAccessDenied, true);
  root->AddError(u"/x/b", kAccessDenied);
  root->fProgress.fExcludedObjects = 1;
  const std::string reason = OSErrorText(kAccessDenied);
  const TValueFormat format;
  EXPECT_THAT(ScanSummary(*root, format, 2),
              ElementsAre("incomplete: 3 folders could not be read", "  /x/a\\n: " + reason + " (read in part)",
                          "  /x/b: " + reason, "  … and 1 more", "1 object was excluded", StartsWith("Scanned ")));
  root->fProgress.fExcludedObjects = 1234;
  root->fExclusions = {{u"by *.tmp\x1b", 1200}, {u"matching no pattern to include", 34}};
  EXPECT_THAT(ScanSummary(*root, format, 0),
              testing::IsSupersetOf(
                  {"1,234 objects were excluded", "  1,200 by *.tmp\\x1B", "  34 matching no pattern to include"}));
  root->fProgress.fExcludedObjects = 1;
  root->fExclusions.clear();
  root->fErrors.resize(1);
  EXPECT_THAT(ScanSummary(*root, format, 0), ElementsAre("incomplete: 1 folder could not be read", "  … and 1 more",
                                                         "1 object was excluded", StartsWith("Scanned ")));
}

TEST(ScanSummary, TellsHowLongItTookAndThatItWasCancelled) {
  auto root = MakeRoot();
  root->fState = rsFinished | rsCancelled;
  root->fDuration = 12'345;
  root->fProgress.fFiles = 1'000'000;
  root->fProgress.fFolders = 1;
  // 1,000,001 / 12.345 = 81,004.5…
  EXPECT_THAT(ScanSummary(*root, {}, 20),
              ElementsAre("The scan was cancelled after 12.3 seconds: the totals cover only the part that was scanned.",
                          "Scanned 1,000,000 files and 1 folder in 12.3 seconds (81,004 entries per second)."));
  EXPECT_THAT(RootHeaderLine(*root, {}), testing::EndsWith(" - cancelled"));
  root->fState = rsFinished;
  root->fDuration = 3;  // too short for a rate
  EXPECT_THAT(ScanSummary(*root, {}, 20), ElementsAre("Scanned 1,000,000 files and 1 folder in 0.00 seconds."));
}

}  // namespace
