#pragma once

// The request to stop the run, for example by Ctrl+C.

namespace Vantrel {

// Stops the running scan. The part scanned is reported, and no further path is scanned. May be called from a signal
// handler.
void RequestCancel() noexcept;

// For any thread.
bool IsCancelRequested() noexcept;

// Before a run begins.
void ForgetCancelRequest() noexcept;

}  // namespace Vantrel
