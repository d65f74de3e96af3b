#pragma once

// Mails reports: the mail, the server, and the ways to send; `docs/mail.md`.

#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/system/Errors.h"

// Mails reports, through a mail server or the system's own sendmail; docs/mail.md.
namespace Vantrel::Mail {

struct TMailMessage {
  std::u16string fFrom;                      // empty: the server's user, else user@host
  std::vector<std::u16string> fTo;           // addresses, "Name <a@b>" allowed
  std::u16string fSubject;                   // control characters become blanks
  std::string fText;                         // body, UTF-8, any kind of line ends
  std::vector<std::u16string> fAttachments;  // paths of finished files
};

struct TMailServer {
  std::string fHost;                                    // empty: the system's sendmail (Linux); EMailError on Windows
  int fPort = 0;                                        // 0: the usual one of the security (25, 587, 465)
  TMailSecurity fSecurity = TMailSecurity::msStartTLS;  // required: never replaced by a weaker one
  std::string fUser;                                    // empty: no login
  std::string fPassword;
  std::string fSendmail;  // program, for the way without a server; empty: found in the usual places
};

// An error that kept a mail from being sent. Its text is one line in UTF-8. It names the server, the program or the
// file, and says what to do. Never holds the password.
class EMailError : public EException {
 public:
  using EException::EException;
};

// Sends the mail to all of its recipients or, with an exception, to none. EMailError; EInvalidArgumentValue for an
// invalid address. Returns when the server or sendmail has accepted it. Gives up when a server is silent for a minute.
// Attachments are read while they are sent and never held as a whole. For one thread at a time.
void SendMail(const TMailMessage& pMessage, const TMailServer& pServer);

// Throws what SendMail would throw later for an invalid address or when there is no way to send. Text and attachments
// need not exist yet. For callers that have hours of work before the mail.
void CheckMail(const TMailMessage& pMessage, const TMailServer& pServer);

// The parts of a list of addresses, separated by ";" or ",". These do not separate inside quotes or angle brackets.
// Blanks around parts are removed, and empty parts are left out. The parts are not checked.
std::vector<std::u16string> SplitMailAddresses(std::u16string_view pText);

// Throws EInvalidArgumentValue, with a text for the user, when this is not an address to which a mail can be sent. A
// name before the address is allowed. Line breaks and other control characters are refused, so that no text can add
// lines to a mail's header.
void CheckMailAddress(std::u16string_view pText);

}  // namespace Vantrel::Mail
