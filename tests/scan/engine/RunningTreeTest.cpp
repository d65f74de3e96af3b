// Trees that change while other threads read them; several roots shown as one.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

#include "model/roots/Comparison.h"
#include "model/roots/ScanRoots.h"
#include "model/statistics/FileStatistics.h"
#include "platform/text/Text.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/Recount.h"

namespace Vantrel::ScanEngine {
namespace {

using namespace Vantrel::Testing;

TKivFileTime DaysAgo(int64_t pDays) {
  return {TKivFileTime::Now().fTicks - pDays * TKivFileTime::kTicksPerDay + TKivFileTime::kTicksPerDay / 2};
}

// Asks a node for all that it can say. Returns how many of its numbers cannot be.
int ReadNode(IFolderData& pNode) {
  for (uint8_t column = 0; column < static_cast<uint8_t>(TColumn::mdCount); ++column)
    pNode.GetFormattedValue(static_cast<TColumn>(column), {});
  TStatisticsReading reading;
  pNode.ReadStatistics(reading);
  if (const auto users = pNode.GetUserSizeArray()) users->GetKeysSorted(TColumn::mdSize);
  if (const auto extensions = pNode.GetExtensionSizeArray()) extensions->GetEntries();
  if (const auto ages = pNode.GetFileAgeDistribution(TDateType::dtLastChange)) ages->GetEntries();
  for (const TRef<IHierarchicalElement>& file : pNode.FindFiles()) file->GetFullPath();
  pNode.GetParentFolder();
  const TSizeValues values = pNode.GetValues();
  return (values.fSize < 0) + (values.fFiles < 0) + (values.fFolders < 0);
}

int ReadRoot(TCustomRoot& pRoot) {
  int impossible = 0;
  const TScanProgress progress = pRoot.GetProgress();
  impossible += (progress.fFiles < 0) + (progress.fFolders < 0) + (progress.fBytes < 0);
  pRoot.GetState();
  pRoot.GetErrors();
  pRoot.GetExclusions();
  pRoot.GetScanFilter();
  pRoot.GetStorageInformation();
  pRoot.GetScanConfiguration()->GetScanTimeStamp();
  if (const TRef<ITopSizeList> list = pRoot.GetTopSizeList())
    for (const TTopSizeEntry& entry : list->GetSnapshot()) entry.fParentFolder->GetFullPath();
  const TRef<IComparison> comparison = pRoot.GetComparison();
  std::vector<TRef<IFolderData>> nodes;
  if (TRef<IFolderData> top = pRoot.GetTopFolder()) nodes.push_back(std::move(top));
  for (size_t i = 0; i < nodes.size(); ++i) {
    const TRef<IFolderData> node = nodes[i];
    impossible += ReadNode(*node);
    for (TRef<IFolderData>& child : node->FindSubFolders()) nodes.push_back(std::move(child));
    if (comparison)
      for (const TRef<IFolderData>& gone : comparison->FindGone(*node)) impossible += ReadNode(*gone);
  }
  return impossible;
}

void FillFolder(TMemoryEntry& pFolder, int pDepth, int64_t& pNumber) {
  for (int i = 0; i < 3; ++i) {
    ++pNumber;
    TMemoryEntry& file = pFolder.AddFile(FromUtf8(std::to_string(pNumber)) + u".txt", pNumber * 100);
    file.fOwner = i == 0 ? u"anna" : u"bert";
    file.fOwnerId = static_cast<uint64_t>(i == 0 ? 1 : 2);
  }
  for (int i = 0; i < 3 && pDepth > 0; ++i)
    FillFolder(pFolder.AddFolder(FromUtf8("folder " + std::to_string(++pNumber))), pDepth - 1, pNumber);
}

// The thread sanitizer finds what races here; without it the test finds totals that cannot be, and crashes.
TEST(RunningTree, IsReadByTwoThreadsBesideScansRefreshesAndRemovals) {
  TMemoryRoot scanned;
  scanned.fOptions->MaximumThreads = 4;
  scanned.fOptions->CollectOwners = true;
  scanned.fOptions->FileAgesDateType = TDateType::dtLastChange;
  scanned.fOptions->NumberOfTopFiles = 5;
  int64_t number = 0;
  FillFolder(scanned.Top(), 3, number);
  TMemoryRoot earlier(scanned.fStorage);
  earlier.Scan();
  TCustomRoot& root = scanned.Root();
  std::atomic<bool> end{false};
  std::atomic<int> impossible{0};
  auto read = [&] {
    while (!end) impossible += ReadRoot(root);
  };
  std::thread first(read), second(read);
  for (int round = 0; round < 4; ++round) {
    scanned.Scan();
    root.SetComparison(MakeRef<TComparison>(root, *earlier.fRoot));
    std::vector<TRef<IFolderData>> nodes{root.GetTopFolder()};
    for (size_t i = 0; i < nodes.size() && nodes.size() < 20; ++i)
      for (TRef<IFolderData>& child : nodes[i]->FindSubFolders())
        if (!child->IsFileGroup()) nodes.push_back(std::move(child));
    for (size_t i = 0; i < nodes.size(); ++i) {
      nodes[i]->Refresh(i % 2 == 0);
      ASSERT_TRUE(root.WaitForScan(kForever));
    }
    root.RemoveFolder(*root.GetTopFolder()->FindSubFolders()[0]);
    root.SetComparison(nullptr);
  }
  scanned.Scan();
  end = true;
  first.join();
  second.join();
  EXPECT_EQ(0, impossible);
  TRecountSettings settings;
  settings.fNow = root.GetScanTimeStamp();
  EXPECT_EQ("", Difference(RecountStorage(scanned.Top(), settings), ReadTree(*root.GetTopFolder())));
}

struct TCombinedRoots {
  TCombinedRoots() {
    fOptions->CollectOwners = true;
    fOptions->FileAgesDateType = TDateType::dtLastChange;
    fOptions->FileAges = "1;7;30";
  }
  ~TCombinedRoots() { fRoots->Dispose(); }

