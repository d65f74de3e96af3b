// A copy of the tree that is kept from the queue of its changes alone, against the tree itself.

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>

#include "model/roots/Comparison.h"
#include "model/tree/TreeChanges.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"

namespace Vantrel::ScanEngine {
namespace {

using namespace Vantrel::Testing;

using TNode = IHierarchicalElement;

// What a list would show of a node.
struct TShown {
  std::u16string fName;
  TSizeValues fValues;
  int64_t fLastChange = 0;
  TFolderStates fState = 0;
  std::map<std::u16string, int64_t> fFiles;

  std::string Text() const {
    std::string text = ToUtf8(fName) + " size " + std::to_string(fValues.fSize) + " files " +
                       std::to_string(fValues.fFiles) + " folders " + std::to_string(fValues.fFolders) + " changed " +
                       std::to_string(fLastChange) + " state " + std::to_string(fState);
    for (const auto& [name, size] : fFiles) text += " " + ToUtf8(name) + "=" + std::to_string(size);
    return text;
  }
};

TShown Read(TNode& pNode) {
  IFolderData& folder = *pNode.AsFolder();
  TShown shown{std::u16string(pNode.GetObjectName()),
               folder.GetValues(),
               pNode.GetLastChangeDate().fTicks,
               pNode.GetFolderState(),
               {}};
  if (const TRef<const TFileTable> files = folder.GetFileTable())
    for (size_t i = 0; i < files->Count(); ++i) shown.fFiles[std::u16string(files->NameAt(i))] = (*files)[i].fSize;
  return shown;
}

// The copy.
class TMirror {
 public:
  void Apply(const TTreeChanges& pChanges, const TRef<IFolderData>& pTop) {
    if ((pChanges.fRoot & rcTreeReplaced) != 0) ReadAll(pTop);
    for (const TChangedNode& changed : pChanges.fNodes) {
      TNode* const node = changed.fNode.get();
      if ((changed.fChanges & ncRemoved) != 0) {
        Drop(node);
        continue;
      }
      if ((changed.fChanges & ncReset) != 0) DropBeneath(node);
      if ((changed.fChanges & ncAdded) != 0) {
        fNodes[node].fParent = node->GetParentFolder().get();
      } else if (!fNodes.contains(node)) {
        fProblems += "a change of a node that was never added: " + Read(*node).Text() + "\n";
        continue;
      }
      fNodes[node].fNode = changed.fNode;
      fNodes[node].fShown = Read(*node);
    }
  }

  // Empty when the copy equals the tree.
  std::string Difference(const TRef<IFolderData>& pTop) const {
    std::string text = fProblems;
    size_t nodes = 0;
    std::vector<TRef<IFolderData>> stack;
    if (pTop) stack.push_back(pTop);
    while (!stack.empty()) {
      const TRef<IFolderData> folder = stack.back();
      stack.pop_back();
      ++nodes;
      const auto mirrored = fNodes.find(folder.get());
      if (mirrored == fNodes.end())
        text += "not in the copy: " + Read(*folder).Text() + "\n";
      else if (mirrored->second.fShown.Text() != Read(*folder).Text())
        text += "shown:   " + mirrored->second.fShown.Text() + "\nthe tree: " + Read(*folder).Text() + "\n";
      else if (mirrored->second.fParent != folder->GetParentFolder().get())
        text += "in another parent: " + Read(*folder).Text() + "\n";
      for (TRef<IFolderData>& child : folder->FindSubFolders()) stack.push_back(child);
    }
    if (nodes != fNodes.size())
      text += std::to_string(fNodes.size()) + " nodes in the copy, " + std::to_string(nodes) + " in the tree\n";
    return text;
  }

 private:
  void ReadAll(const TRef<IFolderData>& pTop) {
    fNodes.clear();
    std::vector<TRef<IFolderData>> stack;
    if (pTop) stack.push_back(pTop);
    while (!stack.empty()) {
      const TRef<IFolderData> folder = stack.back();
      stack.pop_back();
      fNodes[folder.get()] = {folder, folder->GetParentFolder().get(), Read(*folder)};
      for (TRef<IFolderData>& child : folder->FindSubFolders()) stack.push_back(child);
    }
  }

