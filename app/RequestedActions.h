#pragma once

// Makes the actions that the command line asks for: comparison, history, exports, pictures and mail.

#include "app/RunSettings.h"
#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"

namespace Vantrel {

// Adds the actions to the queue, before the first scan. False when one of them cannot work. All arguments must outlive
// the queue.
bool QueueRequestedActions(PostScanActions::TPostProcessActionHandler& pActions,
                           const CommandLine::TCommandLineState& pRequested, const TRunSettings& pSettings,
                           IScanRoots& pRoots);

}  // namespace Vantrel
