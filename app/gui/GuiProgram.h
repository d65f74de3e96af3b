#pragma once

// The window program: the same runs as the console program, and the window.

#include <span>
#include <string>

#include "app/RunSettings.h"

namespace Vantrel {

// The settings of a run in the window program. The window opens for whatever writes nothing.
TRunSettings CreateWindowRunSettings(std::string pPlatformName);

// Why no window can be shown here, such as for lack of a display. Empty when one can.
std::string ReasonForNoWindow();

}  // namespace Vantrel
