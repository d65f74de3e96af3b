// Which kind of storage serves a path, and what is said of one that none serves.

#include <gtest/gtest.h>

#include "platform/files/Paths.h"
#include "scan/files/LocalStorage.h"
#include "scan/storage/Storages.h"
#include "tests/support/Failures.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel::Storages {
namespace {

using Testing::MessageOf;

TEST(Storages, AProtocolIsMoreThanOneLetterBeforeAColon) {
  EXPECT_EQ(ProtocolOf(u"sftp://host/x"), u"sftp:");
  EXPECT_EQ(ProtocolOf(u"s3+x:y"), u"s3+x:");
  for (const char16_t* path : {u"", u"C:\\x", u"c:x", u"/a:b", u"./a:b", u"a b:c", u"3x:y", u":x", u"name"})
    EXPECT_EQ(ProtocolOf(path), u"");
}

// On Windows a colon is in no name.
TEST(Storages, AFileOfThatNameIsAFile) {
  if (NativePathDelimiter() != u'/') GTEST_SKIP();
  const Testing::TTemporaryFolder folder;
  folder.Put("sftp:x", "");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  EXPECT_EQ(CreateStorages({CreateLocalStorage()})->FindForPath(u"sftp:x")->AbsolutePath(u"sftp:x"),
            folder.File("sftp:x"));
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace Vantrel::Storages
