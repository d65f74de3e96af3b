#pragma once

// The names of the user and of the machine.

#include <string>

namespace Vantrel {

// The account name of the user that this process runs as, without a domain; empty when it cannot be told. Any thread.
std::u16string CurrentUserName();

// The machine's name with its domain as far as the system knows it ("box.example.org"); empty when it cannot be told.
// May ask the network. Any thread.
std::string FullHostName();

}  // namespace Vantrel
