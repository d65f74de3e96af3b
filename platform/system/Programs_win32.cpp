#include "platform/files/Paths.h"
#include "platform/system/CommandLineText.h"
#include "platform/system/Errors.h"
#include "platform/system/Programs.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

namespace {

std::u16string OwnPath() {
  std::u16string path(MAX_PATH, u'\0');
  for (;;) {
    const DWORD length =
        GetModuleFileNameW(nullptr, reinterpret_cast<wchar_t*>(path.data()), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

// What follows the program's name, as typed. The system reads the name by a rule of its own: a quote ends at the next
// quote, whatever stands before it.
std::u16string_view WithoutProgramName(std::u16string_view pLine) {
  bool isQuoted = false;
  size_t end = 0;
  for (; end < pLine.size() && (isQuoted || (pLine[end] != u' ' && pLine[end] != u'\t')); ++end)
    if (pLine[end] == u'"') isQuoted = !isQuoted;
  return pLine.substr(end);
}

}  // namespace

std::u16string ProgramBeside(std::u16string_view pName) {
  const std::u16string self = OwnPath();
  const std::u16string path = self.substr(0, self.find_last_of(u'\\') + 1) + std::u16string(pName) + u".exe";
  const DWORD attributes = GetFileAttributesW(Win32::Wide(path));
  return attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) ? std::u16string() : path;
}

// The arguments go on as they were typed, since each program splits them by itself.
int ContinueAs(const std::u16string& pProgram, std::span<const std::u16string>, bool pWait) {
  const std::u16string typed = ProcessCommandLine();
  std::u16string line = u"\"" + pProgram + u"\"" + std::u16string(WithoutProgramName(typed));
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  start.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(Win32::Wide(pProgram), reinterpret_cast<wchar_t*>(line.data()), nullptr, nullptr, TRUE, 0,
                      nullptr, nullptr, &start, &process))
    throw EOSError(GetLastError(), "Starting a program", pProgram);
  DWORD code = 0;
  if (pWait) {
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return static_cast<int>(code);
}

}  // namespace Vantrel
