// Scans, refreshes and removals against the recount; threads, cancellation, errors, depth.

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <thread>

#include "model/roots/Comparison.h"
#include "model/roots/ScanRoots.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"
#include "scan/engine/ScanEngine.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"
#include "tests/support/Recount.h"

namespace Vantrel::ScanEngine {
namespace {

using namespace Vantrel::Testing;

struct TScannedStorage : TMemoryRoot {
  explicit TScannedStorage(int pThreads, std::u16string pPath = u"/memory")
      : TMemoryRoot(TMemoryStorage::Create(pPath), pPath) {
    fOptions->MaximumThreads = pThreads;
    fOptions->NumberOfTopFiles = 7;
    fOptions->CollectOwners = true;
    fOptions->FileAgesDateType = TDateType::dtLastChange;
    fOptions->LongPathLength = 45;
    fSettings.fPath = pPath;
  }

  // The clock goes on by so many milliseconds between any two looks at it.
  void SetClock(int64_t pStep) {
    fServices->fPoolSettings.fTickCount = [pStep, tick = std::make_shared<std::atomic<int64_t>>(0)] {
      return *tick += pStep;
    };
  }

  std::string TreeDifferences() {
    fSettings.fNow = fRoot->GetScanTimeStamp();
    fSettings.fLongPathLength = static_cast<size_t>(fOptions->LongPathLength);
    fSettings.fFolderDateBasedOnFilesOnly = fOptions->FolderDateBasedOnFilesOnly;
    return Difference(RecountStorage(Top(), fSettings), ReadTree(*fRoot->GetTopFolder()));
  }
  // With the list of largest files.
  std::string Differences() {
    std::string text = TreeDifferences();
    std::vector<std::pair<int64_t, std::u16string>> listed;
    for (const TTopSizeEntry& entry : fRoot->GetTopSizeList()->GetSnapshot())
      listed.emplace_back(entry.fSize, entry.fParentFolder->GetFullPath() + u"/" + entry.fName);
    const auto expected = LargestFiles(Top(), fSettings, 7);
    for (size_t i = 0; i < std::max(listed.size(), expected.size()); ++i) {
      auto of = [i](const auto& pList) {
        return i < pList.size() ? std::to_string(pList[i].first) + " " + ToUtf8(pList[i].second) : "none";
      };
      if (of(listed) != of(expected)) text += "largest file: " + of(listed) + " for " + of(expected) + "\n";
    }
    return text;
  }

  // All nodes, the top folder first.
  std::vector<TRef<IFolderData>> Nodes() {
    std::vector<TRef<IFolderData>> nodes{fRoot->GetTopFolder()};
    for (size_t i = 0; i < nodes.size(); ++i)
      for (TRef<IFolderData>& child : nodes[i]->FindSubFolders())
        if (!child->IsFileGroup()) nodes.push_back(child);
    return nodes;
  }
  TRef<IFolderData> Node(const std::u16string& pPath) {
    for (TRef<IFolderData>& node : Nodes())
      if (node->GetFullPath() == pPath) return node;
    return nullptr;
  }
  // The storage's entry of a node.
  TMemoryEntry& Entry(IFolderData& pNode) {
    return fStorage->Folder(std::u16string_view(pNode.GetFullPath())
                                .substr(std::min(pNode.GetFullPath().size(), fSettings.fPath.size() + 1)));
  }
  std::string UnfinishedNodes() {
    std::string text;
    for (const TRef<IFolderData>& node : Nodes())
      if ((node->GetFolderState() & (fsScanning | fsRemoving | fsUpdatePending | fsSubFolderScanningFinished)) !=
          fsSubFolderScanningFinished)
        text += ToUtf8(node->GetFullPath()) + " has state " + std::to_string(node->GetFolderState()) + "\n";
    return text;
  }

