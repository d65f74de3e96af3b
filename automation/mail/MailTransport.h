#pragma once

// What the two ways of sending have in common.

#include <string>

#include "automation/mail/Mail.h"
#include "automation/mail/MailSource.h"

// The two ways by which a composed mail leaves. Both throw EMailError, and let EOSErrors of attachments through.
namespace Vantrel::Mail {

// To a mail server. The sender must be there.
void SendToServer(TMailSource& pMail, const TMailEnvelope& pEnvelope, const TMailServer& pServer);

// To a program that takes a mail as sendmail does: pProgram, or the one of the usual places when that is empty.
void SendToSendmail(TMailSource& pMail, const TMailEnvelope& pEnvelope, const std::string& pProgram);

// What can be known of the two ways before a mail is sent.
void CheckServer(const TMailServer& pServer);
void CheckSendmail(const std::string& pProgram);

// The server's name for messages: "mail.example.org:587", in quotes.
std::string ServerName(const TMailServer& pServer);

}  // namespace Vantrel::Mail
