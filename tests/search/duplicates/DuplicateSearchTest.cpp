// The search for duplicates over files in memory: groups, what is read how often, threads, pause, cancel, and files
// that change, vanish or cannot be read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <map>
#include <numeric>
#include <random>
#include <thread>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/duplicates/DuplicateSearch.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Search {

namespace {

using namespace Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using TGroups = std::vector<std::vector<std::string>>;

constexpr int64_t kForever = 300'000;  // only there to end a hang

struct TMemoryFile {
  std::string fBytes;
  uint64_t fId = 0;
  int64_t fListedSize = -1;                  // as a listing had it; -1: as it is
  int fFailAtOpening = 0;                    // this opening, counted from 1, fails
  int fChangeAtOpening = 0;                  // at this opening the file is written while it is read
  std::map<int, std::string> fOtherBytes{};  // what an opening gives in place of the bytes
  TGate* fGate = nullptr;                    // the reading passes through it
  int fGateAtOpening = 1;                    // of this opening
  int fOpenings = 0;
  int64_t fBytesRead = 0;
  int64_t fChanges = 0;
  TKivFileTime fStatusChange{1};
  uint64_t fPlace = 0;  // on the disk; 0: not known
};

class TMemoryFiles : public TInterfaced<IStorage> {
 public:
  std::map<std::u16string, TMemoryFile> fFiles;
  std::vector<std::string> fOpened;  // in this order

  TMemoryFile& Add(const std::u16string& pName, std::string pBytes) {
    TMemoryFile& file = fFiles[u"/m/" + pName];
    file.fBytes = std::move(pBytes);
    file.fId = fFiles.size();
    return file;
  }
  // The files, and the folders between them and the searched path /m.
  std::vector<TFoundItem> Found() {
    std::vector<TFoundItem> found;
    std::map<std::u16string, TRef<const TFoundFolder>> folders;
    const auto add = [&](const std::u16string& pPath) -> TFoundItem& {
      const size_t name = pPath.rfind(u'/') + 1;
      TRef<const TFoundFolder>& folder = folders[pPath.substr(0, name - 1)];
      if (!folder) folder = MakeRef<const TFoundFolder>(pPath.substr(0, name - 1), u'/', TRef<IStorage>(this));
      TFoundItem& item = found.emplace_back();
      item.fFolder = folder;
      item.fName = pPath.substr(name);
      return item;
    };
    for (const auto& [path, file] : fFiles)
      add(path).fValues.fSize = file.fListedSize < 0 ? static_cast<int64_t>(file.fBytes.size()) : file.fListedSize;
    for (const auto& [path, folder] : std::map(folders)) {
      if (path == u"/m") continue;
      TFoundItem& item = add(path);
      item.fValues.fAttributes = kAttributeDirectory;
      item.fIsFolder = item.fIsEntered = true;
    }
    return found;
  }
  std::optional<TStoredFileFacts> QueryFacts(const std::u16string& pPath) const override {
    TCriticalSectionLock lock(fLock);
    return FactsOf(fFiles.at(pPath));
  }
  std::optional<uint64_t> PlaceOnDisk(const std::u16string& pPath) const override {
    const uint64_t place = fFiles.at(pPath).fPlace;
    return place == 0 ? std::nullopt : std::optional(place);
  }
  int CountOpenings() const {
    TCriticalSectionLock lock(fLock);
    return std::accumulate(fFiles.begin(), fFiles.end(), 0,
                           [](int pSum, const auto& pFile) { return pSum + pFile.second.fOpenings; });
  }

