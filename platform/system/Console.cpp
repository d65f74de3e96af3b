#include "platform/system/Console.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/system/ConsoleStream.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel {

using ConsoleStream::TStream;

namespace {

constexpr int kUsualWidth = 80;

// Columns of the progress line that the console shows now. Only the main thread uses it, as for all writing.
int gProgressWidth = 0;

// The longest start of the text that takes at most pColumns.
std::string_view CutToWidth(std::string_view pText, int pColumns) {
  size_t end = 0;
  while (end < pText.size()) {
    const size_t length = std::max<size_t>(DecodeUtf8(pText.substr(end)).fLength, 1);
    pColumns -= DisplayWidth(pText.substr(end, length));
    if (pColumns < 0) break;
    end += length;
  }
  return pText.substr(0, end);
}

// The lines in one piece, so that another process on the same pipe cannot tear them.
std::string WithLineEnds(std::string_view pText) {
  constexpr std::string_view kLineEnd = "\r\n";
  std::string lines;
  lines.reserve(pText.size() + kLineEnd.size());
  for (size_t end = pText.find(kLineEnd); end != pText.npos; end = pText.find(kLineEnd)) {
    lines.append(pText.substr(0, end)).append(TConsole::LineEnd());
    pText.remove_prefix(end + kLineEnd.size());
  }
  return lines.append(pText).append(TConsole::LineEnd());
}

TColorUse gColorUse = TColorUse::cuAutomatic;

bool HasColors(TStream pStream) {
  if (gColorUse == TColorUse::cuNever) return false;
  // Asked in any case, because a console may have to be told to show them.
  const bool shows = ConsoleStream::ShowsColours(pStream);
  if (gColorUse == TColorUse::cuAlways) return true;
  const char* refused = std::getenv("NO_COLOR");
  return shows && (refused == nullptr || *refused == 0);
}

}  // namespace

bool TConsole::Write(std::string_view pText) {
  ClearProgress();
  return ConsoleStream::Write(TStream::csOutput, WithLineEnds(pText));
}

void TConsole::WriteError(std::string_view pText) {
  ClearProgress();
  const bool colours = HasColors(TStream::csError);
  ConsoleStream::Write(TStream::csError,
                       WithLineEnds(fmt::format("{}{}{}", colours ? "\033[91m" : "", pText, colours ? "\033[0m" : "")));
}

void TConsole::WriteNote(std::string_view pText) {
  ClearProgress();
  ConsoleStream::Write(TStream::csError, WithLineEnds(pText));
}

void TConsole::WriteError(std::string_view pMessage, uint32_t pCode, std::string_view pOperation,
                          std::string_view pObject) {
  WriteError(fmt::format("{}. {}: \"{}\"  (Error Code {})", pMessage, pOperation, pObject, pCode));
}

// Overwrites with blanks, since a plain console would show an erase sequence as text.
void TConsole::WriteProgress(std::string_view pText) {
  if (IsErrorRedirected()) return;
  const int columns = ConsoleStream::Width(TStream::csError);
  // The last column stays free: a character there makes some consoles begin a new line.
  const std::string_view shown = CutToWidth(pText, (columns > 0 ? columns : kUsualWidth) - 1);
  const int width = DisplayWidth(shown);
  ConsoleStream::Write(TStream::csError, fmt::format("\r{}{:{}}\r", shown, "", std::max(0, gProgressWidth - width)));
  gProgressWidth = width;
}

void TConsole::ClearProgress() {
  if (gProgressWidth > 0) WriteProgress({});
}

bool TConsole::IsOutputRedirected() {
  return !ConsoleStream::IsConsole(TStream::csOutput);
}
bool TConsole::IsErrorRedirected() {
  return !ConsoleStream::IsConsole(TStream::csError);
}
int TConsole::OutputWidth() {
  return ConsoleStream::Width(TStream::csOutput);
}

void TConsole::SetColorUse(TColorUse pUse) {
  gColorUse = pUse;
}
bool TConsole::HasOutputColors() {
  return HasColors(TStream::csOutput);
}
bool TConsole::HasOutputDrawings() {
  return gColorUse == TColorUse::cuAlways || !IsOutputRedirected();
}

}  // namespace Vantrel
