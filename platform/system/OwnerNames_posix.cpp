#include <fmt/format.h>
#include <pwd.h>

#include <cerrno>
#include <vector>

#include "platform/system/OwnerNames.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::u16string OwnerNameOfUser(uint32_t pUserId) {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  while (getpwuid_r(pUserId, &entry, buffer.data(), buffer.size(), &found) == ERANGE) buffer.resize(buffer.size() * 4);
  if (found != nullptr && found->pw_name[0] != 0) return FromNativeBytes(found->pw_name);
  return FromUtf8(fmt::format_int(pUserId).str());
}

std::u16string OwnerNameOfPath(const std::u16string&) {
  return {};
}

}  // namespace Vantrel
