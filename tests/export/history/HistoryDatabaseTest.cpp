// Scans recorded and read back, hostile names, imports against a slow reference, the use of indexes, refusals.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>
#include <tuple>

#include "export/history/HistoryDatabase.h"
#include "export/history/HistoryDocument.h"
#include "platform/files/CanonicalPath.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"
#include "tests/support/FakeTree.h"
#include "tests/support/NastyText.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::History;
using namespace Vantrel::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Vantrel::History::EDatabaseError;
using Vantrel::History::THistoryDocument;
using Vantrel::History::TSQLiteTransaction;

const THistoryDatabaseReaderWriter kHistory("9.8.7");

TRef<TFakeRoot> Root(int64_t pSize, TKivFileTime pTime = {133'000'000'000'000'000}) {
  auto root = MakeRef<TFakeRoot>(u"/fake");
  TSizeValues values;
  values.fSize = pSize;
  values.fAllocated = pSize + 1;
  values.fFiles = 2;
  root->fTop = MakeRef<TFakeFolder>(u"fake", values);
  root->fStorage.fFreeBytes = 5'000;
  root->fScanTimeStamp = pTime;
  return root;
}

TRef<TFakeRoot> FilteredRoot(int64_t pSize, const std::vector<std::u16string>& pPatterns, int64_t pExcluded = 0) {
  auto patterns = MakeRef<PatternMatching::TPatternList>(u'/');
  patterns->AddStrings(pPatterns, PatternMatching::TPatternType::ptyExclude);
  TRef<TFakeRoot> root = Root(pSize);
  root->fFilter = MakeRef<TPatternFilter>(patterns);
  root->fProgress.fExcludedObjects = pExcluded;
  return root;
}

std::vector<int64_t> Sizes(const std::vector<THistoryEntry>& pEntries) {
  std::vector<int64_t> sizes;
  for (const THistoryEntry& entry : pEntries) sizes.push_back(entry.fSize);
  return sizes;
}

std::string MessageOf(const std::function<void()>& pCall) {
  try {
    pCall();
  } catch (const EException& error) {
    return error.what();
  }
  return {};
}

void Execute(const std::u16string& pFile, const std::string& pSQL) {
  TKIVSQLiteDatabase database;
  database.ConnectToDatabase(pFile, true);
  database.ExecuteQuery(pSQL);
}

int64_t Number(const std::u16string& pFile, const std::string& pSQL) {
  TKIVSQLiteDatabase database;
  database.ConnectToDatabase(pFile, false);
  database.OpenQuery(pSQL);
  return database.GetInteger(0);
}

class THistoryDatabaseTest : public testing::Test {
 protected:
  std::u16string Path(std::string_view pName) const { return CanonicalPath(fFolder.File(pName)); }

  TTemporaryFolder fFolder;
  const std::u16string fFile = fFolder.File("history.db");
};

TEST_F(THistoryDatabaseTest, RecordsTheTotalsOfAFinishedScan) {
  const TRef<TFakeRoot> root = Root(77);
  root->fState = rsScanning;
  EXPECT_THROW(kHistory.WriteRootHistoryData(fFile, Path("x"), *root), EInvalidOperation);
  root->fState = rsFinished;
  kHistory.WriteRootHistoryData(fFile, Path("x"), *root);
  const auto entries = kHistory.ReadRootHistoryData(fFile, Path("x"));
  ASSERT_EQ(entries.size(), 1u);
  const THistoryEntry& entry = entries[0];
  EXPECT_THAT((std::vector{entry.fSize, entry.fAllocated, entry.fFiles, entry.fFreeSpace}),
              ElementsAre(77, 78, 2, 5'000));
  EXPECT_EQ(entry.fVersion, "9.8.7");
  EXPECT_EQ(entry.fExcludedObjects, std::nullopt);
  EXPECT_LT(std::abs(entry.fDate.fTicks - root->fScanTimeStamp.fTicks), 5'001);  // half a millisecond
}

TEST_F(THistoryDatabaseTest, EachFilterHasAHistoryOfItsOwn) {
  for (int64_t size : {1, 2}) kHistory.WriteRootHistoryData(fFile, Path("x"), *Root(size));
  kHistory.WriteRootHistoryData(fFile, Path("x"), *FilteredRoot(10, {u"*.tmp"}, 3));
  kHistory.WriteRootHistoryData(fFile, Path("x"), *FilteredRoot(20, {u"*.tmp", u"it's"}, 0));
  kHistory.WriteRootHistoryData(fFile, Path("y"), *FilteredRoot(30, {u"*.tmp"}));
  // A list of nothing active leaves nothing out.
  kHistory.WriteRootHistoryData(fFile, Path("x"), *FilteredRoot(3, {}));
  auto inactive = FilteredRoot(4, {u"*.bak"});
  auto* filter = dynamic_cast<TPatternFilter*>(inactive->fFilter.get());
  filter->GetPatterns()->GetItem(0)->SetActive(false);
  kHistory.WriteRootHistoryData(fFile, Path("x"), *inactive);

  const std::u16string one = HistoryPattern(*FilteredRoot(0, {u"*.tmp"}));
  const std::u16string two = HistoryPattern(*FilteredRoot(0, {u"*.tmp", u"it's"}));
  EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, Path("x"))), ElementsAre(1, 2, 3, 4));
  const auto filtered = kHistory.ReadRootHistoryData(fFile, Path("x"), one);
  ASSERT_EQ(Sizes(filtered), std::vector<int64_t>{10});
  EXPECT_EQ(filtered[0].fExcludedObjects, 3);
  EXPECT_EQ(kHistory.ReadRootHistoryData(fFile, Path("x"), two)[0].fExcludedObjects, 0);
  EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, Path("y"), one)), ElementsAre(30));
  EXPECT_TRUE(kHistory.ReadRootHistoryData(fFile, Path("y")).empty());
  EXPECT_TRUE(kHistory.ReadRootHistoryData(fFile, Path("y"), u"never used").empty());
  EXPECT_EQ(kHistory.GetNumberOfScans(fFile, Path("x")), 6);
  EXPECT_EQ(Number(fFile, "SELECT COUNT(*) FROM PATTERNS"), 2);

  // The same patterns in another order, and one of them twice, are the same filter: also when an earlier version has
  // recorded them as they were given.
  const std::u16string turned = two.substr(two.find(u'\t') + 1) + u"\t" + two.substr(0, two.find(u'\t'));
  EXPECT_EQ(HistoryPattern(*FilteredRoot(0, {u"it's", u"*.tmp", u"it's"})), two);
  Execute(fFile, "UPDATE PATTERNS SET PATTERN = " + TKIVSQLiteDatabase::GetSQLString(turned) +
                     " WHERE PATTERN = " + TKIVSQLiteDatabase::GetSQLString(two));
  kHistory.WriteRootHistoryData(fFile, Path("x"), *FilteredRoot(21, {u"it's", u"*.tmp"}));
  EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, Path("x"), two)), ElementsAre(20, 21));
  EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, Path("x"), turned)), ElementsAre(20, 21));
  EXPECT_EQ(Number(fFile, "SELECT COUNT(*) FROM PATTERNS"), 2);
  EXPECT_EQ(Number(fFile, "SELECT COUNT(*) FROM SCANS WHERE PATTERN_ID IS NULL AND EXCLUDED_OBJECTS IS NULL"), 4);
}

