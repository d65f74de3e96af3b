#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "platform/Text.h"
#include "platform/UserFolders.h"

namespace Kiv {

namespace {

// Empty unless it is an absolute path: a relative one would lead elsewhere from each folder that the program is
// started in.
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

}  // namespace

std::u16string UserConfigurationFolder() {
  std::string folder = AbsoluteVariable("XDG_CONFIG_HOME");
  if (folder.empty()) {
    const std::string home = HomeFolder();
    if (home.empty()) return {};
    folder = Join(home, ".config");
  }
  return FromNativeBytes(Join(folder, "vantrel"));
}

}  // namespace Kiv
