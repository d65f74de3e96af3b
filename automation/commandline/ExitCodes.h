#pragma once

// The exit codes.

namespace Vantrel {

// How a run ended, for scripts; docs/command-line.md explains the codes. With several paths the highest code counts.
enum TExitCode : int {
  ecOk = 0,
  ecIncomplete = 1,        // scanned, but some folders could not be read
  ecWrongCommandLine = 2,  // nothing was done
  ecPathNotFound = 3,      // a path cannot be scanned, a scan file not loaded
  ecCancelled = 4,         // stopped by the user; the console shows the report of what was scanned, files are unchanged
  ecOutputFailed = 5,      // a report, an export or a mail failed: disk full, reader gone
  ecInternalError = 6,     // a fault of the program, or not enough memory
};

}  // namespace Vantrel
