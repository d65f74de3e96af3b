// Searches on made-up storages and in their trees: what is found, threads, errors, limits, pauses, the end.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

#include "platform/text/Text.h"
#include "search/files/FileFactsReader.h"
#include "search/files/FileSearch.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"
#include "search/patterns/TypedPattern.h"
#include "search/query/Parser.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"

namespace Vantrel::Search {

namespace {

using namespace Testing;
using TPaths = std::vector<std::string>;

TFileSearchSettings SettingsOf(std::u16string_view pQuery, int pThreads = 2) {
  TFileSearchSettings settings;
  settings.fExpression = AdaptExpression(TDSMExpressionParser().Parse(pQuery), TFileFactsReader::kOfTree);
  settings.fThreads = pThreads;
  return settings;
}

// Everything that a search has found, largest first.
TPaths Found(TFileSearch& pSearch) {
  std::vector<TFoundItem> items = pSearch.TakeFound();
  SortFoundItems(items);
  TPaths paths;
  for (const TFoundItem& item : items)
    paths.push_back(ToUtf8(item.FullPath()) + " " + std::to_string(item.fHasSize ? item.fValues.fSize : -1));
  return paths;
}

TPaths SearchPath(TMemoryRoot& pRoot, TFileSearchSettings pSettings) {
  TFileSearch search(std::move(pSettings));
  search.AddPath(pRoot.Root());
  search.Start();
  EXPECT_TRUE(search.WaitForEnd(kForever));
  return Found(search);
}

TPaths SearchTree(TMemoryRoot& pRoot, TFileSearchSettings pSettings) {
  TFileSearch search(std::move(pSettings));
  search.AddTree(TRef<IHierarchicalRoot>(&pRoot.Root()));
  search.Start();
  EXPECT_TRUE(search.WaitForEnd(kForever));
  return Found(search);
}

// What lies beneath a folder and fulfils a condition, by a plain walk. A folder has a size only in a tree.
struct TReference {
  std::function<bool(const TMemoryEntry&)> fMatches;
  std::vector<std::pair<int64_t, std::u16string>> fFound;
  bool fWithSizes = false;

  int64_t Visit(const TMemoryEntry& pFolder, const std::u16string& pPath) {
    int64_t total = 0;
    for (const TMemoryEntry& child : pFolder.fChildren) {
      const std::u16string path = pPath + u"/" + child.fName;
      const int64_t beneath = child.IsFolder() && child.fCanDescend ? Visit(child, path) : 0;
      const int64_t size = child.IsFolder() ? beneath : child.fValues.fSize;
      total += size;
      if (fMatches(child)) fFound.emplace_back(child.IsFolder() && !fWithSizes ? -1 : size, path);
    }
    return total;
  }

  TPaths Sorted() {
    std::sort(fFound.begin(), fFound.end(), [](const auto& pA, const auto& pB) {
      return pA.first != pB.first ? pA.first > pB.first : pA.second < pB.second;
    });
    TPaths paths;
    for (const auto& [size, path] : fFound) paths.push_back(ToUtf8(path) + " " + std::to_string(size));
    return paths;
  }
};

}  // namespace

TEST(FileSearch, FindsTheSameOnStorageAndInTreeWithAnyNumberOfThreads) {
  struct TCase {
    const char16_t* fQuery;
    std::function<bool(const TMemoryEntry&)> fMatches;
  };
  const TCase cases[] = {
      {u"", [](const TMemoryEntry&) { return true; }},
      {u"name:7", [](const TMemoryEntry& pEntry) { return pEntry.fName.find(u'7') != std::u16string::npos; }},
      {u"name:*.c,*.mp3",
       [](const TMemoryEntry& pEntry) { return pEntry.fName.ends_with(u".c") || pEntry.fName.ends_with(u".mp3"); }},
      {u"size:>50000B name:1",
       [](const TMemoryEntry& pEntry) {
         return !pEntry.IsFolder() && pEntry.fValues.fSize > 50'000 && pEntry.fName.find(u'1') != std::u16string::npos;
       }},
  };
  size_t found = 0;
  for (uint32_t seed = 1; seed <= 6; ++seed) {
    TMemoryRoot root;
    root.fOptions->KeepFiles = true;
    TRandomTree(seed).Fill(root.Top(), 5);
    root.Scan();
    for (const TCase& item : cases)
      for (const int threads : {1, 2, 16}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << threads << " threads, " << ToUtf8(item.fQuery));
        TReference onStorage{item.fMatches, {}}, inTree{item.fMatches, {}, true};
        onStorage.Visit(root.Top(), u"/memory");
        inTree.Visit(root.Top(), u"/memory");
        found += onStorage.fFound.size();
        EXPECT_EQ(SearchPath(root, SettingsOf(item.fQuery, threads)), onStorage.Sorted());
        EXPECT_EQ(SearchTree(root, SettingsOf(item.fQuery, threads)), inTree.Sorted());
      }
  }
  EXPECT_GT(found, 1000u);
}

