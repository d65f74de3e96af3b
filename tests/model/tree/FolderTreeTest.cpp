// Nodes: counting, dates, order, refusals, disposal, depth; the list of roots.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "model/roots/Root.h"
#include "model/roots/ScanRoots.h"
#include "model/roots/Storage.h"
#include "model/tree/CustomFolder.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/Failures.h"

namespace Vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Vantrel::Testing::MessageOf;

// A storage of which only the paths are asked.
class TPathsAlone : public TInterfaced<IStorage> {
 public:
  std::u16string_view GetProtocol() const override { return u"file:"; }
  char16_t GetPathDelimiter() const override { return NativePathDelimiter(); }
  std::u16string AbsolutePath(std::u16string_view pTyped) const override { return Vantrel::AbsolutePath(pTyped); }
  bool Exists(const std::u16string& pPath) const override { return !ResolvedPath(pPath).empty(); }
  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string&, const TScanContext&) const override {
    throw ENotImplemented("no scan in this test");
  }
  TStorageInformation GetInformation(const std::u16string&) const override { return {}; }
  std::string ErrorText(uint32_t pCode) const override { return OSErrorText(pCode); }
  std::unique_ptr<IStoredFile> OpenFile(const std::u16string&, const TScanContext&) const override {
    throw ENotImplemented("no scan in this test");
  }
};

// No scan runs in these tests: trees are put together by hand.
class TNoServices : public TInterfaced<IScanServices> {
 public:
  TRef<IStorage> FindStorage(std::u16string_view) override { return MakeRef<TPathsAlone>(); }
  TRef<IStorage> GetLoadedScanStorage(char16_t) override { throw ENotImplemented("no scan in this test"); }
  TRef<IScanEngine> CreateScanEngine(int32_t, TRef<IScanConfiguration>, int32_t, std::function<void()>) override {
    throw ENotImplemented("no scan in this test");
  }
};

class TTestRoot : public TCustomUnixRoot {
 public:
  explicit TTestRoot(std::shared_ptr<const TGlobalOptions> pOptions)
      : TCustomUnixRoot(u"/top", u"", MakeRef<TNoServices>(), std::move(pOptions), nullptr) {}
  using TBaseRoot::ExcludeState;
  using TBaseRoot::IncludeState;
};

class FolderTree : public testing::Test {
 protected:
  void SetUp() override {
    auto options = std::make_shared<TGlobalOptions>();
    options->CollectOwners = true;
    options->FileAgesDateType = TDateType::dtLastChange;
    fRoot = MakeRef<TTestRoot>(options);
    fTop = MakeRef<TFolderData>(fRoot, u"/top");
  }
  void TearDown() override {
    fTop->Dispose();
    fRoot->Dispose();
  }

  static TCustomFolderData& AddFolder(IFolderData& pParent, std::u16string_view pName) {
    return static_cast<TCustomFolderData&>(*pParent.CreateChild(pName));
  }

  // What listing a file brings.
  struct TFile {
    int64_t fSize = 0;
    TKivFileTime fDate = {};
    bool fLong = false;
  };
  void File(TCustomFolderData& pFolder, const TFile& pFile, bool pReplace = false) {
    TFileTableBuilder table;
    TEntryValues values;
    values.fSize = pFile.fSize;
    values.fLastChangeDate = pFile.fDate;
    table.Add(u"f.txt", values, kNoKey);
    TFileGroupContents contents;
    contents.fValues.fSize = pFile.fSize;
    contents.fValues.fFiles = 1;
    contents.fValues.fCompression = compr_no;
    contents.fLastChangeDate = pFile.fDate;
    contents.fLongPaths = pFile.fLong;
    contents.fFiles = table.Build();
    if (pReplace)
      pFolder.ReplaceFiles(contents);
    else
      pFolder.AddFiles(contents);
  }

  TRef<TTestRoot> fRoot;
  TRef<TCustomFolderData> fTop;
};

