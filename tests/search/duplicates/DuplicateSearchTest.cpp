// The search for duplicates over files in memory: groups, threads, pause, cancel, and files that change, vanish or
// cannot be read.

#include <gmock/gmock.h>

#include <latch>
#include <random>
#include <thread>

#include "tests/search/duplicates/MemoryFiles.h"

namespace Vantrel::Search {

using testing::ElementsAre;

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
