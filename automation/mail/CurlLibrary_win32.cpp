#include "automation/mail/CurlLibrary.h"

namespace Vantrel::Mail {

const TCurlLibrary& CurlLibrary() {
  static const TCurlLibrary library = [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    return TCurlLibrary{curl_easy_init,    curl_easy_setopt,   curl_easy_perform, curl_easy_getinfo,
                        curl_easy_cleanup, curl_easy_strerror, curl_slist_append, curl_slist_free_all};
  }();
  return library;
}

void StopReading(curl_socket_t pSocket) {
  // Both ways: Windows does not wake a thread that waits for bytes when reading alone is shut down. So the server sees
  // the connection end instead of a goodbye.
  shutdown(pSocket, SD_BOTH);
}

}  // namespace Vantrel::Mail
