// The duplicates pane in the window, over real folders and over files that are held while they are read; its model.

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QTabWidget>
#include <QToolButton>
#include <algorithm>
#include <atomic>
#include <numeric>

#include "tests/support/MemoryServices.h"
#include "tests/window/WindowHarness.h"
#include "window/models/Background.h"
#include "window/models/DuplicatesModel.h"
#include "window/panes/DuplicatesPane.h"
#include "window/panes/EntriesView.h"
#include "window/panes/QueryEdit.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {
namespace {

using namespace Testing;
using TGroups = QList<QStringList>;

// --- the model -------------------------------------------------------------------------------------------------------

Search::TDuplicateName MadeName(const std::u16string& pFolder, const std::u16string& pName) {
  Search::TFoundItem item;
  item.fFolder = MakeRef<const Search::TFoundFolder>(pFolder, u'/');
  item.fName = pName;
  item.fValues.fSize = 10;
  return {MakeRef<Search::TDuplicateFile>(std::move(item), 0u)};
}

// So many groups, of two names and one of many. The i-th wastes i * 7 % 1009 bytes.
std::shared_ptr<Search::TDuplicateResult> MadeResult(int pGroups, int pNamesOfFirst) {
  auto result = std::make_shared<Search::TDuplicateResult>();
  for (int i = 0; i < pGroups; ++i) {
    Search::TDuplicateGroup group;
    group.fSize = 10;
    group.fWasted = i * 7 % 1009;
    result->fWasted += group.fWasted;
    for (int name = 0; name < (i == 0 ? pNamesOfFirst : 2); ++name)
      group.fNames.push_back(
          MadeName(u"/d" + QString::number(name).toStdU16String(), u"f" + QString::number(i % 50).toStdU16String()));
    result->fGroups.push_back(std::move(group));
  }
  return result;
}

TEST(TDuplicatesModel, ListsSomeGroupsAndMoreWhenAskedFor) {
  TDuplicatesModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  tester.setUseFetchMore(false);  // it would ask in the middle of a reset, and then complain of that
  EXPECT_EQ(model.rowCount(), 0);
  model.SetRows(MakeDuplicateRows(MadeResult(1200, TDuplicatesModel::kMostNames + 3), false, -1, true));
  int fetches = 0;
  for (; model.canFetchMore({}); ++fetches) model.fetchMore({});
  EXPECT_EQ(model.rowCount(), 1200);
  EXPECT_EQ(fetches, 2) << "1,200 groups are listed at once, or by few at a time";
  const QModelIndex first = model.index(0, 0);
  ASSERT_EQ(model.rowCount(first), TDuplicatesModel::kMostNames + 1);
  const QModelIndex rest = model.index(TDuplicatesModel::kMostNames, 0, first);
  EXPECT_TRUE(rest.data().toString().contains("3 more")) << rest.data().toString().toStdString();
  EXPECT_EQ(model.PathAt(rest), u"");
  EXPECT_EQ(model.PathAt(model.index(1, 0, model.index(7, 0))), u"/d1/f7");
  model.SetUnit(TSizeUnit::suBytes);
  model.SetRows(nullptr);
  EXPECT_EQ(model.rowCount(), 0);
}

TEST(TDuplicatesModel, SortsGroupsByEveryColumn) {
  const auto result = MadeResult(300, 3);
  const auto keyOf = [&](uint32_t pGroup, int pColumn) -> std::u16string {  // as texts of one length
    const Search::TDuplicateGroup& group = result->fGroups[pGroup];
    const int64_t number = pColumn == dcWasted  ? group.fWasted
                           : pColumn == dcFiles ? static_cast<int64_t>(group.fNames.size())
                                                : group.fSize;
    if (pColumn == dcName) return std::u16string(group.fNames[0].fFile->GetObjectName());
    if (pColumn == dcFolder || pColumn == dcLastChange) return {};  // equal in all
    return QStringLiteral("%1").arg(number, 9, 10, QChar(u'0')).toStdU16String();
  };
  for (int column = 0; column < dcCount; ++column)
    for (const bool descends : {false, true}) {
      std::vector<uint32_t> expected(300);
      std::iota(expected.begin(), expected.end(), 0u);
      std::stable_sort(expected.begin(), expected.end(), [&](uint32_t pA, uint32_t pB) {
        return descends ? keyOf(pA, column) > keyOf(pB, column) : keyOf(pA, column) < keyOf(pB, column);
      });
      EXPECT_EQ(MakeDuplicateRows(result, false, column, descends)->fOrder, expected) << column << " " << descends;
    }
}

// --- the pane --------------------------------------------------------------------------------------------------------

struct TDuplicatesPaneTest : ::testing::Test, TWindowHarness {
  TDuplicatesPaneTest() {
    for (const char* folder : {"films", "backup", "papers/old", "twin a", "twin b"})
      std::filesystem::create_directories(fData.Path() / folder);
    fData.Put("films/long.mp4", std::string(3000, 'x'));
    fData.Put("films/other.mp4", std::string(3000, 'y'));
    fData.Put("films/second.mp4", std::string(3000, 'x'));
    fData.Put("backup/long.mp4", std::string(3000, 'x'));
    fData.Put("papers/letter.txt", "dear");
    fData.Put("papers/old/note.txt", "dear");
    fData.Put("papers/alone.txt", "nobody else");
    std::filesystem::create_hard_link(fData.Path() / "papers/letter.txt", fData.Path() / "papers/linked.txt");
    for (const char* twin : {"twin a/page.html", "twin b/page.html"}) fData.Put(twin, std::string(500, 'z'));
  }
  ~TDuplicatesPaneTest() override {
    Close();
    EXPECT_TRUE(LongWork().waitForDone(kLongestWait));
  }