  struct TMirrored {
    TRef<TNode> fNode;  // keeps the address from being used again
    TNode* fParent = nullptr;
    TShown fShown;
  };

  bool IsBelow(TNode* pNode, const TNode* pTop) const {
    while (pNode != nullptr && pNode != pTop) {
      const auto found = fNodes.find(pNode);
      pNode = found == fNodes.end() ? nullptr : found->second.fParent;
    }
    return pNode != nullptr;
  }
  void DropBeneath(TNode* pTop) {
    std::vector<TNode*> below;
    for (const auto& [node, mirrored] : fNodes)
      if (node != pTop && IsBelow(node, pTop)) below.push_back(node);
    for (TNode* node : below) fNodes.erase(node);
  }
  void Drop(TNode* pTop) {
    DropBeneath(pTop);
    fNodes.erase(pTop);
  }

  std::map<TNode*, TMirrored> fNodes;
  std::string fProblems;
};

// A root over a random storage that is scanned, changed, refreshed, compared and torn down, step by step.
class TChangingRoot {
 public:
  TChangingRoot(uint32_t pSeed, int pThreads) : fTree(pSeed) {
    fMemory.fOptions->MaximumThreads = pThreads;
    fTree.Fill(fMemory.Top(), 4);
    Subscribe();
  }

  void Step() {
    const TRef<IFolderData> top = fMemory.Root().GetTopFolder();
    const int choice = fTree.Below(20);
    if (!top || choice == 0) return fMemory.Scan();
    if (choice == 1) return StartAgain();
    if (choice == 2) return Compare();
    const TRef<IFolderData> folder = AnyFolder();
    if (choice == 3 && folder->GetParentFolder()) {
      EXPECT_TRUE(fMemory.Root().RemoveFolder(*folder));
      fRemoved = true;
      return;
    }
    if (fRemoved || (fMemory.Root().GetState() & rsFinished) == 0) {  // the storage still has what was taken out
      fRemoved = false;
      return fMemory.Scan();
    }
    fTree.Change(EntryOf(*folder));
    ASSERT_TRUE(fMemory.Root().RefreshFolder(*folder, fTree.Below(2) == 0));
    ASSERT_TRUE(fMemory.Root().WaitForScan(kForever));
  }

  void Take() {
    const TTreeChanges changes = fSubscription->Take();
    fMirror.Apply(changes, fMemory.Root().GetTopFolder());
  }
  std::string Difference() {
    Take();
    return fMirror.Difference(fMemory.Root().GetTopFolder());
  }

  TMemoryRoot fMemory;
  TRandomTree fTree;
  TRef<ITreeSubscription> fSubscription;
  TMirror fMirror;

 private:
  void Subscribe() { fSubscription = fMemory.Root().Subscribe(); }
  void StartAgain() {
    fMemory.fRoot->Dispose();
    EXPECT_EQ(Difference(), "");  // nothing is left
    fMemory.fRoot = nullptr;
    fMirror = {};
    Subscribe();
    fMemory.Scan();
  }
  void Compare() {
    IHierarchicalRoot& root = fMemory.Root();
    root.SetComparison(root.GetComparison() ? nullptr : MakeRef<TComparison>(root, root));
    const TTreeChanges changes = fSubscription->Take();
    EXPECT_NE(changes.fRoot & rcComparisonChanged, 0);
    fMirror.Apply(changes, root.GetTopFolder());
  }
  TRef<IFolderData> AnyFolder() {
    TRef<IFolderData> folder = fMemory.Root().GetTopFolder();
    while (fTree.Below(4) != 0) {
      std::vector<TRef<IFolderData>> children = folder->FindSubFolders();
      std::erase_if(children, [](const TRef<IFolderData>& pChild) { return pChild->IsFileGroup(); });
      if (children.empty()) break;
      folder = children[static_cast<size_t>(fTree.Below(static_cast<int>(children.size())))];
    }
    return folder;
  }
  TMemoryEntry& EntryOf(IFolderData& pFolder) {
    const std::u16string path = pFolder.GetFullPath();
    return fMemory.fStorage->Folder(std::u16string_view(path).substr(std::min(path.size(), fMemory.fPath.size() + 1)));
  }

