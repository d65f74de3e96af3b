#pragma once

// Mail addresses: parsing and checking one address or a list.

#include <string>
#include <string_view>

namespace Vantrel::Mail {

// One address, taken apart.
struct TMailAddress {
  std::u16string fName;  // without quotes; may be empty
  std::string fAddress;  // local@domain, ASCII
};

// Reads "a@b", "<a@b>", "Name <a@b>" and "\"Last, First\" <a@b>". Throws what CheckMailAddress throws.
TMailAddress ParseMailAddress(std::u16string_view pText);

}  // namespace Vantrel::Mail