  TRecountSettings fSettings;
};

TEST(ScanEngine, TotalsEqualTheRecountWithAnyNumberOfThreads) {
  for (uint32_t seed = 1; seed <= 12; ++seed)
    for (int threads : {1, 2, 16}) {
      TScannedStorage scanned(threads);
      if (seed % 2 == 0) scanned.SetClock(1000);  // totals go up for views after every folder
      scanned.fOptions->FolderDateBasedOnFilesOnly = seed % 3 == 0;
      TRandomTree random(seed);
      random.SetDates(scanned.Top());
      random.Fill(scanned.Top(), 5);
      scanned.Scan();
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", threads " << threads);
      EXPECT_EQ("", scanned.Differences());
      EXPECT_EQ("", scanned.UnfinishedNodes());
      EXPECT_TRUE(scanned.fRoot->GetErrors().empty());
      EXPECT_EQ(rsFinished, scanned.fRoot->GetState());
      const TScanProgress progress = scanned.fRoot->GetProgress();
      const TSizeValues total = scanned.fRoot->GetTopFolder()->GetValues();
      EXPECT_EQ(total.fFiles, progress.fFiles);
      EXPECT_EQ(total.fFolders, progress.fFolders);
      EXPECT_EQ(total.fSize, progress.fBytes);
    }
}

// After any sequence of changes, each looked at by a refresh of the right kind, the tree is that of a fresh scan.
TEST(ScanEngine, RefreshesResetsAndRemovalsLeaveTheTreeOfAFreshScan) {
  for (uint32_t seed = 1; seed <= 16; ++seed) {
    TScannedStorage scanned(seed % 2 == 0 ? 1 : 4);
    if (seed % 4 < 2) scanned.SetClock(1000);
    TRandomTree random(1000 + seed);
    random.Fill(scanned.Top(), 4);
    scanned.Scan();
    for (int step = 0; step < 25; ++step) {
      std::vector<TRef<IFolderData>> nodes = scanned.Nodes();
      TRef<IFolderData> node = nodes[static_cast<size_t>(random.Below(static_cast<int>(nodes.size())))];
      TMemoryEntry& entry = scanned.Entry(*node);
      const int action = random.Below(4);
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step << ", action " << action << " on "
                                      << ToUtf8(node->GetFullPath()));
      if (!entry.fCanDescend) continue;
      switch (action) {
        case 0:
          random.Change(entry);
          ASSERT_TRUE(node->Refresh(false));
          break;
        case 1:  // anything beneath
          random.Change(entry);
          for (TMemoryEntry& child : entry.fChildren)
            if (child.IsFolder() && !child.fRemoved) random.Change(child);
          ASSERT_TRUE(node->Refresh(true));
          break;
        case 2:
          if (!node->GetParentFolder()) continue;
          entry.fRemoved = true;
          // Either is the end of the node: the user takes it out, or a refresh finds that it is gone.
          ASSERT_TRUE(random.Below(2) == 0 ? scanned.fRoot->RemoveFolder(*node) : node->Refresh(random.Below(2) == 0));
          break;
        default:
          node->Reset();
          entry.fVanished = true;  // for the recount: nothing is known beneath
          ASSERT_EQ("", scanned.TreeDifferences());
          entry.fVanished = false;
          ASSERT_TRUE(node->Refresh(true));
      }
      ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
      ASSERT_EQ("", scanned.Differences());
      ASSERT_EQ("", scanned.UnfinishedNodes());
      ASSERT_TRUE(scanned.fRoot->GetErrors().empty());
    }
  }
}

// A "[Files]" row has no path of its own in the storage: it stands for the files directly in its folder.
TEST(ScanEngine, AFilesRowIsRefreshedAndRemovedAsTheFilesOfItsFolder) {
  for (const bool recursive : {false, true}) {
    TScannedStorage scanned(2);
    TMemoryEntry& changing = scanned.Top().AddFile(u"own.txt", 100);
    TMemoryEntry& other = scanned.Top().AddFile(u"other.txt", 11);
    scanned.Top().AddFolder(u"below").AddFile(u"a", 5);
    scanned.Scan();
    auto row = [&] { return scanned.fRoot->GetTopFolder()->GetFilesNode(); };
    changing.fValues.fSize = 50;
    scanned.Top().AddFolder(u"new");
    EXPECT_TRUE(row()->Refresh(recursive));
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
    EXPECT_EQ("", scanned.Differences()) << "refreshed";
    EXPECT_EQ("", scanned.UnfinishedNodes());
    EXPECT_NE(0, scanned.Node(u"/memory/new")->GetFolderState() & fsDetectedDuringRefresh);
    ASSERT_NE(nullptr, row());
    changing.fRemoved = other.fRemoved = true;
    EXPECT_TRUE(scanned.fRoot->RemoveFolder(*row()));
    EXPECT_EQ("", scanned.Differences()) << "removed";
    EXPECT_EQ(nullptr, row());
  }
}

// What a folder's entry says of entering it is asked again by a refresh: a mount may have come or gone.
TEST(ScanEngine, ARefreshEntersNothingThatAScanLeavesOut) {
  for (const bool recursive : {false, true}) {
    TScannedStorage scanned(1);
    TMemoryEntry& leftOut = scanned.Top().AddFolder(u"other file system");
    leftOut.AddFolder(u"inner").AddFile(u"a", 1000);
    leftOut.fCanDescend = false;
    scanned.Scan();
    auto refresh = [&] {
      ASSERT_TRUE(scanned.Node(u"/memory/other file system")->Refresh(recursive));
      ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
      EXPECT_EQ("", scanned.Differences());
      EXPECT_EQ("", scanned.UnfinishedNodes());
    };
    refresh();
    leftOut.fCanDescend = true;  // unmounted
    refresh();
    leftOut.fCanDescend = false;  // and mounted again
    refresh();
  }
}

