#pragma once

// What a run gets from its surroundings: streams, file system, places of files.

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"
#include "export/pictures/PictureRenderer.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel::Window {
struct TWindowStart;
}

namespace Vantrel {

// The settings of a run. Tests pass their own streams and roots; CreateRunSettings gives the real ones.
struct TRunSettings {
  std::string fPlatformName;  // "Linux"
  // Set: the last tree is not freed, and the caller ends the process at once with the code that Run returned. Freeing
  // millions of nodes takes a noticeable part of a run and is of no use then. Leak checks need the orderly way.
  bool fLeaveQuickly = false;
  bool fShowProgress = false;
  std::u16string fUserOptionsFile;  // empty: there is none
  PostScanActions::ILineOutput* fOutput = nullptr;
  std::function<void(std::string_view)> fWriteError;
  std::function<void(std::string_view)> fWriteNote = [](std::string_view) {};
  std::function<TRef<IScanRoots>(std::shared_ptr<const TGlobalOptions>)> fCreateRoots;

  CommandLine::TProgramAbilities fAbilities;
  // The window program's own: opens the window and returns the exit code when it is closed.
  std::function<int(const Window::TWindowStart&)> fOpenWindow;
  Pictures::IPictureRenderer* fRenderer = nullptr;
  // The console program's: runs the same command line in the window program. Returns its exit code, or at once if it is
  // not to be waited for. Empty when the window program is not there.
  std::function<int(bool pWait)> fContinueInWindowProgram;
};

// The streams of the process and scans of the file system.
TRunSettings CreateRunSettings(std::string pPlatformName);

}  // namespace Vantrel
