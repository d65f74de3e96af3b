#include <shlwapi.h>

#include <algorithm>
#include <string>

#include "platform/system/Win32_win32.h"
#include "platform/text/WildcardMatch.h"

namespace Vantrel {

namespace {

// The system needs texts that end with a zero. This runs for every name of a scan, so only long texts go to the heap.
class TZeroEnded {
 public:
  explicit TZeroEnded(std::u16string_view pText) {
    if (pText.size() < std::size(fBuffer)) {
      *std::copy(pText.begin(), pText.end(), fBuffer) = 0;
    } else {
      fLongText = pText;
    }
  }
  const wchar_t* Get() const { return Win32::Wide(fLongText.empty() ? fBuffer : fLongText.c_str()); }

 private:
  char16_t fBuffer[1024];
  std::u16string fLongText;
};

}  // namespace

bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks) {
  constexpr DWORD kMultipleUnstripped = 0x10001;  // PMSF_MULTIPLE | PMSF_DONT_STRIP_SPACES
  return PathMatchSpecExW(TZeroEnded(pName).Get(), TZeroEnded(pMasks).Get(), kMultipleUnstripped) == S_OK;
}

bool MatchesWildcardsStripped(std::u16string_view pName, std::u16string_view pMasks) {
  return PathMatchSpecW(TZeroEnded(pName).Get(), TZeroEnded(pMasks).Get()) != FALSE;
}

}  // namespace Vantrel