  TDuplicatesPane& Pane() { return Window().Duplicates(); }
  TDuplicatesModel& Model() { return Pane().Model(); }
  bool ScanData() { return Scan(fData.Path().u16string()); }
  void Press(const char* pHint) {
    for (auto* button : Pane().findChildren<QToolButton*>())
      if (button->toolTip() == pHint) return QTest::mouseClick(button, Qt::LeftButton);
    FAIL() << "no button \"" << pHint << "\"";
  }
  bool IsOver() {
    return WaitFor([&] { return !Pane().IsSearching(); });
  }
  TGroups Find() {
    Action("duplicates").trigger();
    Press("Find duplicates");
    EXPECT_TRUE(IsOver());
    return Groups();
  }
  // The paths in the data's folder, group by group; what has no group is one alone.
  TGroups Groups() {
    const auto top = static_cast<qsizetype>(fData.Path().u16string().size()) + 1;
    TGroups groups;
    const auto path = [&](const QModelIndex& pIndex) {
      return ToQString(Model().PathAt(pIndex)).mid(top).replace(u'\\', u'/');
    };
    for (int row = 0; row < Model().rowCount(); ++row) {
      const QModelIndex group = Model().index(row, 0);
      QStringList names;
      for (int name = 0; name < Model().rowCount(group); ++name) names << path(Model().index(name, 0, group));
      groups << (Model().IsGroup(group) ? names : QStringList(path(group)));
    }
    return groups;
  }
  QString Cell(int pRow, int pColumn) { return Model().index(pRow, pColumn).data().toString(); }

