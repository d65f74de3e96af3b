#include "automation/mail/SecretText.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "automation/mail/MailText.h"

namespace Vantrel::Mail {

namespace {

constexpr size_t kTellingPiece = 5;  // a piece of so many characters of a secret, or of its encoding, must not be shown

char Folded(char pChar) {
  return pChar >= 'A' && pChar <= 'Z' ? static_cast<char>(pChar + ('a' - 'A')) : pChar;
}

// Without blanks and control characters, in lower case.
std::string Packed(std::string_view pText) {
  std::string packed;
  for (const char character : pText)
    if (static_cast<unsigned char>(character) > ' ') packed += Folded(character);
  return packed;
}

// Whether a piece of the needle is in the text. A short needle must be there as a whole.
bool HoldsPiece(std::string_view pText, std::string_view pNeedle) {
  const size_t length = std::min(pNeedle.size(), kTellingPiece);
  for (size_t i = 0; length > 0 && i + length <= pNeedle.size(); ++i)
    if (pText.find(pNeedle.substr(i, length)) != std::string_view::npos) return true;
  return false;
}

int HexDigit(char pChar) {
  const char folded = Folded(pChar);
  if (folded >= '0' && folded <= '9') return folded - '0';
  return folded >= 'a' && folded <= 'f' ? folded - 'a' + 10 : -1;
}

// "%C3" and "=C3" as the bytes that they stand for.
std::string WithoutEscapes(std::string_view pText) {
  std::string plain;
  for (size_t i = 0; i < pText.size(); ++i) {
    const bool escaped = (pText[i] == '%' || pText[i] == '=') && i + 2 < pText.size() && HexDigit(pText[i + 1]) >= 0 &&
                         HexDigit(pText[i + 2]) >= 0;
    plain += escaped ? static_cast<char>(HexDigit(pText[i + 1]) * 16 + HexDigit(pText[i + 2])) : pText[i];
    if (escaped) i += 2;
  }
  return plain;
}

// The secret's part in the base64 of a longer text, with so many bytes, modulo three, before it. Characters that also
// depend on neighbouring bytes are left out.
std::string Base64Inside(std::string_view pSecret, size_t pBefore) {
  constexpr size_t kBits = 6;
  std::string encoded = Packed(Base64Lines(std::string(pBefore, '\0').append(pSecret)));
  encoded.resize((pBefore + pSecret.size()) * 8 / kBits);
  return encoded.substr(std::min(encoded.size(), (pBefore * 8 + kBits - 1) / kBits));
}

}  // namespace

bool HoldsSecret(std::string_view pText, std::string_view pSecret) {
  const std::string secret = Packed(pSecret);
  std::string text = Packed(pText);
  if (HoldsPiece(text, secret) || HoldsPiece(Packed(WithoutEscapes(text)), secret)) return true;
  std::string digits;
  for (const char character : pSecret) digits += fmt::format("{:02x}", static_cast<unsigned char>(character));
  // A character has two digits, so a piece is twice as long.
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    const size_t length = std::min(digits.size(), 2 * kTellingPiece);
    if (i + length <= digits.size() && text.find(digits.substr(i, length)) != std::string::npos) return true;
  }
  // Also in the alphabet for web addresses.
  std::replace(text.begin(), text.end(), '-', '+');
  std::replace(text.begin(), text.end(), '_', '/');
  for (size_t before = 0; before < 3; ++before)
    if (HoldsPiece(text, Base64Inside(pSecret, before))) return true;
  return false;
}

}  // namespace Vantrel::Mail
