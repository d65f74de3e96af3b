#pragma once

// The standard streams, the progress line and Ctrl+C.

#include <cstdint>
#include <string_view>

namespace Vantrel {

// Where the standard streams have colours: on a console that shows them, unless the environment refuses them by
// NO_COLOR; everywhere; nowhere.
enum class TColorUse : uint8_t { cuAutomatic, cuAlways, cuNever };

// The process's standard streams. All text is UTF-8. Only the main thread writes.
class TConsole {
 public:
  // What ends a line of the standard streams: LF, and CRLF on Windows. A CRLF within a text becomes the same.
  static std::string_view LineEnd();
  // Writes the text and a line end to standard output. Returns false when the reader is gone or the disk is full; the
  // caller then stops writing. A closed pipe never ends the process by a signal.
  static bool Write(std::string_view pText);
  // Whether writing to standard output failed because its reader is gone. No message is needed then.
  static bool IsOutputClosed();
  // Whether the system's code says that a pipe's reader is gone.
  static bool IsReaderGone(uint32_t pCode);
  // The same to standard error, in red when that has colours.
  static void WriteError(std::string_view pText);
  // The same without a colour: what a user may want to know, and that is no error.
  static void WriteNote(std::string_view pText);
  // Writes the text unchanged to standard error, for a process about to end. Any thread; allocates no memory.
  static void WriteLastWords(std::string_view pText) noexcept;
  // A failing operation: message. operation: "object"  (Error Code code)
  static void WriteError(std::string_view pMessage, uint32_t pCode, std::string_view pOperation,
                         std::string_view pObject);
  // Writes a progress line to standard error, cut to the console's width. The next progress line replaces it.
  static void WriteProgress(std::string_view pText);
  // Removes the progress line.
  static void ClearProgress();

  // Whether the stream is anything but a console.
  static bool IsOutputRedirected();
  static bool IsErrorRedirected();
  // Columns of the console on standard output; 0 when it is redirected.
  static int OutputWidth();

  // Set it before anything is written.
  static void SetColorUse(TColorUse pUse);
  // Whether standard output has colours, by SetColorUse.
  static bool HasOutputColors();
  // Whether standard output has drawings of characters: a console does, and whatever is always coloured.
  static bool HasOutputDrawings();
  // Into how many parts block characters divide a column on the console: 8, 2 where fonts have halves alone, and 1 for
  // a console without block characters.
  static int PartsOfBlock();

  // Calls the handler on Ctrl+C (SIGINT, SIGTERM, SIGHUP; the console's control events) instead of ending the process.
  // A second Ctrl+C ends it. From the first call on, a pipe without a reader is an error of writing and no signal, for
  // all code. The handler may only set flags: it runs in signal context.
  static void SetCancelHandler(void (*pHandler)());
};

}  // namespace Vantrel
