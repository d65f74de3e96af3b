#include <shlobj.h>

#include <string>
#include <vector>

#include "platform/Errors.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"
#include "platform/Win32_win32.h"

namespace Kiv {

using namespace Win32;

std::u16string UserConfigurationFolder() {
  PWSTR roaming = nullptr;
  // Without a look at the disk: a home on a server that is away would cost seconds.
  const HRESULT result = SHGetKnownFolderPath(FOLDERID_RoamingAppData, KF_FLAG_DONT_VERIFY, nullptr, &roaming);
  std::u16string folder;
  if (SUCCEEDED(result)) folder = JoinPath(Narrow(roaming), u"Vantrel", u'\\');
  CoTaskMemFree(roaming);  // after a failure too
  return folder;
}

// The user's own folders are closed to others by what new ones in them inherit.
void CreateFolderForUser(const std::u16string& pPath) {
  const std::u16string path = ExtendedPath(AbsolutePath(pPath));
  std::vector<std::u16string> missing;  // from the bottom up
  for (std::u16string folder = path; !folder.empty() && GetFileAttributesW(Wide(folder)) == INVALID_FILE_ATTRIBUTES;
       folder = FolderOfPath(std::u16string(folder), u'\\'))
    missing.push_back(folder);
  for (; !missing.empty(); missing.pop_back()) {
    if (CreateDirectoryW(Wide(missing.back()), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) continue;
    throw EOSError(GetLastError(), "Creating a folder", pPath);
  }
}

}  // namespace Kiv
