#pragma once

// The debug log: lines about the program's decisions, for a sink.

#include <functional>
#include <string_view>

namespace Vantrel {

// Receives lines about how the program decided. There is no sink by default, and a line then costs one read of a flag.
// Callers that build a long text call IsDebugLogActive first.
using TDebugLogSink = std::function<void(std::u16string_view pLine)>;

bool IsDebugLogActive() noexcept;
// Hands one line, without a line break, to the sink. Any thread. Only one thread at a time calls the sink. The sink
// must not log itself.
void LogDebug(std::u16string_view pLine);
// Replaces the sink. An empty one turns the log off. After the return the former sink is not called any more.
void SetDebugLogSink(TDebugLogSink pSink);

}  // namespace Vantrel
