// Sends a mail to a mail server, and explains in users' words why a server refused.

#include <curl/curl.h>
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string_view>

#include "automation/mail/CurlLibrary.h"
#include "automation/mail/MailTransport.h"
#include "automation/mail/SecretText.h"
#include "platform/system/Environment.h"
#include "platform/text/Text.h"

namespace Vantrel::Mail {

namespace {

constexpr long kConnectSeconds = 30;
constexpr long kSilenceSeconds = 60;
constexpr long kLowestPort = 1, kHighestPort = 65535;
constexpr size_t kLongestReply = 600;     // bytes of a server's answer that a message shows
constexpr size_t kMostOfReply = 1 << 16;  // bytes of it that are looked at

// One attempt to hand over a mail, as libcurl's callbacks see it.
struct TConversation {
  TMailSource& fMail;
  std::exception_ptr fFailure;  // while reading the mail
  std::string fAddress;         // the sender or recipient of the last command; empty for other commands
  bool fIsRecipient = false;
  std::string fReply;     // the server's last answer, which may have several lines
  bool fLeaving = false;  // the mail is done; only the goodbye follows
};

size_t GiveMail(char* pBuffer, size_t pSize, size_t pCount, void* pConversation) noexcept {
  TConversation& conversation = *static_cast<TConversation*>(pConversation);
  try {
    return conversation.fMail.Read(pBuffer, pSize * pCount);
  } catch (...) {
    conversation.fFailure = std::current_exception();
    return CURL_READFUNC_ABORT;
  }
}

// Finds "5.7.8 " in front of a line's text. It repeats what the first line said.
std::string_view WithoutEnhancedCode(std::string_view pLine) {
  const size_t end = pLine.find_first_not_of("0123456789.");
  const std::string_view code = pLine.substr(0, end);
  const bool isCode =
      end != std::string_view::npos && pLine[end] == ' ' && std::count(code.begin(), code.end(), '.') == 2;
  return isCode ? pLine.substr(end + 1) : pLine;
}

// Only commands with an address are looked at. Others hold the password.
void NoteCommand(TConversation& pConversation, std::string_view pLine) {
  constexpr std::string_view kSender = "MAIL FROM:", kRecipient = "RCPT TO:", kQuit = "QUIT";
  if (pLine.starts_with(kQuit)) pConversation.fLeaving = true;
  if (pConversation.fLeaving) return;
  pConversation.fIsRecipient = pLine.starts_with(kRecipient);
  pConversation.fAddress.clear();
  if (!pConversation.fIsRecipient && !pLine.starts_with(kSender)) return;
  pLine.remove_prefix(pConversation.fIsRecipient ? kRecipient.size() : kSender.size());
  pConversation.fAddress = pLine.substr(0, pLine.find_first_of(" \r\n"));
}

void NoteReply(TConversation& pConversation, std::string_view pLine) {
  constexpr size_t kCodeLength = 3;
  if (pConversation.fLeaving) return;
  // A dash after the code says that more lines follow.
  const bool unfinished = pConversation.fReply.ends_with('-');
  if (unfinished) {
    pConversation.fReply.back() = ' ';
    if (pLine.size() > kCodeLength) pConversation.fReply += WithoutEnhancedCode(pLine.substr(kCodeLength + 1));
  } else {
    pConversation.fReply = pLine;
  }
  while (!pConversation.fReply.empty() && static_cast<unsigned char>(pConversation.fReply.back()) <= ' ')
    pConversation.fReply.pop_back();
  if (pConversation.fReply.size() > kMostOfReply) pConversation.fReply.resize(kMostOfReply);
  if (pLine.size() > kCodeLength && pLine[kCodeLength] == '-') pConversation.fReply += '-';
}

int NoteLine(CURL*, curl_infotype pKind, char* pLine, size_t pLength, void* pConversation) noexcept {
  TConversation& conversation = *static_cast<TConversation*>(pConversation);
  try {
    if (pKind == CURLINFO_HEADER_OUT) NoteCommand(conversation, {pLine, pLength});
    if (pKind == CURLINFO_HEADER_IN) NoteReply(conversation, {pLine, pLength});
  } catch (const std::exception&) {
    // Out of memory: the message has less detail.
  }
  return 0;
}

int Port(const TMailServer& pServer) {
  if (pServer.fPort != 0) return pServer.fPort;
  switch (pServer.fSecurity) {
    case TMailSecurity::msTLS:
      return 465;
    case TMailSecurity::msStartTLS:
      return 587;
    case TMailSecurity::msNone:
      break;
  }
  return 25;
}

bool IsHostName(std::string_view pHost) {
  const bool plain = std::all_of(pHost.begin(), pHost.end(), [](char pChar) {
    return (pChar >= '0' && pChar <= '9') || (pChar >= 'A' && pChar <= 'Z') || (pChar >= 'a' && pChar <= 'z') ||
           std::string_view("-._:").find(pChar) != std::string_view::npos;
  });
  // One colon separates a port from the name; IPv6 addresses have more.
  return plain && std::count(pHost.begin(), pHost.end(), ':') != 1;
}

std::string Url(const TMailServer& pServer) {
  const char* protocol = pServer.fSecurity == TMailSecurity::msTLS ? "smtps" : "smtp";
  const bool isAddress = pServer.fHost.find(':') != std::string::npos;
  const std::string host = isAddress ? "[" + pServer.fHost + "]" : pServer.fHost;
  return fmt::format("{}://{}:{}", protocol, host, Port(pServer));
}

}  // namespace

void CheckServer(const TMailServer& pServer) {
  if (!IsHostName(pServer.fHost)) {
    throw EMailError(
        fmt::format("{} is no name of a mail server: give the host's name alone, and the port apart from it.",
                    ToQuotedDisplay(FromUtf8(pServer.fHost))));
  }
  if (Port(pServer) < kLowestPort || Port(pServer) > kHighestPort)
    throw EMailError(fmt::format("{} is no port of a mail server: expected 1..65535.", pServer.fPort));
}

namespace {

// The connection and the list of recipients, with their options.
class TConnection {
 public:
  TConnection(const TMailServer& pServer, const TMailEnvelope& pEnvelope, TConversation& pConversation);
  ~TConnection() {
    LeaveAtOnce();
    fLibrary.fCleanup(fHandle);
    fLibrary.fFreeList(fRecipients);
  }
  TConnection(const TConnection&) = delete;
  TConnection& operator=(const TConnection&) = delete;

