#pragma once

// The folders for a user's own settings and data.

#include <string>

namespace Vantrel {

// The folder of the user's settings. On Linux it is "vantrel" in $XDG_CONFIG_HOME, if that is absolute, or else in
// ~/.config. On Windows it is "Vantrel" in the roaming application data. The path is absolute. It is empty when the
// system names no folder. The folder is not created. On Linux no other thread may set environment variables during the
// call.
std::u16string UserConfigurationFolder();
// The folder of the data that the program itself collects, under the same rules: "vantrel" in $XDG_DATA_HOME or
// ~/.local/share; on Windows "Vantrel" in the local application data, since the data may grow large.
std::u16string UserDataFolder();

}  // namespace Vantrel
