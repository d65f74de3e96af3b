#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "platform/files/UserFolders.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// The variable's value if it is an absolute path, else empty. A relative path would depend on the folder that the
// program is started in.
std::string AbsoluteVariable(const char* pName) {
  const char* value = std::getenv(pName);
  return value != nullptr && value[0] == '/' ? value : "";
}

// Services and cron jobs may run without HOME.
std::string HomeFolder() {
  std::string home = AbsoluteVariable("HOME");
  if (!home.empty()) return home;
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
    buffer.resize(buffer.size() * 4);
  return found != nullptr && found->pw_dir[0] == '/' ? found->pw_dir : "";
}

std::string Join(std::string pFolder, std::string_view pName) {
  if (!pFolder.ends_with('/')) pFolder += '/';
  return pFolder.append(pName);
}

std::u16string FolderOf(const char* pVariable, std::string_view pBelowHome) {
  std::string folder = AbsoluteVariable(pVariable);
  if (folder.empty()) {
    const std::string home = HomeFolder();
    if (home.empty()) return {};
    folder = Join(home, pBelowHome);
  }
  return FromNativeBytes(Join(folder, "vantrel"));
}

}  // namespace

std::u16string UserConfigurationFolder() {
  return FolderOf("XDG_CONFIG_HOME", ".config");
}

std::u16string UserDataFolder() {
  return FolderOf("XDG_DATA_HOME", ".local/share");
}

}  // namespace Vantrel