TEST_F(THistoryDatabaseTest, AnIncompleteScanIsMarked) {
  const auto record = [&](const THistoryDatabaseReaderWriter& pHistory, int pErrors) {
    const TRef<TFakeRoot> root = Root(pErrors);
    for (int i = 0; i < pErrors; ++i) root->AddError(u"/fake/denied", 13);
    pHistory.WriteRootHistoryData(fFile, Path("x"), *root);
  };
  record(kHistory, 0);
  record(kHistory, 3);
  record(THistoryDatabaseReaderWriter(), 1);
  Execute(fFile,
          "INSERT INTO SCANS SELECT NULL,ROOT_ID,DATE,'2 (incomplete: many)',9,0,0,0,NULL,NULL FROM SCANS LIMIT 1");
  const auto entries = kHistory.ReadRootHistoryData(fFile, Path("x"));
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(Number(fFile, "SELECT COUNT(*) FROM SCANS WHERE VERSION = '9.8.7 (incomplete: 3)' OR VERSION = '9.8.7'"),
            2);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(entries[i].fUnreadFolders, entries[i].fSize) << "incomplete, but not marked";
  EXPECT_EQ(entries[1].fVersion, "9.8.7");
  EXPECT_EQ(entries[2].fVersion, "");
  EXPECT_EQ(entries[3].fVersion, "2 (incomplete: many)");
  EXPECT_EQ(entries[3].fUnreadFolders, 0);
}

