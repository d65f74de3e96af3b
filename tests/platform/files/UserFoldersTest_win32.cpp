#include <gtest/gtest.h>

#include "platform/system/Environment.h"
#include "platform/files/UserFolders.h"

namespace Kiv {

TEST(UserFoldersOnWindows, LieInTheApplicationData) {
  EXPECT_EQ(UserConfigurationFolder(), ExpandEnvironment(u"%APPDATA%\\Vantrel"));
  EXPECT_EQ(UserDataFolder(), ExpandEnvironment(u"%LOCALAPPDATA%\\Vantrel"));
}

}  // namespace Kiv