  std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext&) const override {
    TMemoryFile& file = const_cast<TMemoryFiles*>(this)->fFiles.at(pPath);
    TCriticalSectionLock lock(fLock);
    const_cast<TMemoryFiles*>(this)->fOpened.push_back(ToUtf8(pPath.substr(3)));
    if (++file.fOpenings == file.fFailAtOpening)
      throw EOSError(TMemoryStorage::NotFoundCode(), "TMemoryFiles.OpenFile", pPath);
    return std::make_unique<TOpenFile>(file, fLock);
  }
  std::u16string_view GetProtocol() const override { return u"memory:"; }
  char16_t GetPathDelimiter() const override { return u'/'; }
  std::u16string AbsolutePath(std::u16string_view pTyped) const override { return std::u16string(pTyped); }
  bool Exists(const std::u16string& pPath) const override { return fFiles.contains(pPath); }
  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string&, const TScanContext&) const override {
    return nullptr;
  }
  TStorageInformation GetInformation(const std::u16string&) const override { return {}; }
  std::string ErrorText(uint32_t) const override { return "not there"; }

 private:
  static TStoredFileFacts FactsOf(const TMemoryFile& pFile) {
    return {1, pFile.fId, 0, static_cast<int64_t>(pFile.fBytes.size()), {1 + pFile.fChanges}, pFile.fStatusChange};
  }

  class TOpenFile final : public IStoredFile {
   public:
    TOpenFile(TMemoryFile& pFile, TCriticalSection& pLock)
        : fFile(pFile), fLock(pLock), fOpening(pFile.fOpenings), fBytes(pFile.fBytes) {
      if (const auto other = pFile.fOtherBytes.find(fOpening); other != pFile.fOtherBytes.end()) fBytes = other->second;
    }
    size_t Read(char* pBuffer, size_t pLength) override {
      if (fFile.fGate && fOpening == fFile.fGateAtOpening) fFile.fGate->Pass();
      TCriticalSectionLock lock(fLock);
      if (fOpening == fFile.fChangeAtOpening) ++fFile.fChanges;
      const size_t length = std::min(pLength, fBytes.size() - std::min(fBytes.size(), fPosition));
      std::memcpy(pBuffer, fBytes.data() + fPosition, length);
      fPosition += length;
      fFile.fBytesRead += static_cast<int64_t>(length);
      return length;
    }
    TStoredFileFacts GetFacts() override {
      TCriticalSectionLock lock(fLock);
      return FactsOf(fFile);
    }
    bool TrySeek(uint64_t pPosition) override {
      fPosition = pPosition;
      return true;
    }

   private:
    TMemoryFile& fFile;
    TCriticalSection& fLock;
    const int fOpening;
    std::string fBytes;
    size_t fPosition = 0;
  };

  mutable TCriticalSection fLock;
};

TDuplicateResult Search(TMemoryFiles& pFiles, TDuplicateSearchSettings pSettings = {}) {
  TDuplicateSearch search(std::move(pSettings), pFiles.Found());
  EXPECT_TRUE(search.WaitForEnd(kForever));
  EXPECT_EQ(search.GetStatus(), ThreadPool::TTaskStatus::tsCompleted);
  return search.TakeResult();
}

// The names of each group, in the order of the names of the first ones. A hard link has a "=" in front.
TGroups NamesOf(const TDuplicateResult& pResult) {
  TGroups groups;
  for (const TDuplicateGroup& group : pResult.fGroups) {
    groups.emplace_back();
    for (const TDuplicateName& name : group.fNames)
      groups.back().push_back((name.fIsLink ? "=" : "") + ToUtf8(name.fFile->GetObjectName()));
  }
  std::sort(groups.begin(), groups.end());
  return groups;
}

std::vector<std::string> NotesOf(const TDuplicateResult& pResult) {
  std::vector<std::string> notes;
  for (const TDuplicateNote& note : pResult.fNotes)
    notes.push_back(ToUtf8(note.fPath.substr(3)) + ": " + ToUtf8(note.fText));
  return notes;
}

}  // namespace

