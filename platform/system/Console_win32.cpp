#include <algorithm>
#include <atomic>

#include "platform/system/Console.h"
#include "platform/system/ConsoleStream.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

std::atomic<void (*)()> gCancelHandler{nullptr};
std::atomic<bool> gOutputClosed{false};

// Asks each time, since a program may replace its own streams.
HANDLE HandleOf(ConsoleStream::TStream pStream) {
  return GetStdHandle(pStream == ConsoleStream::TStream::csOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

// Writes UTF-16. Unlike the byte interface, this does not depend on the console's code page.
bool WriteToConsole(HANDLE pConsole, std::u16string_view pText) {
  constexpr size_t kMost = 8192;  // older consoles refuse more than 64 KiB at a time
  while (!pText.empty()) {
    size_t length = std::min(pText.size(), kMost);
    if (length < pText.size() && IsLeadSurrogate(pText[length - 1])) --length;
    DWORD written = 0;
    if (!WriteConsoleW(pConsole, pText.data(), static_cast<DWORD>(length), &written, nullptr) || written == 0)
      return false;
    pText.remove_prefix(written);
  }
  return true;
}

// Runs on a thread that the system starts. The first event asks the program to stop, the next one ends it.
BOOL WINAPI OnControlEvent(DWORD) {
  auto* handler = gCancelHandler.exchange(nullptr);
  if (handler == nullptr) return FALSE;
  handler();
  return TRUE;
}

}  // namespace

namespace ConsoleStream {

bool Write(TStream pStream, std::string_view pText) {
  const HANDLE handle = HandleOf(pStream);
  if (IsConsole(pStream)) return WriteToConsole(handle, FromUtf8(pText));
  while (!pText.empty()) {
    DWORD written = 0;
    const auto length = static_cast<DWORD>(std::min<size_t>(pText.size(), 1 << 20));
    if (!WriteFile(handle, pText.data(), length, &written, nullptr) || written == 0) {
      if (pStream == TStream::csOutput && TConsole::IsReaderGone(GetLastError())) gOutputClosed = true;
      return false;
    }
    pText.remove_prefix(written);
  }
  return true;
}

bool IsConsole(TStream pStream) {
  DWORD mode = 0;
  return GetConsoleMode(HandleOf(pStream), &mode) != 0;
}

int Width(TStream pStream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  return GetConsoleScreenBufferInfo(HandleOf(pStream), &info) ? info.srWindow.Right - info.srWindow.Left + 1 : 0;
}

bool ShowsColours(TStream pStream) {
  constexpr DWORD kColourSequences = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING
  const HANDLE handle = HandleOf(pStream);
  DWORD mode = 0;
  if (!GetConsoleMode(handle, &mode)) return false;
  return (mode & kColourSequences) != 0 || SetConsoleMode(handle, mode | kColourSequences) != 0;
}

}  // namespace ConsoleStream

// Uses the byte interface, since converting text needs memory. ASCII is the same in every code page.
void TConsole::WriteLastWords(std::string_view pText) noexcept {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), pText.data(), static_cast<DWORD>(pText.size()), &written, nullptr);
}

std::string_view TConsole::LineEnd() {
  return "\r\n";
}

// The usual fonts of the console have the whole block and its halves. Text reaches the console as UTF-16.
int TConsole::PartsOfBlock() {
  return 2;
}

bool TConsole::IsOutputClosed() {
  return gOutputClosed;
}

bool TConsole::IsReaderGone(uint32_t pCode) {
  return pCode == ERROR_BROKEN_PIPE || pCode == ERROR_NO_DATA || pCode == ERROR_PIPE_NOT_CONNECTED;
}

void TConsole::SetCancelHandler(void (*pHandler)()) {
  gCancelHandler = pHandler;
  SetConsoleCtrlHandler(OnControlEvent, FALSE);  // removes a handler set before, so that it is set only once
  if (pHandler != nullptr) SetConsoleCtrlHandler(OnControlEvent, TRUE);
}

}  // namespace Vantrel
