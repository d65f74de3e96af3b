#include "automation/mail/MailAddress.h"

#include <algorithm>

#include "automation/mail/Mail.h"
#include "platform/text/Text.h"

namespace Vantrel::Mail {

namespace {

constexpr size_t kLongestAddress = 254;
constexpr size_t kLongestLocalPart = 64;
constexpr size_t kLongestLabel = 63;

bool IsLetterOrDigit(char pChar) {
  return (pChar >= 'a' && pChar <= 'z') || (pChar >= 'A' && pChar <= 'Z') || (pChar >= '0' && pChar <= '9');
}

bool IsControl(char16_t pChar) {
  return pChar < 0x20 || (pChar >= 0x7F && pChar < 0xA0);
}

std::u16string_view Trimmed(std::u16string_view pText) {
  while (!pText.empty() && pText.front() == u' ') pText.remove_prefix(1);
  while (!pText.empty() && pText.back() == u' ') pText.remove_suffix(1);
  return pText;
}

// Whether the text consists of non-empty parts of such characters, with single dots between them.
template <typename TAllowed>
bool IsDotted(std::string_view pText, size_t pLongestPart, TAllowed pAllowed) {
  size_t length = 0;
  for (const char character : pText) {
    if (character == '.' ? length == 0 : !pAllowed(character)) return false;
    length = character == '.' ? 0 : length + 1;
    if (length > pLongestPart) return false;
  }
  return length > 0;
}

// A dash at the beginning is legal, but sendmail programs read such an address as an option.
bool IsLocalPart(std::string_view pText) {
  const auto allowed = [](char pChar) {
    return IsLetterOrDigit(pChar) || std::string_view("!#$%&'*+-/=?^_`{|}~").find(pChar) != std::string_view::npos;
  };
  return pText.size() <= kLongestLocalPart && IsDotted(pText, kLongestLocalPart, allowed) && pText.front() != '-';
}

// A host's name, or an address such as [192.0.2.1] instead.
bool IsDomain(std::string_view pText) {
  if (pText.size() > 2 && pText.front() == '[' && pText.back() == ']') {
    return std::all_of(pText.begin() + 1, pText.end() - 1,
                       [](char pChar) { return IsLetterOrDigit(pChar) || pChar == '.' || pChar == ':'; });
  }
  return IsDotted(pText, kLongestLabel, [](char pChar) { return IsLetterOrDigit(pChar) || pChar == '-'; });
}

bool IsAddress(std::string_view pText) {
  const size_t at = pText.rfind('@');
  return at != std::string_view::npos && pText.size() <= kLongestAddress && IsLocalPart(pText.substr(0, at)) &&
         IsDomain(pText.substr(at + 1));
}

// The name without its quotes. False when the quotes do not match, or when quotes are missing where they are needed.
bool ReadName(std::u16string_view pText, std::u16string& pName) {
  if (pText.empty() || pText.front() != u'"') {
    pName = pText;
    return pText.find_first_of(u"<>\"") == std::u16string_view::npos;
  }
  for (size_t i = 1; i < pText.size(); ++i) {
    if (pText[i] == u'"') return i + 1 == pText.size();
    if (pText[i] == u'\\' && ++i == pText.size()) break;
    pName += pText[i];
  }
  return false;
}

}  // namespace

TMailAddress ParseMailAddress(std::u16string_view pText) {
  const std::u16string_view text = Trimmed(pText);
  TMailAddress result;
  std::u16string_view address = text;
  bool right = std::none_of(text.begin(), text.end(), IsControl);
  const size_t open = text.rfind(u'<');
  if (open != std::u16string_view::npos && text.back() == u'>') {
    right = right && ReadName(Trimmed(text.substr(0, open)), result.fName);
    address = text.substr(open + 1, text.size() - open - 2);
  }
  if (std::any_of(address.begin(), address.end(), [](char16_t pChar) { return pChar >= 0x80; })) {
    throw EInvalidArgumentValue(ToQuotedDisplay(pText) +
                                " is no mail address: only a name in front of it may hold letters beyond a to z");
  }
  result.fAddress.assign(address.begin(), address.end());
  if (!right || !IsAddress(result.fAddress))
    throw EInvalidArgumentValue(ToQuotedDisplay(pText) + " is no mail address");
  return result;
}

void CheckMailAddress(std::u16string_view pText) {
  ParseMailAddress(pText);
}

std::vector<std::u16string> SplitMailAddresses(std::u16string_view pText) {
  std::vector<std::u16string> parts;
  std::u16string part;
  bool quoted = false, bracketed = false;
  const auto finish = [&] {
    if (const std::u16string_view trimmed = Trimmed(part); !trimmed.empty()) parts.emplace_back(trimmed);
    part.clear();
  };
  for (size_t i = 0; i < pText.size(); ++i) {
    const char16_t character = pText[i];
    if (!quoted && !bracketed && (character == u';' || character == u',')) {
      finish();
      continue;
    }
    part += character;
    if (quoted && character == u'\\' && i + 1 < pText.size()) {
      part += pText[++i];
    } else if (character == u'"') {
      quoted = !quoted;
    } else if (!quoted && (character == u'<' || character == u'>')) {
      bracketed = character == u'<';
    }
  }
  finish();
  return parts;
}

}  // namespace Vantrel::Mail
