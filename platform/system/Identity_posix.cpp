#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/system/Identity.h"
#include "platform/system/OwnerNames.h"

namespace Vantrel {

std::u16string CurrentUserName() {
  return OwnerNameOfUser(geteuid());
}

std::string FullHostName() {
  char buffer[256];
  if (gethostname(buffer, sizeof buffer) != 0) return {};
  buffer[sizeof buffer - 1] = '\0';
  std::string name = buffer;
  if (name.find('.') != std::string::npos) return name;
  addrinfo wanted{};
  wanted.ai_flags = AI_CANONNAME;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0) return name;
  if (found->ai_canonname) name = found->ai_canonname;
  freeaddrinfo(found);
  return name;
}

}  // namespace Vantrel