TEST(FileSearch, FindsEmptyFoldersAndStaysAtItsLevel) {
  TMemoryRoot root;
  root.fOptions->KeepFiles = true;
  root.Top().AddFolder(u"empty");
  root.Top().AddFolder(u"locked").fCanDescend = false;
  root.Top().AddFolder(u"full").AddFile(u"file", 5);
  root.Scan();
  EXPECT_EQ(SearchPath(root, SettingsOf(u"full,file")), (TPaths{"/memory/full/file 5", "/memory/full -1"}));
  EXPECT_EQ(SearchPath(root, SettingsOf(u"mdata:depth:=1 (full,file)")), TPaths{"/memory/full -1"});
  EXPECT_EQ(SearchTree(root, SettingsOf(u"mdata:depth:=1 (full,file)")), TPaths{"/memory/full 5"});
}

TEST(FileSearch, ARootWithoutATreeHasNothingToFind) {
  TMemoryRoot root;
  root.Top().AddFile(u"file", 1);
  EXPECT_EQ(SearchTree(root, SettingsOf(u"file")), TPaths()) << "it was never scanned";
}

TEST(FileSearch, TheFilterOfAScanApplies) {
  TMemoryRoot root;
  root.Top().AddFolder(u"left").AddFile(u"a.txt", 1);
  TMemoryEntry& taken = root.Top().AddFolder(u"taken");
  taken.AddFile(u"b.txt", 2);
  taken.AddFile(u"c.txt", 3);
  auto patterns = MakeRef<PatternMatching::TPatternList>(u'/');
  for (const char16_t* pattern : {u"left", u"c.*"})
    patterns->Add(PatternMatching::CreateTypedPattern(pattern, PatternMatching::TPatternType::ptyExclude));
  TFileSearchSettings settings = SettingsOf(u"txt");
  settings.fFilter = MakeRef<TPatternFilter>(patterns);
  EXPECT_EQ(SearchPath(root, std::move(settings)), TPaths{"/memory/taken/b.txt 2"});
}

TEST(FileSearch, ListsWhatCouldNotBeSearched) {
  TMemoryRoot root;
  root.Top().AddFolder(u"denied").FailListing(1, TMemoryStorage::AccessDeniedCode());
  TMemoryEntry& half = root.Top().AddFolder(u"half");
  for (const char16_t* name : {u"f1", u"f2", u"f3"}) half.AddFile(name, 1);
  half.FailListing(3, 5);
  TMemoryEntry& raises = root.Top().AddFolder(u"raises");
  raises.AddFile(u"f4", 1);
  raises.fRaises = true;
  raises.FailListing(1, 5);
  TFileSearch search(SettingsOf(u"f"));
  search.AddPath(root.Root());
  TMemoryRoot missing(nullptr, u"/gone");
  missing.fServices->fStorages.clear();
  search.AddPath(missing.Root());
  search.Start();
  ASSERT_TRUE(search.WaitForEnd(kForever));
  EXPECT_EQ(Found(search), (TPaths{"/memory/half/f1 1", "/memory/half/f2 1", "/memory/half -1"}));
  std::vector<TSearchError> errors = search.GetErrors();
  std::sort(errors.begin(), errors.end(), [](const auto& pA, const auto& pB) { return pA.fPath < pB.fPath; });
  ASSERT_EQ(errors.size(), 4u);
  const auto shown = [](const TSearchError& pError) {
    return ToUtf8(pError.fPath) + (pError.fIsTarget ? " target" : "") + (pError.fIsPartial ? " partial" : "");
  };
  EXPECT_EQ(shown(errors[0]), "/gone target");
  EXPECT_EQ(shown(errors[1]), "/memory/denied");
  EXPECT_EQ(shown(errors[2]), "/memory/half partial");
  EXPECT_EQ(shown(errors[3]), "/memory/raises");
  EXPECT_EQ(search.GetProgress().fErrors, 4);
}

