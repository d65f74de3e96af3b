// The window program's entry point on Linux.

#include <cstdlib>
#include <string>
#include <vector>

#include "app/Process.h"
#include "app/gui/GuiProgram.h"
#include "platform/text/Text.h"

namespace Vantrel {

// Qt ends the process when it finds no display.
std::string ReasonForNoWindow() {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return {};
  }
  return "There is no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not set). /NOGUI runs without one.";
}

}  // namespace Vantrel

int main(int pCount, char** pArguments) {
  std::vector<std::u16string> tokens;
  for (int i = 1; i < pCount; ++i) tokens.push_back(Vantrel::FromNativeBytes(pArguments[i]));
  Vantrel::EndProcess(Vantrel::RunOnStreams(Vantrel::CreateWindowRunSettings("Linux"), tokens));
}
