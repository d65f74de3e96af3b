#pragma once

// The process's whole command line as one text. Windows only.

#include <string>

namespace Vantrel {

// The process's whole command line as one text, beginning with the program's name. Only Windows provides it.
std::u16string ProcessCommandLine();

}  // namespace Vantrel
