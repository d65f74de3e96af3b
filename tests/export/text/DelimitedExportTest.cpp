// Rows for programs: every column against the node's own value, headers, units, separators, what is shown.

#include <gmock/gmock.h>

#include <functional>

#include "export/text/DelimitedExport.h"
#include "model/roots/Comparison.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/LineList.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"

namespace Vantrel::Exporting {
namespace {

using namespace Vantrel::Testing;
using testing::ElementsAre;
using Vantrel::Testing::TLineList;

struct TScannedRoot : TMemoryRoot {
  explicit TScannedRoot(const std::function<void(TMemoryEntry&)>& pFill, bool pSharesOfAllocated = false) {
    pFill(Top());
    fOptions->CollectOwners = true;
    fOptions->UseAllocatedForShares = pSharesOfAllocated;
    Scan();
  }
};

TMediaSettings Settings(std::u16string_view pColumns = u"fullpath;size") {
  TMediaSettings settings = DefaultMediaSettings(TMediaType::mtCSV);
  settings.fByteOrderMark = false;
  EXPECT_TRUE(TryParseColumns(pColumns, settings.fColumns));
  return settings;
}

std::vector<std::string> Lines(TScannedRoot& pRoot, const TMediaSettings& pSettings) {
  TLineList output;
  EXPECT_TRUE(TCSVExport(pSettings).Export(*pRoot.fRoot, output));
  return output.fLines;
}

// The rows by the nodes' own answers.
void AppendSlowly(std::vector<std::vector<std::string>>& pRows, IHierarchicalElement& pNode,
                  const TMediaSettings& pSettings) {
  const TValueFormat format = FormatOf(pSettings);
  std::vector<std::string> row;
  for (const TColumn column : pSettings.fColumns) row.push_back(ToUtf8(pNode.GetFormattedValue(column, format)));
  IFolderData* folder = pNode.AsFolder();
  // Its row has a path by which it can be told from the row of its folder.
  if (folder && folder->IsFileGroup()) row[static_cast<size_t>(TColumn::mdFullPath)] += "/[Files]";
  pRows.push_back(row);
  if (!folder) return;
  if (!folder->IsFileGroup())
    for (const auto& child : folder->FindSubFolders()) AppendSlowly(pRows, *child, pSettings);
  if (folder->IsFileGroup() || !folder->GetFilesNode())
    for (const auto& file : folder->FindFiles()) AppendSlowly(pRows, *file, pSettings);
}

std::vector<std::string> Split(std::string_view pLine, char pSeparator) {
  std::vector<std::string> cells(1);
  for (const char character : pLine) {
    if (character == pSeparator)
      cells.emplace_back();
    else
      cells.back() += character;
  }
  return cells;
}

// What is written for speed from the row itself, and what the nodes would say.
TEST(DelimitedExport, EveryColumnIsTheNodesOwnValue) {
  for (const bool allocated : {false, true}) {
    TRandomTree random(allocated ? 1 : 2,
                       {{u"f", u"f = "}, {u"d"}, {u".txt", u" \u65E5", u""}, {u"anna", u"bert, jr."}});
    TScannedRoot root(
        [&](TMemoryEntry& pTop) {
          while (pTop.fChildren.size() < 10) random.Fill(pTop, 3);
        },
        allocated);
    for (int form = 0; form < 4; ++form) {
      TMediaSettings settings = Settings(u"");
      for (int i = 0; i < static_cast<int>(TColumn::mdCount); ++i) settings.fColumns.push_back(static_cast<TColumn>(i));
      settings.fIncludedObjectTypes = kAllObjectTypes;
      settings.fIncludeHeader = false;
      settings.fSeparator = u"|";
      settings.fUsePlainByteValues = form == 0;
      settings.fAutomaticUnit = form != 2;
      settings.fSizeUnit = TSizeUnit::suKB;
      settings.fShowUnits = form != 3;
      std::vector<std::vector<std::string>> expected;
      AppendSlowly(expected, *root.fRoot->GetTopFolder(), settings);
      const std::vector<std::string> lines = Lines(root, settings);
      ASSERT_EQ(lines.size(), expected.size());
      ASSERT_GT(lines.size(), 50u);
      for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(Split(lines[i], '|'), expected[i]) << form;
    }
  }
}

TEST(DelimitedExport, ASecondRootGoesOnBelowTheFirst) {
  auto fill = [](TMemoryEntry& pTop) { pTop.AddFile(u"f", 5); };
  TScannedRoot first(fill), second(fill);
  TMediaSettings settings = Settings();
  settings.fByteOrderMark = true;
  TLineList output;
  EXPECT_TRUE(TCSVExport(settings).Export(*first.fRoot, output));
  EXPECT_TRUE(TCSVExport(settings).Export(*second.fRoot, output));
  EXPECT_THAT(output.fLines, ElementsAre("\xEF\xBB\xBF"
                                         "Full Path,Size",
                                         "/memory,5", "/memory,5"));
  TLineList text;
  EXPECT_TRUE(TTextExport(settings).Export(*first.fRoot, text));
  EXPECT_EQ(text.fLines.back(), "/memory\t5");
}

void FillByHand(TMemoryEntry& pTop) {
  pTop.AddFile(u"top", 10);
  TMemoryEntry& a = pTop.AddFolder(u"a");
  a.AddFile(u"y", 100);
  a.AddFile(u"x", 100);
  a.AddFolder(u"inner").AddFile(u"deep", 50);
  pTop.AddFolder(u"b").AddFile(u"=b", 250);
  pTop.AddFolder(u"c");
}

// Where a backslash delimits, a name can be read as an escape too.
TEST(DelimitedExport, NoTwoRowsHaveOnePath) {
  for (const auto& [name, path] :
       {std::pair(u"xFF", R"(C:\x5CxFF)"), {u"uD800", R"(C:\x5CuD800)"}, {u"xfile", R"(C:\xfile)"}}) {
    std::string text = "C:\\";
    AppendNameToPath(text, name, '\\', false);
    EXPECT_EQ(text, path);
  }
}

TEST(DelimitedExport, ShowsWhatHasChanged) {
  TScannedRoot root([](TMemoryEntry& pTop) {
    TMemoryEntry& grown = pTop.AddFolder(u"grown");
    grown.AddFile(u"f", 700, 1024);
    grown.AddFile(u"still", 9, 512);
    TMemoryEntry& swapped = pTop.AddFolder(u"swapped");
    swapped.AddFile(u"a", 2, 512);
    swapped.AddFile(u"b", 1, 512);
    pTop.AddFolder(u"added").AddFile(u"f", 30, 512);
    pTop.AddFile(u"own", 4, 512);
  });
  TScannedRoot earlier([](TMemoryEntry& pTop) {
    TMemoryEntry& grown = pTop.AddFolder(u"grown");
    grown.AddFile(u"f", 600, 512);
    grown.AddFile(u"still", 9, 512);
    TMemoryEntry& swapped = pTop.AddFolder(u"swapped");
    swapped.AddFile(u"a", 1, 512);
    swapped.AddFile(u"b", 2, 512);
    pTop.AddFolder(u"lost").AddFolder(u"below").AddFile(u"f", 5, 4096);
    pTop.AddFile(u"own", 4, 512);
  });
  EXPECT_EQ(Lines(root, Settings(u"")).front(),
            "Full Path,Size,Allocated,Files,Folders,% of Parent,Last Change,Last Access,Error");
  root.fRoot->SetComparison(MakeRef<TComparison>(*root.fRoot, *earlier.fRoot));
  EXPECT_EQ(Lines(root, Settings(u"")).front(),
            "Full Path,Size,Allocated,Files,Folders,% of Parent,Last Change,Last Access,Error,Size Change,Allocated "
            "Change,File Change,State");
  EXPECT_THAT(Lines(root, Settings(u"fullpath;sizechange;allocatedchange;filechange;state")),
              ElementsAre("Full Path,Size Change,Allocated Change,File Change,State", "/memory,125,-3072,0,",
                          "/memory/grown,100,512,0,", "/memory/added,30,512,1,new", "/memory/lost,-5,-4096,-1,gone",
                          "/memory/lost/below,-5,-4096,-1,gone"));
  TMediaSettings files = Settings(u"name;sizechange;allocatedchange;filechange;state;sizechangepercent");
  files.fIncludedObjectTypes = ioFiles;
  EXPECT_THAT(Lines(root, files),
              ElementsAre("f,100,512,0,,16.7", "f,30,512,1,new,", "a,1,0,0,,100.0", "b,-1,0,0,,-50.0"))
      << "files that changed, in a folder whose sums are the same, too";
  files.fShowUnchanged = true;
  EXPECT_EQ(Lines(root, files).size(), 6u);
  TLineList paths;
  EXPECT_TRUE(TPathListExport(Settings(u"")).Export(*root.fRoot, paths));
  EXPECT_THAT(paths.fLines, ElementsAre("/memory", "/memory/grown", "/memory/added"));
}

TEST(DelimitedExport, StopsAtTheFirstLineThatCannotBeWritten) {
  TScannedRoot root(FillByHand);
  for (size_t capacity = 0; capacity < 8; ++capacity) {
    TLineList output;
    output.fCapacity = capacity;
    EXPECT_FALSE(TCSVExport(Settings()).Export(*root.fRoot, output));
    EXPECT_EQ(output.fRefused, 1) << capacity;
  }
}

}  // namespace
}  // namespace Vantrel::Exporting
