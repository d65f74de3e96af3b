#include "search/patterns/PatternFile.h"

#include <fmt/format.h>

#include "platform/files/FileContents.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternList.h"
#include "search/patterns/PatternText.h"

namespace Vantrel::PatternMatching {

namespace {

constexpr size_t kLargestFile = 64 << 20;

// The beginning of a pattern, for messages. A pattern of a megabyte would hide what is wrong with it.
std::string QuotedBeginning(std::u16string_view pText) {
  constexpr size_t kShown = 200;
  return pText.size() <= kShown ? ToQuotedDisplay(pText) : ToQuotedDisplay(pText.substr(0, kShown)) + "…";
}

std::u16string FromUtf16(std::string_view pBytes, bool pBigEndian) {
  std::u16string text;
  for (size_t i = 0; i + 1 < pBytes.size(); i += 2) {
    const auto first = static_cast<uint8_t>(pBytes[i]);
    const auto second = static_cast<uint8_t>(pBytes[i + 1]);
    text += static_cast<char16_t>(pBigEndian ? first << 8 | second : second << 8 | first);
  }
  return text;
}

// False when the bytes are not text.
bool DecodeText(std::string_view pBytes, std::u16string& pText) {
  if (pBytes.starts_with("\xFF\xFE") || pBytes.starts_with("\xFE\xFF")) {
    if (pBytes.size() % 2 != 0) return false;
    pText = FromUtf16(pBytes.substr(2), pBytes.front() == '\xFE');
  } else {
    if (pBytes.starts_with("\xEF\xBB\xBF")) pBytes.remove_prefix(3);
    pText = FromUtf8(pBytes);
    if (ToUtf8(pText) != pBytes) return false;  // some byte did not decode
  }
  return pText.find(u'\0') == std::u16string::npos;
}

}  // namespace

TRef<IPattern> CreateCheckedPattern(std::u16string_view pText, TPatternType pDefaultType) {
  TRef<IPattern> pattern;
  try {
    pattern = ParsePattern(pText, pDefaultType, NativePathDelimiter());
  } catch (const EPatternError& error) {
    throw EPatternError(QuotedBeginning(pText) + ": " + error.what());
  }
  const std::u16string problem = pattern->GetErrorText();
  if (!problem.empty()) throw EPatternError(QuotedBeginning(pText) + ": " + ToUtf8(problem));
  return pattern;
}

TRef<IPatterns> CreateFromFile(const std::u16string& pPath, TPatternType pDefaultType,
                               TRef<IPattern> (*pCreate)(std::u16string_view, TPatternType)) {
  std::u16string text;
  try {
    if (!DecodeText(ReadFileContents(pPath, kLargestFile), text))
      throw EPatternError(ToQuotedDisplay(pPath) + " is no text file (UTF-8, or UTF-16 with a byte-order mark)");
  } catch (const EOSError& error) {
    throw EPatternError(ToQuotedDisplay(pPath) + ": " + OSErrorText(error.Code()));
  }
  auto patterns = MakeRef<TPatternList>(NativePathDelimiter());
  int number = 0;
  for (std::u16string_view rest = text; !rest.empty();) {
    ++number;
    const size_t end = std::min(rest.find(u'\n'), rest.size());
    std::u16string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (line.ends_with(u'\r')) line.remove_suffix(1);
    if (line.find_first_not_of(u" \t") == std::u16string_view::npos) continue;
    try {
      patterns->Add(pCreate(line, pDefaultType));
    } catch (const EPatternError& error) {
      throw EPatternError(fmt::format("{}, line {}: {}", ToQuotedDisplay(pPath), number, error.what()));
    }
  }
  return patterns;
}

}  // namespace Vantrel::PatternMatching
