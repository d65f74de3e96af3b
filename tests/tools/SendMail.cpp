// `send_mail`: sends the mail that a file describes.

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "automation/mail/Mail.h"
#include "platform/files/FileContents.h"
#include "platform/text/Text.h"

// send_mail FILE: sends the mail that the file describes, in UTF-8: "name=value" pieces, each ended by a NUL. "to" is a
// list of addresses, "attach" may repeat. A file and no arguments, so that every text gets through on Windows too. Ends
// with 1 and the message when the mail could not be sent.

namespace {

using namespace Vantrel::Mail;

constexpr size_t kMostBytes = 1 << 24;

void Read(std::string_view pName, const std::string& pValue, TMailMessage& pMessage, TMailServer& pServer) {
  const std::u16string text = Vantrel::FromUtf8(pValue);
  if (pName == "from") pMessage.fFrom = text;
  if (pName == "to") pMessage.fTo = SplitMailAddresses(text);
  if (pName == "subject") pMessage.fSubject = text;
  if (pName == "text") pMessage.fText = pValue;
  if (pName == "attach") pMessage.fAttachments.push_back(text);
  if (pName == "host") pServer.fHost = pValue;
  if (pName == "port") pServer.fPort = std::stoi(pValue);
  if (pName == "security" && pValue == "none") pServer.fSecurity = Vantrel::TMailSecurity::msNone;
  if (pName == "security" && pValue == "tls") pServer.fSecurity = Vantrel::TMailSecurity::msTLS;
  if (pName == "user") pServer.fUser = pValue;
  if (pName == "password") pServer.fPassword = pValue;
  if (pName == "sendmail") pServer.fSendmail = pValue;
}

void Send(const char* pFile) {
  const std::string settings = Vantrel::ReadFileContents(Vantrel::FromNativeBytes(pFile), kMostBytes);
  TMailMessage message;
  TMailServer server;
  std::string_view rest = settings;
  while (!rest.empty()) {
    const std::string_view piece = rest.substr(0, rest.find('\0'));
    rest.remove_prefix(piece.size() + 1);
    const size_t equals = piece.find('=');
    Read(piece.substr(0, equals), std::string(piece.substr(equals + 1)), message, server);
  }
  SendMail(message, server);
}

}  // namespace

int main(int pCount, char** pArguments) {
  if (pCount != 2) {
    std::fputs("Usage: send_mail FILE\n", stderr);
    return 2;
  }
  try {
    Send(pArguments[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
