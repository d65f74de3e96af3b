#pragma once

// Encodings for a mail's header: texts, addresses, file names, dates.

#include <string>
#include <string_view>
#include <vector>

#include "automation/mail/MailAddress.h"
#include "platform/system/FileTime.h"

// The pieces of a mail's header and their encodings. The output is always ASCII without control characters other than
// its own line ends, CRLF. No line is longer than mail allows.
namespace Vantrel::Mail {

// Lines of 76 characters, each ended by CRLF. Whole lines may be encoded one by one.
std::string Base64Lines(std::string_view pBytes);
constexpr size_t kBase64BytesPerLine = 57;  // before they are encoded

// "Name: text" and its line end. The text is encoded unless it is short and plain. Control characters become blanks.
std::string TextHeader(std::string_view pName, std::u16string_view pText);

// "Name: address, address…" and its line end.
std::string AddressHeader(std::string_view pName, const std::vector<TMailAddress>& pAddresses);

// A file's name as a parameter for the end of a header's value, from its semicolon on and without a line end.
std::string FileNameParameter(std::u16string_view pFileName);

// "Fri, 21 Nov 2026 19:02:23 +0000", whatever the user's language.
std::string MailDate(TKivFileTime pTime);

}  // namespace Vantrel::Mail
