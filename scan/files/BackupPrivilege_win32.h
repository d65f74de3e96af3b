#pragma once

// Gets the right to read refused folders, twice a second at most.

#include <cstdint>

#include "platform/system/Errors.h"
#include "scan/files/Win32FileApi_win32.h"

namespace Vantrel::Enumerators {

// The right to read what the user may back up but not open. Taken only when a folder is refused, for the whole process.
class TBackupPrivilege {
 public:
  // After an attempt nobody makes another for this long: a scan meets thousands of refused folders.
  static constexpr int64_t kMillisecondsBetweenAttempts = 500;

  // Makes an attempt if one is due. True when the privilege is now held thanks to it. Any thread.
  static bool TryEnable(IWin32FileApi& pApi);
  // Grows whenever an attempt succeeds.
  static uint32_t Successes();
  // Lets the next attempt be made at once, for tests.
  static void ForgetAttempts();

  // Calls pOpen, which returns a code, and once more when it was refused and the privilege has come in the meantime, by
  // this thread's attempt or by another's: two threads may be refused at the same time, and only one makes the attempt.
  template <class TOpen>
  static uint32_t Open(IWin32FileApi& pApi, bool pMayTry, TOpen pOpen) {
    uint32_t successes = Successes();
    uint32_t code = pOpen();
    if (!pMayTry || ClassifyOSError(code) != TErrorKind::ekAccessDenied) return code;
    return TryEnable(pApi) || Successes() != successes ? pOpen() : code;
  }
};

}  // namespace Vantrel::Enumerators
