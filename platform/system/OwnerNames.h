#pragma once

// Account names.

#include <cstdint>
#include <string>

namespace Vantrel {

// The account name of a Linux user id, or the id in decimal when no account has it. Asks the account database each
// time, which may go over a network: callers keep what they learn. Any thread.
std::u16string OwnerNameOfUser(uint32_t pUserId);

// The owner of a Windows file or folder as "DOMAIN\account", the SID as text when no account has it, empty when it
// cannot be read. Opens the file. Any thread. On Linux always empty.
std::u16string OwnerNameOfPath(const std::u16string& pPath);

}  // namespace Vantrel