  CURLcode Perform() { return fLibrary.fPerform(fHandle); }
  // libcurl's text on the failure; never empty.
  std::string Detail(CURLcode pCode) const { return fError[0] ? fError : ErrorText(pCode); }
  // The library's own text for the code.
  std::string ErrorText(CURLcode pCode) const { return fLibrary.fErrorText(pCode); }

 private:
  template <typename TValue>
  void Set(CURLoption pOption, TValue pValue) {
    const CURLcode code = fLibrary.fSetOption(fHandle, pOption, pValue);
    if (code != CURLE_OK && fRefused == CURLE_OK) fRefused = code;
  }
  // The library says goodbye during its cleanup and would wait a minute for a server that does not answer. The result
  // is known by then.
  void LeaveAtOnce() {
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (fLibrary.fGetInfo(fHandle, CURLINFO_ACTIVESOCKET, &socket) == CURLE_OK && socket != CURL_SOCKET_BAD)
      StopReading(socket);
  }
  void SetServer(const TMailServer& pServer);
  void SetEncryption(TMailSecurity pSecurity);
  void SetEnvelope(const TMailEnvelope& pEnvelope);
  void SetCallbacks(TConversation& pConversation);

  const TCurlLibrary& fLibrary;
  CURL* fHandle;
  curl_slist* fRecipients = nullptr;
  CURLcode fRefused = CURLE_OK;  // the first option that the library did not take
  char fError[CURL_ERROR_SIZE] = "";
};

TConnection::TConnection(const TMailServer& pServer, const TMailEnvelope& pEnvelope, TConversation& pConversation)
    : fLibrary(CurlLibrary()), fHandle(fLibrary.fInit()) {
  if (fHandle) {
    Set(CURLOPT_ERRORBUFFER, fError);
    SetServer(pServer);
    SetEncryption(pServer.fSecurity);
    SetEnvelope(pEnvelope);
    SetCallbacks(pConversation);
    if (fRefused == CURLE_OK) return;
  }
  // The destructor does not run for an object whose constructor failed.
  const std::string reason = fLibrary.fErrorText(fHandle ? fRefused : CURLE_FAILED_INIT);
  if (fHandle) fLibrary.fCleanup(fHandle);
  fLibrary.fFreeList(fRecipients);
  throw EMailError("This system's libcurl cannot send mail: " + reason + ". Install a newer one.");
}

void TConnection::SetServer(const TMailServer& pServer) {
  Set(CURLOPT_URL, Url(pServer).c_str());
  // A proxy in the environment is meant for the web only.
  Set(CURLOPT_PROXY, "");
  Set(CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  Set(CURLOPT_LOW_SPEED_LIMIT, 1L);
  Set(CURLOPT_LOW_SPEED_TIME, kSilenceSeconds);
  Set(CURLOPT_SERVER_RESPONSE_TIMEOUT, kSilenceSeconds);
  if (pServer.fUser.empty()) return;
  Set(CURLOPT_USERNAME, pServer.fUser.c_str());
  Set(CURLOPT_PASSWORD, pServer.fPassword.c_str());
}

void TConnection::SetEncryption(TMailSecurity pSecurity) {
  if (pSecurity == TMailSecurity::msNone) return;
  // Without "all" a server, or an attacker in between, could turn encryption off and then read the password.
  Set(CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
  Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  // For Windows. Otherwise an unreachable list of revoked certificates would refuse every certificate of an
  // organisation's own authority.
  Set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
  const std::u16string certificates = EnvironmentVariable(u"SSL_CERT_FILE").value_or(u"");
  if (!certificates.empty()) Set(CURLOPT_CAINFO, ToNativeBytes(certificates).c_str());
}

void TConnection::SetEnvelope(const TMailEnvelope& pEnvelope) {
  Set(CURLOPT_MAIL_FROM, ("<" + pEnvelope.fFrom->fAddress + ">").c_str());
  for (const TMailAddress& recipient : pEnvelope.fTo) {
    curl_slist* longer = fLibrary.fAppend(fRecipients, ("<" + recipient.fAddress + ">").c_str());
    if (!longer) fRefused = CURLE_OUT_OF_MEMORY;
    if (longer) fRecipients = longer;
  }
  Set(CURLOPT_MAIL_RCPT, fRecipients);
}

void TConnection::SetCallbacks(TConversation& pConversation) {
  Set(CURLOPT_UPLOAD, 1L);
  // The size lets a server refuse a mail that is too large before it is sent.
  Set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(pConversation.fMail.Size()));
  Set(CURLOPT_READFUNCTION, static_cast<curl_read_callback>(&GiveMail));
  Set(CURLOPT_READDATA, static_cast<void*>(&pConversation));
  // Verbose output goes to the callback and is not shown. It is the only way to learn which address a server refused.
  Set(CURLOPT_VERBOSE, 1L);
  Set(CURLOPT_DEBUGFUNCTION, static_cast<curl_debug_callback>(&NoteLine));
  Set(CURLOPT_DEBUGDATA, static_cast<void*>(&pConversation));
}

// The server's answer as part of a message. Left out when it repeats the password, whole or in part.
std::string Answer(const TConversation& pConversation, const TMailServer& pServer) {
  const std::string& reply = pConversation.fReply;
  if (HoldsSecret(reply, pServer.fPassword)) return " What it says is not shown, since it may hold the password.";
  return reply.empty() ? "" : " It says: " + ToDisplay(FromUtf8(reply.substr(0, kLongestReply)));
}

// Whether the server's last answer was a refusal.
bool IsRefusal(std::string_view pReply) {
  return !pReply.empty() && (pReply[0] == '4' || pReply[0] == '5');
}

std::string Refusal(const TConversation& pConversation) {
  if (pConversation.fAddress.empty()) return "refuses the mail.";
  return fmt::format("refuses {} {}, and so nobody got the mail.",
                     pConversation.fIsRecipient ? "the recipient" : "this mail from", pConversation.fAddress);
}

// The error as the end of a sentence that begins with the server's name, and what to do about it.
std::string Reason(CURLcode pCode, const std::string& pDetail, const TConversation& pConversation,
                   const TMailServer& pServer) {
  const std::string answer = Answer(pConversation, pServer);
  switch (pCode) {
    case CURLE_COULDNT_RESOLVE_HOST:
      return "is not known: check its name.";
    case CURLE_COULDNT_CONNECT:
      return "does not answer: check its name and port, and whether a firewall lies between.";
    case CURLE_OPERATION_TIMEDOUT:
      return "has been silent for too long: try again later, or check its port and the kind of encryption.";
    case CURLE_USE_SSL_FAILED:
      return "offers no encryption by STARTTLS: choose TLS from the start, or none for a server that you trust." +
             answer;
    case CURLE_PEER_FAILED_VERIFICATION:
      return "shows a certificate that is not trusted (" + pDetail +
             "): add the certificate of its authority to the system's, or name the file of it in SSL_CERT_FILE.";
    case CURLE_SSL_CACERT_BADFILE:
      return "cannot be trusted, since the file in SSL_CERT_FILE cannot be used (" + pDetail + ").";
    case CURLE_SSL_CONNECT_ERROR:
      return "does not agree on encryption (" + pDetail + "): check its port and the kind of encryption.";
    case CURLE_LOGIN_DENIED:
      return "does not let the user " + ToQuotedDisplay(FromUtf8(pServer.fUser)) + " in: check user and password." +
             answer;
    default:
      break;
  }
  if (IsRefusal(pConversation.fReply)) return Refusal(pConversation) + answer;
  return "ended the conversation before it had taken the mail (" + pDetail + "): try again later." + answer;
}

}  // namespace

std::string ServerName(const TMailServer& pServer) {
  return fmt::format("\"{}:{}\"", ToDisplay(FromUtf8(pServer.fHost)), Port(pServer));
}

void SendToServer(TMailSource& pMail, const TMailEnvelope& pEnvelope, const TMailServer& pServer) {
  CheckServer(pServer);
  TConversation conversation{pMail, {}, {}, false, {}, false};
  TConnection connection(pServer, pEnvelope, conversation);
  const CURLcode code = connection.Perform();
  if (conversation.fFailure) std::rethrow_exception(conversation.fFailure);
  if (code == CURLE_OK) return;
  std::string detail = ToDisplay(FromUtf8(connection.Detail(code)));
  if (HoldsSecret(detail, pServer.fPassword)) detail = connection.ErrorText(code);
  throw EMailError(
      fmt::format("The mail server {} {}", ServerName(pServer), Reason(code, detail, conversation, pServer)));
}

}  // namespace Vantrel::Mail
