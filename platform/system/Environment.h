#pragma once

// Environment variables: single values, and expansion in texts.

#include <optional>
#include <string>
#include <string_view>

namespace Vantrel {

// The text with each %NAME% replaced by the value of that environment variable. An unknown variable stays as it is with
// both percent signs. So does a "%" without a second one. Values are not expanded again. Names are compared as the
// system does, on Windows without regard to case. On Linux no other thread may set variables during the call.
std::u16string ExpandEnvironment(std::u16string_view pText);

// The value of one variable, under the same rules; nullopt when it is not set. A variable may be set but empty.
std::optional<std::u16string> EnvironmentVariable(std::u16string_view pName);

}  // namespace Vantrel
