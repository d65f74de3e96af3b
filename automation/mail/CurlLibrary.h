#pragma once

// Libcurl's functions, loaded on Linux when they are first needed.

#include <curl/curl.h>

namespace Vantrel::Mail {

// The functions of libcurl that mail needs. On Linux the library is loaded when they are first used. Linked, it and its
// thirty libraries would add 8 milliseconds and more to every start of the program, and few runs send mail.
struct TCurlLibrary {
  decltype(&curl_easy_init) fInit = nullptr;
  decltype(&curl_easy_setopt) fSetOption = nullptr;
  decltype(&curl_easy_perform) fPerform = nullptr;
  decltype(&curl_easy_getinfo) fGetInfo = nullptr;
  decltype(&curl_easy_cleanup) fCleanup = nullptr;
  decltype(&curl_easy_strerror) fErrorText = nullptr;
  decltype(&curl_slist_append) fAppend = nullptr;
  decltype(&curl_slist_free_all) fFreeList = nullptr;
};

// The library, ready for use and never unloaded. EMailError when it is missing. Any thread.
const TCurlLibrary& CurlLibrary();

// Stops reading from the socket. A caller that waits for an answer gets the end of the conversation at once.
void StopReading(curl_socket_t pSocket);

}  // namespace Vantrel::Mail
