#include "app/Process.h"

#include <cstdio>
#include <cstdlib>

#include "app/Application.h"
#include "platform/system/Console.h"

namespace Vantrel {

namespace {

// Builds that look for leaks and races end in good order, so that they see all of them.
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

}  // namespace

void RunProcess(const std::string& pPlatformName, std::span<const std::u16string> pTokens) {
  TRunSettings settings = CreateRunSettings(pPlatformName);
  settings.fLeaveQuickly = kLeaveQuickly;
  int result = 0;
  {
    TApplication application(settings);
    Vantrel::TConsole::SetCancelHandler(TApplication::RequestCancel);
    result = application.Run(pTokens);
    Vantrel::TConsole::SetCancelHandler(nullptr);
  }
  std::fflush(nullptr);
  if (kLeaveQuickly) std::_Exit(result);
  std::exit(result);
}

}  // namespace Vantrel
