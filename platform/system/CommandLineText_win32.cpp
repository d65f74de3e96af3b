#include "platform/system/CommandLineText.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

std::u16string ProcessCommandLine() {
  return reinterpret_cast<const char16_t*>(GetCommandLineW());
}

}  // namespace Vantrel
