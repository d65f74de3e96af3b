#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

#include "platform/files/Paths.h"
#include "platform/files/SystemFiles_posix.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

struct TFree {
  void operator()(char* pText) const { free(pText); }
};

std::string CurrentFolder() {
  std::unique_ptr<char, TFree> folder(getcwd(nullptr, 0));
  return folder ? folder.get() : std::string();
}

// Removes the next part from the front and returns it; empty at the end.
std::string TakePart(std::string& pPath) {
  const size_t begin = pPath.find_first_not_of('/');
  if (begin == std::string::npos) return pPath.clear(), std::string();
  const size_t end = std::min(pPath.find('/', begin), pPath.size());
  std::string part = pPath.substr(begin, end - begin);
  pPath.erase(0, end);
  return part;
}

// Resolves a path part by part, each relative to the folder before it, so the path may have any length. Takes parts
// from the front of the remaining text and puts the target of each link there.
class TLongPathResolver {
 public:
  explicit TLongPathResolver(std::string pPath) : fRest(std::move(pPath)) { StartAtRoot(); }
  ~TLongPathResolver() { Enter(-1); }
  TLongPathResolver(const TLongPathResolver&) = delete;
  TLongPathResolver& operator=(const TLongPathResolver&) = delete;

  // Empty when some part of the path does not exist or cannot be entered.
  std::string Resolve() {
    while (fFolder >= 0) {
      const std::string part = TakePart(fRest);
      if (part.empty()) return fResolved.empty() ? "/" : fResolved;
      if (part != "." && !Step(part)) break;
    }
    return {};
  }

 private:
  void StartAtRoot() {
    fResolved.clear();
    Enter(open("/", O_PATH | O_CLOEXEC));
  }

  void Enter(int pFolder) {
    if (fFolder >= 0) close(fFolder);
    fFolder = pFolder;
  }

  bool Step(const std::string& pPart) {
    const int next = openat(fFolder, pPart.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    struct stat info {};
    if (next < 0) return false;
    if (fstat(next, &info) != 0) return close(next), false;
    if (S_ISLNK(info.st_mode)) return FollowLink(next);
    if (pPart == "..")
      fResolved.resize(fResolved.empty() ? 0 : fResolved.rfind('/'));
    else
      fResolved += '/' + pPart;
    Enter(next);
    return fRest.empty() || S_ISDIR(info.st_mode);
  }

  bool FollowLink(int pLink) {
    char target[PATH_MAX];
    const ssize_t length = readlinkat(pLink, "", target, sizeof target);
    close(pLink);
    if (length <= 0 || ++fLinks > kMostLinks) return false;
    fRest.insert(0, target, static_cast<size_t>(length));
    if (target[0] == '/') StartAtRoot();
    return true;
  }

  std::string fRest;
  std::string fResolved;  // without trailing delimiter, so the root is empty
  int fFolder = -1;
  int fLinks = 0;
};

}  // namespace

char16_t NativePathDelimiter() {
  return u'/';
}

std::u16string AbsolutePath(std::u16string_view pPath) {
  if (pPath.empty()) return {};
  std::string rest = ToNativeBytes(pPath);
  if (rest[0] != '/') {
    const std::string folder = CurrentFolder();
    if (folder.empty()) return {};
    rest = folder + '/' + rest;
  }
  std::string result;
  for (std::string part = TakePart(rest); !part.empty(); part = TakePart(rest)) {
    if (part == "..")
      result.resize(result.empty() ? 0 : result.rfind('/'));
    else if (part != ".")
      result += '/' + part;
  }
  return FromNativeBytes(result.empty() ? "/" : result);
}

std::u16string ResolvedPath(const std::u16string& pPath) {
  std::string path = ToNativeBytes(pPath);
  if (path.empty() || path.find('\0') != std::string::npos) return {};
  std::unique_ptr<char, TFree> resolved(realpath(path.c_str(), nullptr));
  if (resolved) return FromNativeBytes(resolved.get());
  if (errno != ENAMETOOLONG) return {};
  if (path[0] != '/') {
    const std::string folder = CurrentFolder();
    if (folder.empty()) return {};
    path = folder + '/' + path;
  }
  return FromNativeBytes(TLongPathResolver(std::move(path)).Resolve());
}

}  // namespace Vantrel
