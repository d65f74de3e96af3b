#pragma once

// What each system does for the console.

#include <string_view>

// What each system does for TConsole. Nobody else includes this.
namespace Vantrel::ConsoleStream {

enum class TStream { csOutput, csError };

// Writes UTF-8 as it stands. False when the reader is gone or the disk is full.
bool Write(TStream pStream, std::string_view pText);
bool IsConsole(TStream pStream);
// Columns; 0 when it is no console or does not tell.
int Width(TStream pStream);
// Whether the console on the stream understands colour sequences.
bool ShowsColours(TStream pStream);

}  // namespace Vantrel::ConsoleStream
