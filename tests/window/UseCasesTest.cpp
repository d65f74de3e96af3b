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
#include <QPrinter>
#include <QTabWidget>
#include <QTimer>
#include <fstream>
#include <set>

#include "export/xml/OptionsFile.h"
#include "tests/window/UseCases.h"
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
  ASSERT_TRUE(GoTo(""));
  EXPECT_EQ(ListPane("types").Model().index(0, 0).data().toString(), "Videos") << "the largest is not the first";
  // The lists are those of the chosen folder.
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

TEST_F(TUseCases, ExportsOnlyWhatIsExpandedIfToldSo) {
  ASSERT_TRUE(ScanData());
  const QModelIndex papers = Tree().index(2, 0, Root());
  ASSERT_EQ(papers.data().toString(), "papers");
  int count = 0;
  for (const bool isExpandedOnly : {false, true})
    for (const bool isOpen : {false, true}) {
      Window().Session().Options().Media(Exporting::TMediaType::mtCSV).fIncludeExpandedOnly = isExpandedOnly;
      Window().TreeView().setExpanded(papers, isOpen);
      const std::string name = "seen" + std::to_string(++count) + ".csv";
      Window().ExportAs(2, QString::fromStdU16String(fOut.File(name)));
      ASSERT_TRUE(Written(name.c_str()));
      const std::string csv = Read(name.c_str());
      EXPECT_NE(csv.find("papers"), std::string::npos) << csv;
      EXPECT_EQ(csv.find("old,") != std::string::npos, isOpen || !isExpandedOnly) << csv;
    }
}

TEST_F(TUseCases, ExportsAListAsCSV) {
  ASSERT_TRUE(ScanData());
  TListPane& types = ListPane("extensions");
  types.ExportTo(QString::fromStdU16String(fOut.File("list.csv")));
  ASSERT_TRUE(Written("list.csv"));
  EXPECT_NE(Read("list.csv").find(".mp4"), std::string::npos);
}

// As PDF, whose pages can be counted. Every pane that shows something can be printed.
TEST_F(TUseCases, PrintsWhatIsShown) {
  for (int i = 0; i < 150; ++i) fData.Put("papers/p" + std::to_string(i), std::string(1, 'x'));
  ASSERT_TRUE(ScanData());
  ASSERT_TRUE(GoTo("/papers"));
  for (int i = 0; i < Window().Panes().count(); ++i) {
    Window().Panes().setCurrentIndex(i);
    const auto& pane = *qobject_cast<TPane*>(Window().Panes().widget(i));
    const std::string name = pane.objectName().toStdString();
    if (std::set<std::string>{"owners", "ages", "history", "errors", "search", "duplicates"}.contains(name)) {
      EXPECT_TRUE(pane.Printable().IsEmpty()) << name;
      continue;
    }
    ASSERT_TRUE(WaitFor([&] { return !pane.Printable().IsEmpty(); })) << name;
    ASSERT_TRUE(WaitFor([&] { return name != "contents" || pane.Printable().fTable.fRows.size() == 152; }));
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setOutputFileName(QString::fromStdU16String(fOut.File(name + ".pdf")));
    ASSERT_TRUE(Print(pane.Printable(), printer)) << name;
    const std::string pdf = Read((name + ".pdf").c_str());
    size_t pages = 0;
    for (size_t at = 0; (at = pdf.find("/Type /Page\n", at)) != std::string::npos; ++at) ++pages;
    // Some 60 rows fit on a page.
    EXPECT_EQ(pages > 1, name == "contents" || name == "largest") << name << ": " << pages;
    EXPECT_GE(pages, 1u) << name;
  }
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

  ASSERT_TRUE(ScanData());
  ListPane("extensions").Table().setColumnWidth(1, 234);
  ListPane("extensions").Table().setColumnHidden(2, true);
  Window().TreeView().ShowColumn(TColumn::mdOwner, true);
  Window().Panes().setCurrentIndex(3);
  Window().resize(1111, 777);
  Close();
  EXPECT_EQ(Window().size(), QSize(1111, 777));
  EXPECT_TRUE(Window().TreeView().ShowsColumn(TColumn::mdOwner));
  EXPECT_EQ(Window().Panes().currentIndex(), 3);
  ASSERT_TRUE(ScanData());
  EXPECT_EQ(ListPane("extensions").Table().columnWidth(1), 234) << "the width of a list's column is forgotten";
  EXPECT_TRUE(ListPane("extensions").Table().isColumnHidden(2));
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

}  // namespace
}  // namespace Vantrel::Window
