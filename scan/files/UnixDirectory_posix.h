#pragma once

// A folder that a scan passes through: its chain of open handles, and opening of paths beyond the system's length
// limit.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/threads/Interface.h"

namespace Vantrel::Enumerators {

// Opens a path relative to a handle. Returns the handle, or -1 with errno set.
int OpenAt(int pDirectory, const char* pPath, int pFlags);
// Like OpenAt, for a path of any length.
int OpenInSteps(int pDirectory, std::string_view pPath, int pFlags);

// A folder that a scan passes through: its name, its parent, and its handle while it is open. Children are opened
// relative to the handle. So paths are not resolved from the top each time, and no path is too long.
class TUnixDirectory : public TInterfaced<IInterface> {
 public:
  // Makes a scan's root from an absolute path.
  explicit TUnixDirectory(std::string pPath);
  TUnixDirectory(TRef<TUnixDirectory> pParent, std::u16string_view pName, bool pFollowLink);
  ~TUnixDirectory() override;
  // A new object for the same folder, not opened yet. A handle keeps only one place in the listing.
  TRef<TUnixDirectory> Again() const;

  // Opens the folder for listing. Returns 0 or the error (errno). The handle stays open while the folder is held and
  // the process has handles to spare. Without it, children are opened from the nearest open folder above.
  int Open();
  void CloseWhenShort();
  int Handle() const { return fHandle.load(std::memory_order_relaxed); }
  // An enumerator holds its folder. A child holds its parent until the child has been opened. A mere reference keeps
  // only the name, so a chain of ten thousand folders needs only the last handle.
  void Hold() { fHolders.fetch_add(1, std::memory_order_relaxed); }
  void LetGo();
  std::u16string Path() const;
  size_t PathLength() const { return fPathLength; }  // in UTF-16 units; 0 for "/"
  // A number that stands for the path below the scan's root. Objects of the same path have the same number.
  uint64_t Road() const { return fRoad; }
  // Whether a link was followed between the scan's root and this folder.
  bool IsBeyondLink() const;

 private:
  int OpenWith(int pFlags) const;
  bool HoldIfOpen();
  void CloseHandle();
  void LetGoOfParent();

  const TRef<TUnixDirectory> fParent;
  const std::string fName;  // the path for a root
  const uint64_t fRoad;
  const uint32_t fPathLength;
  const bool fFollowLink;
  bool fHoldsParent;
  std::atomic<int32_t> fHolders{0};
  std::atomic<int> fHandle{-1};
};

}  // namespace Vantrel::Enumerators
