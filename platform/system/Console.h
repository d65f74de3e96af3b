#pragma once

// The standard streams, progress line, Ctrl+C.

#include <cstdint>
#include <string_view>

namespace Vantrel {

// The process's standard streams. All text is UTF-8; a line ends with CRLF on every platform's redirected output as on
// the console. Writing happens on one thread, the main one.
class TConsole {
 public:
  // Writes the text and CRLF to standard output. Returns false when the reader is gone or the disk is full: the caller
  // stops writing; a closed pipe never ends the process by a signal.
  static bool Write(std::string_view pText);
  // Whether writing to standard output failed because its reader is gone: nobody is left to be told of it.
  static bool IsOutputClosed();
  // Whether the system's code says that a pipe's reader is gone.
  static bool IsReaderGone(uint32_t pCode);
  // The same to standard error, in red when that is a console that shows colours and NO_COLOR is not set.
  static void WriteError(std::string_view pText);
  // The text as it stands to standard error, from any thread and without any memory: for a process about to end.
  static void WriteLastWords(std::string_view pText) noexcept;
  // A failing operation: message. operation: "object"  (Error Code code)
  static void WriteError(std::string_view pMessage, uint32_t pCode, std::string_view pOperation,
                         std::string_view pObject);
  // One line that the next one replaces, on standard error; for progress. Cut to the console's width.
  static void WriteProgress(std::string_view pText);
  // Takes the progress line away again.
  static void ClearProgress();

  // Whether the stream is anything but a console.
  static bool IsOutputRedirected();
  static bool IsErrorRedirected();
  // Columns of the console on standard output; 0 when it is redirected.
  static int OutputWidth();

  // Calls the handler on Ctrl+C (SIGINT, SIGTERM, SIGHUP; the console's control events) instead of ending the process;
  // a second Ctrl+C ends it. From the first call on, a pipe whose reader has gone is an error of writing and no signal,
  // whoever writes. The handler may only set flags: it runs in signal context.
  static void SetCancelHandler(void (*pHandler)());
};

}  // namespace Vantrel
