// The tree's model against a slow reference, through changes, and with Qt's own tester of models.

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>
#include <algorithm>

#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"
#include "window/models/ShownText.h"
#include "window/models/TreeModel.h"

namespace Vantrel::Window {
namespace {

using namespace Testing;

constexpr int kPatience = 60'000;  // milliseconds; only there to end a hang

// Lets the model take what has changed, until three times in a row nothing had to be listed again. Each call of Poll
// begins to take anew, so the end of that is waited for before the next one.
void Settle(TTreeModel& pModel) {
  for (int quiet = 0; quiet < 3; ++quiet) {
    pModel.Poll();
    for (; pModel.IsTaking() || pModel.IsFetching(); QTest::qWait(1))
      if (pModel.IsFetching()) quiet = -1;
  }
}

// Opens every row that can be opened.
void OpenAll(TTreeModel& pModel, QTreeView& pView) {
  for (size_t rows = 0; rows != pModel.CountRows();) {
    rows = pModel.CountRows();
    pView.expandAll();
    Settle(pModel);
  }
}

// What the model should hold beneath a folder, told by asking the tree itself: a line for each row.
void ReferenceBeneath(IFolderData& pFolder, const QString& pIndent, QStringList& pLines) {
  std::vector<std::pair<std::pair<int64_t, std::u16string>, TRef<IFolderData>>> rows;
  for (const TRef<IFolderData>& child : pFolder.FindSubFolders())
    rows.push_back({{-child->GetSize(), std::u16string(child->GetObjectName())}, child});
  const bool hasFolders = !rows.empty();
  if (const TRef<const TFileTable> files = pFolder.GetFileTable(); files && !hasFolders)
    for (size_t i = 0; i < files->Count(); ++i)
      rows.push_back({{-(*files)[i].fSize, std::u16string(files->NameAt(i))}, nullptr});
  std::sort(rows.begin(), rows.end(), [](const auto& pA, const auto& pB) { return pA.first < pB.first; });
  for (const auto& [key, folder] : rows) {
    pLines << QStringLiteral("%1%2 %3").arg(pIndent, QString::fromStdU16String(key.second)).arg(-key.first);
    if (folder) ReferenceBeneath(*folder, pIndent + QStringLiteral("  "), pLines);
  }
}

void ShownBeneath(const QAbstractItemModel& pModel, const QModelIndex& pParent, const QString& pIndent,
                  QStringList& pLines) {
  const int size = EntryColumnOf(TColumn::mdSize);
  for (int row = 0; row < pModel.rowCount(pParent); ++row) {
    const QModelIndex index = pModel.index(row, 0, pParent);
    pLines << QStringLiteral("%1%2 %3").arg(pIndent, index.data().toString(),
                                            index.siblingAtColumn(size).data().toString());
    ShownBeneath(pModel, index, pIndent + QStringLiteral("  "), pLines);
  }
}

struct TTreeModelTest : ::testing::Test {
  TTreeModelTest() {
    fModel.SetUnit(TSizeUnit::suBytes);
    fView.setModel(&fModel);
    QObject::connect(&fView, &QTreeView::expanded, &fModel,
                     [this](const QModelIndex& pAt) { fModel.SetOpen(pAt, true); });
    QObject::connect(&fView, &QTreeView::collapsed, &fModel,
                     [this](const QModelIndex& pAt) { fModel.SetOpen(pAt, false); });
  }

  QStringList Shown() {
    QStringList lines;
    ShownBeneath(fModel, fModel.index(0, 0), {}, lines);
    return lines.replaceInStrings(QStringLiteral(" B"), QString()).replaceInStrings(QStringLiteral(","), QString());
  }
  QStringList Reference() {
    QStringList lines;
    ReferenceBeneath(*fMemory.Root().GetTopFolder(), {}, lines);
    return lines;
  }
  QModelIndex Find(const QString& pName, const QModelIndex& pParent) {
    for (int row = 0; row < fModel.rowCount(pParent); ++row)
      if (fModel.index(row, 0, pParent).data().toString() == pName) return fModel.index(row, 0, pParent);
    return {};
  }

