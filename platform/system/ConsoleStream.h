#pragma once

// The part of TConsole that each system implements.

#include <string_view>

// The part of TConsole that each system implements. Only TConsole includes this.
namespace Vantrel::ConsoleStream {

enum class TStream { csOutput, csError };

// Writes UTF-8 unchanged. False when the reader is gone or the disk is full.
bool Write(TStream pStream, std::string_view pText);
bool IsConsole(TStream pStream);
// The width in columns. 0 when the stream is no console or its width is unknown.
int Width(TStream pStream);
// Whether the console on the stream understands colour sequences.
bool ShowsColours(TStream pStream);

}  // namespace Vantrel::ConsoleStream
