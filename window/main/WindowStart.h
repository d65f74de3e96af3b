#pragma once

// What the program hands to its window at the start: options, the command line's paths and files, and what follows
// scans.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"
#include "model/options/GlobalOptions.h"
#include "model/roots/RootInterfaces.h"
#include "model/roots/ScanFilter.h"

namespace Vantrel::Window {

struct TWindowStart {
  // The options of the run, with those of the user's file and of the command line. The window may change them.
  std::shared_ptr<TGlobalOptions> fOptions = std::make_shared<TGlobalOptions>();
  // The file in which the user's own options are kept. Empty: there is none, so nothing can be kept.
  std::u16string fUserOptionsFile;
  // Nothing of the user's settings is changed: neither that file nor the layout of windows.
  bool fReadOnly = false;

  // Makes the window's list of roots, once. Never empty, except in tests that scan nothing.
  std::function<TRef<IScanRoots>(std::shared_ptr<const TGlobalOptions>)> fCreateRoots;
  std::vector<std::u16string> fPaths;      // to scan at once, as typed
  std::vector<std::u16string> fOpenFiles;  // scan files to load, absolute
  // A new filter for one of these scans. Empty when they take in everything.
  std::function<TRef<IScanFilter>()> fCreateFilter;

  // What the search pane opens with; none: it stays closed. At once: the search runs when the scans have ended.
  std::optional<std::u16string> fQuery;
  bool fSearchesAtOnce = false;
  // The duplicates that are searched for when the scans have ended, among what the query finds.
  CommandLine::TDuplicatesRequest fDuplicates;

  // Adds what the command line asks for after each of these scans: comparison, history, exports. False when one of them
  // cannot work; then the handler knows why. Empty when nothing follows. The roots must outlive the handler.
  std::function<bool(PostScanActions::TPostProcessActionHandler&, IScanRoots&)> fQueueActions;

  // What the reading of the command line and of options files had to say, a line each, in UTF-8. Not shown yet.
  std::vector<std::string> fMessages;
  std::string fProgramName;  // "Vantrel"
  std::string fVersion;      // "0.1.0"
};

}  // namespace Vantrel::Window
