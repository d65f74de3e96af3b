#pragma once

// The program's name and version.

#include <string>

namespace Vantrel {

extern const char* const kProgramName;
extern const char* const kVersion;  // "0.1.0"
// "Vantrel 0.1.0 (Linux, 64-bit)"
std::string VersionText(const std::string& pPlatformName);

}  // namespace Vantrel
