#include "automation/mail/Mail.h"

#include <fmt/format.h>

#include <optional>

#include "automation/mail/MailAddress.h"
#include "automation/mail/MailSource.h"
#include "automation/mail/MailTransport.h"
#include "platform/system/Identity.h"
#include "platform/text/Text.h"

namespace Vantrel::Mail {

namespace {

// The named sender, otherwise the user at the server, otherwise the user at this machine. None for sendmail when no
// sender is named: sendmail knows this machine's public name better.
std::optional<TMailAddress> Sender(const TMailMessage& pMessage, const TMailServer& pServer) {
  if (!pMessage.fFrom.empty()) return ParseMailAddress(pMessage.fFrom);
  if (pServer.fHost.empty()) return std::nullopt;
  std::u16string sender = FromUtf8(pServer.fUser);
  if (sender.find(u'@') == std::u16string::npos)
    sender = (sender.empty() ? CurrentUserName() : sender) + u"@" + FromUtf8(FullHostName());
  try {
    return ParseMailAddress(sender);
  } catch (const EInvalidArgumentValue& error) {
    throw EMailError(fmt::format("{}: name the sender of the mail.", error.what()));
  }
}

TMailEnvelope Envelope(const TMailMessage& pMessage, const TMailServer& pServer) {
  TMailEnvelope envelope;
  for (const std::u16string& recipient : pMessage.fTo) envelope.fTo.push_back(ParseMailAddress(recipient));
  if (envelope.fTo.empty()) throw EMailError("The mail has no recipient: name at least one.");
  envelope.fFrom = Sender(pMessage, pServer);
  return envelope;
}

// The part of the mail's own id after the "@".
std::string IdHost(const TMailEnvelope& pEnvelope) {
  if (!pEnvelope.fFrom) return "localhost";
  const std::string& address = pEnvelope.fFrom->fAddress;
  return address.substr(address.rfind('@') + 1);
}

}  // namespace

void CheckMail(const TMailMessage& pMessage, const TMailServer& pServer) {
  Envelope(pMessage, pServer);
  if (pServer.fHost.empty())
    CheckSendmail(pServer.fSendmail);
  else
    CheckServer(pServer);
}

void SendMail(const TMailMessage& pMessage, const TMailServer& pServer) {
  const TMailEnvelope envelope = Envelope(pMessage, pServer);
  try {
    TMailSource mail(pMessage, envelope, TMailStamp::Make(IdHost(envelope)));
    if (pServer.fHost.empty()) {
      SendToSendmail(mail, envelope, pServer.fSendmail);
    } else {
      SendToServer(mail, envelope, pServer);
    }
  } catch (const EOSError& error) {
    // All other errors of the system have become an EMailError already.
    throw EMailError(fmt::format("The mail was not sent, since {} cannot be attached: {}.",
                                 ToQuotedDisplay(error.Object()), OSErrorText(error.Code())));
  }
}

}  // namespace Vantrel::Mail
