#pragma once

// The window program, as the console program knows it: another program in the same folder.

#include <span>
#include <string>

#include "app/RunSettings.h"

namespace Vantrel {

// If the window program is there, lets the run go on in it: where a window is wanted, and for bitmaps with text, since
// the console program has neither windows nor fonts. pUse says when a window is wanted.
void UseWindowProgram(TRunSettings& pSettings, CommandLine::TWindowUse pUse, std::span<const std::u16string> pTokens);

}  // namespace Vantrel