// Each path is named by what would end a literal, a text or a statement, or is no text at all.
TEST_F(THistoryDatabaseTest, EveryNameComesBackAsItWas) {
  TNastyText nasty(20'261'121);
  std::map<std::u16string, int64_t> recorded;
  std::vector<TScannedRoot> roots;
  std::vector<std::u16string> names{u"it's",
                                    u"'); DROP TABLE SCANS;--",
                                    u"{}%s%d",
                                    u"\x1A",
                                    u"\x1A"
                                    u"D800",
                                    std::u16string(u"\0x", 2),
                                    u"\xDCFF\xDC80",
                                    u"\x1A\xDFFF"};
  while (names.size() < 500) names.push_back(nasty.Next());
  for (const std::u16string& name : names) {
    // What stands before is no folder, so nothing about the name is asked of the system.
    const std::u16string path = NativePathDelimiter() == u'/' ? u"/no such folder/" + name : u"\\\\?\\nowhere\\" + name;
    if (CanonicalPath(path).empty() || !recorded.emplace(CanonicalPath(path), recorded.size()).second) continue;
    roots.push_back({path, Root(recorded[CanonicalPath(path)])});
  }
  kHistory.WriteHistoryDataList(fFile, roots);
  const auto all = kHistory.ReadAllHistoryData(fFile);
  ASSERT_EQ(all.size(), recorded.size());
  ASSERT_GT(all.size(), 300u);
  for (const TRootHistory& history : all) {
    ASSERT_TRUE(recorded.contains(history.fPath)) << ToDisplay(history.fPath);
    EXPECT_THAT(Sizes(history.fEntries), ElementsAre(recorded[history.fPath]));
    EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, history.fPath)), ElementsAre(recorded[history.fPath]));
  }
}