TEST(ScanEngine, AScanAndARefreshOpenOnAWorker) {
  TScannedStorage scanned(1);
  scanned.Top().AddFolder(u"a").AddFile(u"f", 1);
  TMemoryEntry& gone = scanned.Top().AddFolder(u"gone");
  scanned.fStorage->WatchThisThread();
  scanned.Scan();
  EXPECT_EQ(0, scanned.fStorage->CountWatchedCalls()) << "the path was opened by the caller";
  for (const char16_t* path : {u"/memory/a", u"/memory/gone"})
    for (const bool recursive : {false, true}) {
      gone.fRemoved = path == std::u16string_view(u"/memory/gone");
      const TRef<IFolderData> node = scanned.Node(path);
      if (!node) continue;
      scanned.fStorage->WatchThisThread();
      EXPECT_TRUE(node->Refresh(recursive));
      ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
      EXPECT_EQ(0, scanned.fStorage->CountWatchedCalls()) << ToUtf8(path) << " was opened by the caller";
      EXPECT_EQ("", scanned.Differences());
    }
}

// What the root says of itself after a refresh is what it says after a fresh scan.
TEST(ScanEngine, ProgressAndStateAfterARefreshAreThoseOfTheWholeTree) {
  TScannedStorage scanned(1);
  scanned.Top().AddFile(u"top", 1);
  TMemoryEntry& branch = scanned.Top().AddFolder(u"branch");
  branch.AddFile(u"a", 10);
  branch.AddFolder(u"inner").AddFile(u"b", 100);
  scanned.Top().AddFolder(u"other").AddFile(u"c", 1000);
  scanned.Scan();
  scanned.Scan();
  EXPECT_EQ(4, scanned.fRoot->GetLastScanNumberOfFiles());
  for (const bool recursive : {false, true}) {
    branch.AddFile(recursive ? u"d" : u"e", 5);
    ASSERT_TRUE(scanned.Node(u"/memory/branch")->Refresh(recursive));
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
    const TScanProgress progress = scanned.fRoot->GetProgress();
    const TSizeValues total = scanned.fRoot->GetTopFolder()->GetValues();
    EXPECT_EQ(total.fFiles, progress.fFiles);
    EXPECT_EQ(total.fFolders, progress.fFolders);
    EXPECT_EQ(total.fSize, progress.fBytes);
    EXPECT_EQ(4, scanned.fRoot->GetLastScanNumberOfFiles()) << "of the scan before the last one";
  }
  TGate gate;
  branch.fGate = &gate;
  ASSERT_TRUE(scanned.Node(u"/memory/branch")->Refresh(true));
  gate.WaitUntilReached();
  scanned.fRoot->CancelScan();
  gate.Open();
  ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
  EXPECT_EQ(rsFinished | rsCancelled, scanned.fRoot->GetState()) << "scanned, but not complete any more";
  branch.fGate = nullptr;
  ASSERT_TRUE(scanned.Node(u"/memory/other")->Refresh(true));
  ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
  EXPECT_EQ(rsFinished | rsCancelled, scanned.fRoot->GetState()) << "another branch is still incomplete";
  ASSERT_TRUE(scanned.Node(u"/memory/branch")->Refresh(true));
  ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
  EXPECT_EQ(rsFinished, scanned.fRoot->GetState());
  EXPECT_EQ("", scanned.Differences());
}

// A scan takes the options as they are when it begins; a refresh stays with those that its tree was made with.
TEST(ScanEngine, ChangedOptionsTakeEffectWithTheNextScanAsAWhole) {
  TScannedStorage scanned(1);
  TMemoryEntry& folder = scanned.Top().AddFolder(u"a");
  folder.fOwner = u"anna";
  folder.AddFile(u"f.txt", 10);
  scanned.fOptions->CollectOwners = false;
  scanned.Scan();
  auto expect = [&](bool pOwners, const char* pWhen) {
    const TRef<IFolderData> top = scanned.fRoot->GetTopFolder();
    EXPECT_EQ(pOwners, top->GetUserSizeArray() != nullptr) << pWhen;
    EXPECT_EQ(!pOwners, top->GetExtensionSizeArray() != nullptr) << pWhen;
    EXPECT_EQ(pOwners ? 2 : 7, top->GetFileAgeDistribution(TDateType::dtLastChange)->GetFileAges()->GetCount())
        << pWhen;
    EXPECT_EQ(pOwners ? u"anna" : u"", scanned.Node(u"/memory/a")->GetFormattedValue(TColumn::mdOwner, {}))
        << pWhen << ": an owner is looked up only where owners are collected";
  };
  expect(false, "first scan");
  scanned.fOptions->CollectOwners = true;
  scanned.fOptions->CollectExtensions = false;
  scanned.fOptions->FileAges = "5;100";
  scanned.fOptions->NumberOfTopFiles = 0;
  expect(false, "options changed");
  ASSERT_TRUE(scanned.Node(u"/memory/a")->Refresh(true));
  ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
  expect(false, "refreshed");
  scanned.Scan();
  expect(true, "second scan");
}

