// The window program's entry point on Windows.

#include <windows.h>

#include <string>
#include <vector>

#include "app/Process.h"
#include "app/Version.h"
#include "app/gui/GuiProgram.h"
#include "automation/commandline/CommandLineParser.h"
#include "platform/system/CommandLineText.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::string ReasonForNoWindow() {
  return {};
}

}  // namespace Vantrel

namespace {

bool HasStandardError() {
  const HANDLE handle = GetStdHandle(STD_ERROR_HANDLE);
  return handle != nullptr && handle != INVALID_HANDLE_VALUE;
}

void ShowMessages(const std::string& pMessages) {
  const std::u16string text = Vantrel::FromUtf8(pMessages);
  const std::u16string title = Vantrel::FromUtf8(Vantrel::kProgramName);
  MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(text.c_str()), reinterpret_cast<const wchar_t*>(title.c_str()),
              MB_OK | MB_ICONWARNING | MB_SETFOREGROUND);
}

}  // namespace

// A program with a window is started without a console. If the caller has one, messages and reports go there; else
// messages are shown at the end.
int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
  if (!HasStandardError()) AttachConsole(ATTACH_PARENT_PROCESS);
  std::vector<std::u16string> tokens = Vantrel::TKivCommandLineParser::SplitCommandLine(Vantrel::ProcessCommandLine());
  if (!tokens.empty()) tokens.erase(tokens.begin());  // the program's name
  Vantrel::TRunSettings settings = Vantrel::CreateWindowRunSettings("Windows");
  std::string messages;
  if (!HasStandardError())
    settings.fWriteError = [&messages](std::string_view pText) { messages.append(pText).append("\r\n"); };
  const int code = Vantrel::RunOnStreams(std::move(settings), tokens);
  if (!messages.empty()) ShowMessages(messages);
  Vantrel::EndProcess(code);
}
