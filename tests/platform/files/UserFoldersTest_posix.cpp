// Where they lie, by environment; who may read new ones.

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/files/Folders.h"
#include "platform/files/UserFolders.h"
#include "platform/text/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace Vantrel {

namespace {

// Sets a variable, or takes it away, and puts it back at the end.
class TVariable {
 public:
  TVariable(const char* pName, const char* pValue) : fName(pName) {
    if (const char* earlier = std::getenv(pName)) fEarlier = earlier;
    Set(pValue);
  }
  ~TVariable() { Set(fEarlier ? fEarlier->c_str() : nullptr); }
  TVariable(const TVariable&) = delete;
  TVariable& operator=(const TVariable&) = delete;

 private:
  void Set(const char* pValue) { pValue == nullptr ? unsetenv(fName) : setenv(fName, pValue, 1); }

  const char* const fName;
  std::optional<std::string> fEarlier;
};

}  // namespace

TEST(UserFoldersOnLinux, FollowTheEnvironment) {
  const passwd* user = getpwuid(geteuid());
  ASSERT_NE(user, nullptr);
  const std::string ofPasswordFile = std::string(user->pw_dir) + (std::string(user->pw_dir) == "/" ? "" : "/");
  const struct {
    const char* fConfiguration;
    const char* fData;
    const char* fHome;
    std::string fExpectedConfiguration;
    std::string fExpectedData;
  } rows[] = {
      {"/c/\xFF", "/d", "/h", "/c/\xFF/vantrel", "/d/vantrel"},
      {"/c/", nullptr, "/h", "/c/vantrel", "/h/.local/share/vantrel"},
      {"/", "/d/\xFF/", nullptr, "/vantrel", "/d/\xFF/vantrel"},
      {nullptr, "", "/h/", "/h/.config/vantrel", "/h/.local/share/vantrel"},
      {"", "d", "/", "/.config/vantrel", "/.local/share/vantrel"},
      {"c", "/", "/h", "/h/.config/vantrel", "/vantrel"},
      {"./c", "./d", "h", ofPasswordFile + ".config/vantrel", ofPasswordFile + ".local/share/vantrel"},
      {nullptr, nullptr, "", ofPasswordFile + ".config/vantrel", ofPasswordFile + ".local/share/vantrel"},
      {nullptr, nullptr, nullptr, ofPasswordFile + ".config/vantrel", ofPasswordFile + ".local/share/vantrel"},
  };
  for (const auto& row : rows) {
    const TVariable configuration("XDG_CONFIG_HOME", row.fConfiguration);
    const TVariable data("XDG_DATA_HOME", row.fData);
    const TVariable home("HOME", row.fHome);
    EXPECT_EQ(ToNativeBytes(UserConfigurationFolder()), row.fExpectedConfiguration);
    EXPECT_EQ(ToNativeBytes(UserDataFolder()), row.fExpectedData);
  }
}

TEST(UserFoldersOnLinux, NewOnesAreClosedToOthersAndEarlierOnesStayAsTheyWere) {
  Vantrel::Testing::TTemporaryFolder folder;
  const std::string top = folder.Path().string();
  const auto mode = [](const std::string& pPath) {
    struct stat info {};
    return stat(pPath.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
  };
  ASSERT_EQ(mkdir((top + "/a").c_str(), 0777), 0);
  ASSERT_EQ(chmod((top + "/a").c_str(), 0755), 0);
  CreateFolders(folder.File("a/b/c"), TFolderAccess::faUserAlone);
  EXPECT_EQ(mode(top + "/a"), 0755u);
  EXPECT_EQ(mode(top + "/a/b"), 0700u);
  EXPECT_EQ(mode(top + "/a/b/c"), 0700u);
}

}  // namespace Vantrel
