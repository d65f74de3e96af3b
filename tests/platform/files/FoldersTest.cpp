// Making, finding and removing folders.

#include <gtest/gtest.h>

#include "platform/files/Folders.h"
#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {

namespace {

using Vantrel::Testing::TTemporaryFolder;

std::u16string Joined(const std::u16string& pFolder, std::u16string_view pName) {
  return JoinPath(pFolder, pName, NativePathDelimiter());
}

}  // namespace

TEST(Folders, AreMadeWithThoseAboveThem) {
  const TTemporaryFolder folder;
  const std::u16string top = folder.Path().u16string();
  const std::u16string deep = Joined(Joined(Joined(top, u"a b"), u"\u00E4"), u"c");
  EXPECT_FALSE(PathExists(deep) || FolderExists(deep));
  CreateFolders(deep);
  EXPECT_TRUE(FolderExists(deep));
  CreateFolders(deep);  // there already
  CreateFolders(Joined(deep, u"") + NativePathDelimiter());
  CreateFolders(u"");
  EXPECT_TRUE(std::filesystem::is_directory(deep));

  folder.Put("file", "x");
  CreateFolders(folder.File("file"));  // who writes into it gets the failure
  EXPECT_TRUE(PathExists(folder.File("file")));
  EXPECT_FALSE(FolderExists(folder.File("file")) || SpecialFileExists(folder.File("file")) || SpecialFileExists(top));
  EXPECT_FALSE(PathExists(u"") || FolderExists(u"") || SpecialFileExists(u""));
  EXPECT_THROW(CreateFolders(Joined(folder.File("file"), u"below")), EOSError);
  EXPECT_EQ(folder.Get("file"), "x");
}

TEST(Folders, TemporaryOnesAreNewEachTime) {
  const std::u16string one = CreateTemporaryFolder();
  const std::u16string two = CreateTemporaryFolder();
  EXPECT_NE(one, two);
  EXPECT_TRUE(FolderExists(one) && FolderExists(two));
  RemoveQuietly(one);
  RemoveQuietly(two);
  EXPECT_FALSE(PathExists(one) || PathExists(two));
}

TEST(Folders, TemporaryFilesGoWithTheirFolder) {
  std::u16string file;
  {
    TTemporaryFiles files;
    file = files.Add(u"a b");
    EXPECT_TRUE(FolderExists(std::u16string(FolderOfPath(file, NativePathDelimiter()))));
    TOutputFile(file).Commit();
    files.Add(u"never written");
    EXPECT_TRUE(PathExists(file));
  }
  EXPECT_FALSE(PathExists(file) || PathExists(std::u16string(FolderOfPath(file, NativePathDelimiter()))));
}

TEST(Folders, OnlyFilesAndEmptyFoldersAreRemoved) {
  const TTemporaryFolder folder;
  const std::u16string full = folder.File("full");
  CreateFolders(full);
  folder.Put("full/x", "x");
  RemoveQuietly(full);
  EXPECT_TRUE(FolderExists(full));
  RemoveQuietly(Joined(full, u"x"));
  RemoveQuietly(full);
  RemoveQuietly(full);
  RemoveQuietly(u"");
  EXPECT_EQ(folder.Count(), 0u);
}

}  // namespace Vantrel