// The storage lists files that can no longer be opened, or not by this user.
TEST(FileSearch, AnUnreadableFileIsAnErrorAVanishedOneIsNot) {
  TMemoryRoot root;
  root.Top().AddFile(u"gone", 5);
  uint32_t code = TMemoryStorage::NotFoundCode();
  root.fServices->fOpenFile = [&]() -> std::unique_ptr<IStoredFile> { throw EOSError(code, "Opening", u"a file"); };
  for (const auto& [query, found] : {std::pair<const char16_t*, TPaths>{u"content:x", {}},
                                     {u"content:!=x", {"/memory/gone 5"}},
                                     {u"mdata:Title:x", {}}}) {
    for (const bool isDenied : {false, true}) {
      code = isDenied ? TMemoryStorage::AccessDeniedCode() : TMemoryStorage::NotFoundCode();
      TFileSearchSettings settings = SettingsOf(u"");
      settings.fExpression = AdaptExpression(TDSMExpressionParser().Parse(query), TFileFactsReader::kOfStorage);
      TFileSearch search(std::move(settings));
      search.AddPath(root.Root());
      search.Start();
      ASSERT_TRUE(search.WaitForEnd(kForever));
      EXPECT_EQ(Found(search), found);
      const std::vector<TSearchError> errors = search.GetErrors();
      ASSERT_EQ(errors.size(), isDenied ? 1u : 0u) << ToUtf8(query);
      for (const TSearchError& error : errors) EXPECT_EQ(error.fPath, u"/memory/gone");
    }
  }
}

// On NTFS such a file is stored in a reparse point. Its storage can open it, or tells why not.
TEST(FileSearch, ACompressedFileWithAReparsePointIsNoLink) {
  for (const TAttributes attributes : {kAttributeReparsePoint, kAttributeReparsePoint | kAttributeCompressed}) {
    TMemoryRoot root;
    root.Top().AddFile(u"file", 5).fValues.fAttributes = attributes;
    int opened = 0;
    root.fServices->fOpenFile = [&]() -> std::unique_ptr<IStoredFile> {
      ++opened;
      throw EOSError(TMemoryStorage::NotFoundCode(), "Opening", u"a file");
    };
    TFileSearchSettings settings = SettingsOf(u"");
    settings.fExpression = AdaptExpression(TDSMExpressionParser().Parse(u"content:x"), TFileFactsReader::kOfStorage);
    SearchPath(root, std::move(settings));
    EXPECT_EQ(opened, (attributes & kAttributeCompressed) != 0 ? 1 : 0);
  }
}

namespace {

constexpr int64_t kOpenedLength = 1'000'000;

// A file that grows by as much as is read of it. What is added to it holds the needle.
class TGrowingFile final : public IStoredFile {
 public:
  explicit TGrowingFile(int64_t& pRead) : fRead(pRead) {}
  size_t Read(char* pBuffer, size_t pLength) override {
    if (fRead > 10 * kOpenedLength) return 0;  // a search without end would not show which test it is
    std::fill_n(pBuffer, pLength, '.');
    constexpr std::string_view kNeedle = "\nneedle\n";
    if (fRead >= kOpenedLength) kNeedle.copy(pBuffer, pLength);
    fRead += static_cast<int64_t>(pLength);
    return pLength;
  }
  TStoredFileFacts GetFacts() override { return {.fSize = kOpenedLength + fRead}; }

 private:
  int64_t& fRead;
};

}  // namespace

TEST(FileSearch, AGrowingFileIsSearchedUpToTheLengthThatItHad) {
  for (const char16_t* query : {u"content:needle", u"content:~^needle$"}) {
    TMemoryRoot root;
    root.Top().AddFile(u"log", 5);
    int64_t read = 0;
    root.fServices->fOpenFile = [&] { return std::make_unique<TGrowingFile>(read); };
    TFileSearchSettings settings = SettingsOf(u"");
    settings.fExpression = AdaptExpression(TDSMExpressionParser().Parse(query), TFileFactsReader::kOfStorage);
    EXPECT_EQ(SearchPath(root, std::move(settings)), TPaths{}) << ToUtf8(query);
    EXPECT_EQ(read, kOpenedLength) << ToUtf8(query) << ": what was written after the opening was read";
  }
}

TEST(FileSearch, EndsWhenEnoughIsFound) {
  TMemoryRoot root;
  TRandomTree(3).Fill(root.Top(), 6);
  TFileSearchSettings settings = SettingsOf(u"");
  settings.fMostFound = 5;
  TFileSearch search(std::move(settings));
  search.AddPath(root.Root());
  search.Start();
  ASSERT_TRUE(search.WaitForEnd(kForever));
  EXPECT_EQ(Found(search).size(), 5u);
  EXPECT_TRUE(search.HasFoundEnough());
  EXPECT_FALSE(search.WasCancelled());
}

