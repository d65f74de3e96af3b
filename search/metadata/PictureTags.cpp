#include "search/metadata/PictureTags.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>

#include "platform/system/FileTime.h"
#include "search/metadata/XMLTexts.h"
#include "search/query/QueryDates.h"

namespace Vantrel::Search {

namespace {

using enum TFileProperty;

// "2024:05:01 14:30:00" in local time, as cameras write it.
TKivFileTime DateOf(std::string_view pText) {
  std::string text(pText.substr(0, 19));
  if (text.size() < 19 || text[4] != ':' || text[7] != ':') return {};
  text[4] = text[7] = '-';
  TKivFileTime local;
  return TryParseIso(text, local) ? MomentOfLocalTime(local) : TKivFileTime();
}

std::string_view BytesOf(const ExifEntry& pEntry) {
  return {reinterpret_cast<const char*>(pEntry.data), pEntry.data ? pEntry.size : 0};
}

// The tags of Windows are in UTF-16.
std::u16string WideOf(std::string_view pBytes) {
  std::u16string text;
  for (size_t i = 0; i + 1 < pBytes.size(); i += 2) text += static_cast<char16_t>(LittleEndianAt(pBytes, i, 2));
  return text.substr(0, text.find(u'\0'));
}

std::string_view WithoutZeros(std::string_view pText) {
  return pText.substr(0, pText.find('\0'));
}

void TakeExifEntry(const ExifEntry& pEntry, TFileProperties& pProperties) {
  const std::string_view bytes = BytesOf(pEntry);
  const std::string_view text = WithoutZeros(bytes);
  switch (static_cast<int>(pEntry.tag)) {
    case EXIF_TAG_IMAGE_DESCRIPTION:
      return pProperties.AddText(fpTitle, text);
    case EXIF_TAG_MAKE:
      return pProperties.AddText(fpCameraMaker, text);
    case EXIF_TAG_MODEL:
      return pProperties.AddText(fpCameraModel, text);
    case EXIF_TAG_SOFTWARE:
      return pProperties.AddText(fpApplication, text);
    case EXIF_TAG_ARTIST:
      return pProperties.AddList(fpCreator, TextOf(text));
    case EXIF_TAG_DATE_TIME_ORIGINAL:
      return pProperties.AddDate(fpDateTaken, DateOf(text));
    case EXIF_TAG_XP_TITLE:
      return pProperties.AddText(fpTitle, WideOf(bytes));
    case EXIF_TAG_XP_COMMENT:
      return pProperties.AddText(fpComment, WideOf(bytes));
    case EXIF_TAG_XP_AUTHOR:
      return pProperties.AddList(fpCreator, WideOf(bytes));
    case EXIF_TAG_XP_KEYWORDS:
      return pProperties.AddList(fpKeywords, WideOf(bytes));
    case EXIF_TAG_XP_SUBJECT:
      return pProperties.AddText(fpSubject, WideOf(bytes));
    case EXIF_TAG_USER_COMMENT:
      if (bytes.starts_with("ASCII")) pProperties.AddText(fpComment, WithoutZeros(bytes.substr(8)));
      return;
    default:
      return;
  }
}

// IPTC: records of a mark, two numbers, a length and a text.
void ReadIptc(std::string_view pRecords, TFileProperties& pProperties) {
  constexpr size_t kHead = 5;
  while (pRecords.size() >= kHead && pRecords[0] == 0x1C) {
    const uint32_t kind = BigEndianAt(pRecords, 1, 2);
    const uint32_t length = BigEndianAt(pRecords, 3, 2);
    if (length > pRecords.size() - kHead) return;  // also the form for lengths of more than 32,767, which no text has
    const std::string_view text = pRecords.substr(kHead, length);
    if (kind == 0x0205) pProperties.AddText(fpTitle, text);
    if (kind == 0x0219) pProperties.AddText(fpKeywords, text);
    if (kind == 0x0250) pProperties.AddText(fpCreator, text);
    if (kind == 0x0278) pProperties.AddText(fpComment, text);
    pRecords.remove_prefix(kHead + length);
  }
}

}  // namespace

uint32_t BigEndianAt(std::string_view pBytes, size_t pPlace, size_t pLength) {
  uint32_t number = 0;
  if (pPlace > pBytes.size() || pLength > pBytes.size() - pPlace) return 0;
  for (size_t i = 0; i < pLength; ++i) number = number << 8 | static_cast<uint8_t>(pBytes[pPlace + i]);
  return number;
}

uint32_t LittleEndianAt(std::string_view pBytes, size_t pPlace, size_t pLength) {
  uint32_t number = 0;
  if (pPlace > pBytes.size() || pLength > pBytes.size() - pPlace) return 0;
  for (size_t i = pLength; i > 0; --i) number = number << 8 | static_cast<uint8_t>(pBytes[pPlace + i - 1]);
  return number;
}

void ReadExif(std::string_view pBlock, TFileProperties& pProperties) {
  const std::string block = std::string("Exif\0\0", 6).append(pBlock);
  const std::unique_ptr<ExifData, decltype(&exif_data_unref)> data(exif_data_new(), exif_data_unref);
  if (!data) return;
  // Converting and completing the entries would cost time for what is not asked.
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_set_option(data.get(), EXIF_DATA_OPTION_DONT_CHANGE_MAKER_NOTE);
  constexpr size_t kMost = std::numeric_limits<uint32_t>::max();
  exif_data_load_data(data.get(), reinterpret_cast<const unsigned char*>(block.data()),
                      static_cast<unsigned>(std::min(block.size(), kMost)));
  for (const ExifIfd part : {EXIF_IFD_0, EXIF_IFD_EXIF}) {
    const ExifContent* content = data->ifd[part];
    for (unsigned i = 0; content && i < content->count; ++i) TakeExifEntry(*content->entries[i], pProperties);
  }
}

void ReadXmp(std::string_view pDocument, TFileProperties& pProperties) {
  ReadXMLTexts(pDocument, [&](const TXMLText& pText) {
    const bool isItem = pText.fElement == "li";
    const std::string_view name = !pText.fAttribute.empty() ? pText.fAttribute
                                  : isItem                  ? pText.fHolder
                                                            : pText.fElement;
    if (!pText.fAttribute.empty() && pText.fElement != "Description") return;
    if (isItem && name == "subject") return pProperties.AddText(fpKeywords, pText.fText);
    if (name == "Keywords") return pProperties.AddList(fpKeywords, TextOf(pText.fText));
    if (name == "creator") return pProperties.AddText(fpCreator, pText.fText);
    if (name == "title") return pProperties.AddText(fpTitle, pText.fText);
    if (name == "description") return pProperties.AddText(fpComment, pText.fText);
    if (name == "CreatorTool") return pProperties.AddText(fpApplication, pText.fText);
  });
}

void ReadImageResources(std::string_view pResources, TFileProperties& pProperties) {
  // Each: a mark, a number, a name of even length, the length, and the bytes, filled up to an even length.
  constexpr uint32_t kIptc = 0x0404;
  while (pResources.size() >= 12 && pResources.starts_with("8BIM")) {
    const uint32_t kind = BigEndianAt(pResources, 4, 2);
    const size_t name = (static_cast<uint8_t>(pResources[6]) + size_t{2}) & ~size_t{1};
    const size_t begin = 6 + name + 4;
    if (begin > pResources.size()) return;
    const size_t length = BigEndianAt(pResources, 6 + name, 4);
    if (length > pResources.size() - begin) return;
    if (kind == kIptc) ReadIptc(pResources.substr(begin, length), pProperties);
    pResources.remove_prefix(std::min(begin + ((length + 1) & ~size_t{1}), pResources.size()));
  }
}

}  // namespace Vantrel::Search
