// The search pane in the window, over real folders.

#include <gtest/gtest.h>

#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QTabWidget>
#include <algorithm>

#include "export/xml/OptionsFile.h"
#include "tests/window/WindowHarness.h"
#include "window/models/ListModel.h"
#include "window/panes/EntriesView.h"
#include "window/panes/QueryEdit.h"
#include "window/panes/SearchPane.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {
namespace {

struct TSearchPaneTest : ::testing::Test, TWindowHarness {
  TSearchPaneTest() {
    std::filesystem::create_directories(fData.Path() / "films");
    std::filesystem::create_directories(fData.Path() / "papers" / "old");
    fData.Put("films/long.mp4", std::string(3000, 'x'));
    fData.Put("films/short.mp4", std::string(1000, 'x'));
    fData.Put("papers/old/notes.txt", "the needle is here");
    fData.Put("papers/letter.txt", "nothing");
  }
  ~TSearchPaneTest() override { Close(); }

  TSearchPane& Pane() { return Window().Search(); }
  bool ScanData() { return Scan(fData.Path().u16string()); }
  // Types a query as a user does. What is found, name by name.
  QStringList Find(const char* pQuery) {
    Action("search").trigger();
    Pane().Query().clear();
    const QString query = QString::fromUtf8(pQuery);
    if (std::all_of(query.begin(), query.end(), [](QChar pChar) { return pChar.unicode() < 128; }))
      QTest::keyClicks(&Pane().Query(), query);
    else
      Pane().Query().insert(query);  // Qt Test has no such keys
    QTest::keyClick(&Pane().Query(), Qt::Key_Return);
    EXPECT_TRUE(WaitFor([&] { return !Pane().IsSearching(); })) << pQuery;
    return Names();
  }
  QStringList Names() {
    QStringList names;
    for (int row = 0; row < Pane().Model().rowCount(); ++row) names << Pane().Model().index(row, 0).data().toString();
    return names;
  }

  Testing::TTemporaryFolder fData;
};

TEST_F(TSearchPaneTest, FindsInTheTreeSortsExportsAndLeadsToThePlace) {
  EXPECT_EQ(Find("ext:mp4"), QStringList());
  EXPECT_TRUE(Pane().Message().contains("Nothing is scanned")) << Pane().Message().toStdString();
  ASSERT_TRUE(ScanData());
  EXPECT_EQ(Find("ext:mp4"), QStringList({"long.mp4", "short.mp4"})) << "the largest first";
  QTest::mouseClick(Pane().Table().header()->viewport(), Qt::LeftButton, {}, QPoint(20, 5));
  Pane().Table().sortByColumn(0, Qt::DescendingOrder);
  ASSERT_TRUE(WaitFor([&] {
    return Names() == QStringList({"short.mp4", "long.mp4"});
  })) << Names().join(u' ').toStdString();
  Pane().ExportTo(QString::fromStdU16String(fSettings.File("found.paths.txt")));
  ASSERT_TRUE(WaitFor([&] { return std::filesystem::exists(fSettings.Path() / "found.paths.txt"); }));
  const std::string folder = fData.Path().string() + "/films/";
  EXPECT_EQ(fSettings.Get("found.paths.txt"), folder + "short.mp4\n" + folder + "long.mp4\n");
  Pane().Table().setCurrentIndex(Pane().Model().index(1, 0));
  QTest::keyClick(&Pane().Table(), Qt::Key_Return);
  EXPECT_TRUE(WaitFor([&] { return Window().TreeView().currentIndex().data().toString() == "long.mp4"; }));
  EXPECT_EQ(Find("content:needle"), QStringList({"notes.txt"})) << "the files of a live scan can be read";
  EXPECT_EQ(Find("letter"), QStringList({"letter.txt"}));
  Window().Session().Close(Window().Tree().RootAt(Window().Tree().index(0, 0)));
  EXPECT_EQ(Names(), QStringList()) << "rows lead to a tree that is closed";
}

TEST_F(TSearchPaneTest, FindsOnTheDiskWhatTheTreeLacks) {
  ASSERT_TRUE(ScanData());
  fData.Put("films/new.mp4", "x");
  EXPECT_EQ(Find("ext:mp4"), QStringList({"long.mp4", "short.mp4"}));
  Pane().Target().setCurrentIndex(1);
  EXPECT_EQ(Find("ext:mp4"), QStringList({"long.mp4", "short.mp4", "new.mp4"}));
  Window().GoTo(QString::fromStdU16String((fData.Path() / "papers").u16string()));
  ASSERT_TRUE(WaitFor([&] { return Window().Chosen().fPath == (fData.Path() / "papers").u16string(); }));
  EXPECT_EQ(Find("ext:mp4"), QStringList()) << "only the chosen folder is searched";
}

TEST_F(TSearchPaneTest, MarksThePlaceOfAnError) {
  ASSERT_TRUE(ScanData());
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"ext:mp4 size:>abc", "abc", "abc"}, {"(ext:mp4", "(", ""}, {"size:", ":", ""}};
  for (const auto& [query, place, text] : cases) {
    EXPECT_EQ(Find(query), QStringList()) << query;
    EXPECT_FALSE(Pane().Message().isEmpty()) << query;
    EXPECT_TRUE(Pane().Message().contains(text)) << Pane().Message().toStdString();
    EXPECT_TRUE(Pane().Query().MarkedText().contains(place))
        << query << ": " << Pane().Query().MarkedText().toStdString();
  }
  QTest::keyClicks(&Pane().Query(), "10MB");
  EXPECT_TRUE(Pane().Message().isEmpty()) << "the message stays although the query has changed";
  EXPECT_EQ(Pane().Query().MarkedText(), QString());
  EXPECT_EQ(Pane().Query().text(), "size:10MB") << "the colours changed the text";
}