// Where letter case tells folders apart, so does the history; elsewhere all spellings are one.
TEST_F(THistoryDatabaseTest, OnePathHasOneHistory) {
  const bool apart = NativePathDelimiter() == u'/';
  auto sizes = [&](std::string_view pName) { return Sizes(kHistory.ReadRootHistoryData(fFile, Path(pName))); };
  // Folders that do not exist keep the case in which they are typed, on both platforms.
  kHistory.WriteRootHistoryData(fFile, Path("SHARE"), *Root(1));
  EXPECT_THAT(sizes("share"), ElementsAre(1));
  EXPECT_EQ(kHistory.GetNumberOfScans(fFile, Path("Share")), 1);
  kHistory.WriteRootHistoryData(fFile, Path("share"), *Root(2));
  EXPECT_EQ(sizes("share"), apart ? std::vector<int64_t>{2} : std::vector<int64_t>({1, 2}));
  EXPECT_EQ(sizes("SHARE"), apart ? std::vector<int64_t>{1} : std::vector<int64_t>({1, 2}));
  EXPECT_EQ(Number(fFile, "SELECT COUNT(*) FROM ROOTS"), apart ? 2 : 1);
  EXPECT_EQ(kHistory.GetNumberOfScans(fFile, Path("other")), 0);
  // A folder that is there has its own history or none, not that of its neighbour.
  std::filesystem::create_directory(fFolder.Path() / "Share");
  EXPECT_EQ(sizes("Share"), apart ? std::vector<int64_t>() : std::vector<int64_t>({1, 2}));
  EXPECT_EQ(kHistory.GetNumberOfScans(fFile, Path("Share")), apart ? 0 : 2);
  // What an earlier version has recorded under two spellings.
  Execute(
      fFile,
      "INSERT INTO ROOTS (PATH) SELECT REPLACE(PATH, 'SHARE', 'sHARE') FROM ROOTS LIMIT 1;"
      "INSERT INTO SCANS SELECT NULL,(SELECT MAX(ID) FROM ROOTS),DATE + 1,NULL,7,0,0,0,NULL,NULL FROM SCANS LIMIT 1");
  EXPECT_EQ(sizes("SHARE"), apart ? std::vector<int64_t>{1} : std::vector<int64_t>({1, 2, 7}));
}

TEST_F(THistoryDatabaseTest, DeletesOneScanAndTheRootWithTheLast) {
  for (int64_t size : {1, 2}) kHistory.WriteRootHistoryData(fFile, Path("x"), *Root(size));
  kHistory.WriteRootHistoryData(fFile, Path("y"), *Root(9));
  const auto entries = kHistory.ReadRootHistoryData(fFile, Path("x"));
  EXPECT_EQ(kHistory.DeleteHistoryData(fFile, entries[0].fId), 1);
  EXPECT_THROW(kHistory.DeleteHistoryData(fFile, entries[0].fId), EInvalidArgumentValue);
  EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, Path("x"))), ElementsAre(2));
  EXPECT_EQ(kHistory.DeleteHistoryData(fFile, entries[1].fId), 0);
  EXPECT_EQ(Number(fFile, "SELECT COUNT(*) FROM ROOTS"), 1);
  EXPECT_THAT(Sizes(kHistory.ReadRootHistoryData(fFile, Path("y"))), ElementsAre(9));
}

// Every scan with all that is recorded of it, as often as it is there: the slow reference for imports.
using TScanKey =
    std::tuple<std::u16string, std::u16string, int64_t, int64_t, int64_t, int64_t, int64_t, std::string, int64_t>;
std::map<TScanKey, int> Contents(const std::u16string& pFile) {
  std::map<TScanKey, int> contents;
  for (const TRootHistory& history : kHistory.ReadAllHistoryData(pFile))
    for (const THistoryEntry& entry : history.fEntries)
      ++contents[{history.fPath, history.fPattern, entry.fDate.fTicks, entry.fSize, entry.fAllocated, entry.fFiles,
                  entry.fFreeSpace, entry.fVersion, entry.fExcludedObjects.value_or(-1)}];
  return contents;
}

int64_t Total(const std::map<TScanKey, int>& pContents) {
  int64_t total = 0;
  for (const auto& [key, count] : pContents) total += count;
  return total;
}

// Few values for everything, so that some scans agree in all but one of them, and some in all.
void FillRandomly(const std::u16string& pFile, uint32_t pSeed, const std::u16string& pFolder) {
  std::mt19937 random(pSeed);
  std::vector<TScannedRoot> roots;
  for (int i = 0; i < 200; ++i) {
    static const std::vector<std::vector<std::u16string>> kFilters{{}, {}, {u"*.a"}, {u"'*.b'", u"\xD800"}};
    auto root = FilteredRoot(random() % 3, kFilters[random() % kFilters.size()], random() % 2);
    root->fScanTimeStamp.fTicks += static_cast<int64_t>(random() % 3) * 10'000'000;
    roots.push_back({JoinPath(pFolder, FromUtf8(std::to_string(random() % 5)), NativePathDelimiter()), root});
  }
  THistoryDatabaseReaderWriter(random() % 2 ? "1" : "").WriteHistoryDataList(pFile, roots);
}

