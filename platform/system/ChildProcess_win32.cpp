#include "platform/system/ChildProcess.h"
#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

// Nothing on Windows starts programs yet.

bool TChildProcess::IsAvailable() {
  return false;
}

TChildProcess::TChildProcess(const std::string& pProgram, const std::vector<std::string>&,
                             int64_t pPatienceMilliseconds)
    : fProgram(FromUtf8(pProgram)), fPatience(pPatienceMilliseconds) {
  throw EOSError(ERROR_NOT_SUPPORTED, "Starting a program", fProgram);
}

TChildProcess::~TChildProcess() = default;

bool TChildProcess::Feed(std::string_view) {
  return false;
}

TChildResult TChildProcess::Finish() {
  return {};
}

}  // namespace Vantrel