TEST(ScanEngine, ADisposedRootDoesNothing) {
  TScannedStorage scanned(1);
  scanned.Top().AddFolder(u"a").AddFile(u"f", 1);
  scanned.Scan();
  const TRef<IFolderData> node = scanned.Node(u"/memory/a");
  scanned.fRoot->Dispose();
  EXPECT_NO_THROW(scanned.fRoot->Scan());
  EXPECT_EQ(nullptr, scanned.fRoot->GetTopFolder());
  EXPECT_FALSE(scanned.fRoot->RemoveFolder(*node));
  EXPECT_FALSE(scanned.fRoot->RefreshFolder(*node, true));
  EXPECT_EQ(0u, scanned.fRoot->GetState() & rsScanning);
}

// At any time, every row's change is that against the earlier scan's row of the same path, and what has gone is there
// as rows beside the tree.
std::string DifferencesFromEarlier(TScannedStorage& pScanned, const TRecount& pBefore) {
  std::string text;
  std::set<std::u16string> now, gone;
  std::vector<TRef<IFolderData>> nodes{pScanned.fRoot->GetTopFolder()};
  auto check = [&](IFolderData& pNode) {
    const std::u16string path = pNode.GetFullPath();
    const auto before = pBefore.find(path);
    const TSizeValues then = before == pBefore.end() ? TSizeValues() : before->second.fValues;
    const TMetaDataValue change = pNode.GetValue(TColumn::mdSizeChange);
    const int64_t expected = pNode.GetSize() - then.fSize;
    if (change != TMetaDataValue(expected)) text += ToUtf8(path) + ": change is not " + std::to_string(expected) + "\n";
  };
  for (size_t i = 0; i < nodes.size(); ++i) {
    const TRef<IFolderData> node = nodes[i];
    const bool isGone = (node->GetFolderState() & fsIsDummyForComparison) != 0;
    (isGone ? gone : now).insert(node->GetFullPath());
    check(*node);
    std::vector<TRef<IFolderData>> children = node->FindSubFolders();
    if (!isGone)
      for (TRef<IFolderData>& row : pScanned.fRoot->GetComparison()->FindGone(*node))
        children.push_back(std::move(row));
    for (TRef<IFolderData>& child : children)
      if (!child->IsFileGroup()) nodes.push_back(std::move(child));
  }
  for (const auto& [path, folder] : pBefore)
    if (!now.contains(path) && gone.erase(path) == 0) text += ToUtf8(path) + ": not among what has gone\n";
  for (const std::u16string& path : gone) text += ToUtf8(path) + ": has not gone\n";
  return text;
}

TEST(ScanEngine, AComparisonStaysRightThroughRefreshesAndRemovals) {
  for (uint32_t seed = 1; seed <= 8; ++seed) {
    TScannedStorage scanned(2);
    TRandomTree random(seed);
    random.Fill(scanned.Top(), 4);
    TMemoryRoot earlier(scanned.fStorage);
    earlier.Scan();
    const TRecount before = ReadTree(*earlier.fRoot->GetTopFolder());
    random.Change(scanned.Top());
    scanned.Scan();
    scanned.fRoot->SetComparison(MakeRef<TComparison>(*scanned.fRoot, *earlier.fRoot));
    earlier.fRoot->Dispose();
    ASSERT_EQ("", DifferencesFromEarlier(scanned, before));
    for (int step = 0; step < 15; ++step) {
      std::vector<TRef<IFolderData>> nodes = scanned.Nodes();
      const TRef<IFolderData> node = nodes[static_cast<size_t>(random.Below(static_cast<int>(nodes.size())))];
      TMemoryEntry& entry = scanned.Entry(*node);
      if (!entry.fCanDescend) continue;
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step << ", " << ToUtf8(node->GetFullPath()));
      if (random.Below(4) == 0 && node->GetParentFolder()) {
        entry.fRemoved = true;
        ASSERT_TRUE(scanned.fRoot->RemoveFolder(*node));
      } else {
        random.Change(entry);
        ASSERT_TRUE(node->Refresh(random.Below(2) == 0));
      }
      ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
      ASSERT_EQ("", DifferencesFromEarlier(scanned, before));
      for (const TRef<IFolderData>& row : scanned.fRoot->GetComparison()->FindGone(*scanned.fRoot->GetTopFolder())) {
        EXPECT_FALSE(row->Refresh(true));
        EXPECT_FALSE(scanned.fRoot->RemoveFolder(*row));
        row->Remove();
        row->Reset();
      }
      ASSERT_EQ("", scanned.Differences());
    }
    scanned.fRoot->SetComparison(nullptr);
    ASSERT_EQ("", scanned.Differences()) << "nothing of the comparison is left in the tree";
  }
}

