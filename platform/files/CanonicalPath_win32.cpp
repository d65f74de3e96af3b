#include "platform/files/CanonicalPath.h"
#include "platform/files/Paths.h"
#include "platform/system/Win32_win32.h"

// Must follow windows.h, whose types it uses.
#include <winnetwk.h>

namespace Vantrel {

using namespace Win32;

namespace {

constexpr DWORD kLongestPath = 32'768;  // the longest path that Windows supports, with its terminating zero

bool HasDriveLetter(const std::u16string& pPath) {
  return pPath.size() >= 2 && pPath[1] == u':';
}

bool IsDriveRoot(const std::u16string& pPath) {
  return pPath.size() == 3 && HasDriveLetter(pPath);
}

// "\\server\share" for the letter of a mapped drive, even while the drive is not connected; else empty.
std::u16string ShareOfDrive(char16_t pLetter) {
  const std::u16string drive = {pLetter, u':'};
  std::u16string share(kLongestPath, 0);
  DWORD length = kLongestPath;
  if (WNetGetConnectionW(Wide(drive), reinterpret_cast<wchar_t*>(share.data()), &length) != NO_ERROR) return {};
  share.resize(share.find(u'\0'));
  return share.starts_with(u"\\\\") ? share : std::u16string();
}

}  // namespace

std::u16string CanonicalPathOfExisting(const std::u16string& pPath) {
  std::u16string path = ResolvedPath(pPath);
  // A drive that is not connected still has its share.
  if (path.empty() && IsDriveRoot(pPath)) path = pPath;
  if (path.empty()) return {};
  if (HasDriveLetter(path)) {
    if (path[0] >= u'a' && path[0] <= u'z') path[0] = static_cast<char16_t>(path[0] - u'a' + u'A');
    if (const std::u16string share = ShareOfDrive(path[0]); !share.empty()) path = share + path.substr(2);
  }
  return std::u16string(WithoutTrailingDelimiter(path, u'\\'));
}

}  // namespace Vantrel