// Each thread raises the date a little above what it finds, so that all of them are always about the same step.
TEST(NewestDate, NoThreadTakesBackWhatAnotherHasRaised) {
  constexpr int kThreads = 4;
  constexpr int kSteps = 4'000'000;
  TNewestDate date;
  std::atomic<int> lost{0};
  std::latch start(kThreads);
  std::vector<std::jthread> threads;
  for (int i = 1; i <= kThreads; ++i)
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      for (int step = 0; step < kSteps; ++step) {
        const int64_t ticks = date.Get().fTicks + i;
        date.Raise({ticks});
        lost += date.Get().fTicks < ticks;
      }
    });
  threads.clear();
  EXPECT_EQ(lost, 0) << "dates that were lower again after they had been raised";
}

TEST_F(FolderTree, Refusals) {
  File(*fTop, {.fSize = 5});
  const TRef<IHierarchicalElement> file = fTop->FindFiles()[0];
  EXPECT_EQ("A file cannot find subfolders.", MessageOf<EInvalidOperation>([&] { file->FindSubFolders(); }));
  EXPECT_EQ("A file can't have child elements", MessageOf<EInvalidOperation>([&] { file->CreateChild(u"x"); }));
  EXPECT_EQ(nullptr, file->AsFolder());
  EXPECT_FALSE(fTop->Refresh(true)) << "never scanned";
  fRoot->IncludeState(rsFinished | rsShowsPreviousState);
  EXPECT_FALSE(fTop->Refresh(false)) << "shows a previous state";
  EXPECT_EQ("Folder data can only provide the file ages as configured during the scan",
            MessageOf<EInvalidArgumentValue>([&] { fTop->GetFileAgeDistribution(TDateType::dtCreation); }));
  const auto unknown = static_cast<int>(TColumn::mdCount) + 3;
  EXPECT_EQ("TCustomFolderData.GetFormattedValue: Unexpected View Type " + std::to_string(unknown),
            MessageOf<EInvalidArgumentValue>([&] { fTop->GetFormattedValue(static_cast<TColumn>(unknown), {}); }));
#ifdef NDEBUG
  EXPECT_EQ("TFolderData.Test() should not be called in non Debug versions",
            MessageOf<EInvalidOperation>([&] { fTop->Test(); }));
#endif
}

TEST_F(FolderTree, ResetKeepsAllButThreeBits) {
  TCustomFolderData& a = AddFolder(*fTop, u"a");
  TCustomFolderData& below = AddFolder(a, u"below");
  TRef<IFolderData> released(&below);
  File(below, {.fSize = 8, .fDate = {60}, .fLong = true});
  File(a, {.fSize = 1});
  File(*fTop, {.fSize = 100});
  constexpr TFolderStates kCleared = fsSubFolderScanningFinished | fsContainsLongPaths | fsDummySubFoldersAdded;
  constexpr TFolderStates kAll = 0x7FF & ~fsRemoving;
  a.IncludeFolderState(kAll);
  a.Reset();
  EXPECT_EQ(kAll & ~kCleared, a.GetFolderState());
  EXPECT_EQ(TSizeValues{}, a.GetValues());
  EXPECT_THAT(a.FindSubFolders(), IsEmpty());
  EXPECT_THAT(a.FindFiles(), IsEmpty());
  EXPECT_EQ((std::array<int64_t, 3>{100, 1, 1}), (std::array{fTop->GetSize(), fTop->GetFiles(), fTop->GetFolders()}));
  EXPECT_EQ(0, fTop->GetFolderState() & fsContainsLongPaths);
  EXPECT_NE(0, released->GetFolderState() & fsDisposed);
  EXPECT_EQ(u"/top/a", a.GetFullPath());
}

