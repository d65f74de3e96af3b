#pragma once

namespace Vantrel {

// How a run ended, for scripts; docs/command-line.md explains them. Of several paths the highest code counts.
enum TExitCode : int {
  ecOk = 0,
  ecIncomplete = 1,        // scanned, but some folders could not be read
  ecWrongCommandLine = 2,  // nothing was done
  ecPathNotFound = 3,      // a path does not exist or cannot be opened
  ecCancelled = 4,         // stopped by the user; what was scanned by then has been reported
  ecOutputFailed = 5,      // the report could not be written: disk full, reader gone
  ecInternalError = 6,     // a fault of the program, or not enough memory
};

}  // namespace Vantrel
