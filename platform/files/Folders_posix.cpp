#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/files/Folders.h"
#include "platform/files/SystemFiles_posix.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

bool PathExists(const std::u16string& pPath) {
  struct stat there {};
  return stat(ToNativeBytes(pPath).c_str(), &there) == 0;
}

bool FolderExists(const std::u16string& pPath) {
  struct stat there {};
  return stat(ToNativeBytes(pPath).c_str(), &there) == 0 && S_ISDIR(there.st_mode);
}

bool SpecialFileExists(const std::u16string& pPath) {
  struct stat there {};
  return stat(ToNativeBytes(pPath).c_str(), &there) == 0 && !S_ISREG(there.st_mode) && !S_ISDIR(there.st_mode);
}

std::vector<std::u16string> NamesIn(const std::u16string& pFolder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(ToNativeBytes(pFolder).c_str()), &closedir);
  if (!folder) throw EOSError(LastError(), "Listing a folder", pFolder);
  std::vector<std::u16string> names;
  errno = 0;
  while (const dirent* entry = readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.push_back(FromNativeBytes(name));
  }
  if (errno != 0) throw EOSError(LastError(), "Listing a folder", pFolder);
  return names;
}

// Works from the top down, so that the error names the first folder that failed.
void CreateFolders(const std::u16string& pPath, TFolderAccess pAccess) {
  const std::string path = ToNativeBytes(pPath);
  const mode_t mode = pAccess == TFolderAccess::faUserAlone ? 0700 : 0777;
  if (path.find('\0') != std::string::npos) throw EOSError(EINVAL, "Creating a folder", pPath);
  for (size_t end = 0; end < path.size();) {
    end = std::min(path.find('/', end + 1), path.size());
    const std::string folder = path.substr(0, end);
    if (mkdir(folder.c_str(), mode) == 0) continue;
    const uint32_t code = LastError();
    // mkdir may report another reason for a folder that exists, such as a read-only disk.
    struct stat there {};
    if (stat(folder.c_str(), &there) != 0) throw EOSError(code, "Creating a folder", pPath);
  }
}

std::u16string CreateTemporaryFolder() {
  const char* place = std::getenv("TMPDIR");
  std::string path = std::string(place != nullptr && *place != '\0' ? place : "/tmp") + "/vantrel-XXXXXX";
  if (mkdtemp(path.data()) == nullptr)
    throw EOSError(LastError(), "Creating a temporary folder", FromNativeBytes(path));
  return FromNativeBytes(path);
}

void RemoveQuietly(const std::u16string& pPath) noexcept {
  std::remove(ToNativeBytes(pPath).c_str());
}

}  // namespace Vantrel
