#include "search/metadata/FileProperties.h"

#include <algorithm>

#include "platform/text/Text.h"

namespace Vantrel::Search {

namespace {

constexpr std::u16string_view kBetween = u"; ";
constexpr size_t kLongestText = 100'000;

std::u16string_view Trimmed(std::u16string_view pText) {
  constexpr std::u16string_view kBlanks(u" \t\r\n\0", 5);
  const size_t begin = pText.find_first_not_of(kBlanks);
  if (begin == std::u16string_view::npos) return {};
  return pText.substr(begin, pText.find_last_not_of(kBlanks) + 1 - begin).substr(0, kLongestText);
}

bool HasPart(std::u16string_view pTexts, std::u16string_view pText) {
  for (size_t at = pTexts.find(pText); at != std::u16string_view::npos; at = pTexts.find(pText, at + 1)) {
    const std::u16string_view before = pTexts.substr(0, at), behind = pTexts.substr(at + pText.size());
    if ((before.empty() || before.ends_with(kBetween)) && (behind.empty() || behind.starts_with(kBetween))) return true;
  }
  return false;
}

}  // namespace

std::u16string TextOf(std::string_view pBytes) {
  std::u16string text = FromUtf8(pBytes);
  if (text.find(u'\uFFFD') == std::u16string::npos) return text;
  text.clear();
  for (const char byte : pBytes) text += static_cast<char16_t>(static_cast<uint8_t>(byte));
  return text;
}

void TFileProperties::AddText(TFileProperty pProperty, std::u16string_view pText) {
  const std::u16string_view text = Trimmed(pText);
  if (text.empty()) return;
  TMetaDataValue& value = At(pProperty);
  auto* known = std::get_if<std::u16string>(&value);
  if (!known)
    value = std::u16string(text);
  else if (FilePropertyInfo(pProperty).fKind == TPropertyKind::pkTexts && known->size() < kLongestText &&
           !HasPart(*known, text))
    known->append(kBetween).append(text);
}

void TFileProperties::AddText(TFileProperty pProperty, std::string_view pUtf8OrLatin) {
  AddText(pProperty, std::u16string_view(TextOf(pUtf8OrLatin.substr(0, kLongestText))));
}

void TFileProperties::AddList(TFileProperty pProperty, std::u16string_view pTexts) {
  while (!pTexts.empty()) {
    const size_t end = std::min(pTexts.find_first_of(u";,"), pTexts.size());
    AddText(pProperty, pTexts.substr(0, end));
    pTexts.remove_prefix(std::min(end + 1, pTexts.size()));
  }
}

void TFileProperties::AddNumber(TFileProperty pProperty, int64_t pNumber) {
  TMetaDataValue& value = At(pProperty);
  if (std::holds_alternative<std::monostate>(value)) value = pNumber;
}

void TFileProperties::AddNumber(TFileProperty pProperty, std::string_view pNumber) {
  int64_t number = 0;
  if (TryParseInt64(pNumber, number)) AddNumber(pProperty, number);
}

void TFileProperties::AddDate(TFileProperty pProperty, TKivFileTime pDate) {
  TMetaDataValue& value = At(pProperty);
  if (pDate.IsSet() && std::holds_alternative<std::monostate>(value)) value = pDate;
}

TFileProperties ReadFileProperties(TFileBytes& pFile) {
  using namespace std::string_view_literals;
  TFileProperties properties;
  const std::string start = pFile.TextAt(0, 16);
  const std::string_view first = start;
  const auto at = [&](size_t pPlace, std::string_view pText) {
    return first.size() >= pPlace && first.substr(pPlace).starts_with(pText);
  };
  const auto isOneOf = [&](std::initializer_list<std::string_view> pStarts) {
    return std::any_of(pStarts.begin(), pStarts.end(), [&](std::string_view pStart) { return at(0, pStart); });
  };
  // FF FE begins a text in UTF-16 far more often than a piece of music.
  const bool isMpegSound =
      at(0, "\xFF") && !at(1, "\xFE") && first.size() > 1 && (static_cast<uint8_t>(first[1]) & 0xE6) > 0xE0;
  if (at(0, "PK\3\4"))
    ReadOfficeProperties(pFile, properties);
  else if (at(0, "%PDF-"))
    ReadPdfProperties(pFile, properties);
  else if (isOneOf({"\xFF\xD8\xFF"sv, "\x89PNG\r\n"sv, "GIF8"sv, "BM"sv, "II*\0"sv, "MM\0*"sv}) || at(8, "WEBP"))
    ReadPictureProperties(pFile, properties);
  else if (isMpegSound || isOneOf({"ID3"sv, "fLaC"sv, "OggS"sv, "FORM"sv, "MAC "sv, "wvPk"sv, "0&\xB2u"sv}) ||
           at(4, "ftyp") || at(8, "WAVE"))
    ReadMusicProperties(pFile, properties);
  return properties;
}

}  // namespace Vantrel::Search
