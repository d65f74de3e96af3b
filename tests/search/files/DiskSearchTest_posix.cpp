// Searches on the disk: contents of large folders, holes, pipes, links, unreadable files, dates of access.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "model/roots/ScanRoots.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanServices.h"
#include "search/files/FileFactsReader.h"
#include "search/files/FileSearch.h"
#include "search/query/Parser.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel::Search {

namespace {

constexpr int64_t kForever = 300'000;  // only there to end a hang

class DiskSearch : public testing::Test {
 protected:
  // The names found, in the order of names.
  std::vector<std::string> Names(std::u16string_view pQuery, int pThreads = 2, uint32_t pOptions = 0) {
    TFileSearchSettings settings;
    settings.fExpression = AdaptExpression(TDSMExpressionParser().Parse(pQuery), TFileFactsReader::kOfStorage);
    settings.fThreads = pThreads;
    settings.fEnumeratorOptions = pOptions;
    TFileSearch search(std::move(settings));
    const TRef<IScanRoots> roots =
        CreateScanRoots(ScanEngine::CreateScanServices(), std::make_shared<const TGlobalOptions>());
    search.AddPath(*roots->CreateRoot(fFolder.Path().u16string()));
    search.Start();
    EXPECT_TRUE(search.WaitForEnd(kForever));
    fErrors = search.GetErrors();
    std::vector<std::string> names;
    for (const TFoundItem& item : search.TakeFound()) names.push_back(ToUtf8(item.fName));
    std::sort(names.begin(), names.end());
    roots->Dispose();
    return names;
  }
  std::string Path(std::string_view pName) const { return (fFolder.Path() / pName).string(); }

  Testing::TTemporaryFolder fFolder;
  std::vector<TSearchError> fErrors;
};

using TNames = std::vector<std::string>;

}  // namespace

TEST_F(DiskSearch, FilesOfOneFolderAreSharedAndNoneIsMissed) {
  TNames expected;
  for (int i = 0; i < 500; ++i) {
    const std::string name = "file " + std::to_string(1000 + i);
    fFolder.Put(name, i % 7 == 0 ? "with the needle" : "without");
    if (i % 7 == 0 && i >= 100) expected.push_back(name);
  }
  for (const int threads : {1, 2, 8}) {
    EXPECT_EQ(Names(u"content:NEEDLE name:!=\"file 10??\"", threads), expected);
    EXPECT_TRUE(fErrors.empty());
  }
}

TEST_F(DiskSearch, OrdinaryFilesOnlyAreOpened) {
  fFolder.Put("text", "needle");
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(symlink("text", Path("link").c_str()), 0);
  ASSERT_EQ(symlink("nowhere", Path("broken").c_str()), 0);
  ASSERT_EQ(symlink("pipe", Path("link to pipe").c_str()), 0);
  EXPECT_EQ(Names(u"content:needle"), TNames{"text"});
  EXPECT_EQ(Names(u"content:!=needle"), (TNames{"broken", "link", "link to pipe", "pipe"}));
  EXPECT_EQ(Names(u"mdata:BrokenLink:yes"), TNames{"broken"});
  EXPECT_TRUE(fErrors.empty());
}

// 20 GB that take no room: the hole is skipped, or this test would take a minute.
TEST_F(DiskSearch, TextBehindAHugeHoleIsFound) {
  fFolder.Put("huge", "");
  const int file = open(Path("huge").c_str(), O_WRONLY);
  const off_t end = off_t{20} << 30;
  const bool isWritten = pwrite(file, "the needle\n", 11, end) == 11;
  close(file);
  if (!isWritten) GTEST_SKIP() << "the file system has no large files";
  EXPECT_EQ(Names(u"content:needle"), TNames{"huge"});
  EXPECT_EQ(Names(u"content:~needle$"), TNames{"huge"});
  EXPECT_EQ(Names(u"content:nothing"), TNames{});
}

TEST_F(DiskSearch, AnUnreadableFileIsAnError) {
  fFolder.Put("open", "needle");
  fFolder.Put("denied", "needle");
  ASSERT_EQ(chmod(Path("denied").c_str(), 0), 0);
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  EXPECT_EQ(Names(u"content:needle"), TNames{"open"});
  ASSERT_EQ(fErrors.size(), 1u);
  EXPECT_EQ(ToUtf8(fErrors[0].fPath), Path("denied"));
  EXPECT_EQ(ToUtf8(fErrors[0].fText), "Permission denied");
}

TEST_F(DiskSearch, TheDateOfAccessStays) {
  fFolder.Put("text", "needle");
  const timespec times[2] = {{1'000'000'000, 0}, {1'100'000'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, Path("text").c_str(), times, 0), 0);
  EXPECT_EQ(Names(u"content:needle"), TNames{"text"});
  struct stat status {};
  ASSERT_EQ(stat(Path("text").c_str(), &status), 0);
  EXPECT_EQ(status.st_atim.tv_sec, 1'000'000'000);
}

// Values are read late, so links and folders must be told apart by the listing alone.
TEST_F(DiskSearch, FoundFilesHaveTheirValuesAndLinksAreFollowedOnRequest) {
  Testing::TTemporaryFolder outside;
  outside.Put("outside", "12345");
  fFolder.Put("inside", "123");
  ASSERT_EQ(symlink(outside.Path().c_str(), Path("link").c_str()), 0);
  EXPECT_EQ(Names(u"side"), TNames{"inside"});
  EXPECT_EQ(Names(u"side", 2, heoFollowSymbolicLinks), (TNames{"inside", "outside"}));
  EXPECT_EQ(Names(u"size:5B", 2, heoFollowSymbolicLinks), TNames{"outside"});
  EXPECT_EQ(Names(u"attribute:L"), TNames{"link"});
}

}  // namespace Vantrel::Search
