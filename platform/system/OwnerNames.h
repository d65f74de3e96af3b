#pragma once

// Account names of users and of file owners.

#include <cstdint>
#include <string>

namespace Vantrel {

// The account name of a Linux user id, or the id in decimal when no account has it. Asks the account database each
// time, possibly over a network, so callers store the names. Any thread.
std::u16string OwnerNameOfUser(uint32_t pUserId);

// The owner of a Windows file or folder as "DOMAIN\account". The SID as text when no account has it. Empty when it
// cannot be read, and always on Linux. Opens the file. Any thread.
std::u16string OwnerNameOfPath(const std::u16string& pPath);

}  // namespace Vantrel
