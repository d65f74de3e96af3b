#pragma once

// Where a user's own settings and data lie.

#include <string>

namespace Vantrel {

// The folder in which the program keeps what the user has set: "vantrel" in $XDG_CONFIG_HOME, which counts only when it
// is absolute, or else in ~/.config; on Windows "Vantrel" in the roaming application data. Absolute, empty when the
// system tells none, and not created. On Linux no other thread may set environment variables meanwhile.
std::u16string UserConfigurationFolder();
// The same for what it keeps on its own account: "vantrel" in $XDG_DATA_HOME or ~/.local/share; on Windows "Vantrel" in
// the local application data, since it may grow large.
std::u16string UserDataFolder();

}  // namespace Vantrel
