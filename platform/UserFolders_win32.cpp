#include <shlobj.h>

#include <string>

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

}  // namespace Kiv
