#pragma once

// Whether a text gives a password away, plain or encoded.

#include <string_view>

namespace Vantrel::Mail {

// Whether the text holds the secret or a telling piece of it. Finds it as plain text, in base64, in hexadecimal digits,
// and with characters written as %XX or =XX. Blanks and line breaks may be anywhere in between. Errs on the safe side:
// a word that is also a part of the secret counts.
bool HoldsSecret(std::string_view pText, std::string_view pSecret);

}  // namespace Vantrel::Mail
