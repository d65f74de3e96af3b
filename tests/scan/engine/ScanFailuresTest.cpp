// What a scan keeps when memory, threads or an enumerator fail: one folder is lost at most, and is on the error list.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <set>
#include <thread>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanEngine.h"
#include "tests/scan/engine/FailingAllocation.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"
#include "tests/support/Recount.h"

namespace Vantrel::ScanEngine {
namespace {

using namespace Vantrel::Testing;

// Takes in what a function says; may fail where it is made.
struct TJudge : TInterfaced<IScanFilter> {
  std::function<bool(const IHierarchicalEnumerator&)> fIsIncluded = [](const IHierarchicalEnumerator&) { return true; };
  std::function<void()> fOnCreate = [] {};

  struct TEntryFilter : IEntryFilter {
    explicit TEntryFilter(TJudge& pJudge) : fJudge(pJudge) {}
    void BeginFolder(const IHierarchicalEnumerator&) override {}
    bool IsFolderIncluded(const IHierarchicalEnumerator& pEntry) override { return fJudge.fIsIncluded(pEntry); }
    bool IsFileIncluded(const IHierarchicalEnumerator& pEntry) override { return fJudge.fIsIncluded(pEntry); }
    void EndFolder() override {}
    TJudge& fJudge;
  };
  std::unique_ptr<IEntryFilter> CreateEntryFilter() override {
    fOnCreate();
    return std::make_unique<TEntryFilter>(*this);
  }
  void BeginScan() override {}
  std::vector<TExclusion> GetExclusions() const override { return {}; }
  std::vector<std::u16string> GetWarnings() const override { return {}; }
};

std::set<std::u16string> FailedPaths(IHierarchicalRoot& pRoot) {
  std::set<std::u16string> paths;
  for (const TScanError& error : pRoot.GetErrors()) paths.insert(error.fPath);
  return paths;
}

// Whether every folder holds what it and its children hold, and its statistics the same: nothing was added half way up.
std::string Inconsistencies(const TRecount& pTree) {
  std::string text;
  for (const auto& [path, folder] : pTree) {
    TSizeValues expected;
    for (const auto& [name, size] : folder.fOwnFiles) {
      expected.fSize += size;
      ++expected.fFiles;
    }
    for (const auto& [other, child] : pTree) {
      if (other.size() <= path.size() + 1 || !other.starts_with(path + u"/") ||
          other.find(u'/', path.size() + 1) != std::u16string::npos)
        continue;
      expected.fSize += child.fValues.fSize;
      expected.fFiles += child.fValues.fFiles;
      expected.fFolders += child.fValues.fFolders + 1;
    }
    auto hold = [&text, name = ToUtf8(path)](const char* pWhat, int64_t pExpected, int64_t pActual) {
      if (pExpected != pActual)
        text += name + ": " + pWhat + " " + std::to_string(pActual) + " for " + std::to_string(pExpected) + "\n";
    };
    hold("size", expected.fSize, folder.fValues.fSize);
    hold("files", expected.fFiles, folder.fValues.fFiles);
    hold("folders", expected.fFolders, folder.fValues.fFolders);
    for (const auto* statistic : {&folder.fOwners, &folder.fExtensions}) {
      int64_t size = 0;
      for (const auto& [key, values] : *statistic) size += values.fSize;
      hold(statistic == &folder.fOwners ? "size by owner" : "size by extension", folder.fValues.fSize, size);
    }
  }
  return text;
}

// Folders whose own files are not all there although neither they nor a folder above them stand on the error list.
std::string SilentLosses(const TRecount& pExpected, const TRecount& pActual, const std::set<std::u16string>& pFailed) {
  std::string text;
  for (const auto& [path, folder] : pExpected) {
    bool excused = false;
    for (const std::u16string& failed : pFailed) excused |= path == failed || path.starts_with(failed + u"/");
    const auto actual = pActual.find(path);
    if (!excused && (actual == pActual.end() || actual->second.fOwnFiles != folder.fOwnFiles))
      text += ToUtf8(path) + " was lost\n";
  }
  return text;
}

struct TFailingScan : TMemoryRoot {
  explicit TFailingScan(int pThreads) {
    fOptions->MaximumThreads = pThreads;
    fOptions->CollectOwners = true;
    fOptions->FileAgesDateType = TDateType::dtLastChange;
    fOptions->NumberOfTopFiles = 3;
  }
  // Folders "a" to "f" with a file each; in "c" lie "x" and "y", in "x" lies "deep".
  void Fill() {
    for (const char16_t* name : {u"a", u"b", u"c", u"d", u"e", u"f"}) {
      TMemoryEntry& folder = Top().AddFolder(name);
      folder.AddFile(u"file.txt", 10);
      folder.AddFile(std::u16string(u"other.") + name, 7);
    }
    for (const char16_t* path : {u"c/x/deep", u"c/x", u"c/y"}) fStorage->Folder(path).AddFile(u"inner", 3);
    Top().AddFile(u"top.txt", 100);
  }
  TRecount Expected() {
    TRecountSettings settings;
    settings.fNow = fRoot->GetScanTimeStamp();
    return RecountStorage(Top(), settings);
  }
  void ExpectOnlyLostAt(const std::set<std::u16string>& pPaths, uint32_t pCode) {
    EXPECT_EQ(pPaths, FailedPaths(*fRoot));
    for (const TScanError& error : fRoot->GetErrors()) EXPECT_EQ(pCode, error.fCode) << ToUtf8(error.fPath);
    EXPECT_EQ(rsFinished | rsHasErrors, fRoot->GetState());
    const TRecount tree = ReadTree(*fRoot->GetTopFolder());
    EXPECT_EQ("", SilentLosses(Expected(), tree, pPaths));
    EXPECT_EQ("", Inconsistencies(tree));
    EXPECT_NE(0, fRoot->GetTopFolder()->GetFolderState() & fsSubFolderScanningFinished);
    EXPECT_EQ(0, fRoot->GetTopFolder()->GetFolderState() & fsScanning);
  }
};

TEST(ScanFailures, AnExceptionEndsOneFoldersListing) {
  struct TCase {
    const char* fName;
    std::function<void(TFailingScan&)> fBreak;
    std::set<std::u16string> fFailed;
    uint32_t fCode;
  };
  auto judge = [](std::function<void(TJudge&)> pSet) {
    return [pSet](TFailingScan& pScan) {
      auto filter = MakeRef<TJudge>();
      pSet(*filter);
      pScan.Root().SetScanFilter(filter);
    };
  };
  const TCase cases[] = {
      {"no memory in a listing",
       [](TFailingScan& pScan) {
         pScan.fStorage->Folder(u"b").FailListing(2, 1);
         pScan.fStorage->Folder(u"b").fNoMemory = true;
       },
       {u"/memory/b"},
       kErrorNoMemory},
      {"no memory to open a folder",
       [](TFailingScan& pScan) { pScan.fStorage->Folder(u"c").fNoChildren = true; },
       {u"/memory/c/x", u"/memory/c/y"},
       kErrorNoMemory},
      {"a filter that throws",
       judge([](TJudge& pFilter) {
         pFilter.fIsIncluded = [](const IHierarchicalEnumerator& pEntry) {
           if (pEntry.GetObjectName() == u"other.d") throw std::runtime_error("on purpose");
           return true;
         };
       }),
       {u"/memory/d"},
       kErrorUnexpected},
      {"a filter that cannot be made",
       judge([](TJudge& pFilter) { pFilter.fOnCreate = [] { throw EOSError(5, "Create", u"filter"); }; }),
       {u"/memory"},
       5},
  };
  for (const TCase& test : cases)
    for (int threads : {1, 4}) {
      SCOPED_TRACE(testing::Message() << test.fName << ", threads " << threads);
      TFailingScan scan(threads);
      scan.Fill();
      test.fBreak(scan);
      scan.Scan();
      scan.ExpectOnlyLostAt(test.fFailed, test.fCode);
    }
}

TEST(ScanFailures, AScanThatCannotBegin) {
  struct TServices : TMemoryServices {
    std::function<void()> fOnOpen = [] {};
    std::function<void()> fOnEngine = [] {};
    TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pRootPath, uint32_t pOptions) override {
      fOnOpen();
      return TMemoryServices::CreateEnumerator(pRootPath, pOptions);
    }
    TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
                                       std::function<void()> pOnAllDone) override {
      fOnEngine();
      return TMemoryServices::CreateScanEngine(pThreads, pConfiguration, pPriority, pOnAllDone);
    }
  };
  struct TCase {
    const char* fName;
    std::function<void(TServices&)> fBreak;
    uint32_t fCode;
  };
  const TCase cases[] = {
      {"the path raises", [](TServices& pServices) { pServices.fOnOpen = [] { throw EOSError(5, "Open", u"NUL"); }; },
       5},
      {"no memory to open it", [](TServices& pServices) { pServices.fOnOpen = [] { throw std::bad_alloc(); }; },
       kErrorNoMemory},
      {"no engine", [](TServices& pServices) { pServices.fOnEngine = [] { throw std::runtime_error("on purpose"); }; },
       kErrorUnexpected},
      {"no thread", [](TServices& pServices) { pServices.fPoolSettings.fGrantsThread = [] { return false; }; },
       kErrorNoThread},
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.fName);
    auto services = MakeRef<TServices>();
    const auto storage = services->fStorages[u"/memory"] = TMemoryStorage::Create();
    storage->Folder(u"a/b").AddFile(u"x", 3);
    const auto options = std::make_shared<TGlobalOptions>();
    auto root = MakeRef<TCustomUnixRoot>(u"/memory", u"", services, options, nullptr);
    test.fBreak(*services);
    EXPECT_NO_THROW(root->Scan());
    ASSERT_TRUE(root->WaitForScan(kForever)) << "the root scans for good";
    EXPECT_EQ(rsPathNotFound | rsHasErrors, root->GetState());
    ASSERT_EQ(1u, root->GetErrors().size());
    EXPECT_EQ(test.fCode, root->GetErrors()[0].fCode);
    EXPECT_EQ(u"/memory", root->GetErrors()[0].fPath);
    // It is no root for good: what failed may work the next time.
    services->fOnOpen = services->fOnEngine = [] {};
    services->fPoolSettings.fGrantsThread = nullptr;
    root->Scan();
    ASSERT_TRUE(root->WaitForScan(kForever));
    EXPECT_EQ(rsFinished, root->GetState());
    EXPECT_EQ(3, root->GetTopFolder()->GetSize());
    // The same for a look at a branch: its values stay, and it is on the error list.
    services->fPoolSettings.fGrantsThread = [] { return false; };
    EXPECT_TRUE(root->GetTopFolder()->Refresh(false));
    ASSERT_TRUE(root->WaitForScan(0));
    ASSERT_EQ(1u, root->GetErrors().size());
    EXPECT_EQ(kErrorNoThread, root->GetErrors()[0].fCode);
    EXPECT_EQ(3, root->GetTopFolder()->GetSize());
    EXPECT_NE(0, root->GetTopFolder()->GetFolderState() & fsSubFolderScanningFinished);
    root->Dispose();
  }
}

