#include "search/files/ContentMatcher.h"

#include <algorithm>
#include <cstring>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::Search {

namespace {

// Large enough that the system's calls do not matter. Small enough that a block is still in the processor's cache when
// it is searched.
constexpr size_t kBlock = size_t{1} << 18;

bool AreAllZero(const char* pBytes, size_t pLength) {
  return pLength > 0 && pBytes[0] == 0 && std::memcmp(pBytes, pBytes + 1, pLength - 1) == 0;
}

bool EndsLine(char pByte) {
  return pByte == '\n' || pByte == '\0';
}

// In a longer line, an expression may need much time without reaching its limits; see RegularExpression.cpp.
constexpr size_t kLongLine = 1000;

bool HasLongLine(std::u16string_view pText) {
  while (pText.size() > kLongLine) {
    const size_t end = pText.substr(0, kLongLine + 1).rfind(u'\n');
    if (end == std::u16string_view::npos) return true;
    pText.remove_prefix(end + 1);
  }
  return false;
}

}  // namespace

TContentMatcher::TContentMatcher(const TContentSearch& pSearch) {
  if (pSearch.fText.empty()) throw EInvalidArgumentValue("There is no text to look for in files");
  size_t longest = kLongestLine;
  if (!pSearch.fIsRegEx) {
    fText.emplace(pSearch.fText, pSearch.fCaseSensitive);
    longest = std::max(longest, fText->LongestMatch());
  } else {
    fExpression.emplace(pSearch.fText, true, PatternMatching::TExpressionUse::euLines);
    if (!fExpression->ErrorText().empty()) throw EInvalidArgumentValue(fExpression->ErrorText());
    fFacts = FactsOfExpression(pSearch.fText);
    // A single letter stands in most lines, so looking for it first gains nothing.
    if (fFacts.fText.size() > 1) fHeldText.emplace(fFacts.fText, TTextEncoding::teUtf8, fFacts.fCaseSensitive);
  }
  fBuffer.resize(longest + kBlock);
}

bool TContentMatcher::IsFoundIn(IByteSource& pSource, const std::function<bool()>& pIsStopped) {
  return fExpression ? FindExpression(pSource, pIsStopped) : FindText(pSource, pIsStopped);
}

// The last bytes of a block are kept in front of the next one, so that a match across both is found.
bool TContentMatcher::FindText(IByteSource& pSource, const std::function<bool()>& pIsStopped) {
  size_t kept = 0;
  while (!pIsStopped()) {
    const size_t read = pSource.Read(fBuffer.data() + kept, kBlock);
    if (read == 0) return false;
    const std::string_view bytes(fBuffer.data(), kept + read);
    if (fText->IsIn(bytes)) return true;
    if (read == kBlock && AreAllZero(fBuffer.data() + kept, read)) pSource.SkipZeros();
    kept = std::min(bytes.size(), fText->LongestMatch() - 1);
    std::memmove(fBuffer.data(), bytes.data() + bytes.size() - kept, kept);
  }
  return false;
}

// --- expressions -----------------------------------------------------------------------------------------------------

// The last line of a block, which may go on, is kept in front of the next one.
bool TContentMatcher::FindExpression(IByteSource& pSource, const std::function<bool()>& pIsStopped) {
  std::optional<TTextKind> kind;
  size_t kept = 0;
  while (!pIsStopped()) {
    const size_t read = pSource.Read(fBuffer.data() + kept, kBlock);
    const std::string_view bytes(fBuffer.data(), kept + read);
    if (!kind) kind = KindOf(bytes);
    if (read == 0) return !bytes.empty() && IsExpressionIn(bytes, *kind);
    if (bytes.size() == kBlock && AreAllZero(bytes.data(), bytes.size())) {
      // Zeros are lines without text.
      pSource.SkipZeros();
      kept = 0;
      if (IsExpressionIn(bytes.substr(0, 2), *kind)) return true;
      continue;
    }
    size_t end = EndOfLines(bytes, *kind);
    if (end == 0 && bytes.size() >= kLongestLine) end = bytes.size() & ~size_t{1};
    if (end > 0 && IsExpressionIn(bytes.substr(0, end), *kind)) return true;
    kept = bytes.size() - end;
    std::memmove(fBuffer.data(), bytes.data() + end, kept);
  }
  return false;
}

