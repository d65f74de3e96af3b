#pragma once

// Enables the backup privilege, which lets a scan read refused folders. Attempts are made at most twice a second.

#include <cstdint>

#include "platform/system/Errors.h"
#include "scan/files/Win32FileApi_win32.h"

namespace Vantrel::Enumerators {

// The privilege to read what the user may back up but not open. It is enabled for the whole process, and only when a
// folder is refused.
class TBackupPrivilege {
 public:
  // The minimum time between two attempts. A scan meets thousands of refused folders.
  static constexpr int64_t kMillisecondsBetweenAttempts = 500;

  // Tries to enable the privilege if an attempt is due. True when this attempt succeeded. Any thread.
  static bool TryEnable(IWin32FileApi& pApi);
  // The number of attempts that succeeded.
  static uint32_t Successes();
  // Allows the next attempt at once. For tests.
  static void ForgetAttempts();

  // Calls pOpen, which returns a code. If it was refused and the privilege has been enabled since, calls it once more.
  // Another thread may have enabled it: two threads can be refused at once, and only one of them makes the attempt.
  template <class TOpen>
  static uint32_t Open(IWin32FileApi& pApi, bool pMayTry, TOpen pOpen) {
    uint32_t successes = Successes();
    uint32_t code = pOpen();
    if (!pMayTry || ClassifyOSError(code) != TErrorKind::ekAccessDenied) return code;
    return TryEnable(pApi) || Successes() != successes ? pOpen() : code;
  }
};

}  // namespace Vantrel::Enumerators
