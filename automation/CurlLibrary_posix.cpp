#include "automation/CurlLibrary.h"

#include <dlfcn.h>

#include <string>

#include "automation/Mail.h"

namespace Kiv::Mail {

namespace {

// Both flavours of the same library; the second is what systems have whose other programs use GnuTLS.
constexpr const char* kFiles[] = {"libcurl.so.4", "libcurl-gnutls.so.4"};

[[noreturn]] void FailToLoad() {
  const char* reason = dlerror();
  throw EMailError(std::string("Mail to a server needs the library libcurl, which cannot be loaded: ") +
                   (reason ? reason : "unknown reason") +
                   ". Install it (the Debian package is libcurl4), or leave the server out to use sendmail.");
}

template <typename TFunction>
void Find(void* pLibrary, const char* pName, TFunction& pFunction) {
  pFunction = reinterpret_cast<TFunction>(dlsym(pLibrary, pName));
  if (!pFunction) FailToLoad();
}

TCurlLibrary Load() {
  void* file = nullptr;
  for (const char* name : kFiles) {
    if (!file) file = dlopen(name, RTLD_NOW | RTLD_LOCAL);
  }
  if (!file) FailToLoad();
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

}  // namespace Kiv::Mail