// Every call of Next of a small tree fails in turn.
TEST(ScanEngine, AListingThatBreaksOffKeepsWhatItBroughtAndGivesOneError) {
  TScannedStorage scanned(2);
  TRandomTree random(4711);
  random.Fill(scanned.Top(), 3);
  std::vector<std::pair<TMemoryEntry*, std::u16string>> folders{{&scanned.Top(), u"/memory"}};
  for (size_t i = 0; i < folders.size(); ++i)
    for (TMemoryEntry& child : folders[i].first->fChildren)
      if (child.IsFolder() && child.fCanDescend) folders.emplace_back(&child, folders[i].second + u"/" + child.fName);
  ASSERT_GT(folders.size(), 10u);
  for (auto& [folder, path] : folders) {
    for (int next = 1; next <= static_cast<int>(folder->fChildren.size()) + 1; ++next) {
      SCOPED_TRACE(testing::Message() << ToUtf8(path) << ", call " << next);
      folder->FailListing(next, TMemoryStorage::AccessDeniedCode());
      folder->fRaises = next % 2 == 0;  // as some enumerators do
      scanned.Scan();
      EXPECT_EQ("", scanned.Differences());
      EXPECT_EQ("", scanned.UnfinishedNodes());
      const std::vector<TScanError> errors = scanned.fRoot->GetErrors();
      ASSERT_EQ(1u, errors.size());
      EXPECT_EQ(path, errors[0].fPath);
      EXPECT_EQ(path, errors[0].fObject->GetFullPath());
      EXPECT_EQ(TEnumeratorError::eeAccessDenied, errors[0].fKind);
      EXPECT_EQ(next > 1, errors[0].fPartial);
      EXPECT_EQ(rsFinished | rsHasErrors, scanned.fRoot->GetState());
    }
    folder->FailListing(0, 0);
    folder->fRaises = false;
  }
  EXPECT_EQ(0, scanned.fStorage->CountLiveEnumerators());
}

TEST(ScanEngine, ErrorsOfAFolderGoWhenItIsReadableAgain) {
  TScannedStorage scanned(1);
  TMemoryEntry& folder = scanned.Top().AddFolder(u"secret");
  folder.AddFile(u"a", 3);
  folder.FailListing(1, TMemoryStorage::AccessDeniedCode());
  scanned.Scan();
  for (bool recursive : {false, true}) {
    // A second look that fails as well is still one error.
    scanned.Node(u"/memory/secret")->Refresh(recursive);
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
    EXPECT_EQ(1u, scanned.fRoot->GetErrors().size()) << recursive;
    EXPECT_EQ(1, scanned.fRoot->GetProgress().fErrors);
  }
  folder.FailListing(0, 0);
  scanned.Node(u"/memory/secret")->Refresh(false);
  ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
  EXPECT_TRUE(scanned.fRoot->GetErrors().empty());
  EXPECT_EQ(0u, scanned.fRoot->GetState() & rsHasErrors);
  EXPECT_EQ("", scanned.Differences());
}

TEST(ScanEngine, AFolderThatVanishedSinceItsParentWasListed) {
  TScannedStorage scanned(2);
  scanned.Top().AddFolder(u"here").AddFile(u"a", 1);
  TMemoryEntry& gone = scanned.Top().AddFolder(u"gone");
  gone.AddFile(u"never seen", 100);
  gone.fVanished = true;
  scanned.Scan();
  EXPECT_EQ("", scanned.Differences());
  ASSERT_EQ(1u, scanned.fRoot->GetErrors().size());
  EXPECT_EQ(TMemoryStorage::NotFoundCode(), scanned.fRoot->GetErrors()[0].fCode);
  EXPECT_FALSE(scanned.fRoot->GetErrors()[0].fPartial);
  EXPECT_EQ(1, scanned.fRoot->GetTopFolder()->GetSize());
}

