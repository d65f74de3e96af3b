// Checksums kept in a file: found for the same file alone, damaged rows, threads, files that cannot be used.

#include <gmock/gmock.h>

#include <functional>
#include <latch>
#include <thread>

#include "export/history/ChecksumDatabase.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel::History {

namespace {

using namespace Testing;
using HashUtils::TMD5Hash;
using Search::TCachedSumKind;
using testing::HasSubstr;

constexpr TCachedSumKind kKind = Search::CachedSmallSum(16384);

TStoredFileFacts FactsOf(uint64_t pId) {
  return {UINT64_MAX, pId, UINT64_MAX - 1, 5000, {133'000'000'000'000'000}, {133'000'000'000'000'001}};
}

TMD5Hash HashOf(uint8_t pByte) {
  TMD5Hash hash;
  hash.fBytes.fill(pByte);
  return hash;
}

}  // namespace

TEST(ChecksumDatabase, FindsTheChecksumsOfUnchangedFiles) {
  const TTemporaryFolder folder;
  const std::u16string file = folder.File("sums.db");
  {
    const auto written = MakeRef<TChecksumDatabase>(file);
    for (int i = 0; i < 1200; ++i)
      written->Add(FactsOf(static_cast<uint64_t>(i)), kKind, HashOf(static_cast<uint8_t>(i)));
    written->Add(FactsOf(7), Search::CachedSumOfAll(HashUtils::TChecksumKind::ckSHA256), HashOf(0xFF));
    written->Flush();
    EXPECT_EQ(written->Problem(), "");
  }
  TKIVSQLiteDatabase rows;
  rows.ConnectToDatabase(file, false);
  rows.OpenQuery("SELECT COUNT(*) FROM CHECKSUMS");
  EXPECT_EQ(rows.GetInteger(0), 1201);
  rows.ExecuteQuery(
      "UPDATE CHECKSUMS SET SUM_2 = SUM_2 + 1 WHERE FILE_ID = 8;"
      "UPDATE CHECKSUMS SET FILE_ID = 5000 WHERE FILE_ID = 9;");
  rows.CloseConnection();
  const auto read = MakeRef<TChecksumDatabase>(file);
  EXPECT_EQ(read->Find(FactsOf(1199), kKind), HashOf(1199 & 0xFF));
  EXPECT_EQ(read->Find(FactsOf(7), kKind), HashOf(7));
  EXPECT_EQ(read->Find(FactsOf(7), Search::CachedSumOfAll(HashUtils::TChecksumKind::ckSHA256)), HashOf(0xFF));
  EXPECT_EQ(read->Find(FactsOf(7), Search::CachedSmallSum(16385)), std::nullopt);
  EXPECT_EQ(read->Find(FactsOf(8), kKind), std::nullopt) << "a damaged checksum";
  EXPECT_EQ(read->Find(FactsOf(5000), kKind), std::nullopt) << "another file's checksum";
  const std::function<void(TStoredFileFacts&)> changes[] = {
      [](TStoredFileFacts& pFacts) { --pFacts.fVolume; },
      [](TStoredFileFacts& pFacts) { pFacts.fId += 2000; },
      [](TStoredFileFacts& pFacts) { ++pFacts.fIdHigh; },
      [](TStoredFileFacts& pFacts) { ++pFacts.fSize; },
      [](TStoredFileFacts& pFacts) { ++pFacts.fLastChange.fTicks; },
      [](TStoredFileFacts& pFacts) { ++pFacts.fStatusChange.fTicks; }};
  for (const auto& change : changes) {
    TStoredFileFacts facts = FactsOf(7);
    change(facts);
    EXPECT_EQ(read->Find(facts, kKind), std::nullopt) << &change - changes;
  }
  // A changed file takes the place of what it was.
  TStoredFileFacts changed = FactsOf(7);
  ++changed.fStatusChange.fTicks;
  read->Add(changed, kKind, HashOf(1));
  read->Flush();
  const auto later = MakeRef<TChecksumDatabase>(file);
  EXPECT_EQ(later->Find(changed, kKind), HashOf(1));
  EXPECT_EQ(later->Find(FactsOf(7), kKind), std::nullopt);
}

