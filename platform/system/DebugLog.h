#pragma once

// Lines about the program's decisions, for whoever listens.

#include <functional>
#include <string_view>

namespace Vantrel {

// Lines for whoever looks into how the program decided something. Nobody listens by default, and then a line costs one
// read of a flag: callers that build a long text ask IsDebugLogActive first.
using TDebugLogSink = std::function<void(std::u16string_view pLine)>;

bool IsDebugLogActive() noexcept;
// Hands one line, without a line break, to the sink. Any thread; the sink is called by one thread at a time and must
// not log itself.
void LogDebug(std::u16string_view pLine);
// Replaces the sink, an empty one silences the log. Once it returns, the former sink is not called any more.
void SetDebugLogSink(TDebugLogSink pSink);

}  // namespace Vantrel