TEST_F(THistoryDatabaseTest, ImportLosesAndDoublesNothing) {
  for (uint32_t seed = 0; seed < 4; ++seed) {
    const std::u16string source = fFolder.File("source" + std::to_string(seed));
    const std::u16string target = fFolder.File("target" + std::to_string(seed));
    FillRandomly(source, seed, Path("r"));
    FillRandomly(target, seed + 100, Path("r"));
    auto expected = Contents(target);
    const int64_t before = Total(expected);
    for (const auto& [key, count] : Contents(source)) expected[key] = std::max(expected[key], count);
    EXPECT_EQ(kHistory.ImportDataFromTo(source, target), Total(expected) - before);
    EXPECT_TRUE(Contents(target) == expected);
    EXPECT_EQ(kHistory.ImportDataFromTo(source, target), 0);
    EXPECT_TRUE(Contents(target) == expected);

    const std::u16string fresh = fFolder.File("fresh" + std::to_string(seed));
    EXPECT_EQ(kHistory.ImportDataFromTo(source, fresh), 200);
    EXPECT_TRUE(Contents(fresh) == Contents(source));
    EXPECT_EQ(kHistory.ImportDataFromTo(source, source), 0);
  }
}

TEST_F(THistoryDatabaseTest, AnImportThatFailsAddsNothing) {
  FillRandomly(fFile, 1, Path("r"));
  const auto before = Contents(fFile);
  const std::u16string source = fFolder.File("it's a source");
  kHistory.WriteRootHistoryData(source, Path("x"), *Root(1));
  Execute(source, "PRAGMA foreign_keys = OFF; UPDATE SCANS SET PATTERN_ID = 77;");
  EXPECT_THAT(MessageOf([&] { kHistory.ImportDataFromTo(source, fFile); }),
              HasSubstr("belong to no root or pattern there on sql: PRAGMA source.foreign_key_check;"));
  const std::string missing = MessageOf([&] { kHistory.ImportDataFromTo(fFolder.File("missing"), fFile); });
  EXPECT_THAT(missing, HasSubstr("cannot be opened: "));
  EXPECT_FALSE(std::filesystem::exists(fFolder.Path() / "missing"));
  EXPECT_TRUE(Contents(fFile) == before);

  // What goes wrong with the last statement takes back those before it.
  const std::u16string target = fFolder.File("target");
  kHistory.CreateHistoryDatabase(target);
  Execute(target, "CREATE UNIQUE INDEX ONE_SCAN_ALONE ON SCANS (FILES);");
  EXPECT_THAT(MessageOf([&] { kHistory.ImportDataFromTo(fFile, target); }), HasSubstr("UNIQUE constraint failed"));
  for (const char* table : {"ROOTS", "PATTERNS", "SCANS"})
    EXPECT_EQ(Number(target, std::string("SELECT COUNT(*) FROM ") + table), 0) << table << " of half an import";
}