  IHierarchicalRoot& Open(const char16_t* pPath) {
    const TRef<IHierarchicalRoot> root = fRoots->CreateRoot(pPath);
    if (!fServices->fStorages[root->GetPath()])
      fServices->fStorages[root->GetPath()] = TMemoryStorage::Create(root->GetPath());
    return *root;
  }
  TMemoryEntry& Top(IHierarchicalRoot& pRoot) { return fServices->fStorages[pRoot.GetPath()]->Top(); }
  static void Scan(IHierarchicalRoot& pRoot) {
    pRoot.Scan();
    ASSERT_TRUE(pRoot.WaitForScan(kForever));
    pRoot.GetScanEngine()->Dispose();  // waits until the end has been told
  }

  TRef<TMemoryServices> fServices = MakeRef<TMemoryServices>();
  std::shared_ptr<TGlobalOptions> fOptions = std::make_shared<TGlobalOptions>();
  TRef<IScanRoots> fRoots = CreateScanRoots(fServices, fOptions);
};

TEST(VirtualRoot, ItsChildrenArePartsOfTheWhole) {
  TCombinedRoots combined;
  IHierarchicalRoot& a = combined.Open(u"/a");
  IHierarchicalRoot& b = combined.Open(u"/b");
  combined.Top(a).AddFolder(u"inner").AddFile(u"f", 100);
  combined.Top(b).AddFile(u"f", 300);
  combined.Scan(a);
  combined.Scan(b);
  const TRef<IFolderData> top = combined.fRoots->GetVirtualRoot()->GetTopFolder();
  EXPECT_EQ((TSizeValues{{400, 400, 2}, 3, compr_no}), top->GetValues());
  const std::vector<TRef<IFolderData>> children = top->FindSubFolders();
  ASSERT_EQ(2u, children.size());
  EXPECT_EQ(b.GetPath(), children[0]->GetFullPath()) << "the larger first";
  auto expect = [&](IFolderData& pNode, IFolderData& pParent, int64_t pDepth, double pOfParent, double pOfRoot) {
    EXPECT_EQ(&pParent, pNode.GetParentFolder().get());
    EXPECT_EQ(TMetaDataValue(pDepth), pNode.GetValue(TColumn::mdDepth));
    EXPECT_EQ(TMetaDataValue(pOfParent), pNode.GetValue(TColumn::mdPercentOfParent));
    EXPECT_EQ(TMetaDataValue(pOfRoot), pNode.GetValue(TColumn::mdPercentOfRoot));
    EXPECT_EQ(TMetaDataValue(pParent.GetFullPath()), pNode.GetValue(TColumn::mdParentPath));
  };
  expect(*children[0], *top, 1, 0.75, 0.75);
  expect(*children[1], *top, 1, 0.25, 0.25);
  const TRef<IFolderData> inner = children[1]->FindSubFolders()[0];
  expect(*inner, *children[1], 2, 1.0, 0.25);
  a.SetComparison(MakeRef<TComparison>(a, b));  // of 300 bytes and no folder
  EXPECT_EQ(TMetaDataValue(int64_t{-200}), children[1]->GetValue(TColumn::mdSizeChange));
  EXPECT_EQ(TMetaDataValue(u"new"), inner->GetValue(TColumn::mdChangeState));
  EXPECT_TRUE(inner->Refresh(true)) << "what is done to the view is done to the folder";
  EXPECT_TRUE(a.WaitForScan(kForever));
}

// Lists of intervals differ when the options changed between the scans. Worked out by hand: of 1;7;30 and 7;365 only 7
// is a bound of both, and the last interval of each is open-ended.
TEST(VirtualRoot, StatisticsOfAllRootsOrNone) {
  TCombinedRoots combined;
  IHierarchicalRoot& a = combined.Open(u"/a");
  IHierarchicalRoot& b = combined.Open(u"/b");
  auto add = [&](IHierarchicalRoot& pRoot, const char16_t* pName, int64_t pSize, int64_t pDays) {
    TMemoryEntry& file = combined.Top(pRoot).AddFile(pName, pSize);
    file.fValues.fLastChangeDate = DaysAgo(pDays);
    file.fOwner = u"anna";
    file.fOwnerId = 1;
  };
  add(a, u"1", 1, 1);
  add(a, u"5", 2, 5);
  add(a, u"20", 4, 20);
  add(a, u"40", 8, 40);
  add(b, u"6", 16, 6);
  add(b, u"300", 32, 300);
  add(b, u"400", 64, 400);
  combined.Scan(a);
  combined.fOptions->FileAges = "7;365";
  combined.Scan(b);
  const TRef<IHierarchicalRoot> all = combined.fRoots->GetVirtualRoot();
  const TRef<IFolderData> top = all->GetTopFolder();
  const TRef<IFileAgeDistribution> ages = top->GetFileAgeDistribution(TDateType::dtLastChange);
  EXPECT_EQ(u"7;365", ages->GetFileAges()->GetAsString());
  EXPECT_EQ(1 + 2 + 16, ages->GetRecord(0).fSize);
  EXPECT_EQ(4 + 8 + 32 + 64, ages->GetRecord(1).fSize);
  TBasicSizeValues anna;
  EXPECT_TRUE(top->GetUserSizeArray()->Find(u"anna", anna));
  EXPECT_EQ(127, anna.fSize);

  combined.fOptions->CollectOwners = false;
  combined.fOptions->FileAgesDateType = TDateType::dtNone;
  combined.Scan(b);
  EXPECT_EQ(nullptr, top->GetUserSizeArray());
  EXPECT_EQ(nullptr, top->GetFileAgeDistribution(TDateType::dtLastChange));
  EXPECT_NE(nullptr, top->GetExtensionSizeArray());
  EXPECT_FALSE(all->GetScanConfiguration()->GetDoUsersStatistics());
  EXPECT_EQ(TDateType::dtNone, all->GetScanConfiguration()->GetFileAgesDateType());
}

TEST(VirtualRoot, TellsStateAndChangesOfAllRoots) {
  TCombinedRoots combined;
  IHierarchicalRoot& a = combined.Open(u"/a");
  combined.Top(a).AddFolder(u"inner").AddFile(u"f", 100);
  const TRef<IHierarchicalRoot> all = combined.fRoots->GetVirtualRoot();
  EXPECT_EQ(0u, all->GetState());
  const TRef<ITreeSubscription> subscription = all->Subscribe();
  EXPECT_EQ(rcTreeReplaced, subscription->Take().fRoot);
  IHierarchicalRoot& b = combined.Open(u"/b");  // comes later
  EXPECT_EQ(rcTreeReplaced, subscription->Take().fRoot);
  combined.Scan(a);
  EXPECT_EQ(0u, all->GetState()) << "one root has no tree yet";
  TGate gate;
  combined.Top(b).fGate = &gate;
  b.Scan();
  EXPECT_EQ(rsScanning, all->GetState());
  gate.Open();
  ASSERT_TRUE(b.WaitForScan(kForever));
  b.GetScanEngine()->Dispose();
  EXPECT_EQ(rsFinished, all->GetState());
  const TTreeChanges changes = subscription->Take();
  EXPECT_EQ(rcTreeReplaced | rcScanStarted | rcScanEnded, changes.fRoot);
  const TRef<IFolderData> top = all->GetTopFolder();
  ASSERT_EQ(4u, changes.fNodes.size()) << "the whole, both top folders, and the folder in one of them";
  EXPECT_EQ(top, changes.fNodes[0].fNode);
  all->Dispose();
  EXPECT_FALSE(all->RefreshFolder(*top, true));
  EXPECT_NO_THROW(all->Scan());
  EXPECT_EQ(0u, a.GetState() & rsScanning);
}

}  // namespace
}  // namespace Vantrel::ScanEngine
