#pragma once

// A folder on the way of a scan: the chain of open handles, and paths beyond the system's limit.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/threads/Interface.h"

namespace Vantrel::Enumerators {

// Opens a path relative to a handle. Returns the handle, or -1 with errno set.
int OpenAt(int pDirectory, const char* pPath, int pFlags);
// The same for a path of any length.
int OpenInSteps(int pDirectory, std::string_view pPath, int pFlags);

// A folder on the way of a scan: its name, the folder above, and its handle while it is open. Children are opened
// relative to it, so that no path is resolved from the top again and again, and no path is too long.
class TUnixDirectory : public TInterfaced<IInterface> {
 public:
  // A scan's root, by absolute path.
  explicit TUnixDirectory(std::string pPath);
  TUnixDirectory(TRef<TUnixDirectory> pParent, std::u16string_view pName, bool pFollowLink);
  ~TUnixDirectory() override;
  // The same folder, not opened yet: a handle knows one place in the listing only.
  TRef<TUnixDirectory> Again() const;

  // Opens the folder for listing; returns 0 or the error. The handle stays open while somebody holds the folder, as
  // long as the process has handles to spare; without it children find their way from the nearest folder that is open.
  int Open();
  void CloseWhenShort();
  int Handle() const { return fHandle.load(std::memory_order_relaxed); }
  // An enumerator holds its folder, and a child holds its parent until it has been opened itself. A reference alone
  // keeps only the name: those who go down a chain of ten thousand folders need no handle of any but the last.
  void Hold() { fHolders.fetch_add(1, std::memory_order_relaxed); }
  void LetGo();
  std::u16string Path() const;
  size_t PathLength() const { return fPathLength; }  // in UTF-16 units, of "/" 0
  // A number that stands for the path below the scan's root: the same for every object of the same path.
  uint64_t Road() const { return fRoad; }
  // Whether a link is followed on the way from the scan's root to here.
  bool IsBeyondLink() const;

 private:
  int OpenWith(int pFlags) const;
  bool HoldIfOpen();
  void CloseHandle();
  void LetGoOfParent();

  const TRef<TUnixDirectory> fParent;
  const std::string fName;  // of the root its path
  const uint64_t fRoad;
  const uint32_t fPathLength;
  const bool fFollowLink;
  bool fHoldsParent;
  std::atomic<int32_t> fHolders{0};
  std::atomic<int> fHandle{-1};
};

}  // namespace Vantrel::Enumerators
