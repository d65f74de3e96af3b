#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "platform/files/OutputFile.h"
#include "platform/files/SystemFiles_posix.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// The folder with its trailing slash; empty for a bare name.
std::string FolderPart(const std::string& pPath) {
  return pPath.substr(0, pPath.rfind('/') + 1);
}

// Links in /proc lead to open files. Their text is only a description.
bool IsLinkOfKernel(const std::string& pLink) {
  const int link = open(pLink.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
  if (link < 0) return false;
  struct statfs info {};
  const bool proc = fstatfs(link, &info) == 0 && info.f_type == PROC_SUPER_MAGIC;
  close(link);
  return proc;
}

// Follows the links of the last part only, so the target of a dangling link is known. Stops at a link of the kernel.
// Empty when the links form a circle.
std::string FollowLinks(std::string pPath) {
  for (int links = 0; links < kMostLinks; ++links) {
    char target[PATH_MAX];
    const ssize_t length = readlink(pPath.c_str(), target, sizeof target);
    if (length <= 0 || IsLinkOfKernel(pPath)) return pPath;
    const std::string next(target, static_cast<size_t>(length));
    pPath = next[0] == '/' ? next : FolderPart(pPath) + next;
  }
  return {};
}

// Shares one of the process's own streams instead of opening it again. A second position in the same file would
// overwrite what the shell's other commands append.
int OpenDirectly(const std::string& pPath) {
  char folder[PATH_MAX];
  const std::string own = "/proc/" + std::to_string(getpid()) + "/fd";
  const size_t slash = pPath.rfind('/') + 1;
  if (realpath(pPath.substr(0, slash).c_str(), folder) != nullptr && own == folder)
    return fcntl(std::atoi(pPath.c_str() + slash), F_DUPFD_CLOEXEC, 3);
  return open(pPath.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
}

// Gives the new file the earlier one's owner, where the process may do so. If the group cannot be kept, the new group
// gets only the rights that everyone has.
void CopyPermissions(int pFile, const struct stat& pEarlier) {
  mode_t mode = pEarlier.st_mode & 07777;
  const bool group = fchown(pFile, static_cast<uid_t>(-1), pEarlier.st_gid) == 0;
  if (!group) mode = (mode & ~mode_t{07070}) | ((mode & 07) << 3);
  const bool owner = pEarlier.st_uid == geteuid() || fchown(pFile, pEarlier.st_uid, static_cast<gid_t>(-1)) == 0;
  if (!owner) mode &= 0777;
  // A file system without permissions refuses. Nothing is lost then.
  if (fchmod(pFile, mode) != 0) return;
}

[[noreturn]] void Fail(int pCode, std::string_view pOperation, const std::u16string& pPath) {
  throw EOSError(static_cast<uint32_t>(pCode), pOperation, pPath);
}

// Creates the temporary file beside the target, under a name that no other file has. pPath is for messages.
int CreateTemporary(const std::string& pTarget, mode_t pMode, const std::u16string& pPath, std::u16string& pTemporary) {
  int file = -1;
  do {
    pTemporary = FromNativeBytes(FolderPart(pTarget)) + TemporaryName();
    file = open(ToNativeBytes(pTemporary).c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, pMode);
  } while (file < 0 && errno == EEXIST);
  if (file < 0) {
    const int code = errno;
    pTemporary.clear();
    Fail(code, "Creating a temporary file beside its target", pPath);
  }
  return file;
}

}  // namespace

void TOutputFile::Open() {
  const auto fail = [&](int pCode, std::string_view pOperation) { Fail(pCode, pOperation, fPath); };
  const std::string path = ToNativeBytes(fPath);
  if (fPath == kStandardOutput) {
    const int direct = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (direct < 0) fail(errno, "Opening a file");
    fTarget = fPath;
    fFile = TFileStream(direct, fPath);
    return;
  }
  if (path.empty() || path.find('\0') != std::string::npos) fail(EINVAL, "Creating a file");
  const std::string target = FollowLinks(path);
  if (target.empty()) fail(ELOOP, "Creating a file");
  fTarget = FromNativeBytes(target);
  struct stat earlier {};
  const bool exists = stat(target.c_str(), &earlier) == 0;
  // Reports a name that is too long for its folder before the work begins. The temporary name is short and would not
  // show it.
  if (!exists && errno == ENAMETOOLONG) fail(ENAMETOOLONG, "Creating a file");
  if ((exists && S_ISDIR(earlier.st_mode)) || target.back() == '/') fail(EISDIR, "Creating a file");
  if (exists && (!S_ISREG(earlier.st_mode) || IsLinkOfKernel(target))) {
    const int direct = OpenDirectly(target);
    if (direct < 0) fail(errno, "Opening a file");
    fFile = TFileStream(direct, fPath);
    return;
  }
  // Renaming needs only the folder's permissions. But a write-protected file must stay.
  if (exists && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) fail(errno, "Opening a file");
  const int file = CreateTemporary(target, exists ? 0600 : 0666, fPath, fTemporary);
  fFile = TFileStream(file, fPath);
  if (exists) CopyPermissions(file, earlier);
}

void TOutputFile::Replace() {
  const std::string target = ToNativeBytes(fTarget);
  if (rename(ToNativeBytes(fTemporary).c_str(), target.c_str()) != 0)
    throw EOSError(LastError(), "Replacing a file", fPath);
  // The new name must also survive a system crash. Some folders cannot be synchronised; the name is unprotected there.
  const std::string folder = FolderPart(target);
  const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

void TOutputFile::RemoveTemporary() noexcept {
  if (!fTemporary.empty()) unlink(ToNativeBytes(fTemporary).c_str());
  fTemporary.clear();
}

}  // namespace Vantrel
