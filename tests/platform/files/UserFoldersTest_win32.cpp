// Where they lie.

#include <gtest/gtest.h>

#include "platform/files/UserFolders.h"
#include "platform/system/Environment.h"

namespace Vantrel {

TEST(UserFoldersOnWindows, LieInTheApplicationData) {
  EXPECT_EQ(UserConfigurationFolder(), ExpandEnvironment(u"%APPDATA%\\Vantrel"));
  EXPECT_EQ(UserDataFolder(), ExpandEnvironment(u"%LOCALAPPDATA%\\Vantrel"));
}

}  // namespace Vantrel
