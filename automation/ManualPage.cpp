#include "automation/ManualPage.h"

namespace Vantrel::CommandLine {

std::vector<std::string> ManualPage() { return {}; }

}  // namespace Vantrel::CommandLine
