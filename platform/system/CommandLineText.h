#pragma once

// The whole command line as Windows hands it over.

#include <string>

namespace Vantrel {

// The process's whole command line as one text, the program's name first. Only Windows hands it over so.
std::u16string ProcessCommandLine();

}  // namespace Vantrel