  bool fRemoved = false;
};

// A sanitizer makes each step twenty times as long, and Wine ten times.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
constexpr int kSteps = 300;
#else
constexpr int kSteps = 10'000;
#endif

TEST(TreeChanges, ACopyKeptFromTheQueueEqualsTheTreeAfterEveryStep) {
  for (const int threads : {1, 2, 8}) {
    TChangingRoot root(static_cast<uint32_t>(threads) * 1000, threads);
    for (int step = 0; step < kSteps; ++step) {
      root.Step();
      ASSERT_EQ(root.Difference(), "") << "step " << step << " with " << threads << " threads";
    }
  }
}

// The subscriber reads while the workers write; what it missed is in the next queue.
TEST(TreeChanges, ACopyTakenWhileTheScanRunsEndsEqual) {
  for (uint32_t seed = 1; seed <= 30; ++seed) {
    TChangingRoot root(seed, 4);
    for (int i = 0; i < 3; ++i) {
      root.fMemory.Begin();
      while (!root.fMemory.Root().WaitForScan(0)) root.Take();
      ASSERT_EQ(root.Difference(), "") << "seed " << seed;
    }
  }
}

// The end of a scan is told after WaitForScan has returned. It enters all queues in one step.
void TakeUntilTheEnd(ITreeSubscription& pSubscription) {
  while ((pSubscription.Take().fRoot & rcScanEnded) == 0) std::this_thread::yield();
}

TEST(TreeChanges, AQueueHoldsANodeOnceAndTellsOfItsFirstChange) {
  TMemoryRoot memory;
  TRandomTree tree(7);
  tree.Fill(memory.Top(), 3);
  std::atomic<int> calls{0};
  const TRef<ITreeSubscription> subscription = memory.Root().Subscribe([&calls] { ++calls; });
  const TRef<ITreeSubscription> other = memory.Root().Subscribe();
  EXPECT_EQ(subscription->Take().fRoot, rcTreeReplaced);
  memory.Scan();
  TakeUntilTheEnd(*other);
  EXPECT_EQ(calls, 1);
  const TTreeChanges changes = subscription->Take();
  EXPECT_EQ(changes.fRoot, rcTreeReplaced | rcScanStarted | rcScanEnded);
  std::map<TNode*, int> times;
  for (const TChangedNode& changed : changes.fNodes) EXPECT_EQ(++times[changed.fNode.get()], 1);
  EXPECT_TRUE(subscription->Take().IsEmpty());
  ASSERT_TRUE(memory.Root().RefreshFolder(*memory.Root().GetTopFolder(), false));
  ASSERT_TRUE(memory.Root().WaitForScan(kForever));
  TakeUntilTheEnd(*other);
  EXPECT_EQ(calls, 2);
  subscription->End();
  memory.Scan();
  TakeUntilTheEnd(*other);
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(subscription->Take().IsEmpty());
}

TEST(TreeChanges, PlacesAreTakenAndGivenBack) {
  TMemoryRoot memory;
  std::vector<TRef<ITreeSubscription>> subscriptions;
  for (size_t i = 0; i < TChangeQueues::kMostSubscriptions; ++i) subscriptions.push_back(memory.Root().Subscribe());
  EXPECT_THROW(memory.Root().Subscribe(), EInvalidOperation);
  subscriptions.pop_back();
  subscriptions.push_back(memory.Root().Subscribe());
  memory.Scan();
  for (const TRef<ITreeSubscription>& subscription : subscriptions) EXPECT_FALSE(subscription->Take().IsEmpty());
}

// The scan has ended when its end is told. A subscriber may then start the next one.
TEST(TreeChanges, TheEndOfAScanIsToldOnceTheRootHasFinished) {
  TMemoryRoot memory;
  memory.Top().AddFile(u"file", 1);
  const TRef<ITreeSubscription> subscription = memory.Root().Subscribe();
  memory.Begin();
  TakeUntilTheEnd(*subscription);
  EXPECT_EQ(memory.Root().GetState() & (rsScanning | rsFinished), rsFinished);
  EXPECT_TRUE(memory.Root().WaitForScan(0));
  memory.Begin();
  EXPECT_TRUE(memory.Root().WaitForScan(kForever));
}

}  // namespace
}  // namespace Vantrel::ScanEngine
