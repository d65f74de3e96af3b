#include <shlwapi.h>

#include <string>

#include "platform/WildcardMatch.h"
#include "platform/Win32_win32.h"

namespace Kiv {

bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks) {
  constexpr DWORD kMultipleUnstripped = 0x10001;  // PMSF_MULTIPLE | PMSF_DONT_STRIP_SPACES
  // The call wants texts that end with a zero.
  const std::u16string name(pName);
  const std::u16string masks(pMasks);
  return PathMatchSpecExW(Win32::Wide(name), Win32::Wide(masks), kMultipleUnstripped) == S_OK;
}

}  // namespace Kiv