TEST(ScanEngine, CancellingLeavesWhatWasNotListedUnfinished) {
  for (bool dispose : {false, true}) {
    TScannedStorage scanned(1);
    scanned.Top().AddFile(u"top.txt", 1);
    TMemoryEntry& held = scanned.Top().AddFolder(u"held");
    held.AddFile(u"counted", 2);
    held.AddFolder(u"never reached").AddFile(u"a", 4);
    held.AddFile(u"not counted", 8);
    scanned.Top().AddFolder(u"waiting").AddFile(u"b", 16);
    TGate gate;
    held.fGate = &gate;
    scanned.Begin();
    gate.WaitUntilReached();
    TRef<IFolderData> top = scanned.fRoot->GetTopFolder();
    EXPECT_FALSE(scanned.fRoot->WaitForScan(0));
    EXPECT_FALSE(top->Refresh(true));
    EXPECT_FALSE(scanned.fRoot->RemoveFolder(*top));
    EXPECT_THROW(scanned.fRoot->Scan(), EInvalidOperation);
    if (dispose) {
      std::thread disposing([&] { scanned.fRoot->Dispose(); });
      while (!scanned.fRoot->GetScanConfiguration()->GetCancellationToken()->IsCancelled()) std::this_thread::yield();
      gate.Open();
      disposing.join();
      EXPECT_NE(0u, scanned.fRoot->GetState() & rsDisposed);
      EXPECT_EQ(nullptr, scanned.fRoot->GetTopFolder());
      EXPECT_NE(0, top->GetFolderState() & fsDisposed);
      EXPECT_EQ(0, scanned.fStorage->CountLiveEnumerators());
      continue;
    }
    scanned.fRoot->CancelScan();
    gate.Open();
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
    EXPECT_EQ(rsCancelled, scanned.fRoot->GetState());
    // The other folder may have been scanned before or not; what was held stopped at its first sub-folder.
    TRef<IFolderData> heldNode = scanned.Node(u"/memory/held");
    EXPECT_EQ(2, heldNode->GetSize());
    EXPECT_EQ(0u, heldNode->GetSubFolderCount());
    for (const TRef<IFolderData>& node : scanned.Nodes()) {
      EXPECT_EQ(0, node->GetFolderState() & fsScanning) << ToUtf8(node->GetFullPath());
      const bool finished = node->GetFullPath() == u"/memory/waiting" && node->GetSize() == 16;
      EXPECT_EQ(finished, (node->GetFolderState() & fsSubFolderScanningFinished) != 0) << ToUtf8(node->GetFullPath());
    }
    held.fGate = nullptr;
    scanned.Scan();  // a new scan starts afresh
    EXPECT_EQ("", scanned.Differences());
    EXPECT_EQ(rsFinished, scanned.fRoot->GetState());
  }
}

// One worker, held in the listing of a folder while the pause begins. It then holds before the next folder, so nothing
// more can be listed.
TEST(ScanEngine, APausedScanHoldsBeforeItsNextFolderAndGoesOnOrIsStopped) {
  for (const bool stops : {false, true}) {
    TScannedStorage scanned(1);
    TMemoryEntry& held = scanned.Top().AddFolder(u"held");
    held.AddFile(u"counted", 2);
    held.AddFolder(u"next").AddFile(u"b", 4);
    TGate gate;
    held.fGate = &gate;
    scanned.Root().PauseScan(true);  // no scan is running
    EXPECT_EQ(0u, scanned.fRoot->GetState());
    scanned.Begin();
    gate.WaitUntilReached();
    scanned.fRoot->PauseScan(true);
    EXPECT_EQ(rsScanning | rsPaused, scanned.fRoot->GetState());
    gate.Open();
    const TRef<IScanEngine> engine = scanned.fRoot->GetScanEngine();
    auto& pool = *static_cast<TScanEngine&>(*engine).GetWorkerThreadPool();
    while (pool.GetHeldThreads() == 0 && !scanned.fRoot->WaitForScan(0)) std::this_thread::yield();
    EXPECT_EQ(2, scanned.Node(u"/memory/held")->GetSize()) << "what was begun is in the tree";
    EXPECT_EQ(0, scanned.Node(u"/memory/held/next")->GetSize()) << "it goes on while it is paused";
    EXPECT_FALSE(scanned.fRoot->WaitForScan(0));
    const int64_t elapsed = scanned.fRoot->GetProgress().fElapsed;
    for (const int64_t end = TickCount64() + 5; TickCount64() < end;) std::this_thread::yield();
    EXPECT_EQ(elapsed, scanned.fRoot->GetProgress().fElapsed) << "a pause counts as time of the scan";
    if (stops)
      scanned.fRoot->CancelScan();
    else
      scanned.fRoot->PauseScan(false);
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever)) << "stops " << stops;
    EXPECT_EQ(stops ? rsCancelled : rsFinished, scanned.fRoot->GetState());
    EXPECT_EQ(stops ? 2 : 6, scanned.fRoot->GetTopFolder()->GetSize());
    EXPECT_EQ(scanned.fRoot->GetScanDuration(), scanned.fRoot->GetProgress().fElapsed);
    EXPECT_EQ(stops, !scanned.Differences().empty()) << scanned.Differences();
    held.fGate = nullptr;
    scanned.Scan();  // a later scan is not paused
    EXPECT_EQ(rsFinished, scanned.fRoot->GetState());
  }
}

// Disposing of a paused root ends its scan.
TEST(ScanEngine, APausedScanEndsWithItsRoot) {
  TScannedStorage scanned(2);
  TMemoryEntry& held = scanned.Top().AddFolder(u"held");
  held.AddFolder(u"next");
  TGate gate;
  held.fGate = &gate;
  scanned.Begin();
  gate.WaitUntilReached();
  scanned.fRoot->PauseScan(true);
  gate.Open();
  scanned.fRoot->Dispose();
  EXPECT_NE(0u, scanned.fRoot->GetState() & rsDisposed);
}

