#pragma once

// The interface of the two ways of sending a mail.

#include <string>

#include "automation/mail/Mail.h"
#include "automation/mail/MailSource.h"

// The two ways to send a composed mail. Both throw EMailError. EOSErrors of attachments pass through.
namespace Vantrel::Mail {

// To a mail server. The sender must be there.
void SendToServer(TMailSource& pMail, const TMailEnvelope& pEnvelope, const TMailServer& pServer);

// Sends through a program with sendmail's arguments: pProgram, or one in the usual places when it is empty.
void SendToSendmail(TMailSource& pMail, const TMailEnvelope& pEnvelope, const std::string& pProgram);

// Checks of the two ways that are possible before a mail is sent.
void CheckServer(const TMailServer& pServer);
void CheckSendmail(const std::string& pProgram);

// The server's name for messages: "mail.example.org:587", in quotes.
std::string ServerName(const TMailServer& pServer);

}  // namespace Vantrel::Mail
