#pragma once

// Mails reports: who sends what to whom, and by which way; `docs/mail.md`.

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
  TMailSecurity fSecurity = TMailSecurity::msStartTLS;  // what is asked for is insisted on
  std::string fUser;                                    // empty: no login
  std::string fPassword;
  std::string fSendmail;  // program, for the way without a server; empty: found in the usual places
};

// What kept a mail from being sent: one line, UTF-8, that names the server, the program or the file and says what to do
// about it. Never holds the password.
class EMailError : public EException {
 public:
  using EException::EException;
};

// Sends the mail to all of its recipients or, with an exception, to none: EMailError, and EInvalidArgumentValue for
// what is no address. Returns when the server or sendmail has taken it over; a server that is silent for a minute is
// given up. Attachments are read while they are sent and never held as a whole. For one thread at a time.
void SendMail(const TMailMessage& pMessage, const TMailServer& pServer);

// Throws what SendMail is bound to throw for a mail whose text and attachments are not there yet: an address that is
// none, or no way to send a mail. For callers that have hours of work before the mail.
void CheckMail(const TMailMessage& pMessage, const TMailServer& pServer);

// The parts of a list of addresses, separated by ";" or ","; in quotes and angle brackets these separate nothing.
// Blanks around a part are taken off, empty parts left out. The parts are not checked.
std::vector<std::u16string> SplitMailAddresses(std::u16string_view pText);

// Throws EInvalidArgumentValue with a text for the user when it is no address that a mail can be sent to, with or
// without a name. Line breaks and other control characters never pass, so that nobody slips lines into a mail's header.
void CheckMailAddress(std::u16string_view pText);

}  // namespace Vantrel::Mail
