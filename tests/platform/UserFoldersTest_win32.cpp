#include <gtest/gtest.h>

#include "platform/Environment.h"
#include "platform/UserFolders.h"

namespace Kiv {

TEST(UserFoldersOnWindows, LieInTheApplicationData) {
  EXPECT_EQ(UserConfigurationFolder(), ExpandEnvironment(u"%APPDATA%\\Vantrel"));
  EXPECT_EQ(UserDataFolder(), ExpandEnvironment(u"%LOCALAPPDATA%\\Vantrel"));
}

}  // namespace Kiv