TEST_F(TSearchPaneTest, OpensWithTheQueryOfTheCommandLine) {
  fStart.fPaths = {fData.Path().u16string()};
  fStart.fQuery = u"letter";
  fStart.fSearchesAtOnce = true;
  EXPECT_EQ(Window().Panes().currentWidget(), &Pane());
  EXPECT_TRUE(WaitFor([&] { return Names() == QStringList({"letter.txt"}); }));
}

TEST_F(TSearchPaneTest, ObeysTheOptionsOfSearches) {
  fData.Put("papers/cafe\xCC\x81.txt", "accent");  // a letter and an accent
  ASSERT_TRUE(ScanData());
  EXPECT_EQ(Find("caf\xC3\xA9"), QStringList());
  Window().Session().Options().NormalizeUnicode = true;
  EXPECT_EQ(Find("caf\xC3\xA9").size(), 1) << "the accent is a character of its own";
  for (const int target : {0, 1}) {
    Pane().Target().setCurrentIndex(target);
    Window().Session().Options().SearchLimit = 0;
    EXPECT_EQ(Find("ext:txt").size(), 3);
    EXPECT_FALSE(Pane().Status().contains("limit")) << Pane().Status().toStdString();
    Window().Session().Options().SearchLimit = 1;
    EXPECT_EQ(Find("ext:txt").size(), 1) << target;
    EXPECT_TRUE(Pane().Status().contains("limit")) << Pane().Status().toStdString();
  }
}

// The names of the searches that the menu offers before the ready-made ones.
QStringList KeptIn(TSearchPane& pPane) {
  Q_EMIT pPane.Searches().aboutToShow();
  QStringList names;
  for (const QAction* action : pPane.Searches().actions()) {
    if (action->isSeparator()) break;
    names << action->text();
  }
  return names;
}

TEST_F(TSearchPaneTest, KeepsSearchesByName) {
  ASSERT_TRUE(ScanData());
  EXPECT_EQ(KeptIn(Pane()), QStringList());
  Pane().SetQuery(u"ext:mp4");
  Pane().Keep("Films & more");
  Pane().SetQuery(u"ext:txt");
  Pane().Keep("texts");
  Pane().Keep("largest");
  EXPECT_TRUE(Pane().Message().contains("ready-made")) << "a kept search hides a ready-made one";
  Close();
  fStart.fOptions = std::make_shared<TGlobalOptions>();  // another run
  Options::LoadOptionsFile(fStart.fUserOptionsFile, *fStart.fOptions);
  ASSERT_TRUE(ScanData());
  ASSERT_EQ(KeptIn(Pane()), QStringList({"Films && more", "texts"}));
  Action("search").trigger();
  Pane().Searches().actions().front()->trigger();
  EXPECT_TRUE(WaitFor([&] { return Names() == QStringList({"long.mp4", "short.mp4"}); }));
  Pane().Forget("texts");
  EXPECT_EQ(KeptIn(Pane()), QStringList({"Films && more"}));
  TGlobalOptions kept;
  Options::LoadOptionsFile(fStart.fUserOptionsFile, kept);
  EXPECT_EQ(kept.KeptSearches.size(), 1u) << "the file still has it";
}

// Stop, another search and the end of the window each meet a search that runs.
TEST_F(TSearchPaneTest, IsGivenUpAtAnyTime) {
  ASSERT_TRUE(ScanData());
  Pane().Target().setCurrentIndex(1);
  Pane().SetQuery(u"content:needle");
  for (int i = 0; i < 20; ++i) {
    Pane().Start();
    if (i % 3 == 0) Pane().Stop();
    if (i % 4 == 0) QTest::qWait(1);
  }
  EXPECT_EQ(Find("letter"), QStringList({"letter.txt"}));
  Pane().Start();
}

}  // namespace
}  // namespace Vantrel::Window
