// Where they lie, by environment; making them.

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/files/Folders.h"
#include "platform/files/UserFolders.h"
#include "platform/system/Errors.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {

TEST(UserFolders, MissingOnesAreCreated) {
  Vantrel::Testing::TTemporaryFolder folder;
  folder.Put("file", "earlier");
  for (int round = 0; round < 2; ++round) {
    CreateFolders(folder.File("a/b/c"), TFolderAccess::faUserAlone);
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "a/b/c"));
  }
  CreateFolders(folder.File("a/d/"), TFolderAccess::faUserAlone);
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "a/d"));
  CreateFolders({}, TFolderAccess::faUserAlone);
  CreateFolders(folder.File("file"), TFolderAccess::faUserAlone);
  EXPECT_EQ(folder.Get("file"), "earlier");
  for (const char* name : {"file/x", "file/x/y"}) {
    try {
      CreateFolders(folder.File(name), TFolderAccess::faUserAlone);
      ADD_FAILURE() << name;
    } catch (const EOSError& error) {
      EXPECT_EQ(error.Object(), folder.File(name));
    }
  }
}

}  // namespace Vantrel
