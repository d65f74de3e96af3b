// Paths taken apart and compared.

#include <gtest/gtest.h>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

struct TCase {
  const char16_t* fPath;
  const char16_t* fFolder;
  const char16_t* fName;
  bool fRooted;
};

void CheckParts(const TCase& pCase, char16_t pDelimiter) {
  SCOPED_TRACE(ToDisplay(pCase.fPath));
  EXPECT_EQ(ToUtf8(FolderOfPath(pCase.fPath, pDelimiter)), ToUtf8(pCase.fFolder));
  EXPECT_EQ(ToUtf8(FileNameOfPath(pCase.fPath, pDelimiter)), ToUtf8(pCase.fName));
  EXPECT_EQ(IsRootedPath(pCase.fPath, pDelimiter), pCase.fRooted);
}

}  // namespace

TEST(Paths, PartsOfWindowsPaths) {
  for (const TCase& each : std::initializer_list<TCase>{
           {u"C:\\", u"", u"C:\\", true},
           {u"C:", u"", u"C:", false},
           {u"C:\\a", u"C:\\", u"a", true},
           {u"C:\\a\\\\b\\", u"C:\\a", u"b", true},
           {u"c:/a/b", u"c:/a", u"b", true},
           {u"C:a", u"C:", u"a", false},
           {u"a\\b", u"a", u"b", false},
           {u"\\a", u"\\", u"a", false},
           {u"name", u"", u"name", false},
           {u"", u"", u"", false},
           {u"\\\\server\\share\\", u"", u"\\\\server\\share\\", true},
           {u"\\\\server\\share", u"", u"\\\\server\\share", true},
           {u"\\\\server\\share\\a", u"\\\\server\\share\\", u"a", true},
           {u"\\\\?\\C:\\a", u"\\\\?\\C:\\", u"a", true},
           {u"\\\\?\\UNC\\server\\share\\a", u"\\\\?\\UNC\\server\\share\\", u"a", true},
           // A shadow copy: without the delimiter behind its name it would be the device.
           {u"\\\\?\\GLOBALROOT\\Device\\Copy1\\", u"", u"\\\\?\\GLOBALROOT\\Device\\Copy1\\", true},
           {u"\\\\?\\GLOBALROOT\\Device\\Copy1\\a", u"\\\\?\\GLOBALROOT\\Device\\Copy1\\", u"a", true},
       })
    CheckParts(each, u'\\');
}

TEST(Paths, PartsOfUnixPaths) {
  for (const TCase& each : std::initializer_list<TCase>{{u"/", u"", u"/", true},
                                                        {u"///", u"", u"/", true},
                                                        {u"/a", u"/", u"a", true},
                                                        {u"/a//b//", u"/a", u"b", true},
                                                        {u"/a/b\\c", u"/a", u"b\\c", true},
                                                        {u"C:\\a", u"", u"C:\\a", false},
                                                        {u"a/b", u"a", u"b", false}})
    CheckParts(each, u'/');
}

TEST(Paths, JoinAndTrim) {
  EXPECT_EQ(JoinPath(u"/", u"a", u'/'), u"/a");
  EXPECT_EQ(JoinPath(u"/a", u"b", u'/'), u"/a/b");
  EXPECT_EQ(JoinPath(u"", u"b", u'/'), u"b");
  EXPECT_EQ(JoinPath(u"/a\\", u"b", u'/'), u"/a\\/b");
  EXPECT_EQ(JoinPath(u"C:/", u"b", u'\\'), u"C:/b");
  EXPECT_EQ(WithoutTrailingDelimiter(u"C:\\", u'\\'), u"C:\\");
  EXPECT_EQ(WithoutTrailingDelimiter(u"C:\\\\", u'\\'), u"C:\\");
  EXPECT_EQ(WithoutTrailingDelimiter(u"C:\\a/\\", u'\\'), u"C:\\a");
  EXPECT_EQ(WithoutTrailingDelimiter(u"/a\\", u'/'), u"/a\\");
}

TEST(Paths, Extensions) {
  EXPECT_TRUE(HasExtension(u"/a/data.XML.zip", u".xml.zip"));
  EXPECT_TRUE(HasExtension(u"C:\\a\\.csv", u".csv"));
  EXPECT_TRUE(HasExtension(u".csv", u".csv"));
  EXPECT_FALSE(HasExtension(u"/a/csv", u".csv"));
  EXPECT_FALSE(HasExtension(u"/a.csv/b", u".csv"));
  EXPECT_FALSE(HasExtension(u"csv", u".csv"));
  EXPECT_FALSE(HasExtension(u"data.\u212Aml", u".kml"));  // the Kelvin sign, a K to Unicode
}

TEST(Paths, SameAndInside) {
  EXPECT_TRUE(SamePath(u"C:\\Caf\u00C9\\", u"c:/caf\u00E9", u'\\'));
  EXPECT_TRUE(SamePath(u"\\\\Server\\Share\\", u"\\\\server\\share", u'\\'));
  EXPECT_FALSE(SamePath(u"\\\\server\\share", u"\\server\\share", u'\\'));
  EXPECT_FALSE(SamePath(u"\\a", u"a", u'\\'));
  EXPECT_TRUE(SamePath(u"/a//b/", u"/a/b", u'/'));
  EXPECT_FALSE(SamePath(u"/a", u"/A", u'/'));
  EXPECT_FALSE(SamePath(u"/", u"", u'/'));
  EXPECT_TRUE(IsSameOrInside(u"/a", u"/", u'/'));
  EXPECT_TRUE(IsSameOrInside(u"/a/b", u"/a", u'/'));
  EXPECT_FALSE(IsSameOrInside(u"/ab", u"/a", u'/'));
  EXPECT_FALSE(IsSameOrInside(u"/a", u"/a/b", u'/'));
  EXPECT_FALSE(IsSameOrInside(u"a", u"/", u'/'));
  EXPECT_TRUE(IsSameOrInside(u"C:\\x", u"c:\\", u'\\'));
  EXPECT_FALSE(IsSameOrInside(u"D:\\x", u"C:\\", u'\\'));
}

}  // namespace Vantrel