TEST_F(THistoryDatabaseTest, AnExportIsAWholeHistory) {
  FillRandomly(fFile, 5, Path("r"));
  const THistoryDocument document(fFile);
  fFolder.Put("copy.db", "an earlier file");
  document.ExportHistoryFile(fFolder.File("copy.db"));
  EXPECT_TRUE(Contents(fFolder.File("copy.db")) == Contents(fFile));
  EXPECT_EQ(document.ImportHistoryFile(fFolder.File("copy.db")), 0);
  EXPECT_EQ(THistoryDocument(fFolder.File("new.db")).ImportHistoryFile(fFolder.File("copy.db")), 200);
  EXPECT_THAT(MessageOf([&] { document.ExportHistoryFile(fFile); }), HasSubstr("is the history itself"));
  fFolder.Put("used.db-journal", "");
  EXPECT_THAT(MessageOf([&] { document.ExportHistoryFile(fFolder.File("used.db")); }),
              HasSubstr("is a database in use"));

  std::vector<TRootHistory> histories;
  std::string error;
  EXPECT_TRUE(document.TryReadAllHistoryData(histories, error));
  EXPECT_FALSE(histories.empty());
  EXPECT_FALSE(THistoryDocument(fFolder.File("missing.db")).TryReadAllHistoryData(histories, error));
  EXPECT_THAT(error, HasSubstr("missing.db\" cannot be opened: "));
}