// Each allocation of a scan fails in turn. Whatever it was for, the tree agrees with itself, and what is missing is
// told.
TEST(ScanFailures, EveryAllocationOfAScan) {
  for (int threads : {1, 3}) {
    int64_t failed = 0;
    bool over = false;
    for (int64_t allocation = 0; !over; ++allocation) {
      SCOPED_TRACE(testing::Message() << "allocation " << allocation << ", threads " << threads);
      TFailingScan scan(threads);
      scan.Fill();
      scan.Root();
      gAllocationsLeft = allocation;
      bool begun = true;
      try {
        scan.fRoot->Scan();
      } catch (const std::bad_alloc&) {
        begun = false;
      }
      const bool ended = scan.fRoot->WaitForScan(kForever);
      over = gAllocationsLeft.exchange(-1) >= 0;
      ASSERT_TRUE(ended);
      if (!begun || (scan.fRoot->GetState() & rsPathNotFound) != 0) {
        ++failed;
        continue;
      }
      const std::set<std::u16string> paths = FailedPaths(*scan.fRoot);
      failed += !paths.empty();
      EXPECT_EQ(paths.empty() ? rsFinished : rsFinished | rsHasErrors, scan.fRoot->GetState());
      const TRecount tree = ReadTree(*scan.fRoot->GetTopFolder());
      ASSERT_EQ("", Inconsistencies(tree));
      ASSERT_EQ("", SilentLosses(scan.Expected(), tree, paths));
    }
    EXPECT_GT(failed, 20) << "the test staged next to no failure";
  }
}