TEST_F(FolderTree, NothingChangesAfterDisposal) {
  TCustomFolderData& a = AddFolder(*fTop, u"a");
  TRef<TCustomFolderData> keepA(&a);
  File(a, {.fSize = 8, .fDate = {60}});
  TCustomFolderData& other = AddFolder(*fTop, u"other");
  File(other, {.fSize = 1000, .fDate = {9000}});
  auto changeAll = [&] {
    keepA->AddChildValues(other, true);
    keepA->SetNewerLastAccessDate({77'777});
    keepA->SetNewerLastChangeDate({77'777});
    File(*keepA, {.fSize = 3});
    File(*keepA, {.fSize = 3}, true);
    EXPECT_EQ(nullptr, keepA->CreateChild(u"late"));
    keepA->Reset();
    keepA->Remove();
    EXPECT_FALSE(keepA->Refresh(true));
    EXPECT_EQ(8, keepA->GetSize());
    EXPECT_EQ(60, keepA->GetLastChangeDate().fTicks);
    EXPECT_FALSE(keepA->GetLastAccessDate().IsSet());
  };
  a.Remove();  // the node alone
  changeAll();
  EXPECT_EQ(nullptr, keepA->GetRoot());
  EXPECT_EQ(1000, fTop->GetSize());

  keepA = &AddFolder(*fTop, u"b");
  File(*keepA, {.fSize = 8, .fDate = {60}});
  fRoot->Dispose();  // the root: its nodes are still there
  changeAll();
  EXPECT_EQ(1008, fTop->GetSize());
}

TEST_F(FolderTree, TenThousandLevels) {
  TRef<TCustomFolderData> node = fTop, middle;
  for (int level = 1; level <= 10'000; ++level) {
    // Made first and counted at the end: this test is about depth, not about the work that depth causes.
    node = &AddFolder(*node, u"d");
    if (level == 5'000) middle = node;
  }
  File(*node, {.fSize = 3});
  EXPECT_EQ((std::array<int64_t, 3>{3, 1, 10'000}),
            (std::array{fTop->GetSize(), fTop->GetFiles(), fTop->GetFolders()}));
  EXPECT_EQ(4u + 2 * 10'000, node->GetFullPath().size());
  middle->Reset();
  EXPECT_EQ((std::array<int64_t, 3>{0, 0, 5'000}), (std::array{fTop->GetSize(), fTop->GetFiles(), fTop->GetFolders()}));
  EXPECT_NE(0, node->GetFolderState() & fsDisposed);
  node = nullptr;
  fTop->Dispose();
  EXPECT_NE(0, middle->GetFolderState() & fsDisposed);
}

TEST_F(FolderTree, ListOfRoots) {
  auto options = std::make_shared<TGlobalOptions>();
  options->MaximumRoots = 3;
  TRef<IScanRoots> roots = CreateScanRoots(MakeRef<TNoServices>(), options);
  const TRef<IHierarchicalRoot> data = roots->CreateRoot(u"/data");
  EXPECT_EQ(data, roots->CreateRoot(u"/data/"));
  EXPECT_EQ(data, roots->CreateRoot(u"/other/../data/."));
  const TRef<IHierarchicalRoot> inner = roots->CreateRoot(u"/data/inner");
  const TRef<IHierarchicalRoot> masked = roots->CreateRoot(u"/data/*.none");
  EXPECT_NE(data, masked);
  EXPECT_EQ(data->GetPath(), masked->GetPath());
  EXPECT_EQ(data->GetPath() + NativePathDelimiter() + u"*.none", masked->GetTitle());
  EXPECT_EQ("TDSMCustomRoots.CreateRoot: more than 3 paths cannot be open at once (option MaximumRoots)",
            MessageOf<EInvalidOperation>([&] { roots->CreateRoot(u"/fourth"); }));
  EXPECT_THAT(roots->GetScannedPaths(), ElementsAre(data->GetPath(), inner->GetPath(), data->GetPath()));
  auto holding = [&](std::u16string_view pPath) { return roots->FindRootsHolding(AbsolutePath(pPath)); };
  EXPECT_THAT(holding(u"/data"), ElementsAre(data, masked));
  EXPECT_THAT(holding(u"/data/inner/x"), ElementsAre(data, inner, masked));
  EXPECT_THAT(holding(u"/database"), IsEmpty());
  EXPECT_EQ(0, roots->CountActiveScans());
  EXPECT_EQ("TVirtualRootFolder.CreateChild: the children of a combined root belong to other roots",
            MessageOf<EInvalidOperation>([&] { roots->GetVirtualRoot()->GetTopFolder()->CreateChild(u"x"); }));
  roots->Remove(*masked);
  EXPECT_NE(0u, masked->GetState() & rsDisposed);
  EXPECT_THAT(roots->GetRoots(), ElementsAre(data, inner));
  roots->Dispose();
  EXPECT_NE(0u, data->GetState() & rsDisposed);
}

}  // namespace
}  // namespace Vantrel
