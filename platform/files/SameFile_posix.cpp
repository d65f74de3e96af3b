#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "platform/files/CanonicalPath.h"
#include "platform/files/Paths.h"
#include "platform/files/SameFile.h"
#include "platform/files/SystemFiles_posix.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// Follows a link to a missing file by hand, since the system resolves only existing paths.
std::u16string BehindDanglingLinks(std::u16string pPath) {
  for (int links = 0; links < kMostLinks; ++links) {
    char target[PATH_MAX];
    struct stat info {};
    const std::string path = ToNativeBytes(pPath);
    if (stat(path.c_str(), &info) == 0) break;
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    if (length <= 0) break;
    const std::u16string next = FromNativeBytes({target, static_cast<size_t>(length)});
    pPath = next[0] == u'/' ? next : JoinPath(FolderOfPath(pPath, u'/'), next, u'/');
  }
  return pPath;
}

}  // namespace

TFilePlace PlaceOfFile(const std::u16string& pPath) {
  TFilePlace place{CanonicalPath(BehindDanglingLinks(AbsolutePath(pPath))), {}};
  struct stat info {};
  if (stat(ToNativeBytes(pPath).c_str(), &info) == 0 && S_ISREG(info.st_mode))
    place.fNumbers.emplace(static_cast<uint64_t>(info.st_dev), static_cast<uint64_t>(info.st_ino));
  return place;
}

}  // namespace Vantrel