// As the path of a share whose server is gone: opening it blocks until it is interrupted.
TEST(ScanEngine, AnOpeningThatHangsIsCancelled) {
  struct TServices : TMemoryServices {
    TGate fReached;
    bool fRaises = false;
    TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pRootPath, uint32_t pOptions) override {
      fReached.Open();
      fReached.Pass();
      while (!TInterruptibleThread::IsCurrentInterrupted()) std::this_thread::yield();
      if (fRaises) throw EOSError(4, "Open", pRootPath);
      return MakeRef<Enumerators::TPathNotFoundEnumerator>(pRootPath, 4, pOptions);
    }
  };
  for (const bool raises : {false, true})
    for (const bool disposes : {false, true}) {
      auto services = MakeRef<TServices>();
      services->fRaises = raises;
      auto root = MakeRef<TCustomUnixRoot>(u"/gone", u"", services, std::make_shared<TGlobalOptions>(), nullptr);
      root->Scan();  // returns
      services->fReached.WaitUntilReached();
      EXPECT_EQ(rsScanning, root->GetState());
      EXPECT_FALSE(root->WaitForScan(0));
      if (!disposes) {
        root->CancelScan();
        ASSERT_TRUE(root->WaitForScan(kForever));
        EXPECT_EQ(rsCancelled, root->GetState()) << "raises " << raises;
        EXPECT_TRUE(root->GetErrors().empty()) << "what an interrupted call says is no fault of the path";
        ASSERT_NE(nullptr, root->GetTopFolder());
        EXPECT_EQ(0, root->GetTopFolder()->GetFolderState() & (fsScanning | fsSubFolderScanningFinished));
      }
      root->Dispose();
    }
}

TEST(ScanEngine, ScansThatRunAtOnceShareTheThreads) {
  TScannedStorage first(2), second(2, u"/other");
  auto services = MakeRef<TMemoryServices>();
  auto options = std::make_shared<TGlobalOptions>(*first.fOptions);
  TRef<IScanRoots> roots = CreateScanRoots(services, options);
  std::vector<TRef<IHierarchicalRoot>> opened;
  std::vector<std::unique_ptr<TGate>> gates;
  for (const char16_t* path : {u"/a", u"/b", u"/c"}) {
    opened.push_back(roots->CreateRoot(path));
    auto storage = services->fStorages[opened.back()->GetPath()] = TMemoryStorage::Create(opened.back()->GetPath());
    storage->Top().AddFile(u"x", 1);
    gates.push_back(std::make_unique<TGate>());
    storage->Top().fGate = gates.back().get();
  }
  for (size_t i = 0; i < opened.size(); ++i) {
    opened[i]->Scan();
    gates[i]->WaitUntilReached();
    EXPECT_EQ(static_cast<int32_t>(i) + 1, roots->CountActiveScans());
  }
  // Of two threads the first scan gets both, the second one, the third none; the engine makes one of none.
  EXPECT_EQ((std::vector<int32_t>{2, 1, 0}), services->fThreads);
  EXPECT_EQ(u"Threads: 1 of max 2", opened[0]->GetScanEngine()->GetStatusText());
  EXPECT_EQ(u"Threads: 1 of max 1", opened[2]->GetScanEngine()->GetStatusText());
  for (auto& gate : gates) gate->Open();
  for (auto& root : opened) EXPECT_TRUE(root->WaitForScan(kForever));
  EXPECT_EQ(3, roots->GetVirtualRoot()->GetTopFolder()->GetSize());
  EXPECT_EQ(3, roots->GetVirtualRoot()->GetTopFolder()->GetFolders());
  roots->Dispose();
}

// Every change of totals is told to a subscriber that has read the last one. So the number of calls is a measure of the
// work. Other subscribers take their queue on a thread of their own.
int64_t CountChanges(int pLevels, bool pHasSideFolders) {
  TScannedStorage scanned(1);
  scanned.SetClock(0);
  TMemoryEntry* folder = &scanned.Top();
  for (int level = 0; level < pLevels; ++level) {
    folder->AddFile(u"f", 1);
    if (pHasSideFolders) folder->AddFolder(u"side").AddFile(u"g", 1);
    folder = &folder->AddFolder(u"d");
    folder->fValues.fLastChangeDate.fTicks = level + 1;  // the newest is the deepest
  }
  std::atomic<int64_t> changes{0};
  TRef<ITreeSubscription> subscription;
  subscription = scanned.Root().Subscribe([&] {
    ++changes;
    subscription->Take();
  });
  subscription->Take();
  scanned.Scan();
  EXPECT_EQ(pHasSideFolders ? 2 * pLevels : pLevels, scanned.fRoot->GetTopFolder()->GetSize());
  EXPECT_EQ(pLevels, scanned.fRoot->GetTopFolder()->GetLastChangeDate().fTicks);
  subscription->End();
  return changes;
}

