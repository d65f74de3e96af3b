// A PDF file says who made it in two places: a dictionary, to which "/Info 12 0 R" leads, and an XMP document. Both
// mostly stand in the file as they are. What is packed or encrypted is not read.

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>
#include <string_view>

#include "platform/text/Text.h"
#include "search/metadata/FileProperties.h"
#include "search/metadata/PictureTags.h"

namespace Vantrel::Search {

namespace {

using enum TFileProperty;

constexpr size_t kLargest = size_t{32} << 20;
constexpr size_t kNowhere = std::string_view::npos;

bool IsBlank(char pByte) {
  return pByte == ' ' || pByte == '\r' || pByte == '\n' || pByte == '\t' || pByte == '\f' || pByte == '\0';
}

void SkipBlanks(std::string_view& pText) {
  while (!pText.empty() && IsBlank(pText.front())) pText.remove_prefix(1);
}

bool TakeNumber(std::string_view& pText, uint32_t& pNumber) {
  SkipBlanks(pText);
  const auto [end, error] = std::from_chars(pText.data(), pText.data() + pText.size(), pNumber);
  if (error != std::errc()) return false;
  pText.remove_prefix(static_cast<size_t>(end - pText.data()));
  return true;
}

// "(text)" with its escapes and nested parentheses.
std::string LiteralAt(std::string_view pText) {
  std::string bytes;
  int depth = 0;
  for (size_t i = 0; i < pText.size(); ++i) {
    char byte = pText[i];
    if (byte == '(' && depth++ == 0) continue;
    if (byte == ')' && --depth == 0) break;
    if (byte == '\\' && i + 1 < pText.size()) {
      byte = pText[++i];
      constexpr std::string_view kSigns = "nrtbf", kMeanings = "\n\r\t\b\f";
      if (const size_t sign = kSigns.find(byte); sign != kNowhere)
        byte = kMeanings[sign];
      else if (byte >= '0' && byte <= '7') {
        int code = byte - '0';
        for (int digits = 1; digits < 3 && i + 1 < pText.size() && pText[i + 1] >= '0' && pText[i + 1] <= '7'; ++digits)
          code = code * 8 + (pText[++i] - '0');
        byte = static_cast<char>(code);
      } else if (byte == '\r' || byte == '\n') {
        if (byte == '\r' && i + 1 < pText.size() && pText[i + 1] == '\n') ++i;
        continue;
      }
    }
    bytes += byte;
  }
  return bytes;
}

// "<FEFF0041>"
std::string HexAt(std::string_view pText) {
  std::string digits;
  for (const char sign : pText.substr(1, pText.find('>') - 1))
    if (std::isxdigit(static_cast<unsigned char>(sign))) digits += sign;
  if (digits.size() % 2 != 0) digits += '0';
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    unsigned value = 0;
    std::from_chars(digits.data() + i, digits.data() + i + 2, value, 16);
    bytes += static_cast<char>(value);
  }
  return bytes;
}

std::u16string TextOfString(std::string_view pBytes) {
  if (pBytes.starts_with("\xEF\xBB\xBF")) return FromUtf8(pBytes.substr(3));
  std::u16string text;
  if (pBytes.starts_with("\xFE\xFF"))
    for (size_t i = 2; i + 1 < pBytes.size(); i += 2) text += static_cast<char16_t>(BigEndianAt(pBytes, i, 2));
  else
    for (const char byte : pBytes) text += static_cast<char16_t>(static_cast<uint8_t>(byte));
  return text;
}

// The text behind a key of a dictionary.
std::u16string ValueOf(std::string_view pDictionary, std::string_view pKey) {
  for (size_t at = pDictionary.find(pKey); at != kNowhere; at = pDictionary.find(pKey, at + 1)) {
    std::string_view value = pDictionary.substr(at + pKey.size());
    SkipBlanks(value);
    if (value.starts_with('(')) return TextOfString(LiteralAt(value));
    if (value.starts_with('<') && !value.starts_with("<<")) return TextOfString(HexAt(value));
  }
  return {};
}

void ReadInfo(std::string_view pFile, TFileProperties& pProperties) {
  const size_t reference = pFile.rfind("/Info ");
  uint32_t number = 0, generation = 0;
  std::string_view behind = pFile.substr(reference == kNowhere ? pFile.size() : reference + 6);
  if (!TakeNumber(behind, number) || !TakeNumber(behind, generation)) return;
  const std::string head = std::to_string(number) + " " + std::to_string(generation) + " obj";
  size_t at = pFile.rfind(head);
  while (at != kNowhere && at > 0 && !IsBlank(pFile[at - 1])) at = pFile.rfind(head, at - 1);  // that of "112 0 obj"
  if (at == kNowhere) return;
  constexpr size_t kLongest = size_t{64} << 10;
  std::string_view dictionary = pFile.substr(at, kLongest);
  dictionary = dictionary.substr(0, dictionary.find("endobj"));
  pProperties.AddText(fpTitle, ValueOf(dictionary, "/Title"));
  pProperties.AddText(fpCreator, ValueOf(dictionary, "/Author"));
  pProperties.AddText(fpSubject, ValueOf(dictionary, "/Subject"));
  pProperties.AddList(fpKeywords, ValueOf(dictionary, "/Keywords"));
  pProperties.AddText(fpApplication, ValueOf(dictionary, "/Creator"));
}

// The topmost list of pages has the largest count.
void ReadPages(std::string_view pFile, TFileProperties& pProperties) {
  constexpr size_t kNear = 2048;
  constexpr int kMostLists = 10'000;
  uint32_t most = 0;
  int lists = 0;
  for (size_t at = pFile.find("/Type"); at != kNowhere && lists < kMostLists; at = pFile.find("/Type", at + 5)) {
    std::string_view kind = pFile.substr(at + 5, 16);
    SkipBlanks(kind);
    if (!kind.starts_with("/Pages")) continue;
    ++lists;
    // The count may stand before the type.
    const size_t first = at > kNear ? at - kNear : 0;
    const size_t begin = pFile.substr(first, at - first).rfind("obj");
    std::string_view dictionary = pFile.substr(begin == kNowhere ? at : first + begin, 2 * kNear);
    dictionary = dictionary.substr(0, dictionary.find("endobj"));
    const size_t place = dictionary.find("/Count");
    std::string_view behind = dictionary.substr(place == kNowhere ? dictionary.size() : place + 6);
    if (uint32_t count = 0; TakeNumber(behind, count)) most = std::max(most, count);
  }
  if (most > 0) pProperties.AddNumber(fpPages, int64_t{most});
}

}  // namespace

void ReadPdfProperties(TFileBytes& pFile, TFileProperties& pProperties) {
  const std::string bytes = pFile.TextAt(0, kLargest);
  const std::string_view file = bytes;
  if (file.find("/Encrypt ") == kNowhere) ReadInfo(file, pProperties);
  ReadPages(file, pProperties);
  constexpr std::string_view kXmpEnd = "</x:xmpmeta>";
  const size_t begin = file.rfind("<x:xmpmeta");
  const size_t end = begin == kNowhere ? kNowhere : file.find(kXmpEnd, begin);
  if (end != kNowhere) ReadXmp(file.substr(begin, end + kXmpEnd.size() - begin), pProperties);
}

}  // namespace Vantrel::Search
