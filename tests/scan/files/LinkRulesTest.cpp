// Tables of links, errors, allocated sizes and attributes.

#include <gtest/gtest.h>

#include <string>

#include "platform/text/Text.h"
#include "scan/files/LinkRules.h"
#include "scan/storage/FileSystemEnumerator.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Enumerators {
namespace {

TEST(LinkRules, RootedTargetCountsFromTheLinksFolder) {
  struct TCase {
    char16_t fDelimiter;
    const char16_t* fLink;
    const char16_t* fTarget;
    const char16_t* fExpected;
  };
  const TCase cases[] = {
      {u'/', u"/a/link", u"b", u"/a/b"},
      {u'/', u"/a/link", u"./b/../c", u"/a/c"},
      {u'/', u"/a/link", u"..", u"/"},
      {u'/', u"/a/link", u"../../../b", u"/b"},
      {u'/', u"/a/link", u"/x/../y/", u"/y"},
      {u'/', u"/link", u".", u"/"},
      {u'/', u"/a/link", u"b\\c", u"/a/b\\c"},
      {u'/', u"/a/link", u"", u""},
      {u'\\', u"C:\\a\\link", u"b", u"C:\\a\\b"},
      {u'\\', u"C:\\a\\link", u"..\\..\\..\\b", u"C:\\b"},
      {u'\\', u"C:\\a\\link", u"\\b", u"C:\\b"},
      {u'\\', u"C:\\a\\link", u"../b", u"C:\\b"},
      {u'\\', u"\\\\server\\share\\a\\link", u"\\b", u"\\\\server\\share\\b"},
      {u'\\', u"C:\\a\\link", u"D:\\x\\..\\y", u"D:\\y"},
      {u'\\', u"C:\\a\\link", u"\\\\server\\share\\b", u"\\\\server\\share\\b"},
  };
  for (const TCase& c : cases)
    EXPECT_EQ(ToUtf8(RootedLinkTarget(c.fLink, c.fTarget, c.fDelimiter)), ToUtf8(c.fExpected))
        << ToUtf8(c.fLink) << " -> " << ToUtf8(c.fTarget);
}

TEST(LinkRules, LinkIsFollowedOnlyOutOfTheScannedTree) {
  struct TCase {
    const char* fWhat;
    char16_t fDelimiter;
    const char16_t* fLink;
    const char16_t* fTarget;
    const char16_t* fRoot;
    bool fFollowed;
  };
  const TCase cases[] = {
      {"no target", u'/', u"/r/l", u"", u"/r", false},
      {"elsewhere", u'/', u"/r/l", u"/other", u"/r", true},
      {"the root", u'/', u"/r/a/l", u"/r", u"/r", false},
      {"inside the root", u'/', u"/r/a/l", u"/r/b", u"/r", false},
      {"above the root", u'/', u"/p/r/l", u"/p", u"/p/r", false},
      {"relative, back into the root", u'/', u"/r/a/l", u"../b", u"/r", false},
      {"relative, out of the root", u'/', u"/r/l", u"../other", u"/r", true},
      {"a name that begins like the root's", u'/', u"/r/l", u"/root", u"/r", true},
      {"everything is inside /", u'/', u"/a/l", u"/b", u"/", false},
      {"letter case counts", u'/', u"/r/l", u"/R", u"/r", true},
      {"the link's folder", u'/', u"/real/a/l", u"/real/a", u"/r", false},
      {"above the link's folder", u'/', u"/real/a/l", u"/real", u"/r", false},
      {"inside the link's folder", u'/', u"/real/a/l", u"/real/a/b", u"/r", false},
      {"beside the link's folder", u'/', u"/real/a/l", u"/real/b", u"/r", true},
      {"another drive", u'\\', u"C:\\r\\l", u"D:\\r", u"C:\\r", true},
      {"letter case does not count", u'\\', u"C:\\r\\l", u"c:\\R\\b", u"C:\\r", false},
      {"above, up to the drive", u'\\', u"C:\\r\\l", u"C:\\", u"C:\\r", false},
      {"another share", u'\\', u"\\\\s\\one\\l", u"\\\\s\\two", u"\\\\s\\one", true},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(FollowLink(c.fLink, c.fTarget, c.fRoot, c.fDelimiter), c.fFollowed) << c.fWhat;
  }
}

TEST(LinkRules, AllocatedSize) {
  struct TCase {
    const char* fWhat;
    TAllocationFacts fFacts;
    int64_t fExpected;
  };
  const TCase cases[] = {
      {"a folder has none", {true, 8192, 4096, false, 0, 1}, 0},
      {"an ordinary file", {false, 8192, 4096, false, 0, 1}, 8192},
      {"300 bytes in the file record", {false, 304, 4096, false, 0, 1}, 0},
      {"one cluster is not in the record", {false, 4096, 4096, false, 0, 1}, 4096},
      {"unknown cluster size", {false, 304, 0, false, 0, 1}, 304},
      {"two links", {false, 8192, 4096, true, 0, 2}, 4096},
      {"three links, cut to whole bytes", {false, 8192, 4096, true, 0, 3}, 2730},
      {"one link with streams", {false, 8192, 4096, true, 100, 1}, 8292},
      {"two links with streams", {false, 8192, 4096, true, 101, 2}, 4146},
      {"a count of zero is no division", {false, 8192, 4096, true, 0, 0}, 8192},
      {"links do not count when not shared", {false, 8192, 4096, false, 100, 2}, 8192},
  };
  for (const TCase& c : cases) EXPECT_EQ(AllocatedSizeOf(c.fFacts), c.fExpected) << c.fWhat;
}

TEST(FileSystemEnumerator, FileUrlsBecomePaths) {
  struct TCase {
    char16_t fDelimiter;
    const char16_t* fUrl;
    const char16_t* fPath;
  };
  const TCase cases[] = {
      {u'\\', u"C:\\a/b", u"C:\\a/b"},
      {u'\\', u"file:C:/a/b", u"C:\\a\\b"},
      {u'\\', u"FILE:///C:/a", u"C:\\a"},
      {u'\\', u"File://server/share/a", u"\\\\server\\share\\a"},
      {u'\\', u"file:\\\\?\\Volume{1}\\a", u"\\\\?\\Volume{1}\\a"},
      {u'\\', u"files:", u"files:"},
      {u'/', u"/a/file:b", u"/a/file:b"},
      {u'/', u"file:/a", u"/a"},
      {u'/', u"fiLE:///a\\b", u"/a\\b"},
      {u'/', u"file:a", u"a"},
      {u'/', u"file:///", u"/"},
  };
  for (const TCase& c : cases)
    EXPECT_EQ(ToUtf8(PathOfFileUrl(c.fUrl, c.fDelimiter)), ToUtf8(c.fPath)) << ToUtf8(c.fUrl);
}

}  // namespace
}  // namespace Vantrel::Enumerators
