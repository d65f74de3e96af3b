#include "app/Process.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include "app/Application.h"
#include "app/CancelRequest.h"
#include "automation/commandline/ExitCodes.h"
#include "platform/system/Console.h"
#include "platform/system/System.h"

namespace Vantrel {

namespace {

// Builds that look for leaks and races end in good order, so that they find all of them.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VANTREL_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VANTREL_SANITIZED 1
#endif
#if defined(VANTREL_SANITIZED)
constexpr bool kLeaveQuickly = false;
#else
constexpr bool kLeaveQuickly = true;
#endif

// Ends the program after an exception that no code handled, on any thread. The likely cause: no memory is left for the
// part of the work that must not stop half way.
[[noreturn]] void EndUnhandled() {
  std::string_view text = "An error of the program was handled nowhere. The program ends.\r\n";
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    text = kNoMemoryText;
  } catch (...) {
  }
  TConsole::WriteLastWords(text);
  std::_Exit(ecInternalError);
}

}  // namespace

int RunOnStreams(TRunSettings pSettings, std::span<const std::u16string> pTokens) {
  std::set_terminate(EndUnhandled);
  UseLargeHeapSteps();
  pSettings.fLeaveQuickly = kLeaveQuickly;
  TApplication application(std::move(pSettings));
  TConsole::SetCancelHandler(RequestCancel);
  const int result = application.Run(pTokens);
  TConsole::SetCancelHandler(nullptr);
  return result;
}

void EndProcess(int pCode) {
  std::fflush(nullptr);
  if (kLeaveQuickly) std::_Exit(pCode);
  std::exit(pCode);
}

}  // namespace Vantrel
