// Finds the size of a picture, and the blocks with its properties, in the kinds of picture files. All of them are lists
// of pieces with a length each, so a file is not read where the picture itself is.

#include <algorithm>
#include <string>
#include <string_view>

#include "search/metadata/FileProperties.h"
#include "search/metadata/PictureTags.h"

namespace Vantrel::Search {

namespace {

using enum TFileProperty;
using namespace std::string_view_literals;

constexpr size_t kLargestBlock = size_t{4} << 20;
constexpr int kMostPieces = 10'000;

void AddSize(uint32_t pWidth, uint32_t pHeight, TFileProperties& pProperties) {
  if (pWidth == 0 || pHeight == 0) return;
  pProperties.AddNumber(fpWidth, int64_t{pWidth});
  pProperties.AddNumber(fpHeight, int64_t{pHeight});
}

// Segments: FF, the kind, and the length with its own two bytes.
void ReadJpeg(TFileBytes& pFile, TFileProperties& pProperties) {
  constexpr std::string_view kXmp = "http://ns.adobe.com/xap/1.0/\0"sv, kResources = "Photoshop 3.0\0"sv;
  uint64_t place = 2;
  for (int pieces = 0; pieces < kMostPieces; ++pieces) {
    const std::string head = pFile.TextAt(place, 9);
    if (head.size() < 4 || head[0] != '\xFF') return;
    const auto kind = static_cast<uint8_t>(head[1]);
    if (kind == 0xFF) {  // filling
      ++place;
      continue;
    }
    const uint32_t length = BigEndianAt(head, 2, 2);
    constexpr uint8_t kScan = 0xDA, kEnd = 0xD9;
    if (kind == kScan || kind == kEnd || length < 2) return;
    // The frames are C0 to CF, three of which are something else.
    if (kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC)
      AddSize(BigEndianAt(head, 7, 2), BigEndianAt(head, 5, 2), pProperties);
    if (kind == 0xE1 || kind == 0xED) {
      const std::string segment = pFile.TextAt(place + 4, length - 2);
      const std::string_view bytes = segment;
      if (bytes.starts_with("Exif\0\0"sv)) ReadExif(bytes.substr(6), pProperties);
      if (bytes.starts_with(kXmp)) ReadXmp(bytes.substr(kXmp.size()), pProperties);
      if (bytes.starts_with(kResources)) ReadImageResources(bytes.substr(kResources.size()), pProperties);
    }
    place += 2 + length;
  }
}

// A key, and the text behind it, which is not packed.
void ReadPngText(std::string_view pKind, std::string_view pText, TFileProperties& pProperties) {
  const size_t end = pText.find('\0');
  if (end == std::string_view::npos) return;
  const std::string_view key = pText.substr(0, end);
  pText.remove_prefix(end + 1);
  if (pKind == "iTXt") {
    if (pText.size() < 2 || pText[0] != 0) return;
    pText.remove_prefix(2);
    for (int skipped = 0; skipped < 2; ++skipped)  // the language and the translated key
      pText.remove_prefix(std::min(pText.find('\0'), pText.size() - 1) + 1);
  }
  if (key == "XML:com.adobe.xmp") return ReadXmp(pText, pProperties);
  if (key == "Title") pProperties.AddText(fpTitle, pText);
  if (key == "Author") pProperties.AddText(fpCreator, pText);
  if (key == "Description" || key == "Comment") pProperties.AddText(fpComment, pText);
  if (key == "Software") pProperties.AddText(fpApplication, pText);
}

void ReadPng(TFileBytes& pFile, TFileProperties& pProperties) {
  uint64_t place = 8;
  for (int pieces = 0; pieces < kMostPieces; ++pieces) {
    const std::string head = pFile.TextAt(place, 16);
    if (head.size() < 12) return;
    const uint32_t length = BigEndianAt(head, 0, 4);
    const std::string_view kind = std::string_view(head).substr(4, 4);
    if (kind == "IHDR") AddSize(BigEndianAt(head, 8, 4), BigEndianAt(pFile.TextAt(place + 12, 4), 0, 4), pProperties);
    const bool isWanted = kind == "tEXt" || kind == "iTXt" || kind == "eXIf";
    if (isWanted && length > 0 && length <= kLargestBlock) {
      const std::string chunk = pFile.TextAt(place + 8, length);
      if (kind == "eXIf")
        ReadExif(chunk, pProperties);
      else
        ReadPngText(kind, chunk, pProperties);
    }
    if (kind == "IEND") return;
    place += uint64_t{12} + length;
  }
}

void ReadWebP(TFileBytes& pFile, TFileProperties& pProperties) {
  uint64_t place = 12;
  for (int pieces = 0; pieces < kMostPieces; ++pieces) {
    const std::string head = pFile.TextAt(place, 18);
    if (head.size() < 8) return;
    const std::string_view kind = std::string_view(head).substr(0, 4);
    const uint32_t length = LittleEndianAt(head, 4, 4);
    if (kind == "VP8X") AddSize(LittleEndianAt(head, 12, 3) + 1, LittleEndianAt(head, 15, 3) + 1, pProperties);
    if (kind == "VP8 ") {  // behind the three bytes of a mark
      const std::string frame = pFile.TextAt(place + 14, 4);
      AddSize(LittleEndianAt(frame, 0, 2) & 0x3FFF, LittleEndianAt(frame, 2, 2) & 0x3FFF, pProperties);
    }
    if (kind == "VP8L") {
      const uint32_t sizes = LittleEndianAt(head, 9, 4);
      AddSize((sizes & 0x3FFF) + 1, (sizes >> 14 & 0x3FFF) + 1, pProperties);
    }
    if ((kind == "EXIF" || kind == "XMP ") && length <= kLargestBlock) {
      const std::string chunk = pFile.TextAt(place + 8, length);
      const std::string_view bytes = chunk;
      if (kind == "XMP ")
        ReadXmp(bytes, pProperties);
      else
        ReadExif(bytes.starts_with("Exif\0\0"sv) ? bytes.substr(6) : bytes, pProperties);
    }
    place += uint64_t{8} + length + (length & 1);
  }
}

}  // namespace

void ReadPictureProperties(TFileBytes& pFile, TFileProperties& pProperties) {
  const std::string start = pFile.TextAt(0, 26);
  const std::string_view first = start;
  if (first.starts_with("\xFF\xD8")) return ReadJpeg(pFile, pProperties);
  if (first.starts_with("\x89PNG")) return ReadPng(pFile, pProperties);
  if (first.starts_with("RIFF")) return ReadWebP(pFile, pProperties);
  if (first.starts_with("GIF8")) return AddSize(LittleEndianAt(first, 6, 2), LittleEndianAt(first, 8, 2), pProperties);
  if (first.starts_with("BM")) {
    const auto height = static_cast<int32_t>(LittleEndianAt(first, 22, 4));  // below 0: the top row comes first
    return AddSize(LittleEndianAt(first, 18, 4), static_cast<uint32_t>(height < 0 ? -int64_t{height} : height),
                   pProperties);
  }
  // TIFF, and the raw files of many cameras. Their tags mostly stand at the beginning.
  constexpr size_t kTagsWithin = size_t{1} << 20;
  ReadExif(pFile.TextAt(0, kTagsWithin), pProperties);
}

}  // namespace Vantrel::Search