TEST(ScanEngine, TheWorkOnTotalsGrowsWithTheFoldersAndNotWithTheirDepth) {
  for (const bool hasSideFolders : {false, true}) {
    const int64_t some = CountChanges(200, hasSideFolders);
    EXPECT_GT(some, 200);
    EXPECT_LE(CountChanges(400, hasSideFolders), 2 * some + some / 10)
        << "twice the levels, more than twice the changes; side folders " << hasSideFolders;
  }
}

TEST(ScanEngine, TotalsGrowWhileTheScanRuns) {
  for (const bool refresh : {false, true}) {
    TScannedStorage scanned(1);
    scanned.SetClock(1000);
    scanned.Top().AddFile(u"f", 1);
    if (refresh) scanned.Scan();
    TMemoryEntry* folder = &scanned.Top();
    for (int size : {10, 100, 1000}) {
      folder = &folder->AddFolder(u"d");
      folder->AddFile(u"f.txt", size);
    }
    folder = &folder->AddFolder(u"held");
    folder->AddFile(u"g", 10'000);
    TGate gate;
    folder->fGate = &gate;
    if (refresh)
      ASSERT_TRUE(scanned.fRoot->GetTopFolder()->Refresh(false));
    else
      scanned.Begin();
    gate.WaitUntilReached();
    TRef<IFolderData> node = scanned.fRoot->GetTopFolder();
    EXPECT_EQ((TSizeValues{{1111, 1111, 4}, 4, compr_no}), node->GetValues()) << "refresh " << refresh;
    TBasicSizeValues texts;
    EXPECT_TRUE(node->GetExtensionSizeArray()->Find(u".txt", texts));
    EXPECT_EQ(1110, texts.fSize);
    gate.Open();
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
    EXPECT_EQ("", scanned.Differences());
  }
}

// The largest files are offered again from the tree when some of them leave; without files in the tree nobody can.
TEST(ScanEngine, WithoutKeptFilesTheOtherLargestFilesStayListed) {
  TScannedStorage scanned(1);
  scanned.fOptions->KeepFiles = false;
  scanned.Top().AddFile(u"stays", 100);
  TMemoryEntry& folder = scanned.Top().AddFolder(u"goes");
  folder.AddFile(u"largest", 200);
  scanned.Scan();
  scanned.fRoot->RemoveFolder(*scanned.Node(u"/memory/goes"));
  const std::vector<TTopSizeEntry> largest = scanned.fRoot->GetTopSizeList()->GetSnapshot();
  ASSERT_EQ(1u, largest.size());
  EXPECT_EQ(u"stays", largest[0].fName);
}

// With every thread held at a gate, what one worker gives away piles up in the queue.
TEST(ScanEngine, TheQueueStaysBounded) {
  struct TCase {
    int fCpu;
    int32_t fMost;
  };
  // Beyond the pool's two threads only while the processor has time left, and never more than 20 for each thread.
  for (const TCase& bound : {TCase{0, 20 * 2 + 1}, TCase{100, 2 + 1}}) {
    TScannedStorage scanned(2);
    scanned.fServices->fPoolSettings.fCpuUsage = [cpu = bound.fCpu] { return cpu; };
    scanned.SetClock(1000);
    TGate gate;
    for (int i = 0; i < 300; ++i) {
      TMemoryEntry& folder = scanned.Top().AddFolder(u"d" + FromUtf8(std::to_string(i)));
      folder.AddFile(u"f", 1);
      folder.fGate = &gate;
    }
    scanned.Begin();
    auto& pool = *static_cast<TScanEngine&>(*scanned.fRoot->GetScanEngine()).GetWorkerThreadPool();
    gate.WaitUntilReached();
    int32_t most = 0;
    // Until every thread that there is stands at the gate, the queue has not reached its length.
    for (int32_t length = -1; length != pool.GetQueueLength() || length < 2;) {
      length = pool.GetQueueLength();
      most = std::max(most, length);
      std::this_thread::yield();
    }
    EXPECT_LE(most, bound.fMost);
    EXPECT_GE(most, 2);
    gate.Open();
    ASSERT_TRUE(scanned.fRoot->WaitForScan(kForever));
    EXPECT_EQ("", scanned.Differences());
  }
}

TEST(ScanEngine, CpuCapAndPreStartedThreads) {
  const std::pair<int, int> caps[] = {{1, 80}, {4, 80}, {5, 75}, {6, 70}, {8, 60}, {64, 60}};
  for (const auto& [processors, cap] : caps) EXPECT_EQ(cap, CpuCapOf(processors)) << processors;
  const std::pair<int, int> started[] = {{1, 1}, {2, 2}, {3, 2}, {5, 3}, {8, 4}};
  for (const auto& [maximum, minimum] : started) EXPECT_EQ(minimum, PreStartedThreads(maximum)) << maximum;
}

}  // namespace
}  // namespace Vantrel::ScanEngine
