#include "scan/files/UnixDirectory_posix.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"

namespace Vantrel::Enumerators {

namespace {

// The system refuses paths of 4096 bytes and more. Longer paths are opened in steps of at most this many bytes.
constexpr size_t kLongestStep = 4'000;

// The number of open folders. It is kept well below the process's limit of open files. Above it, a folder is closed
// although children still wait. They are then opened by path, which is slower but always works.
std::atomic<int> gOpenDirectories{0};

int OpenDirectoriesLimit() {
  static const int limit = [] {
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0) return 128;
    return static_cast<int>(std::clamp<rlim_t>(files.rlim_cur / 4, 16, 4096));
  }();
  return limit;
}

}  // namespace

int OpenAt(int pDirectory, const char* pPath, int pFlags) {
  int handle;
  do handle = openat(pDirectory, pPath, pFlags | O_CLOEXEC);
  while (handle < 0 && errno == EINTR && !TInterruptibleThread::IsCurrentInterrupted());
  return handle;
}

int OpenInSteps(int pDirectory, std::string_view pPath, int pFlags) {
  int at = pDirectory;
  auto closeStep = [&] {
    if (at != pDirectory) close(at);
  };
  while (pPath.size() > kLongestStep) {
    const size_t slash = pPath.rfind('/', kLongestStep);
    if (slash == std::string_view::npos) {  // no name is this long
      closeStep();
      errno = ENAMETOOLONG;
      return -1;
    }
    const int next = OpenAt(at, std::string(pPath.substr(0, slash + 1)).c_str(), O_PATH | O_DIRECTORY);
    const int error = errno;
    closeStep();
    if (next < 0) {
      errno = error;
      return -1;
    }
    at = next;
    pPath.remove_prefix(slash + 1);
  }
  const int handle = OpenAt(at, std::string(pPath).c_str(), pFlags);
  const int error = errno;
  closeStep();
  errno = error;
  return handle;
}

TUnixDirectory::TUnixDirectory(std::string pPath)
    : fName(std::move(pPath)),
      fRoad(0),
      fPathLength(fName == "/" ? 0 : static_cast<uint32_t>(FromNativeBytes(fName).size())),
      fFollowLink(true),
      fHoldsParent(false) {}

TUnixDirectory::TUnixDirectory(TRef<TUnixDirectory> pParent, std::u16string_view pName, bool pFollowLink)
    : fParent(std::move(pParent)),
      fName(ToNativeBytes(pName)),
      fRoad((fParent->fRoad + std::hash<std::string>()(fName)) * 0x9E3779B97F4A7C15u),
      fPathLength(fParent->fPathLength + 1 + static_cast<uint32_t>(pName.size())),
      fFollowLink(pFollowLink),
      fHoldsParent(true) {
  fParent->Hold();
}

TRef<TUnixDirectory> TUnixDirectory::Again() const {
  return fParent ? MakeRef<TUnixDirectory>(fParent, FromNativeBytes(fName), fFollowLink)
                 : MakeRef<TUnixDirectory>(fName);
}

TUnixDirectory::~TUnixDirectory() {
  CloseHandle();
  LetGoOfParent();
}

void TUnixDirectory::CloseHandle() {
  const int handle = fHandle.exchange(-1, std::memory_order_acq_rel);
  if (handle < 0) return;
  close(handle);
  gOpenDirectories.fetch_sub(1, std::memory_order_relaxed);
}

void TUnixDirectory::LetGo() {
  if (fHolders.fetch_sub(1, std::memory_order_acq_rel) == 1) CloseHandle();
}

void TUnixDirectory::LetGoOfParent() {
  if (std::exchange(fHoldsParent, false)) fParent->LetGo();
}

// Holds the folder if it is open. A folder without holders may close at any moment, so it is not held again.
bool TUnixDirectory::HoldIfOpen() {
  int32_t holders = fHolders.load(std::memory_order_relaxed);
  while (holders > 0 && !fHolders.compare_exchange_weak(holders, holders + 1, std::memory_order_acq_rel)) {
  }
  if (holders == 0) return false;
  if (Handle() >= 0) return true;
  LetGo();
  return false;
}

std::u16string TUnixDirectory::Path() const {
  std::vector<const TUnixDirectory*> chain;
  for (const TUnixDirectory* folder = this; folder; folder = folder->fParent.get()) chain.push_back(folder);
  std::u16string path;
  path.reserve(fPathLength);
  for (auto folder = chain.rbegin(); folder != chain.rend(); ++folder) {
    if (!path.empty() && path.back() != u'/') path += u'/';
    AppendFromNativeBytes(path, (*folder)->fName);
  }
  return path;
}

bool TUnixDirectory::IsBeyondLink() const {
  const TUnixDirectory* folder = this;
  while (folder->fParent && !folder->fFollowLink) folder = folder->fParent.get();
  return folder->fParent != nullptr;
}

int TUnixDirectory::OpenWith(int pFlags) const {
  if (!fParent) return OpenInSteps(AT_FDCWD, fName, pFlags);
  // Opens from the nearest open folder above, or from the root's path.
  std::vector<const TUnixDirectory*> chain{this};
  TUnixDirectory* folder = fParent.get();
  bool isOpen = folder->HoldIfOpen();
  for (; !isOpen && folder->fParent; isOpen = folder->HoldIfOpen()) {
    chain.push_back(folder);
    folder = folder->fParent.get();
  }
  std::string path = isOpen ? std::string() : folder->fName;
  for (auto part = chain.rbegin(); part != chain.rend(); ++part) {
    if (!path.empty() && path.back() != '/') path += '/';
    path += (*part)->fName;
  }
  const int handle = OpenInSteps(isOpen ? folder->Handle() : AT_FDCWD, path, pFlags);
  const int error = errno;
  if (isOpen) folder->LetGo();
  errno = error;
  return handle;
}

int TUnixDirectory::Open() {
  if (Handle() >= 0) return 0;
  const int flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | (fFollowLink ? 0 : O_NOFOLLOW);
  // Reading a folder would change its access date, which the scan reports. Only the owner and root may use O_NOATIME.
  int handle = OpenWith(flags | O_NOATIME);
  if (handle < 0 && errno == EPERM) handle = OpenWith(flags);
  const int error = errno;
  LetGoOfParent();
  if (handle < 0) return error;
  fHandle.store(handle, std::memory_order_relaxed);
  gOpenDirectories.fetch_add(1, std::memory_order_relaxed);
  return 0;
}

void TUnixDirectory::CloseWhenShort() {
  if (gOpenDirectories.load(std::memory_order_relaxed) > OpenDirectoriesLimit()) CloseHandle();
}

}  // namespace Vantrel::Enumerators
