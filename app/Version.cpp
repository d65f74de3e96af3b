#include "app/Version.h"

#include <fmt/format.h>

namespace Vantrel {

const char* const kProgramName = "Vantrel";
const char* const kVersion = VANTREL_VERSION;

std::string VersionText(const std::string& pPlatformName) {
  return fmt::format("{} {} ({}, {}-bit)", kProgramName, VANTREL_VERSION, pPlatformName, sizeof(void*) * 8);
}

}  // namespace Vantrel
