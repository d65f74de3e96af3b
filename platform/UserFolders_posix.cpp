#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "platform/Errors.h"
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

// From the top down, so that the failure that is told is the first one.
void CreateFolderForUser(const std::u16string& pPath) {
  const std::string path = ToNativeBytes(pPath);
  if (path.find('\0') != std::string::npos) throw EOSError(EINVAL, "Creating a folder", pPath);
  for (size_t end = 0; end < path.size();) {
    end = std::min(path.find('/', end + 1), path.size());
    const std::string folder = path.substr(0, end);
    if (mkdir(folder.c_str(), 0700) == 0) continue;
    const auto code = static_cast<uint32_t>(errno);
    // A folder that is there may be refused for other reasons first, such as a disk that cannot be written.
    struct stat there {};
    if (stat(folder.c_str(), &there) != 0) throw EOSError(code, "Creating a folder", pPath);
  }
}

}  // namespace Kiv
