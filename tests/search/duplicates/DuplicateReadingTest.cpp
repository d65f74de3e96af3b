// What a search for duplicates reads: no more than it must, in which order, and nothing that is known from before.

#include <gmock/gmock.h>

#include "tests/search/duplicates/MemoryFiles.h"

namespace Vantrel::Search {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

}  // namespace

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

TEST(DuplicateSearch, LargeFilesAreToldApartByPieces) {
  const auto files = MakeRef<TMemoryFiles>();
  const std::string bytes(20'000'000, 'x');
  files->Add(u"same", bytes);
  const TMemoryFile& same = files->Add(u"same too", bytes);
  // One stretch differs, far from both ends, and one byte.
  const TMemoryFile& other = files->Add(u"other", std::string(bytes).replace(11'111'111, 300'000, 300'000, 'y'));
  const TMemoryFile& byte = files->Add(u"one byte", std::string(bytes).replace(11'111'111, 1, 1, 'y'));
  TDuplicateSearchSettings settings;
  settings.fCache = MakeRef<TMemoryCache>();
  EXPECT_EQ(NamesOf(Search(*files, settings)), (TGroups{{"same", "same too"}}));
  EXPECT_LT(other.fBytesRead, 1'000'000);
  EXPECT_EQ(other.fOpenings, 2);
  for (const TMemoryFile* file : {&same, &byte}) {
    EXPECT_EQ(file->fOpenings, 3);
    EXPECT_LT(file->fBytesRead, 21'000'000);
  }
  const int openings = files->CountOpenings();
  EXPECT_EQ(NamesOf(Search(*files, settings)), (TGroups{{"same", "same too"}}));
  EXPECT_EQ(files->CountOpenings(), openings) << "checksums of pieces are kept as well";
}

}  // namespace Vantrel::Search
