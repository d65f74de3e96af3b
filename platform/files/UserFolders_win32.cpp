#include <shlobj.h>

#include <string>

#include "platform/files/Paths.h"
#include "platform/files/UserFolders.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

using namespace Win32;

namespace {

std::u16string FolderOf(const KNOWNFOLDERID& pFolder) {
  PWSTR known = nullptr;
  // Skips the look at the disk: a home folder on an unreachable server would cost seconds.
  const HRESULT result = SHGetKnownFolderPath(pFolder, KF_FLAG_DONT_VERIFY, nullptr, &known);
  std::u16string folder;
  if (SUCCEEDED(result)) folder = JoinPath(Narrow(known), u"Vantrel", u'\\');
  CoTaskMemFree(known);  // after a failure too
  return folder;
}

}  // namespace

std::u16string UserConfigurationFolder() {
  return FolderOf(FOLDERID_RoamingAppData);
}

std::u16string UserDataFolder() {
  return FolderOf(FOLDERID_LocalAppData);
}

}  // namespace Vantrel