TEST(DuplicateSearch, FindsWhatAPlainComparisonFinds) {
  using enum TDuplicatesCompareType;
  size_t largest = 0;
  for (uint32_t seed = 1; seed <= 3; ++seed) {
    std::mt19937 chance(seed);
    const auto files = MakeRef<TMemoryFiles>();
    std::map<std::string, std::vector<std::string>> expected;
    for (int i = 0; i < 150; ++i) {
      // Few lengths and few differences, at the beginning, in the middle and at the end.
      const size_t lengths[] = {1, 7, 16, 17, 64, 65, 300'000};
      std::string bytes(lengths[chance() % 7], 'x');
      if (chance() % 2) bytes[chance() % 3 * (bytes.size() - 1) / 2] = static_cast<char>('a' + chance() % 3);
      const std::string name = std::to_string(1000 + i);
      files->Add(FromUtf8(name), bytes);
      expected[bytes].push_back(name);
    }
    TGroups reference;
    for (const auto& [bytes, names] : expected)
      if (names.size() > 1) reference.push_back(names);
    std::sort(reference.begin(), reference.end());
    for (const int64_t small : {int64_t{0}, int64_t{4}, int64_t{1} << 20})
      for (const int threads : {1, 2, 16})
        for (const auto checksum : {ctFastChecksum, ctMD5, ctSHA256}) {
          SCOPED_TRACE(testing::Message() << "seed " << seed << ", " << small << " bytes, " << threads << " threads");
          TDuplicateSearchSettings settings;
          settings.fDuplicatesCompareTypes = {checksum};
          settings.fSmallChecksumSize = small;
          settings.fThreads = threads;
          settings.fVerify = threads == 2;
          EXPECT_EQ(NamesOf(Search(*files, settings)), reference);
        }
    largest = std::max(largest, reference.size());
  }
  EXPECT_GT(largest, 10u);
}

TEST(DuplicateSearch, ReadsNothingThatItNeedNot) {
  const auto files = MakeRef<TMemoryFiles>();
  const std::string large(100'000, 'x');
  const TMemoryFile& alone = files->Add(u"alone", "only one of this size");
  TMemoryFile& small = files->Add(u"small", "abc");
  files->Add(u"small 2", "abc");
  const TMemoryFile& same = files->Add(u"same", large);
  const TMemoryFile& link = files->Add(u"same link", large);
  files->fFiles[u"/m/same link"].fId = same.fId;
  files->Add(u"same too", large);
  const TMemoryFile& other = files->Add(u"other", "y" + large.substr(1));
  files->Add(u"empty", "");
  files->Add(u"empty 2", "");
  TDuplicateSearchSettings settings;
  settings.fSmallChecksumSize = 1000;
  TDuplicateResult result = Search(*files, settings);
  EXPECT_EQ(NamesOf(result), (TGroups{{"same", "=same link", "same too"}, {"small", "small 2"}}));
  EXPECT_EQ(result.fGroups[0].fWasted, 100'000) << "the most wasteful comes first, and a link wastes nothing";
  EXPECT_EQ(result.fWasted, 100'003);
  EXPECT_EQ(alone.fOpenings, 0);
  EXPECT_EQ(small.fOpenings, 1);
  EXPECT_EQ(other.fOpenings, 1);
  EXPECT_EQ(other.fBytesRead, 1000);
  // One of the two names is read, at first some bytes and then all.
  EXPECT_EQ(same.fBytesRead + link.fBytesRead, 101'000);
  settings.fWithEmpty = true;
  EXPECT_EQ(Search(*files, settings).fGroups.size(), 3u);
  settings.fSearchMode = TDuplicatesSearchMode::UniqueFiles;
  std::vector<std::string> unique;
  for (const TFoundItem& item : Search(*files, settings).fUnique) unique.push_back(ToUtf8(item.fName));
  EXPECT_THAT(unique, testing::UnorderedElementsAre("alone", "other"));
}

TEST(DuplicateSearch, LargeFilesAreToldApartByPieces) {
  const auto files = MakeRef<TMemoryFiles>();
  const std::string bytes(20'000'000, 'x');
  files->Add(u"same", bytes);
  const TMemoryFile& same = files->Add(u"same too", bytes);
  // One stretch differs, far from both ends, and one byte.
  const TMemoryFile& other = files->Add(u"other", std::string(bytes).replace(11'111'111, 300'000, 300'000, 'y'));
  const TMemoryFile& byte = files->Add(u"one byte", std::string(bytes).replace(11'111'111, 1, 1, 'y'));
  EXPECT_EQ(NamesOf(Search(*files)), (TGroups{{"same", "same too"}}));
  EXPECT_LT(other.fBytesRead, 1'000'000);
  EXPECT_EQ(other.fOpenings, 2);
  for (const TMemoryFile* file : {&same, &byte}) {
    EXPECT_EQ(file->fOpenings, 3);
    EXPECT_LT(file->fBytesRead, 21'000'000);
  }
}

TEST(DuplicateSearch, OnARotatingDiskOneFileIsReadAfterTheOther) {
  const auto files = MakeRef<TMemoryFiles>();
  // In the opposite order of their names, but for one whose place is not known.
  const char16_t* const names[] = {u"a", u"b", u"c", u"d"};
  for (const char16_t* name : names) files->Add(name, std::string(5000, 'x')).fPlace = 200 - *name;
  files->fFiles[u"/m/c"].fPlace = 0;
  TDuplicateSearchSettings settings;
  settings.fReadsInOrder = true;
  settings.fThreads = 16;
  settings.fSmallChecksumSize = 100;
  EXPECT_EQ(NamesOf(Search(*files, settings)), (TGroups{{"a", "b", "c", "d"}}));
  EXPECT_THAT(files->fOpened, ElementsAre("c", "d", "b", "a", "c", "d", "b", "a"));
}

TEST(DuplicateSearch, WhatChangesOrCannotBeReadLeavesItsGroup) {
  const auto files = MakeRef<TMemoryFiles>();
  const std::string bytes(5000, 'x');
  files->Add(u"a", bytes);
  files->Add(u"b", bytes);
  files->Add(u"denied", bytes).fFailAtOpening = 1;
  files->Add(u"gone before the second pass", bytes).fFailAtOpening = 2;
  files->Add(u"grown since it was listed", bytes + "y").fListedSize = 5000;
  files->Add(u"shorter", bytes).fOtherBytes[1] = "xxx";
  files->Add(u"written in the first pass", bytes).fChangeAtOpening = 1;
  files->Add(u"written in the second pass", bytes).fChangeAtOpening = 2;
  TDuplicateSearchSettings settings;
  settings.fSmallChecksumSize = 100;
  TDuplicateResult result = Search(*files, settings);
  EXPECT_EQ(NamesOf(result), (TGroups{{"a", "b"}}));
  EXPECT_THAT(NotesOf(result), ElementsAre("denied: not there", "gone before the second pass: not there",
                                           "grown since it was listed: changed during the search",
                                           "shorter: became shorter while it was read",
                                           "written in the first pass: changed while it was read",
                                           "written in the second pass: changed while it was read"));
}

class TMemoryCache final : public TInterfaced<IChecksumCache> {
 public:
  std::optional<TMD5Hash> Find(const TStoredFileFacts& pFacts, TCachedSumKind pKind) override {
    TCriticalSectionLock lock(fLock);
    for (const auto& [facts, kind, hash] : fSums)
      if (facts == pFacts && kind == pKind) return hash;
    return {};
  }
  void Add(const TStoredFileFacts& pFacts, TCachedSumKind pKind, const TMD5Hash& pHash) override {
    TCriticalSectionLock lock(fLock);
    fSums.emplace_back(pFacts, pKind, pHash);
  }

 private:
  TCriticalSection fLock;
  std::vector<std::tuple<TStoredFileFacts, TCachedSumKind, TMD5Hash>> fSums GUARDED_BY(fLock);
};

TEST(DuplicateSearch, WithChecksumsKeptItOpensOnlyWhatChanged) {
  const auto files = MakeRef<TMemoryFiles>();
  const std::string bytes(5000, 'x');
  for (const char16_t* name : {u"a", u"b"}) files->Add(name, bytes);
  files->Add(u"c", bytes.substr(1) + "y");
  files->Add(u"link", bytes).fId = files->fFiles[u"/m/a"].fId;
  for (const char16_t* name : {u"s", u"t"}) files->Add(name, "small");
  files->Add(u"u", "other");
  files->Add(u"young", bytes).fStatusChange = TKivFileTime::Now();
  TDuplicateSearchSettings settings;
  settings.fSmallChecksumSize = 100;
  settings.fCache = MakeRef<TMemoryCache>();
  // Searches again. Returns the names of what was opened.
  const auto opened = [&](const TGroups& pExpected) {
    for (auto& [path, file] : files->fFiles) file.fOpenings = 0;
    EXPECT_EQ(NamesOf(Search(*files, settings)), pExpected);
    std::vector<std::string> names;
    for (const auto& [path, file] : files->fFiles)
      if (file.fOpenings > 0) names.push_back(ToUtf8(path.substr(3)));
    return names;
  };
  const TGroups same{{"a", "b", "=link", "young"}, {"s", "t"}};
  EXPECT_THAT(opened(same), testing::Contains("b"));
  EXPECT_THAT(opened(same), ElementsAre("young")) << "it may change again without another date";
  files->fFiles.erase(u"/m/young");
  const TGroups without{{"a", "b", "=link"}, {"s", "t"}};
  EXPECT_THAT(opened(without), IsEmpty());
  // The date of the last change is what programs say it is, the other one is the system's.
  files->fFiles[u"/m/c"].fBytes = bytes;
  ++files->fFiles[u"/m/c"].fStatusChange.fTicks;
  files->fFiles[u"/m/t"].fBytes = "SMALL";
  ++files->fFiles[u"/m/t"].fChanges;
  const TGroups changed{{"a", "b", "c", "=link"}};
  EXPECT_THAT(opened(changed), ElementsAre("c", "t"));
  EXPECT_THAT(opened(changed), IsEmpty());
  files->Add(u"new", bytes);
  EXPECT_THAT(opened({{"a", "b", "c", "=link", "new"}}), ElementsAre("new"));
  settings.fDuplicatesCompareTypes = {TDuplicatesCompareType::ctMD5};
  EXPECT_THAT(opened({{"a", "b", "c", "=link", "new"}}), testing::Contains("b")) << "another checksum";
  // Bytes that change without a date: a checksum that was kept is not enough.
  files->fFiles[u"/m/b"].fBytes.back() = 'z';
  EXPECT_THAT(opened({{"a", "b", "c", "=link", "new"}}), IsEmpty());
  settings.fVerify = true;
  EXPECT_THAT(opened({{"a", "c", "=link", "new"}}), testing::Contains("b"));
}

// The third opening is the comparison of bytes. What a storage gives there and not before stands for two files with one
// checksum.
TEST(DuplicateSearch, ComparesBytesBeforeAGroupIsTold) {
  const auto files = MakeRef<TMemoryFiles>();
  const std::string bytes(600'000, 'x');
  const std::string other = bytes.substr(1) + "y";
  for (const char16_t* name : {u"a", u"b"}) files->Add(name, bytes);
  for (const char16_t* name : {u"c", u"d"}) files->Add(name, bytes).fOtherBytes[3] = other;
  files->Add(u"e", bytes).fOtherBytes[3] = "y" + bytes.substr(1);
  files->Add(u"f", bytes).fFailAtOpening = 3;
  // Compared with "c" and "e" again.
  files->fFiles[u"/m/c"].fOtherBytes[4] = files->fFiles[u"/m/d"].fOtherBytes[4] = other;
  files->fFiles[u"/m/e"].fOtherBytes[4] = files->fFiles[u"/m/e"].fOtherBytes[5] = "y" + bytes.substr(1);
  TDuplicateSearchSettings settings;
  settings.fVerify = true;
  TDuplicateResult result = Search(*files, settings);
  EXPECT_EQ(NamesOf(result), (TGroups{{"a", "b"}, {"c", "d"}}));
  EXPECT_THAT(NotesOf(result), ElementsAre("e: has the checksum of other files, but other bytes", "f: not there"));
}

// One thread works. It stands at a gate in the phase, while the search is paused or cancelled.
struct THeldPhase {
  std::string_view fPhase;
  // Where the gate is: at this opening of the large and of the small files. 0: in the event of the first equal folders.
  int fLargeOpening;
  int fSmallOpening;
  bool fVerify;
  int fEvents;             // told before the gate
  TGroups fWhenCancelled;  // found before the gate
};

void CheckHeldPhase(const THeldPhase& pHeld, bool pIsPaused) {
  SCOPED_TRACE(testing::Message() << (pIsPaused ? "paused while " : "cancelled while ") << pHeld.fPhase
                                  << (pHeld.fVerify ? " (bytes)" : ""));
  const auto files = MakeRef<TMemoryFiles>();
  TGate gate;
  const bool areFolders = pHeld.fLargeOpening == 0;
  for (const char16_t* name : {u"1", u"2", u"a", u"b", u"c"}) {
    const bool isLarge = *name >= u'a';
    TMemoryFile& file =
        files->Add(name + std::u16string(areFolders ? u"/file" : u""), isLarge ? std::string(5000, 'x') : "equal");
    file.fGate = &gate;
    file.fGateAtOpening = isLarge ? pHeld.fLargeOpening : pHeld.fSmallOpening;
  }
  std::atomic<int> events = 0;
  TDuplicateSearchSettings settings;
  settings.fSmallChecksumSize = 100;
  settings.fVerify = pHeld.fVerify;
  settings.fTops = {u"/m"};
  if (areFolders) settings.fSearchMode = TDuplicatesSearchMode::DuplicateFolders;
  settings.fOnNewDuplicateAdded = [&](const TRef<IHierarchicalObject>&) {
    ++events;
    if (areFolders) gate.Pass();
  };
  TDuplicateSearch search(settings, files->Found());
  gate.WaitUntilReached();
  EXPECT_EQ(search.GetProgress().fPhase, pHeld.fPhase);
  EXPECT_EQ(events, pHeld.fEvents);
  const int openings = files->CountOpenings();
  if (pIsPaused)
    search.SetPaused(true);
  else
    search.Cancel();
  gate.Open();
  EXPECT_EQ(search.WaitForEnd(pIsPaused ? 250 : kForever), !pIsPaused);
  EXPECT_EQ(files->CountOpenings(), openings) << "a file was opened";
  EXPECT_EQ(events, pHeld.fEvents) << "a duplicate was added";
  EXPECT_EQ(search.GetStatus(), pIsPaused ? ThreadPool::TTaskStatus::tsPaused : ThreadPool::TTaskStatus::tsCanceled);
  search.SetPaused(false);
  ASSERT_TRUE(search.WaitForEnd(kForever));
  const TGroups all{{"1", "2"}, {"a", "b", "c"}};
  EXPECT_EQ(NamesOf(search.TakeResult()), pIsPaused ? all : pHeld.fWhenCancelled);
  EXPECT_EQ(events, pIsPaused ? 3 : pHeld.fEvents) << "one for each group, and one for the third file or folder";
}

TEST(DuplicateSearch, PausedItComputesNothingAndCancelledItAddsNothing) {
  const TGroups small{{"1", "2"}};
  const THeldPhase phases[] = {
      {"Calculating small file checksums.", 1, -1, false, 1, small},
      {"Calculating big file checksums.", 2, -1, false, 1, small},
      {"Identifying duplicates.", 3, 2, true, 3, {}},
      // The folders with the fewest bytes come first.
      {"Calculating folder checksums.", 0, 0, false, 1, small},
  };
  for (const THeldPhase& held : phases)
    for (const bool isPaused : {true, false}) CheckHeldPhase(held, isPaused);
}

TEST(DuplicatesGroupGenerator, TellsEachEventOnce) {
  constexpr int kThreads = 16;
  constexpr int kFilesOfThread = 300;
  constexpr int kHashes = 50;
  std::map<std::string, int> groupEvents, fileEvents;
  const auto generator = MakeRef<TDuplicatesGroupGenerator>([&](const TRef<IHierarchicalObject>& pNew) {
    if (const auto* group = dynamic_cast<const TDuplicatesGroup*>(pNew.get())) {
      EXPECT_EQ(group->Files().size(), 2u);
      ++groupEvents[std::to_string(group->Hash().fBytes[0])];
    } else {
      ++fileEvents[ToUtf8(pNew->GetObjectName())];
    }
  });
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      start.arrive_and_wait();
      for (int i = 0; i < kFilesOfThread; ++i) {
        TFoundItem item;
        item.fName = FromUtf8(std::to_string(thread * kFilesOfThread + i));
        TMD5Hash hash;
        hash.fBytes[0] = static_cast<uint8_t>(i % kHashes);
        // The last checksum has a single file, which is no duplicate.
        if (i % kHashes == kHashes - 1 && (thread > 0 || i > kHashes)) continue;
        generator->Add(MakeRef<TDuplicateFile>(std::move(item), 0), hash);
      }
    });
  for (std::thread& thread : threads) thread.join();
  constexpr size_t kPerHash = kThreads * kFilesOfThread / kHashes;
  EXPECT_EQ(groupEvents.size(), size_t{kHashes - 1});
  for (const auto& [hash, events] : groupEvents) EXPECT_EQ(events, 1) << hash;
  EXPECT_EQ(fileEvents.size(), (kHashes - 1) * (kPerHash - 2));
  for (const auto& [name, events] : fileEvents) EXPECT_EQ(events, 1) << name;
  for (const TRef<TDuplicatesGroup>& group : generator->Groups()) EXPECT_EQ(group->Files().size(), kPerHash);
}

}  // namespace Vantrel::Search