TEST(ChecksumDatabase, TakesChecksumsFromManyThreads) {
  const TTemporaryFolder folder;
  constexpr int kThreads = 16;
  constexpr int kOfThread = 3000;
  const auto kept = MakeRef<TChecksumDatabase>(folder.File("sums.db"));
  std::latch start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      start.arrive_and_wait();
      for (int i = 0; i < kOfThread; ++i) {
        const auto id = static_cast<uint64_t>(thread * kOfThread + i);
        EXPECT_EQ(kept->Find(FactsOf(id), kKind), std::nullopt);
        kept->Add(FactsOf(id), kKind, HashOf(static_cast<uint8_t>(id)));
      }
    });
  for (std::thread& thread : threads) thread.join();
  kept->Flush();
  EXPECT_EQ(kept->Problem(), "");
  const auto read = MakeRef<TChecksumDatabase>(folder.File("sums.db"));
  for (uint64_t id = 0; id < kThreads * kOfThread; id += 997)
    EXPECT_EQ(read->Find(FactsOf(id), kKind), HashOf(static_cast<uint8_t>(id)));
}

TEST(ChecksumDatabase, AFileThatCannotBeUsedIsLeftAloneWithAMessage) {
  const TTemporaryFolder folder;
  const std::u16string file = folder.File("sums.db");
  const auto fill = [&] {
    const auto written = MakeRef<TChecksumDatabase>(file);
    written->Add(FactsOf(1), kKind, HashOf(1));
    written->Flush();
  };
  const auto change = [&](const std::string& pSQL) {
    fill();
    TKIVSQLiteDatabase database;
    database.ConnectToDatabase(file, false);
    database.ExecuteQuery(pSQL);
  };
  struct TCase {
    std::string fProblem;
    std::function<void()> fPrepare;
  };
  const TCase cases[] = {
      {"another version of the program made the file on sql: ", [&] { change("PRAGMA user_version = 2"); }},
      {"the file holds no checksums on sql: ", [&] { change("PRAGMA application_id = 0"); }},
      {"no such table: CHECKSUMS on sql: ", [&] { change("ALTER TABLE CHECKSUMS RENAME TO OTHERS"); }},
      {"file is not a database on sql: ", [&] { folder.Put("sums.db", std::string(5000, 'x')); }},
      {"malformed on sql: ", [&] {
         fill();
         folder.Put("sums.db", folder.Get("sums.db").replace(4096, 4000, 4000, '\xA5'));
       }}};
  for (const TCase& test : cases) {
    SCOPED_TRACE(test.fProblem);
    std::filesystem::remove(folder.Path() / "sums.db");
    test.fPrepare();
    const std::string before = folder.Get("sums.db");
    const auto cache = MakeRef<TChecksumDatabase>(file);
    EXPECT_EQ(cache->Find(FactsOf(1), kKind), std::nullopt);
    cache->Add(FactsOf(2), kKind, HashOf(2));
    cache->Flush();
    EXPECT_THAT(cache->Problem(), HasSubstr(test.fProblem));
    EXPECT_EQ(folder.Get("sums.db"), before);
    EXPECT_EQ(folder.Count(), 1u);
  }
  EXPECT_THAT(MakeRef<TChecksumDatabase>(folder.File("sums.db/no folder"))->Problem(), testing::Not(""));
}

TEST(ChecksumDatabase, DoesNotWaitLongForOtherPrograms) {
  const TTemporaryFolder folder;
  const std::u16string file = folder.File("sums.db");
  const auto cache = MakeRef<TChecksumDatabase>(file, 1);
  cache->Add(FactsOf(1), kKind, HashOf(1));
  cache->Flush();
  TKIVSQLiteDatabase other;
  other.ConnectToDatabase(file, false);
  const TSQLiteTransaction transaction(other);
  // Reading goes on.
  EXPECT_EQ(MakeRef<TChecksumDatabase>(file, 1)->Find(FactsOf(1), kKind), HashOf(1));
  cache->Add(FactsOf(2), kKind, HashOf(2));
  cache->Flush();
  EXPECT_THAT(cache->Problem(), HasSubstr("database is locked on sql: BEGIN IMMEDIATE;"));
}

}  // namespace Vantrel::History
