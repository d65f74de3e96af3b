#include "search/metadata/Shortcut.h"

#include <algorithm>
#include <string_view>

#include "search/metadata/PictureTags.h"

// The parts of the file: a head of fixed length with flags; a list of IDs; a block about the place, with offsets into
// itself; texts with their lengths. A flag tells of each part whether it is there.

namespace Vantrel::Search {

namespace {

using namespace std::string_view_literals;

constexpr size_t kLargestShortcut = size_t{1} << 20;
constexpr std::string_view kHead = "\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"sv;
constexpr uint32_t kHasIdList = 1, kHasPlace = 2, kHasName = 4, kHasRelativePath = 8, kIsWide = 0x80,
                   kIgnoresPlace = 0x100;

std::u16string WideText(std::string_view pBytes) {
  std::u16string text;
  for (size_t i = 0; i + 1 < pBytes.size(); i += 2) text += static_cast<char16_t>(LittleEndianAt(pBytes, i, 2));
  return text;
}

// A text in the code page of the machine that wrote it. Only ASCII is the same in all of them.
std::u16string AsciiText(std::string_view pBytes) {
  const bool isAscii =
      std::all_of(pBytes.begin(), pBytes.end(), [](char pByte) { return static_cast<uint8_t>(pByte) < 0x80; });
  return isAscii ? std::u16string(pBytes.begin(), pBytes.end()) : std::u16string();
}

// A text at an offset, up to its zero.
std::u16string TextAtOffset(std::string_view pBlock, uint32_t pOffset, bool pIsWide) {
  if (pOffset == 0 || pOffset >= pBlock.size()) return {};
  const std::string_view rest = pBlock.substr(pOffset);
  if (!pIsWide) return AsciiText(rest.substr(0, rest.find('\0')));
  const std::u16string text = WideText(rest);
  return text.substr(0, text.find(u'\0'));
}

std::u16string LocalPathOf(std::string_view pPlace) {
  constexpr uint32_t kHasLocalPath = 1, kFixedDrive = 3, kWithWideTexts = 0x24;
  if ((LittleEndianAt(pPlace, 8, 4) & kHasLocalPath) == 0) return {};
  const uint32_t volume = LittleEndianAt(pPlace, 12, 4);
  if (LittleEndianAt(pPlace, size_t{volume} + 4, 4) != kFixedDrive) return {};
  const bool isWide = LittleEndianAt(pPlace, 4, 4) >= kWithWideTexts && LittleEndianAt(pPlace, 28, 4) != 0;
  const std::u16string base = TextAtOffset(pPlace, LittleEndianAt(pPlace, isWide ? 28 : 16, 4), isWide);
  if (base.empty()) return {};
  return base + TextAtOffset(pPlace, LittleEndianAt(pPlace, isWide ? 32 : 24, 4), isWide);
}

}  // namespace

std::optional<TShortcutTarget> ReadShortcut(TFileBytes& pFile) {
  const std::string bytes = pFile.TextAt(0, kLargestShortcut);
  std::string_view rest = bytes;
  constexpr size_t kHeadLength = 0x4C;
  if (rest.size() < kHeadLength || !rest.starts_with(kHead)) return std::nullopt;
  const uint32_t flags = LittleEndianAt(rest, 0x14, 4);
  rest.remove_prefix(kHeadLength);
  const auto take = [&](size_t pLength) {
    const std::string_view part = rest.substr(0, pLength);
    rest.remove_prefix(part.size());
    return part;
  };
  TShortcutTarget target;
  if ((flags & kHasIdList) != 0) take(2 + size_t{LittleEndianAt(rest, 0, 2)});
  if ((flags & kHasPlace) != 0) {
    const std::string_view place = take(std::max<size_t>(LittleEndianAt(rest, 0, 4), 4));
    if ((flags & kIgnoresPlace) == 0) target.fLocalPath = LocalPathOf(place);
  }
  const bool isWide = (flags & kIsWide) != 0;
  for (const uint32_t kind : {kHasName, kHasRelativePath}) {
    if ((flags & kind) == 0) continue;
    const size_t length = size_t{LittleEndianAt(rest, 0, 2)} * (isWide ? 2 : 1);
    take(2);
    const std::string_view text = take(length);
    if (kind == kHasRelativePath && text.size() == length)
      target.fRelativePath = isWide ? WideText(text) : AsciiText(text);
  }
  return target;
}

}  // namespace Vantrel::Search
