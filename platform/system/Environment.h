#pragma once

// Environment variables, alone and in texts.

#include <optional>
#include <string>
#include <string_view>

namespace Vantrel {

// The text with each %NAME% replaced by the value of that environment variable. Variables that do not exist stay as
// they are, both percent signs included, and so does a "%" that no other follows. Values are not expanded again. Names
// are compared as the system does: without regard to case on Windows. On Linux no other thread may set variables
// meanwhile.
std::u16string ExpandEnvironment(std::u16string_view pText);

// The value of one variable, under the same rules; nothing when it is not set. It may be set and empty.
std::optional<std::u16string> EnvironmentVariable(std::u16string_view pName);

}  // namespace Vantrel
