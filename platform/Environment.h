#pragma once

#include <string>
#include <string_view>

namespace Kiv {

// The text with each %NAME% replaced by the value of that environment variable. Variables that do not exist stay as
// they are, both percent signs included, and so does a "%" that no other follows. Values are not expanded again. Names
// are compared as the system does: without regard to case on Windows. On Linux no other thread may set variables
// meanwhile.
std::u16string ExpandEnvironment(std::u16string_view pText);

}  // namespace Kiv
