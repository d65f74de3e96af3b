#include "automation/mail/MailText.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "platform/text/Text.h"

namespace Vantrel::Mail {

namespace {

constexpr size_t kLineLength = 76;
// The length of one encoded word, so that it fits on a line after a header's name.
constexpr size_t kBytesPerWord = 39;
constexpr size_t kLongestQuoted = 60;

bool IsPlain(std::string_view pUtf8) {
  return std::all_of(pUtf8.begin(), pUtf8.end(), [](char pChar) { return pChar >= ' ' && pChar <= '~'; });
}

std::string WithoutControls(std::string pUtf8) {
  std::replace_if(
      pUtf8.begin(), pUtf8.end(), [](char pChar) { return static_cast<uint8_t>(pChar) < ' ' || pChar == '\x7F'; }, ' ');
  return pUtf8;
}

void AppendBase64(std::string& pTarget, std::string_view pBytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < pBytes.size(); i += 3) {
    const size_t count = std::min<size_t>(3, pBytes.size() - i);
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? static_cast<uint8_t>(pBytes[i + k]) : 0);
    const char digits[] = {kDigits[group >> 18], kDigits[group >> 12 & 63], count > 1 ? kDigits[group >> 6 & 63] : '=',
                           count > 2 ? kDigits[group & 63] : '='};
    pTarget.append(digits, 4);
  }
}

// The number of the first bytes, pMost at most, that form whole characters.
size_t WholeCharacters(std::string_view pUtf8, size_t pMost) {
  if (pUtf8.size() <= pMost) return pUtf8.size();
  while (pMost > 0 && (pUtf8[pMost] & 0xC0) == 0x80) --pMost;
  return pMost;
}

// Encoded words, one on each line. Readers join them without the line ends.
std::string EncodedWords(std::string_view pUtf8) {
  std::string result;
  while (!pUtf8.empty()) {
    const size_t length = WholeCharacters(pUtf8, kBytesPerWord);
    if (!result.empty()) result += "\r\n ";
    result += "=?utf-8?B?";
    AppendBase64(result, pUtf8.substr(0, length));
    result += "?=";
    pUtf8.remove_prefix(length);
  }
  return result;
}

std::string Quoted(std::string_view pText) {
  std::string result = "\"";
  for (const char character : pText) {
    if (character == '"' || character == '\\') result += '\\';
    result += character;
  }
  return result + '"';
}

// Names always stand in quotes. The rules for when they need none are long, and readers do not show the quotes.
std::string AddressText(const TMailAddress& pAddress) {
  if (pAddress.fName.empty()) return pAddress.fAddress;
  const std::string name = WithoutControls(ToUtf8(pAddress.fName));
  const bool plain = IsPlain(name) && name.size() <= kLongestQuoted;
  // On its own line, since name and address together may be too long for one.
  return (plain ? Quoted(name) : EncodedWords(name)) + "\r\n <" + pAddress.fAddress + ">";
}

// Uses percent signs for everything but letters, digits and a few marks. So no part is cut in the middle of a
// character.
std::string PercentEncoded(std::string_view pUtf8) {
  std::string result;
  for (const char character : pUtf8) {
    const bool plain = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                       (character >= 'a' && character <= 'z') || character == '.' || character == '-' ||
                       character == '_';
    if (plain) {
      result += character;
    } else {
      result += fmt::format("%{:02X}", static_cast<uint8_t>(character));
    }
  }
  return result;
}

}  // namespace

std::string Base64Lines(std::string_view pBytes) {
  std::string result;
  result.reserve((pBytes.size() / kBase64BytesPerLine + 1) * (kLineLength + 2));
  for (size_t i = 0; i < pBytes.size(); i += kBase64BytesPerLine) {
    AppendBase64(result, pBytes.substr(i, kBase64BytesPerLine));
    result += "\r\n";
  }
  return result;
}

std::string TextHeader(std::string_view pName, std::u16string_view pText) {
  const std::string text = WithoutControls(ToUtf8(pText));
  // Blanks at the ends would be lost, and "=?" would be read as an encoded word.
  const bool plain = IsPlain(text) && pName.size() + 2 + text.size() <= kLineLength && !text.starts_with(' ') &&
                     !text.ends_with(' ') && text.find("=?") == std::string::npos;
  return fmt::format("{}: {}\r\n", pName, plain ? text : EncodedWords(text));
}

std::string AddressHeader(std::string_view pName, const std::vector<TMailAddress>& pAddresses) {
  std::string result;
  for (const TMailAddress& address : pAddresses) {
    result += result.empty() ? fmt::format("{}: ", pName) : ",\r\n ";
    result += AddressText(address);
  }
  return result + "\r\n";
}

std::string FileNameParameter(std::u16string_view pFileName) {
  std::string name = ToUtf8(pFileName);
  std::replace_if(
      name.begin(), name.end(), [](char pChar) { return static_cast<uint8_t>(pChar) < ' ' || pChar == '\x7F'; }, '_');
  if (IsPlain(name) && name.size() <= kLongestQuoted) return ";\r\n filename=" + Quoted(name);
  std::string result;
  std::string_view rest = name;
  // One part is at most three times as long as its bytes.
  constexpr size_t kBytesPerPart = 15;
  for (int part = 0; !rest.empty(); ++part) {
    const size_t length = WholeCharacters(rest, kBytesPerPart);
    result += fmt::format(";\r\n filename*{}*={}{}", part, part == 0 ? "utf-8''" : "",
                          PercentEncoded(rest.substr(0, length)));
    rest.remove_prefix(length);
  }
  return result;
}

std::string MailDate(TKivFileTime pTime) {
  using namespace std::chrono;
  const seconds time{(pTime.fTicks - TKivFileTime::kUnixEpoch) / TKivFileTime::kTicksPerSecond};
  const sys_days day = floor<days>(sys_seconds(time));
  const year_month_day date(day);
  const hh_mm_ss clock(time - day.time_since_epoch());
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  return fmt::format("{}, {:02} {} {:04} {:02}:{:02}:{:02} +0000", kDays[weekday(day).c_encoding()],
                     static_cast<unsigned>(date.day()), kMonths[static_cast<unsigned>(date.month()) - 1],
                     static_cast<int>(date.year()), clock.hours().count(), clock.minutes().count(),
                     clock.seconds().count());
}

}  // namespace Vantrel::Mail
