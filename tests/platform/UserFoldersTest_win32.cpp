#include <gtest/gtest.h>

#include "platform/Environment.h"
#include "platform/UserFolders.h"

namespace Kiv {

TEST(UserFoldersOnWindows, LiesInTheRoamingApplicationData) {
  EXPECT_EQ(UserConfigurationFolder(), ExpandEnvironment(u"%APPDATA%\\Vantrel"));
}

}  // namespace Kiv