TEST(ScanFailures, ARemovalThatFailsLeavesTheRootReadyForAScan) {
  int64_t failed = 0;
  for (int64_t allocation = 0; failed == allocation; ++allocation) {
    TFailingScan scan(1);
    scan.Fill();
    scan.Scan();
    const TRef<IFolderData> folder = scan.fRoot->GetTopFolder()->FindSubFolders()[0];
    gAllocationsLeft = allocation;
    try {
      scan.fRoot->RemoveFolder(*folder);
    } catch (const std::bad_alloc&) {
      ++failed;
    }
    gAllocationsLeft = -1;
    ASSERT_TRUE(scan.fRoot->WaitForScan(0)) << "the root is busy for good after allocation " << allocation;
    scan.Scan();
    EXPECT_EQ("", Inconsistencies(ReadTree(*scan.fRoot->GetTopFolder())));
  }
  EXPECT_GT(failed, 0);
}

TEST(ScanFailures, CancellingStopsInAFolderOfManyFiles) {
  for (bool included : {true, false}) {
    TFailingScan scan(1);
    for (int i = 0; i < 20'000; ++i) scan.Top().AddFile(u"f" + FromUtf8(std::to_string(i)), 1);
    auto filter = MakeRef<TJudge>();
    filter->fIsIncluded = [included](const IHierarchicalEnumerator&) { return included; };
    scan.Root().SetScanFilter(filter);
    TGate gate;
    scan.Top().fGate = &gate;
    scan.Begin();
    gate.WaitUntilReached();
    scan.fRoot->CancelScan();
    gate.Open();
    ASSERT_TRUE(scan.fRoot->WaitForScan(kForever));
    const TScanProgress progress = scan.fRoot->GetProgress();
    EXPECT_LT(progress.fFiles + progress.fExcludedObjects, 20'000)
        << "the whole folder was listed, included " << included;
    EXPECT_EQ(rsCancelled, scan.fRoot->GetState());
  }
}

// Folders that were never listed, and those that wait in the queue, take nothing from the sums of the others.
TEST(ScanFailures, ACancelledScanLeavesATreeThatAgreesWithItself) {
  for (uint32_t seed = 1; seed <= 20; ++seed)
    for (int threads : {1, 4}) {
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", threads " << threads);
      TFailingScan scan(threads);
      TRandomTree(seed).Fill(scan.Top(), 5);
      TMemoryEntry* held = &scan.Top();
      for (TMemoryEntry& child : scan.Top().fChildren)
        if (child.IsFolder() && child.fCanDescend) held = &child;
      TGate gate;
      held->fGate = &gate;
      scan.Begin();
      gate.WaitUntilReached();
      scan.fRoot->CancelScan();
      gate.Open();
      ASSERT_TRUE(scan.fRoot->WaitForScan(kForever));
      EXPECT_EQ("", Inconsistencies(ReadTree(*scan.fRoot->GetTopFolder())));
    }
}

}  // namespace
}  // namespace Vantrel::ScanEngine