// A worker stands in the listing of the first folder until the gate opens.
TEST(FileSearch, IsCancelledAndPausedInTheMiddle) {
  for (const bool isPaused : {false, true}) {
    TMemoryRoot root;
    TGate gate;
    TMemoryEntry& first = root.Top().AddFolder(u"first");
    first.AddFile(u"inside", 1);
    first.fGate = &gate;
    first.AddFolder(u"beneath").AddFile(u"never seen", 1);
    TFileSearch search(SettingsOf(u"", 1));
    search.AddPath(root.Root());
    search.Start();
    gate.WaitUntilReached();
    EXPECT_EQ(Found(search), TPaths{"/memory/first -1"}) << "what is found is handed over while the search runs";
    if (isPaused) search.SetPaused(true);
    if (!isPaused) search.Cancel();
    gate.Open();
    EXPECT_EQ(search.WaitForEnd(isPaused ? 50 : kForever), !isPaused);
    if (isPaused) search.SetPaused(false);
    EXPECT_TRUE(search.WaitForEnd(kForever));
    EXPECT_EQ(search.WasCancelled(), !isPaused);
    const TPaths found = Found(search);
    const bool isWhole = std::find(found.begin(), found.end(), "/memory/first/beneath/never seen 1") != found.end();
    EXPECT_EQ(isWhole, isPaused);
  }
  // A paused search can be cancelled, and an object that goes away ends its search.
  TMemoryRoot root;
  TRandomTree(4).Fill(root.Top(), 4);
  TFileSearch search(SettingsOf(u""));
  search.AddPath(root.Root());
  search.SetPaused(true);
  search.Start();
}

namespace {

// Tells whether two threads were in one place at the same time. The first one waits for the second.
class TMeeting {
 public:
  void Enter() {
    constexpr std::chrono::seconds kLongEnough(10);  // only there to end a search that one thread does alone
    std::unique_lock lock(fLock);
    ++fInside;
    fChanged.notify_all();
    if (!fHaveMet && !fIsGivenUp) {
      fHaveMet = fChanged.wait_for(lock, kLongEnough, [this] { return fHaveMet || fInside > 1; });
      fIsGivenUp = !fHaveMet;
    }
    --fInside;
  }
  bool HaveMet() const { return fHaveMet; }  // once all threads are done

 private:
  std::mutex fLock;
  std::condition_variable fChanged;
  int fInside = 0;
  bool fHaveMet = false, fIsGivenUp = false;
};

}  // namespace

TEST(FileSearch, WorkersShareATreeOfAnyShape) {
  struct TShape {
    const char* fName;
    int fFolders, fFilesInEach;
  };
  for (const TShape& shape : {TShape{"many small folders", 300, 1}, {"one folder of many files", 1, 300}}) {
    TMemoryRoot root;
    root.fOptions->KeepFiles = true;
    for (int i = 0; i < shape.fFolders; ++i) {
      TMemoryEntry& folder = root.Top().AddFolder(u"folder" + FromUtf8(std::to_string(i)));
      for (int file = 0; file < shape.fFilesInEach; ++file) folder.AddFile(FromUtf8(std::to_string(file)), 5);
    }
    root.Scan();
    TMeeting meeting;
    std::atomic<int> opened{0};
    root.fServices->fOpenFile = [&]() -> std::unique_ptr<IStoredFile> {
      ++opened;
      meeting.Enter();
      throw EOSError(TMemoryStorage::NotFoundCode(), "Opening", u"a file");
    };
    TFileSearchSettings settings = SettingsOf(u"");
    settings.fExpression = AdaptExpression(TDSMExpressionParser().Parse(u"content:x"), TFileFactsReader::kOfStorage);
    TFileSearch search(std::move(settings));
    search.AddTree(TRef<IHierarchicalRoot>(&root.Root()), root.Root().GetStorage());
    search.Start();
    ASSERT_TRUE(search.WaitForEnd(kForever));
    EXPECT_TRUE(meeting.HaveMet()) << shape.fName << ": one worker did all the work";
    EXPECT_EQ(opened, 300) << shape.fName;
    EXPECT_EQ(search.GetProgress().fFiles, 300) << shape.fName;
  }
}

}  // namespace Vantrel::Search