  TTemporaryFolder fData;
};

const TGroups kFilms{{"backup/long.mp4", "films/long.mp4", "films/second.mp4"}};
const TGroups kTwins{{"twin a/page.html", "twin b/page.html"}};
const TGroups kLetters{{"papers/letter.txt", "papers/linked.txt", "papers/old/note.txt"}};

TEST_F(TDuplicatesPaneTest, SearchesForWhatTheCommandLineAsksFor) {
  fStart.fPaths = {fData.Path().u16string()};
  fStart.fQuery = u"size:>100B";
  fStart.fDuplicates.fIsWanted = fStart.fDuplicates.fByName = fStart.fDuplicates.fByContents = true;
  EXPECT_EQ(Window().Panes().currentWidget(), &Pane());
  const TGroups sameNames{{"backup/long.mp4", "films/long.mp4"}};
  EXPECT_TRUE(WaitFor([&] { return Groups() == sameNames + kTwins; }));
}

TEST_F(TDuplicatesPaneTest, FindsSortsCopiesExportsAndLeadsToThePlace) {
  Window().resize(1024, 700);
  Action("duplicates").trigger();
  EXPECT_EQ(Window().Panes().currentWidget(), &Pane());
  Pane().Start();
  EXPECT_TRUE(Pane().Message().contains("Nothing is scanned")) << Pane().Message().toStdString();
  ASSERT_TRUE(ScanData());
  EXPECT_EQ(Find(), kFilms + kTwins + kLetters) << "the most wasteful first";
  const TValueFormat format = WindowFormat(TSizeUnit::suAutomatic);
  EXPECT_EQ(Cell(0, dcFiles), "3");
  EXPECT_EQ(Cell(0, dcSize), ShownSize(3000, format));
  EXPECT_EQ(Cell(0, dcWasted), ShownSize(6000, format));
  EXPECT_EQ(Cell(2, dcFiles), "2") << "a hard link is no file of its own";
  EXPECT_EQ(Cell(2, dcWasted), ShownSize(4, format));
  EXPECT_TRUE(Model().index(1, 0, Model().index(2, 0)).data().toString().contains("hard link"));
  for (const QString& part : {QStringLiteral("3 groups"), QStringLiteral("8 names"), ShownSize(6504, format)})
    EXPECT_TRUE(Pane().Status().contains(part)) << part.toStdString() << ": " << Pane().Status().toStdString();

  TTableView& table = Pane().Table();
  EXPECT_EQ(table.horizontalScrollBar()->maximum(), 0) << "the columns do not fit";
  EXPECT_TRUE(table.isExpanded(Model().index(0, 0)));
  QTest::mouseClick(table.header()->viewport(), Qt::LeftButton, {}, QPoint(20, 5));
  table.sortByColumn(dcName, Qt::AscendingOrder);
  ASSERT_TRUE(WaitFor([&] { return Groups() == kLetters + kFilms + kTwins; })) << Cell(0, 0).toStdString();
  EXPECT_TRUE(table.isExpanded(Model().index(1, 0))) << "sorting closed an open group";

  table.setCurrentIndex(Model().index(0, 0));
  QTest::keyClick(&table, Qt::Key_Return);
  EXPECT_TRUE(table.isExpanded(Model().index(0, 0)));
  for (const auto& [row, parent] : {std::pair(1, 1), std::pair(0, 1), std::pair(2, 0)})  // not in their order
    table.selectionModel()->select(Model().index(row, 0, Model().index(parent, 0)),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
  QTest::keyClick(&table, Qt::Key_C, Qt::ControlModifier);
  QStringList copied;
  for (const QString& line : QApplication::clipboard()->text().split(u'\n')) copied << line.section(u'\t', 0, 0);
  EXPECT_EQ(copied, QStringList({"Name", "letter.txt", "note.txt", "long.mp4", "long.mp4", ""}));

  Pane().ExportTo(QString::fromStdU16String(fSettings.File("found.paths.txt")));
  ASSERT_TRUE(WaitFor([&] { return std::filesystem::exists(fSettings.Path() / "found.paths.txt"); }));
  QString expected;
  for (const QStringList& group : kLetters + kFilms + kTwins)
    for (const QString& path : group)
      expected +=
          QString::fromStdU16String((fData.Path() / path.toStdU16String()).make_preferred().u16string()) + u'\n';
  EXPECT_EQ(fSettings.Get("found.paths.txt"), expected.toStdString());

  table.setCurrentIndex(Model().index(2, 0, Model().index(0, 0)));
  QTest::keyClick(&table, Qt::Key_Return);
  EXPECT_TRUE(WaitFor([&] { return Window().TreeView().currentIndex().data().toString() == "note.txt"; }));
  Window().Session().Close(Window().Tree().RootAt(Window().Tree().index(0, 0)));
  EXPECT_EQ(Groups(), TGroups()) << "rows lead to a tree that is closed";
}

TEST_F(TDuplicatesPaneTest, FindsByModesCriteriaAndPlaces) {
  fData.Put("films/page.html", std::string(9, 'n'));
  fData.Put("papers/none", "");
  fData.Put("papers/old/nothing", "");
  ASSERT_TRUE(ScanData());
  const auto criteria = Pane().Criteria().actions();
  const auto choose = [&](const QString& pText) {
    for (QAction* action : criteria)
      if (action->text() == pText) return action->trigger();
    FAIL() << pText.toStdString();
  };
  Pane().Verify().setChecked(true);
  choose("By SHA-256");
  EXPECT_EQ(Find(), kFilms + kTwins + kLetters);
  Pane().SetQuery(u"ext:html");
  EXPECT_EQ(Find(), kTwins) << "only what the query finds is compared";
  Pane().SetQuery(u"size:>x");
  EXPECT_EQ(Find(), TGroups());
  EXPECT_FALSE(Pane().Query().MarkedText().isEmpty()) << "the wrong query is not marked";
  Pane().SetQuery(u"");

  Pane().Mode().setCurrentIndex(1);
  EXPECT_EQ(Find(), TGroups({{"twin a", "twin b"}}));
  EXPECT_FALSE(Pane().Query().isEnabled());
  Pane().Mode().setCurrentIndex(2);
  TGroups unique = Find();
  std::sort(unique.begin(), unique.end());
  EXPECT_EQ(unique, TGroups({{"films/other.mp4"}, {"films/page.html"}, {"papers/alone.txt"}}));
  Pane().Mode().setCurrentIndex(0);

  choose("Empty ones, too");
  EXPECT_EQ(Find(), kFilms + kTwins + kLetters + TGroups({{"papers/none", "papers/old/nothing"}}));
  choose("Empty ones, too");
  choose("The same contents");
  EXPECT_TRUE(Pane().Request().fByContents) << "nothing is compared";
  choose("The same name");
  choose("The same contents");
  EXPECT_FALSE(Pane().Verify().isEnabled());
  EXPECT_EQ(Find(), TGroups({{"backup/long.mp4", "films/long.mp4"},
                             {"films/page.html", "twin a/page.html", "twin b/page.html"}}));

  Window().Session().Scan((fData.Path() / "films").u16string());
  ASSERT_TRUE(WaitFor([&] { return Window().Tree().rowCount() == 2; }) && Settle());
  choose("The same contents");
  choose("The same name");
  EXPECT_EQ(Find(), TGroups({{"films/long.mp4", "films/second.mp4"}})) << "only the chosen folder is searched";
  Pane().Target().setCurrentIndex(1);
  EXPECT_EQ(Find(), kFilms + kTwins + kLetters) << "a file in two open scans is one file";
}

TEST_F(TDuplicatesPaneTest, KeepsToWhatTheScanTakesInAndNeedsADisk) {
  ASSERT_TRUE(ScanData());
  Window().GoTo(QString::fromStdU16String((fData.Path() / "backup").u16string()));
  ASSERT_TRUE(WaitFor([&] { return Window().Chosen().fPath == (fData.Path() / "backup").u16string(); }));
  Action("leaveOut").trigger();
  ASSERT_TRUE(WaitFor([&] { return Window().Session().Jobs().empty(); }));
  Window().TreeView().setCurrentIndex(Window().Tree().index(0, 0));
  EXPECT_EQ(Find(), TGroups({{"films/long.mp4", "films/second.mp4"}}) + kTwins + kLetters);
  Window().ExportAs(0, QString::fromStdU16String(fSettings.File("scan.xml")));
  ASSERT_TRUE(WaitFor([&] { return Window().Session().Jobs().empty(); }));
  Window().Session().Close(Window().Tree().RootAt(Window().Tree().index(0, 0)));
  Window().Session().OpenScanFile(fSettings.File("scan.xml"));
  ASSERT_TRUE(Settle());
  Find();
  EXPECT_TRUE(Pane().Message().contains("loaded scan")) << Pane().Message().toStdString();
}

// --- files that are held ---------------------------------------------------------------------------------------------

class TEqualFile final : public IStoredFile {
 public:
  explicit TEqualFile(int64_t pSize) : fSize(pSize), fLeft(pSize) {}
  size_t Read(char* pBuffer, size_t pLength) override {
    const auto size = std::min(pLength, static_cast<size_t>(fLeft));
    std::fill_n(pBuffer, size, 'x');
    fLeft -= static_cast<int64_t>(size);
    return size;
  }
  TStoredFileFacts GetFacts() override { return {.fSize = fSize}; }

 private:
  const int64_t fSize;
  int64_t fLeft;
};

// Two files of three bytes, and then two of five, whose reading is held.
struct THeldDuplicates : TDuplicatesPaneTest {
  THeldDuplicates() {
    const auto services = MakeRef<TMemoryServices>();
    for (const char16_t* path : {u"/memory", u"/other"}) {
      services->fStorages[path] = TMemoryStorage::Create(path);
      for (const auto& [name, size] : {std::pair(u"a", 3), std::pair(u"b", 3), std::pair(u"c", 5), std::pair(u"d", 5)})
        services->fStorages[path]->Top().AddFile(name, size);
    }
    services->fOpenFile = [this]() -> std::unique_ptr<IStoredFile> {
      const int opened = ++fOpened;
      if (opened <= 2) return std::make_unique<TEqualFile>(3);
      fGate.load()->Pass();
      if (fFails) throw EOSError(TMemoryStorage::AccessDeniedCode(), "Opening", u"a file");
      return std::make_unique<TEqualFile>(5);
    };
    fStart.fOptions->MaximumThreads = 1;
    fStart.fCreateRoots = [services](std::shared_ptr<const TGlobalOptions> pOptions) {
      return CreateScanRoots(services, std::move(pOptions));
    };
  }
  // Returns when the first two are listed while the third one is held.
  bool Hold(TGate& pGate) {
    fOpened = 0;
    fGate = &pGate;
    Action("duplicates").trigger();
    Press("Find duplicates");
    return WaitFor([this] { return fOpened == 3 && Model().rowCount() == 1; });
  }
  TRef<IHierarchicalRoot> Root() { return Window().Tree().RootAt(Window().Tree().index(0, 0)); }

  std::atomic<int> fOpened{0};
  std::atomic<bool> fFails{false};
  std::atomic<TGate*> fGate{nullptr};
};

TEST_F(THeldDuplicates, PausesAndStops) {
  TGate gate;
  ASSERT_TRUE(Scan(u"/memory"));
  ASSERT_TRUE(Hold(gate)) << "no group is listed while others are compared";
  EXPECT_TRUE(Pane().Status().contains("checksums")) << Pane().Status().toStdString();
  Press("Pause the search");
  EXPECT_TRUE(WaitFor([&] { return Pane().Status().contains("Paused"); })) << Pane().Status().toStdString();
  gate.Open();
  QTest::qWait(50);
  EXPECT_EQ(fOpened, 3) << "a paused search goes on";
  EXPECT_TRUE(Pane().IsSearching());
  Press("Go on with the search");
  ASSERT_TRUE(IsOver());
  EXPECT_EQ(Model().rowCount(), 2);

  TGate second;
  ASSERT_TRUE(Hold(second));
  Press("Stop the search");
  second.Open();
  ASSERT_TRUE(IsOver());
  EXPECT_EQ(Model().rowCount(), 1) << "what was found does not stay, or the stopped search went on";
  EXPECT_TRUE(Pane().Status().contains("stopped")) << Pane().Status().toStdString();
}

TEST_F(THeldDuplicates, TellsWhatCouldNotBeRead) {
  TGate gate;
  ASSERT_TRUE(Scan(u"/memory"));
  fFails = true;
  ASSERT_TRUE(Hold(gate));
  gate.Open();
  ASSERT_TRUE(IsOver());
  EXPECT_EQ(Model().rowCount(), 1);
  EXPECT_TRUE(Pane().Status().contains("2 could not be read")) << Pane().Status().toStdString();
}

// Each meets a search whose worker hangs in the system.
TEST_F(THeldDuplicates, IsGivenUpAtAnyTime) {
  TGate gates[4];
  ASSERT_TRUE(Scan(u"/memory"));
  ASSERT_TRUE(Hold(gates[0]));
  Action("again").trigger();  // the tree is replaced
  ASSERT_TRUE(Settle());
  ASSERT_TRUE(Hold(gates[1])) << "another search waits for the first one";
  Window().Session().Close(Root());
  EXPECT_EQ(Model().rowCount(), 0);
  EXPECT_FALSE(Pane().IsSearching());
  ASSERT_TRUE(Scan(u"/other"));
  ASSERT_TRUE(Hold(gates[2])) << "nothing is found after a scan was closed";
  Close();
  ASSERT_TRUE(Scan(u"/memory"));
  ASSERT_TRUE(Hold(gates[3])) << "another window waits for the first one";
  Close();
  for (TGate& gate : gates) gate.Open();
  EXPECT_TRUE(LongWork().waitForDone(kLongestWait));
}

}  // namespace
}  // namespace Vantrel::Window
