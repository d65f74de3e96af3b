#pragma once

// Whether a text gives a password away, plain or encoded.

#include <string_view>

namespace Vantrel::Mail {

// Whether the text holds the secret or a telling piece of it: as it stands, in base64, in hexadecimal digits, or with
// signs written as %XX or =XX; with blanks and line breaks anywhere in between. Rather too often than too seldom: a
// word that is also a part of the secret counts.
bool HoldsSecret(std::string_view pText, std::string_view pSecret);

}  // namespace Vantrel::Mail
