#pragma once

#include <string>

namespace Kiv {

// The process's whole command line as one text, the program's name first. Only Windows hands it over so.
std::u16string ProcessCommandLine();

}  // namespace Kiv