// Text in UTF-16 without a mark is recognised by the zeros of its blanks, digits and Latin letters.
TContentMatcher::TTextKind TContentMatcher::KindOf(std::string_view pStart) {
  if (pStart.starts_with("\xFF\xFE")) return TTextKind::tkUtf16LittleEndian;
  if (pStart.starts_with("\xFE\xFF")) return TTextKind::tkUtf16BigEndian;
  constexpr size_t kLookedAt = 4096;
  const size_t pairs = std::min(pStart.size(), kLookedAt) / 2;
  size_t evenZeros = 0;
  size_t oddZeros = 0;
  for (size_t i = 0; i < pairs; ++i) {
    evenZeros += pStart[2 * i] == 0;
    oddZeros += pStart[2 * i + 1] == 0;
  }
  const auto isMost = [&](size_t pZeros, size_t pOthers) { return pZeros > pairs / 2 && pOthers <= pairs / 20; };
  if (isMost(oddZeros, evenZeros)) return TTextKind::tkUtf16LittleEndian;
  if (isMost(evenZeros, oddZeros)) return TTextKind::tkUtf16BigEndian;
  return TTextKind::tkUtf8;
}

// The number of bytes up to the end of the last whole line.
size_t TContentMatcher::EndOfLines(std::string_view pBytes, TTextKind pKind) {
  if (pKind == TTextKind::tkUtf8) return pBytes.rfind('\n') + 1;
  const size_t low = pKind == TTextKind::tkUtf16LittleEndian ? 0 : 1;
  for (size_t at = pBytes.size() & ~size_t{1}; at >= 2; at -= 2)
    if (pBytes[at - 2 + low] == '\n' && pBytes[at - 1 - low] == 0) return at;
  return 0;
}

bool TContentMatcher::IsExpressionIn(std::string_view pLines, TTextKind pKind) {
  if (pKind == TTextKind::tkUtf8 && fHeldText) return IsInLinesWithNeedle(pLines);
  Decode(pLines, pKind);
  return IsInDecodedLines();
}

// Only lines with the text that each match holds are decoded and matched.
bool TContentMatcher::IsInLinesWithNeedle(std::string_view pLines) {
  const TTextNeedle& needle = *fHeldText;
  for (size_t at = needle.FindIn(pLines); at != std::string_view::npos;) {
    size_t begin = at;
    while (begin > 0 && !EndsLine(pLines[begin - 1])) --begin;
    size_t end = at;
    while (end < pLines.size() && !EndsLine(pLines[end])) ++end;
    Decode(pLines.substr(begin, end - begin), TTextKind::tkUtf8);
    if (IsInDecodedLines()) return true;
    at = needle.FindIn(pLines, end);
  }
  return false;
}

void TContentMatcher::Decode(std::string_view pBytes, TTextKind pKind) {
  fDecoded.clear();
  if (pKind == TTextKind::tkUtf8) {
    AppendFromNativeBytes(fDecoded, pBytes);
  } else {
    const size_t low = pKind == TTextKind::tkUtf16LittleEndian ? 0 : 1;
    for (size_t i = 0; i + 1 < pBytes.size(); i += 2)
      fDecoded +=
          static_cast<char16_t>(static_cast<uint8_t>(pBytes[i + low]) | static_cast<uint8_t>(pBytes[i + 1 - low]) << 8);
  }
  std::replace(fDecoded.begin(), fDecoded.end(), u'\0', u'\n');
}

bool TContentMatcher::IsInDecodedLines() {
  std::u16string_view text = fDecoded;
  if (text.starts_with(u'\uFEFF')) text.remove_prefix(1);
  if (fFacts.fStaysInLine && !HasLongLine(text))
    if (const std::optional<bool> isFound = fExpression->TryFindInLines(text)) return *isFound;
  for (bool isMore = true; isMore;) {
    const size_t end = text.find(u'\n');
    isMore = end != std::u16string_view::npos;
    std::u16string_view line = text.substr(0, end);
    if (isMore) text.remove_prefix(end + 1);
    if (line.ends_with(u'\r')) line.remove_suffix(1);
    // Behind the last line end there is no line.
    if ((isMore || !line.empty()) && fExpression->Matches(line)) return true;
  }
  return false;
}

}  // namespace Vantrel::Search
