#include <gtest/gtest.h>

#include <filesystem>

#include "platform/Errors.h"
#include "platform/UserFolders.h"
#include "tests/support/TemporaryFolder.h"

namespace Kiv {

TEST(UserFolders, MissingOnesAreCreated) {
  Vantrel::Testing::TTemporaryFolder folder;
  folder.Put("file", "earlier");
  for (int round = 0; round < 2; ++round) {
    CreateFolderForUser(folder.File("a/b/c"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "a/b/c"));
  }
  CreateFolderForUser(folder.File("a/d/"));
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "a/d"));
  CreateFolderForUser({});
  CreateFolderForUser(folder.File("file"));
  EXPECT_EQ(folder.Get("file"), "earlier");
  for (const char* name : {"file/x", "file/x/y"}) {
    try {
      CreateFolderForUser(folder.File(name));
      ADD_FAILURE() << name;
    } catch (const EOSError& error) {
      EXPECT_EQ(error.Object(), folder.File(name));
    }
  }
}

}  // namespace Kiv
