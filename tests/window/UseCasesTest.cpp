// What users do with the window, by clicks and keys, on a made folder.

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTabWidget>
#include <QTimer>
#include <fstream>

#include "export/xml/OptionsFile.h"
#include "tests/support/MemoryServices.h"
#include "tests/window/WindowHarness.h"
#include "window/dialogs/OptionEditor.h"
#include "window/dialogs/OptionsDialog.h"
#include "window/main/ExportKinds.h"
#include "window/main/StartPage.h"
#include "window/models/ContentsModel.h"
#include "window/models/ListModel.h"
#include "window/panes/ContentsPane.h"
#include "window/panes/EntriesView.h"
#include "window/panes/ListPane.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {
namespace {

using namespace Testing;

struct TUseCases : ::testing::Test, TWindowHarness {
  TUseCases() {
    std::filesystem::create_directories(fData.Path() / "films");
    std::filesystem::create_directories(fData.Path() / "papers" / "old");
    fData.Put("films/long.mp4", std::string(300'000, 'x'));
    fData.Put("films/short.mp4", std::string(100'000, 'x'));
    fData.Put("papers/letter.txt", std::string(5'000, 'x'));
    fData.Put("papers/old/bill.txt", std::string(2'000, 'x'));
    fData.Put("alone.bin", std::string(50'000, 'x'));
  }
  ~TUseCases() override { Close(); }

  std::u16string DataPath() const { return fData.Path().u16string(); }
  bool ScanData() { return Scan(DataPath()); }
  TTreeModel& Tree() { return Window().Tree(); }
  QModelIndex Root() { return Tree().index(0, 0); }
  QStringList Names(const QModelIndex& pParent) {
    QStringList names;
    for (int row = 0; row < pParent.model()->rowCount(pParent); ++row)
      names << pParent.model()->index(row, 0, pParent).data().toString();
    return names;
  }
  TListPane& ListPane(const char* pName) {
    auto* pane = Window().findChild<TListPane*>(QString::fromLatin1(pName));
    Window().Panes().setCurrentWidget(pane);
    EXPECT_TRUE(WaitFor([pane] { return !pane->IsFilling(); })) << pName;
    return *pane;
  }
  bool GoTo(const char* pRelative) {
    Window().GoTo(QString::fromStdU16String(DataPath()) + pRelative);
    const std::u16string path = DataPath() + QString(pRelative).toStdU16String();
    return WaitFor([&] { return Window().Chosen().fPath == path; });
  }
  // What a message box says, if one is there.
  std::string Complaint() {
    const auto* box = Window().findChild<QMessageBox*>("failure");
    return box ? box->text().toStdString() : "no message";
  }
  std::string Read(const char* pName) { return fOut.Get(pName); }
  bool Written(const char* pName) {
    return WaitFor([&] { return std::filesystem::exists(fOut.Path() / pName) && Window().Session().Jobs().empty(); });
  }

  TTemporaryFolder fData;
  TTemporaryFolder fOut;
};

TEST_F(TUseCases, ScansATypedPathAndShowsItSorted) {
  QLineEdit& field = Window().StartPage().PathField();
  field.setText(QString::fromStdU16String(DataPath()));
  QTest::keyClick(&field, Qt::Key_Return);
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Names(Root()), QStringList({"films", "[Files]", "papers"}));
  EXPECT_EQ(Root().siblingAtColumn(EntryColumnOf(TColumn::mdFiles)).data().toString(), "5");
  // By name, with a click on the header.
  QHeaderView& header = *Window().TreeView().header();
  QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(header.sectionViewportPosition(ecName) + 20, 5));
  ASSERT_TRUE(WaitFor([&] {
                return Names(Root()) == QStringList({"[Files]", "films", "papers"});
              }) ||
              Names(Root()) == QStringList({"papers", "films", "[Files]"}));
}

TEST_F(TUseCases, MovesThroughTheTreeByKeys) {
  ASSERT_TRUE(ScanData());
  TEntriesView& view = Window().TreeView();
  view.setFocus();
  QTest::keyClick(&view, Qt::Key_Down);
  EXPECT_EQ(view.currentIndex().data().toString(), "films");
  QTest::keyClick(&view, Qt::Key_Right);
  ASSERT_TRUE(WaitFor([&] { return Tree().rowCount(view.currentIndex()) == 2; }));
  QTest::keyClick(&view, Qt::Key_Down);
  EXPECT_EQ(view.currentIndex().data().toString(), "long.mp4");
  EXPECT_TRUE(Window().Chosen().fIsFile);
  QTest::keyClick(&view, Qt::Key_Backspace);
  EXPECT_EQ(view.currentIndex().data().toString(), "films");
  QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
  EXPECT_TRUE(QApplication::clipboard()->text().contains("films\t390.6 KB")) << "400,000 bytes are 390.6 KB";
}

TEST_F(TUseCases, FindsTheLargestFileAndGoesToIt) {
  ASSERT_TRUE(ScanData());
  TListPane& largest = ListPane("largest");
  ASSERT_EQ(largest.Model().rowCount(), 5);
  EXPECT_EQ(largest.Model().index(0, 0).data().toString(), "long.mp4");
  largest.Table().setCurrentIndex(largest.Model().index(0, 0));
  QTest::keyClick(&largest.Table(), Qt::Key_Return);
  ASSERT_TRUE(WaitFor([&] { return Window().TreeView().currentIndex().data().toString() == "long.mp4"; }));
  // The lists are those of the chosen folder now.
  ASSERT_TRUE(GoTo("/papers"));
  TListPane& types = ListPane("extensions");
  ASSERT_TRUE(WaitFor([&] { return types.Model().rowCount() == 1; }));
  EXPECT_EQ(types.Model().index(0, 0).data().toString(), ".txt");
}

TEST_F(TUseCases, ShowsWhatGrewSinceAnOlderScan) {
  ASSERT_TRUE(ScanData());
  Window().ExportAs(0, QString::fromStdU16String(fOut.File("old.xml")));
  ASSERT_TRUE(Written("old.xml"));
  fData.Put("papers/thesis.txt", std::string(1'000'000, 'x'));
  std::filesystem::remove_all(fData.Path() / "papers" / "old");
  Action("again").trigger();
  ASSERT_TRUE(WaitFor([&] {
    return Root().siblingAtColumn(EntryColumnOf(TColumn::mdFiles)).data().toString() == "5" &&
           Names(Root()).value(0) == "papers";
  }));
  ASSERT_TRUE(Settle());
  QTimer::singleShot(0, [] {  // the question is modal; it may come a little later
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer] {
      QWidget* question = QApplication::activeModalWidget();
      if (!question || question->objectName() != "compareQuestion") return;
      timer->deleteLater();
      question->findChild<QAbstractButton*>("both")->click();
    });
    timer->start(20);
  });
  Window().Session().Compare(Tree().RootAt(Root()), fOut.File("old.xml"));
  const int change = EntryColumnOf(TColumn::mdSizeChange);
  ASSERT_TRUE(WaitFor([&] { return !Window().TreeView().isColumnHidden(change); })) << Complaint();
  ASSERT_TRUE(GoTo("/papers"));
  const QModelIndex papers = Window().TreeView().currentIndex();
  // 1,000,000 came and 2,000 went: 998,000 bytes are 974.6 KB.
  EXPECT_TRUE(papers.siblingAtColumn(change).data().toString().contains("974.6 KB"));
  EXPECT_TRUE(papers.data().toString().startsWith("[+974.6 KB]"));
  Window().TreeView().expand(papers);
  ASSERT_TRUE(WaitFor([&] { return Tree().rowCount(papers) > 0; }));
  bool showsGone = false;
  for (int row = 0; row < Tree().rowCount(papers); ++row)
    showsGone |= Tree().KindAt(Tree().index(row, 0, papers)) == TEntryKind::ekGone;
  EXPECT_TRUE(showsGone) << "the folder that has gone has no row";
  Action("endCompare").trigger();
  ASSERT_TRUE(WaitFor([&] { return papers.data().toString() == "papers"; }));
}

TEST_F(TUseCases, ExportsInEveryFormat) {
  ASSERT_TRUE(ScanData());
  for (size_t kind = 0; kind < ExportKinds().size(); ++kind) {
    if (ExportKinds()[kind].fPicture == CommandLine::TPictureSubject::psHistory) continue;  // none is recorded
    const std::string name = "file" + std::to_string(kind) + '.' + ExportKinds()[kind].fSuffix.toStdString();
    Window().ExportAs(static_cast<int>(kind), QString::fromStdU16String(fOut.File(name)));
    ASSERT_TRUE(Written(name.c_str())) << name;
    ASSERT_FALSE(Read(name.c_str()).empty()) << name;
  }
  const std::string csv = Read("file2.csv");
  EXPECT_NE(csv.find("films"), std::string::npos) << csv;
  Window().Session().Close(Tree().RootAt(Root()));
  EXPECT_EQ(Tree().rowCount(), 0);
  Window().Session().OpenScanFile(fOut.File("file0.xml"));
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Names(Root()), QStringList({"films", "[Files]", "papers"})) << "the saved scan shows another tree";
  EXPECT_FALSE(Action("refresh").isEnabled()) << "a loaded scan has nothing to refresh";
}

TEST_F(TUseCases, ExportsAListAsCSV) {
  ASSERT_TRUE(ScanData());
  TListPane& types = ListPane("extensions");
  types.ExportTo(QString::fromStdU16String(fOut.File("list.csv")));
  ASSERT_TRUE(Written("list.csv"));
  EXPECT_NE(Read("list.csv").find(".mp4"), std::string::npos);
}

TEST_F(TUseCases, KeepsOptionsAndLayout) {
  TOptionsDialog dialog(Window().Session().Options(), false);
  EXPECT_FALSE(dialog.EditorOf("MaximumThreads")->SetText("0")) << "out of range";
  ASSERT_TRUE(dialog.EditorOf("MaximumThreads")->SetText("3"));
  EXPECT_TRUE(dialog.EditorOf("MaximumThreads")->Differs());
  ASSERT_TRUE(dialog.EditorOf("KeepFiles")->SetText("false"));
  dialog.EditorOf("KeepFiles")->Reset();
  EXPECT_FALSE(dialog.EditorOf("KeepFiles")->Differs());
  Window().Session().Options().ChartItems = 5;  // as if the command line had set it
  TGlobalOptions edited = dialog.Edited();
  edited.ChartItems = 5;
  Window().Session().SetOptions(edited);
  TGlobalOptions kept;
  Options::LoadOptionsFile(fStart.fUserOptionsFile, kept);
  EXPECT_EQ(kept.MaximumThreads, 3);
  EXPECT_EQ(kept.ChartItems, 12) << "what the command line set for one run went into the user's file";

  Window().TreeView().ShowColumn(TColumn::mdOwner, true);
  Window().Panes().setCurrentIndex(3);
  Window().resize(1111, 777);
  Close();
  EXPECT_EQ(Window().size(), QSize(1111, 777));
  EXPECT_TRUE(Window().TreeView().ShowsColumn(TColumn::mdOwner));
  EXPECT_EQ(Window().Panes().currentIndex(), 3);
}

TEST_F(TUseCases, ChangesNothingOfTheSettingsWhenReadOnly) {
  fStart.fReadOnly = true;
  TGlobalOptions edited = Window().Session().Options();
  edited.MaximumThreads = 3;
  Window().Session().SetOptions(edited);
  ASSERT_TRUE(ScanData());
  Window().resize(1111, 777);
  Close();
  EXPECT_EQ(fSettings.Count(), 0u);
  Window();
}

TEST_F(TUseCases, LeavesAFolderOutOfScans) {
  ASSERT_TRUE(ScanData());
  ASSERT_TRUE(GoTo("/films"));
  Action("leaveOut").trigger();
  ASSERT_TRUE(WaitFor([&] { return Names(Root()) == QStringList({"[Files]", "papers"}); }));
  Action("again").trigger();
  ASSERT_TRUE(Settle());
  ASSERT_TRUE(WaitFor([&] { return Names(Root()) == QStringList({"[Files]", "papers"}); }));
}

TEST_F(TUseCases, TellsOfAPathThatCannotBeScanned) {
  Window().Session().Scan(DataPath() + u"/missing");
  ASSERT_TRUE(WaitFor([&] { return Window().findChild<QMessageBox*>("failure") != nullptr; }));
  EXPECT_TRUE(Window().findChild<QMessageBox*>("failure")->text().contains("missing"));
}

// Each entry of the menus is triggered. It must change something that a user sees: the window or its dialogs, the
// clipboard, the roots.
TEST_F(TUseCases, EveryMenuEntryDoesSomething) {
  ASSERT_TRUE(ScanData());
  ASSERT_TRUE(GoTo("/papers"));
  for (QMenu* menu : Window().menuBar()->findChildren<QMenu*>()) {
    for (const QAction* action : menu->actions()) {
      if (action->isSeparator() || action->menu()) continue;
      EXPECT_FALSE(action->text().isEmpty());
      EXPECT_FALSE(action->objectName().isEmpty()) << action->text().toStdString();
      // An entry that is connected to nothing is dead.
      const QMetaMethod triggered = QMetaMethod::fromSignal(&QAction::triggered);
      const QMetaMethod toggled = QMetaMethod::fromSignal(&QAction::toggled);
      struct TPeek : QAction {
        using QAction::isSignalConnected;
      };
      const auto* peek = static_cast<const TPeek*>(action);
      EXPECT_TRUE(peek->isSignalConnected(triggered) || peek->isSignalConnected(toggled))
          << action->text().toStdString();
    }
  }
  Action("copyPath").trigger();
  EXPECT_EQ(QApplication::clipboard()->text().toStdU16String(), DataPath() + u"/papers");
  Action("properties").trigger();
  EXPECT_TRUE(WaitFor([&] { return Window().findChild<QDialog*>() != nullptr; }));
  Action("scanItem").trigger();
  ASSERT_TRUE(WaitFor([&] { return Tree().rowCount() == 2; }));
  ASSERT_TRUE(Settle());
  Action("close").trigger();
  EXPECT_EQ(Tree().rowCount(), 1);
  const QString before = Tree().headerData(ecFigure, Qt::Horizontal, Qt::DisplayRole).toString();
  Action("figure2").trigger();
  EXPECT_NE(Tree().headerData(ecFigure, Qt::Horizontal, Qt::DisplayRole).toString(), before);
  Action("unit0").trigger();
  EXPECT_TRUE(Root().siblingAtColumn(EntryColumnOf(TColumn::mdSize)).data().toString().contains("457,000"));
  Action("start").trigger();
  EXPECT_TRUE(Window().StartPage().isVisible());
}

// A target that hangs: the window goes on, Stop works, and closing does not wait for ever.
TEST_F(TUseCases, LivesWithATargetThatHangs) {
  TGate gate;
  const auto services = MakeRef<TMemoryServices>();
  services->fStorages[u"/memory"] = TMemoryStorage::Create();
  TMemoryEntry& folder = services->fStorages[u"/memory"]->Top().AddFolder(u"hangs");
  folder.AddFile(u"f", 1);
  folder.fGate = &gate;
  services->fStorages[u"/memory"]->Top().AddFile(u"seen", 7);
  fStart.fCreateRoots = [services](std::shared_ptr<const TGlobalOptions> pOptions) {
    return CreateScanRoots(services, std::move(pOptions));
  };
  Window().Session().Scan(u"/memory");
  gate.WaitUntilReached();
  ASSERT_TRUE(WaitFor([&] { return Action("stop").isEnabled() && Names(Root()).contains("hangs"); }));
  Window().Panes().setCurrentIndex(4);
  Action("figure1").trigger();
  Action("stop").trigger();
  gate.Open();
  ASSERT_TRUE(WaitFor([&] { return (Tree().RootAt(Root())->GetState() & rsCancelled) != 0; }));
  EXPECT_TRUE(Names(Root()).contains("[Files]") || Names(Root()).contains("seen")) << "what was scanned is gone";
}

TEST_F(TUseCases, ClosesWhileEverythingRuns) {
  Window().Session().Scan(DataPath());
  Window().Session().OpenScanFile(fOut.File("missing.xml"));
  Window().ExportAs(0, QString::fromStdU16String(fOut.File("x.xml")));
  Close();
  Window();
}

}  // namespace
}  // namespace Vantrel::Window