  TMemoryRoot fMemory;
  TTreeModel fModel;
  QAbstractItemModelTester fTester{&fModel, QAbstractItemModelTester::FailureReportingMode::Fatal};
  QTreeView fView;
};

TEST_F(TTreeModelTest, FollowsSeededChanges) {
  TRandomTree random(7);
  random.Fill(fMemory.Top(), 4);
  fMemory.Scan();
  fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  OpenAll(fModel, fView);
  ASSERT_EQ(Shown(), Reference()) << "after the scan";
  for (int step = 0; step < 30; ++step) {
    random.Change(fMemory.Top());
    ASSERT_TRUE(fMemory.Root().RefreshFolder(*fMemory.Root().GetTopFolder(), true));
    ASSERT_TRUE(fMemory.Root().WaitForScan(kForever));
    OpenAll(fModel, fView);
    ASSERT_EQ(Shown(), Reference()) << "after change " << step;
  }
}

TEST_F(TTreeModelTest, KeepsSelectionAndOpenRowsThroughSortingAndGrowth) {
  fMemory.Top().AddFolder(u"small").AddFile(u"s", 10);
  TMemoryEntry& large = fMemory.Top().AddFolder(u"large");
  large.AddFile(u"a", 1000);
  large.AddFile(u"b", 2000);
  fMemory.Scan();
  const QModelIndex root = fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  OpenAll(fModel, fView);
  fView.setCurrentIndex(Find("a", Find("large", root)));
  fView.collapse(Find("small", root));

  fModel.sort(ecName, Qt::DescendingOrder);
  Settle(fModel);
  EXPECT_EQ(fView.currentIndex().data().toString(), "a");
  EXPECT_EQ(fModel.index(0, 0, root).data().toString(), "small") << "sorted by name, descending";

  fMemory.Top().Find(u"small")->AddFile(u"huge", 1'000'000);
  large.AddFile(u"c", 5);
  fModel.sort(ecFigure, Qt::DescendingOrder);
  for (const char16_t* name : {u"small", u"large"}) {
    TRef<IFolderData> folder;
    for (const TRef<IFolderData>& child : fMemory.Root().GetTopFolder()->FindSubFolders())
      if (child->GetObjectName() == name) folder = child;
    ASSERT_TRUE(fMemory.Root().RefreshFolder(*folder, false));
    ASSERT_TRUE(fMemory.Root().WaitForScan(kForever));
  }
  Settle(fModel);
  EXPECT_EQ(fModel.index(0, 0, root).data().toString(), "small");
  EXPECT_EQ(fView.currentIndex().data().toString(), "a") << "another row is current now";
  EXPECT_TRUE(fView.isExpanded(Find("large", root)));
  EXPECT_FALSE(fView.isExpanded(Find("small", root)));
  EXPECT_EQ(fModel.rowCount(Find("large", root)), 3);
}

// The window chooses the top row of another tree. It must not do so after the user has chosen a row of this one.
TEST_F(TTreeModelTest, TellsOfAnotherTreeOnlyWhenThereIsOne) {
  fMemory.Top().AddFile(u"a", 1000);
  fMemory.Scan();
  int replaced = 0;
  QObject::connect(&fModel, &TTreeModel::RootChanged,
                   [&](const QModelIndex&, int pChanges) { replaced += (pChanges & rcTreeReplaced) != 0; });
  fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  Settle(fModel);
  EXPECT_EQ(replaced, 0) << "the tree was there from the beginning";
  fMemory.Scan();
  Settle(fModel);
  EXPECT_EQ(replaced, 1);
}

// A view that is not laid out yet, as one that is not shown, remembers what is expanded and asks for no children.
TEST_F(TTreeModelTest, ListsWhatIsExpandedBeforeTheViewIsLaidOut) {
  fMemory.Top().AddFolder(u"folder").AddFile(u"f", 1);
  fMemory.Scan();
  const QModelIndex root = fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  fView.expand(root);
  Settle(fModel);
  EXPECT_EQ(fModel.rowCount(root), 1) << "the row is shown expanded and stays empty";
}

TEST_F(TTreeModelTest, ListsTheFirstOfManyFilesAndSumsUpTheOthers) {
  TMemoryEntry& folder = fMemory.Top().AddFolder(u"many");
  constexpr int64_t kFiles = 12'000;
  for (int64_t i = 1; i <= kFiles; ++i) folder.AddFile(FromQString("f" + QString::number(i)), i);
  fMemory.Scan();
  const QModelIndex root = fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  OpenAll(fModel, fView);
  const QModelIndex many = Find("many", root);
  const int first = static_cast<int>(TEntriesModel::kFirstRows);
  ASSERT_EQ(fModel.rowCount(many), first + 1);
  const QPersistentModelIndex more = fModel.index(first, 0, many);
  EXPECT_EQ(fModel.KindAt(more), TEntryKind::ekMore);
  const int64_t others = kFiles - first;
  EXPECT_EQ(more.sibling(first, EntryColumnOf(TColumn::mdSize)).data().toString().remove(',').remove(" B"),
            QString::number(others * (others + 1) / 2));
  fModel.ShowMore(more);
  Settle(fModel);
  EXPECT_EQ(fModel.rowCount(many), 2 * first + 1);

  QSignalSpy found(&fModel, &TTreeModel::Found);
  fModel.GoTo(u"/memory/many/f1");  // the smallest: not among the rows listed so far
  ASSERT_TRUE(found.count() > 0 || found.wait(kPatience));
  EXPECT_EQ(found.first().first().toModelIndex().data().toString(), "f1");
  QSignalSpy missing(&fModel, &TTreeModel::NotFound);
  fModel.GoTo(u"/memory/many/none");
  ASSERT_TRUE(missing.count() > 0 || missing.wait(kPatience));
}

TEST_F(TTreeModelTest, MarksUnreadableBranchesUpToTheTop) {
  fMemory.Top().AddFolder(u"fine").AddFile(u"f", 1);
  fMemory.Top().AddFolder(u"outer").AddFolder(u"denied").FailListing(1, TMemoryStorage::AccessDeniedCode());
  fMemory.Scan();
  const QModelIndex root = fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  OpenAll(fModel, fView);
  EXPECT_TRUE(root.data(erIsIncomplete).toBool());
  EXPECT_TRUE(Find("outer", root).data(erIsIncomplete).toBool());
  EXPECT_TRUE(Find("denied", Find("outer", root)).data(erIsIncomplete).toBool());
  EXPECT_FALSE(Find("fine", root).data(erIsIncomplete).toBool());
}

TEST_F(TTreeModelTest, ShowsNamesHarmlessly) {
  fMemory.Top().AddFile(u"line\nbreak\x1B[31m \u202Egnp.exe", 1);
  fMemory.Scan();
  const QModelIndex root = fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  OpenAll(fModel, fView);
  const QString name = fModel.index(0, 0, root).data().toString();
  EXPECT_EQ(name, QStringLiteral("line\\nbreak\\x1B[31m \\u202Egnp.exe"));
}

TEST_F(TTreeModelTest, LosesItsRootWhileListsAreBeingMade) {
  TRandomTree random(3);
  random.Fill(fMemory.Top(), 4);
  fMemory.Begin();
  fModel.AddRoot(TRef<IHierarchicalRoot>(&fMemory.Root()));
  for (int i = 0; i < 20; ++i) {
    fModel.Poll();
    fView.expandAll();
    fModel.sort(i % EntryColumnCount(), i % 2 == 0 ? Qt::AscendingOrder : Qt::DescendingOrder);
    QTest::qWait(1);
  }
  fModel.RemoveRoot(fMemory.Root());
  fMemory.Root().Dispose();
  QTest::qWait(20);
  EXPECT_EQ(fModel.rowCount(), 0);
}

}  // namespace
}  // namespace Vantrel::Window
