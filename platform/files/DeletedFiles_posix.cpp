#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "platform/files/DeletedFiles.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// Calls pDo for each path in the folder, as far as it can be listed.
template <class TDo>
void ForEachIn(const std::filesystem::path& pFolder, const TDo& pDo) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(pFolder, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
    pDo(entry->path());
}

bool IsNumber(const std::string& pName) {
  return std::all_of(pName.begin(), pName.end(),
                     [](char pCharacter) { return pCharacter >= '0' && pCharacter <= '9'; });
}

}  // namespace

int64_t OpenDeletedBytes(const std::u16string& pPath) {
  struct stat top {};
  if (stat(ToNativeBytes(pPath).c_str(), &top) != 0) return 0;
  std::set<ino_t> counted;  // several programs may hold one file
  int64_t bytes = 0;
  ForEachIn("/proc", [&](const std::filesystem::path& pProcess) {
    if (!IsNumber(pProcess.filename())) return;
    ForEachIn(pProcess / "fd", [&](const std::filesystem::path& pOpen) {
      struct stat file {};
      // The link leads to the file itself, also to one without a name.
      if (stat(pOpen.c_str(), &file) != 0 || !S_ISREG(file.st_mode) || file.st_nlink > 0) return;
      constexpr int64_t kBlock = 512;
      if (file.st_dev == top.st_dev && counted.insert(file.st_ino).second) bytes += file.st_blocks * kBlock;
    });
  });
  return bytes;
}

}  // namespace Vantrel
