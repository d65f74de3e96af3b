#pragma once

// The names of the user and of the machine.

#include <string>

namespace Vantrel {

// The account name of the user that this process runs as, without a domain. Empty when unknown. Any thread.
std::u16string CurrentUserName();

// The machine's name with its domain, as far as the system knows it ("box.example.org"). Empty when unknown. May ask
// the network. Any thread.
std::string FullHostName();

}  // namespace Vantrel
