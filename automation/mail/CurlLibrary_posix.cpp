#include <dlfcn.h>
#include <sys/socket.h>

#include <string>

#include "automation/mail/CurlLibrary.h"
#include "automation/mail/Mail.h"

namespace Vantrel::Mail {

namespace {

// The second name is the same library with GnuTLS, which many systems have without the first.
constexpr const char* kFile = "libcurl.so.4";
constexpr const char* kOtherFile = "libcurl-gnutls.so.4";

// The loader's text on its last failure.
std::string Reason() {
  const char* reason = dlerror();
  return reason ? reason : "unknown reason";
}

[[noreturn]] void FailToLoad(const std::string& pReason) {
  throw EMailError("Mail to a server needs the library libcurl, which cannot be loaded: " + pReason +
                   ". Install it (the Debian package is libcurl4), or leave the server out to use sendmail.");
}

template <typename TFunction>
void Find(void* pLibrary, const char* pName, TFunction& pFunction) {
  pFunction = reinterpret_cast<TFunction>(dlsym(pLibrary, pName));
  if (!pFunction) FailToLoad(Reason());
}

TCurlLibrary Load() {
  void* file = dlopen(kFile, RTLD_NOW | RTLD_LOCAL);
  const std::string reason = file ? "" : Reason();
  if (!file) file = dlopen(kOtherFile, RTLD_NOW | RTLD_LOCAL);
  if (!file) FailToLoad(reason);
  TCurlLibrary library;
  decltype(&curl_global_init) globalInit = nullptr;
  Find(file, "curl_global_init", globalInit);
  Find(file, "curl_easy_init", library.fInit);
  Find(file, "curl_easy_setopt", library.fSetOption);
  Find(file, "curl_easy_perform", library.fPerform);
  Find(file, "curl_easy_getinfo", library.fGetInfo);
  Find(file, "curl_easy_cleanup", library.fCleanup);
  Find(file, "curl_easy_strerror", library.fErrorText);
  Find(file, "curl_slist_append", library.fAppend);
  Find(file, "curl_slist_free_all", library.fFreeList);
  globalInit(CURL_GLOBAL_DEFAULT);
  return library;
}

}  // namespace

const TCurlLibrary& CurlLibrary() {
  static const TCurlLibrary library = Load();
  return library;
}

void StopReading(curl_socket_t pSocket) {
  shutdown(pSocket, SHUT_RD);
}

}  // namespace Vantrel::Mail
