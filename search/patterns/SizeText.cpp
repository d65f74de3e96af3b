#include "search/patterns/SizeText.h"

#include <fmt/format.h>

#include <string>

#include "platform/text/Text.h"

namespace Vantrel {

namespace {

struct TUnit {
  std::string_view fName;
  int64_t fBytes;
};

constexpr int64_t kMegabyte = int64_t{1} << 20;
constexpr TUnit kUnits[] = {
    {"B", 1},
    {"BYTE", 1},
    {"BYTES", 1},
    {"KB", int64_t{1} << 10},
    {"KIB", int64_t{1} << 10},
    {"KIBIBYTE", int64_t{1} << 10},
    {"KILOBYTE", int64_t{1} << 10},
    {"MB", kMegabyte},
    {"MIB", kMegabyte},
    {"MEBIBYTE", kMegabyte},
    {"MEGABYTE", kMegabyte},
    {"GB", int64_t{1} << 30},
    {"GIB", int64_t{1} << 30},
    {"GIBIBYTE", int64_t{1} << 30},
    {"GIGABYTE", int64_t{1} << 30},
    {"TB", int64_t{1} << 40},
    {"TIB", int64_t{1} << 40},
    {"TEBIBYTE", int64_t{1} << 40},
    {"TERABYTE", int64_t{1} << 40},
};

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kSeparators = "., ";

std::string ValidUnits() {
  std::string names;
  for (const TUnit& unit : kUnits) names.append(names.empty() ? "" : ", ").append(unit.fName);
  return names;
}

std::string_view Trimmed(std::string_view pText) {
  while (pText.starts_with(' ')) pText.remove_prefix(1);
  while (pText.ends_with(' ')) pText.remove_suffix(1);
  return pText;
}

bool IsLetter(char pCharacter) {
  return (pCharacter >= 'a' && pCharacter <= 'z') || (pCharacter >= 'A' && pCharacter <= 'Z');
}

// The digits of a number, without the separators between groups of three.
std::string DigitsOf(std::string_view pNumber) {
  if (pNumber.empty() || pNumber.find_first_not_of("0123456789., ") != std::string_view::npos ||
      pNumber.find_first_of(kDigits) == std::string_view::npos) {
    throw ESizeTextError(
        fmt::format("\"{}\" is no valid number. Valid numbers may only consist of digits (0-9) and a "
                    "thousands separator (\".\" or \",\")",
                    pNumber));
  }
  const size_t first = pNumber.find_first_of(kSeparators);
  if (first == std::string_view::npos) return std::string(pNumber);
  const char separator = pNumber[first];
  const size_t last = pNumber.find_last_of(kSeparators);
  const size_t behindLast = pNumber.size() - last - 1;
  const bool mixed = pNumber.find_first_not_of(std::string(kDigits) + separator) != std::string_view::npos;
  if (mixed || (behindLast > 0 && behindLast != 3)) {
    throw ESizeTextError(
        fmt::format("\"{}\" is a decimal value and not supported. Please use a smaller size unit and "
                    "provide the number as an integer.",
                    pNumber));
  }
  std::string digits(pNumber.substr(0, first));
  bool valid = first >= 1 && first <= 3;
  for (size_t at = first; at < pNumber.size() && valid; at += 4) {
    const std::string_view group = pNumber.substr(at + 1, 3);
    valid = pNumber[at] == separator && group.size() == 3 && group.find_first_not_of(kDigits) == std::string_view::npos;
    digits += group;
  }
  if (!valid) {
    throw ESizeTextError(
        fmt::format("The thousands marks for \"{}\" are invalid. Please assure each separated block "
                    "represents a multiple of thousands.",
                    pNumber));
  }
  return digits;
}

}  // namespace

int64_t ParseSizeText(std::u16string_view pText, bool pUnitRequired) {
  const std::string whole = ToDisplay(pText);  // messages go to terminals; a text that needs escapes is not a size
  const std::string_view text = Trimmed(whole);
  size_t end = text.size();
  while (end > 0 && IsLetter(text[end - 1])) --end;
  const std::string_view unitName = text.substr(end);
  const std::string_view number = Trimmed(text.substr(0, end));
  int64_t factor = kMegabyte;
  if (!unitName.empty()) {
    factor = 0;
    for (const TUnit& unit : kUnits)
      if (SameTextAscii(unit.fName, unitName)) factor = unit.fBytes;
    if (factor == 0)
      throw ESizeTextError(fmt::format("\"{}\" is no valid unit. Valid units are: {}", unitName, ValidUnits()));
  } else if (pUnitRequired) {
    throw ESizeTextError(fmt::format("\"{}\" is expected to contain a unit, but none was found. Valid units are: {}",
                                     text, ValidUnits()));
  }
  int64_t value = 0;
  if (!TryParseInt64(DigitsOf(number), value) || value > INT64_MAX / factor)
    throw ESizeTextError(fmt::format("\"{}\" is more than any size can be", text));
  return value * factor;
}

}  // namespace Vantrel
