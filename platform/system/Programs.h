#pragma once

// Other programs of this installation, and going on as one of them.

#include <span>
#include <string>
#include <string_view>

namespace Vantrel {

// The path of a program in the folder of the running one; pName has no suffix. Empty when it is not there.
std::u16string ProgramBeside(std::u16string_view pName);

// Runs another program with the arguments and streams of this process. Flush your own streams before.
//
// On Linux the other program takes this process's place, so the call does not return. On Windows the call returns the
// other one's exit code, or 0 at once if it is not to be waited for. EOSError when the program cannot be started.
int ContinueAs(const std::u16string& pProgram, std::span<const std::u16string> pArguments, bool pWait);

}  // namespace Vantrel