TEST_F(THistoryDatabaseTest, FilesOfOtherKindsAreRefusedAndLeftAlone) {
  const std::string text = "These are the notes of a meeting, and by no means a database. " + std::string(5'000, 'x');
  fFolder.Put("notes.txt", text);
  Execute(fFolder.File("bookmarks.db"), "CREATE TABLE BOOKMARKS (URL TEXT);");
  const std::string bookmarks = fFolder.Get("bookmarks.db");
  kHistory.WriteRootHistoryData(fFolder.File("newer.db"), Path("x"), *Root(1));
  Execute(fFolder.File("newer.db"), "PRAGMA user_version = 3;");
  const std::string newer = fFolder.Get("newer.db");

  const std::map<std::string, std::string> reasons = {
      {"notes.txt", "file is not a database on sql: SELECT name FROM sqlite_master"},
      {"bookmarks.db",
       "this is a database of another kind, not a history of scans on sql: SELECT name FROM sqlite_master"},
      {"newer.db", "the format 3 is of a newer version of this program on sql: PRAGMA user_version;"}};
  for (const auto& [name, reason] : reasons) {
    const std::u16string file = fFolder.File(name);
    const std::string expected = "The database " + ToQuotedDisplay(file) + ": " + reason;
    EXPECT_EQ(MessageOf([&] { kHistory.ReadRootHistoryData(file, Path("x")); }), expected);
    // Who writes meets what is no database with another statement: the first is not a question then.
    const std::string writing = name == "notes.txt" ? "The database " + ToQuotedDisplay(file) +
                                                          ": file is not a database on sql: BEGIN IMMEDIATE;"
                                                    : expected;
    EXPECT_EQ(MessageOf([&] { kHistory.WriteRootHistoryData(file, Path("x"), *Root(2)); }), writing);
    EXPECT_EQ(MessageOf([&] { kHistory.DeleteHistoryData(file, 1); }), expected);
    EXPECT_EQ(MessageOf([&] { kHistory.ImportDataFromTo(file, fFolder.File("target.db")); }), expected);
    EXPECT_EQ(MessageOf([&] { THistoryDocument(file).ExportHistoryFile(fFolder.File("out.db")); }), expected);
  }
  EXPECT_EQ(fFolder.Get("notes.txt"), text);
  EXPECT_EQ(fFolder.Get("bookmarks.db"), bookmarks);
  EXPECT_EQ(fFolder.Get("newer.db"), newer);
  EXPECT_EQ(fFolder.Count(), 3u);
  EXPECT_THAT(MessageOf([&] { kHistory.WriteRootHistoryData(fFolder.File(""), Path("x"), *Root(1)); }),
              HasSubstr("cannot be opened: "));
}

// Cut off anywhere, what is read is refused or all there. With bytes gone in the middle, which SQLite does not always
// notice, there is at least a message or an end.
TEST_F(THistoryDatabaseTest, DamagedFilesGiveAMessage) {
  std::vector<TScannedRoot> roots;
  for (int i = 0; i < 300; ++i) roots.push_back({Path("r"), Root(1'000'000 + i)});
  kHistory.WriteHistoryDataList(fFile, roots);
  const std::string whole = fFolder.Get("history.db");
  int refused = 0;
  const THistoryDocument damaged(fFolder.File("damaged.db"));
  fFolder.Put("copy.db", "an earlier copy");
  // Whether it could be read.
  auto check = [&](const std::string& pBytes, std::vector<TRootHistory>& pHistories) {
    fFolder.Put("damaged.db", pBytes);
    std::string error;
    const bool isRead = damaged.TryReadAllHistoryData(pHistories, error);
    const std::string refusal = MessageOf([&] { damaged.ExportHistoryFile(fFolder.File("copy.db")); });
    if (refusal.empty()) {
      EXPECT_TRUE(isRead) << "a damaged history has replaced a sound copy";
      fFolder.Put("copy.db", "an earlier copy");
    }
    EXPECT_EQ(fFolder.Get("copy.db"), "an earlier copy");
    if (isRead) return true;
    ++refused;
    EXPECT_THAT(error, StartsWith("The database " + ToQuotedDisplay(fFolder.File("damaged.db")) + ": "));
    EXPECT_THAT(error, HasSubstr(" on sql: "));
    return false;
  };
  // SQLite takes a file of a single byte for an empty one.
  for (size_t length = 2; length < whole.size(); length += 509) {
    std::vector<TRootHistory> histories;
    if (!check(whole.substr(0, length), histories)) continue;
    ASSERT_EQ(histories.size(), 1u) << length;
    EXPECT_EQ(histories[0].fEntries.size(), 300u) << length;
  }
  EXPECT_GT(refused, 0);
  refused = 0;
  for (size_t at = 0; at + 512 <= whole.size(); at += 512) {
    std::vector<TRootHistory> histories;
    check(std::string(whole).replace(at, 512, 512, '\xA5'), histories);
  }
  EXPECT_GT(refused, 0);
}

TEST_F(THistoryDatabaseTest, WhoCannotHaveItsTurnSaysSo) {
  kHistory.CreateHistoryDatabase(fFile);
  TKIVSQLiteDatabase first;
  first.ConnectToDatabase(fFile, false);
  TSQLiteTransaction transaction(first);
  TKIVSQLiteDatabase second;
  second.ConnectToDatabase(fFile, false, 1);
  EXPECT_EQ(MessageOf([&] { TSQLiteTransaction never(second); }),
            "The database " + ToQuotedDisplay(fFile) + ": database is locked on sql: BEGIN IMMEDIATE;");
  // Reading goes on meanwhile.
  EXPECT_TRUE(kHistory.ReadAllHistoryData(fFile).empty());
}

TEST_F(THistoryDatabaseTest, ScansAreReadThroughTheIndexes) {
  kHistory.CreateHistoryDatabase(fFile);
  TKIVSQLiteDatabase database;
  database.ConnectToDatabase(fFile, false);
  auto plan = [&](const std::string& pSQL) {
    std::string text;
    for (database.OpenQuery("EXPLAIN QUERY PLAN " + pSQL); database.HasRow(); database.NextRow())
      text += ToUtf8(database.GetText(3)) + "\n";
    return text;
  };
  EXPECT_THAT(plan(THistoryDatabaseReaderWriter::GetScansSQL(7, std::nullopt)),
              StartsWith("SEARCH SCANS USING INDEX INDEX_2 (ROOT_ID=? AND PATTERN_ID=?)"));
  EXPECT_THAT(plan(THistoryDatabaseReaderWriter::GetScansSQL(7, 2)),
              StartsWith("SEARCH SCANS USING INDEX INDEX_2 (ROOT_ID=? AND PATTERN_ID=?)"));
  EXPECT_THAT(plan("SELECT ID FROM ROOTS WHERE PATH = '/r77'"), StartsWith("SEARCH ROOTS USING COVERING INDEX "));
}

}  // namespace
