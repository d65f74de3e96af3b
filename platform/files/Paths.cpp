#include "platform/files/Paths.h"

#include <algorithm>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

constexpr auto kNone = std::u16string_view::npos;

bool IsDelimiter(char16_t pChar, char16_t pDelimiter) {
  return pChar == pDelimiter || (pDelimiter == u'\\' && pChar == u'/');
}

bool IsDriveLetter(char16_t pChar) {
  return (pChar >= u'A' && pChar <= u'Z') || (pChar >= u'a' && pChar <= u'z');
}

size_t FindDelimiter(std::u16string_view pPath, size_t pFrom, char16_t pDelimiter) {
  for (size_t at = pFrom; at < pPath.size(); ++at)
    if (IsDelimiter(pPath[at], pDelimiter)) return at;
  return kNone;
}

// The length of pParts parts from pFrom on, including the delimiter behind the last one if present.
size_t LengthOfParts(std::u16string_view pPath, size_t pFrom, int pParts) {
  size_t at = pFrom;
  for (; pParts > 0; --pParts) {
    at = FindDelimiter(pPath, at, u'\\');
    if (at == kNone) return pPath.size();
    ++at;
  }
  return at;
}

size_t WindowsRootLength(std::u16string_view pPath) {
  auto delimiterAt = [&](size_t pAt) { return pAt < pPath.size() && IsDelimiter(pPath[pAt], u'\\'); };
  if (delimiterAt(0) && delimiterAt(1)) {
    const bool prefixed = pPath.size() >= 4 && (pPath[2] == u'?' || pPath[2] == u'.') && delimiterAt(3);
    if (!prefixed) return LengthOfParts(pPath, 2, 2);  // a server and its share
    const bool unc = pPath.size() >= 8 && SameTextAscii(pPath.substr(4, 3), u"UNC") && delimiterAt(7);
    if (unc) return LengthOfParts(pPath, 8, 2);
    // "\\?\GLOBALROOT\Device\HarddiskVolumeShadowCopy1\": without the last delimiter it names the device.
    const bool device = delimiterAt(14) && SameTextAscii(pPath.substr(4, 10), u"GLOBALROOT");
    return LengthOfParts(pPath, 4, device ? 3 : 1);
  }
  if (delimiterAt(0)) return 1;
  if (pPath.size() >= 2 && IsDriveLetter(pPath[0]) && pPath[1] == u':') return delimiterAt(2) ? 3 : 2;
  return 0;
}

// The length of the part that names the path's root. It is never cut off.
size_t RootLength(std::u16string_view pPath, char16_t pDelimiter) {
  if (pDelimiter == u'\\') return WindowsRootLength(pPath);
  return !pPath.empty() && pPath[0] == pDelimiter ? 1 : 0;
}

bool SamePart(std::u16string_view pA, std::u16string_view pB, char16_t pDelimiter) {
  if (pDelimiter != u'\\') return pA == pB;
  return pA.size() == pB.size() && std::equal(pA.begin(), pA.end(), pB.begin(), [](char16_t pX, char16_t pY) {
           return pX == pY || UpcaseUnit(pX) == UpcaseUnit(pY);
         });
}

// Removes the next part and the delimiters before it from the front. False at the end.
bool NextPart(std::u16string_view& pPath, std::u16string_view& pPart, char16_t pDelimiter) {
  while (!pPath.empty() && IsDelimiter(pPath[0], pDelimiter)) pPath.remove_prefix(1);
  if (pPath.empty()) return false;
  pPart = pPath.substr(0, FindDelimiter(pPath, 0, pDelimiter));
  pPath.remove_prefix(pPart.size());
  return true;
}

// One and two leading backslashes differ: "x", "\x", "\\x". Any number of slashes means the one root.
size_t LeadingDelimiters(std::u16string_view pPath, char16_t pDelimiter) {
  const size_t most = pDelimiter == u'\\' ? 2 : 1;
  size_t count = 0;
  while (count < most && count < pPath.size() && IsDelimiter(pPath[count], pDelimiter)) ++count;
  return count;
}

enum class TRelation { reApart, reSame, reInside };

TRelation Compare(std::u16string_view pPath, std::u16string_view pFolder, char16_t pDelimiter) {
  if (pFolder.empty() || pPath.empty())
    return pFolder.empty() && pPath.empty() ? TRelation::reSame : TRelation::reApart;
  if (LeadingDelimiters(pPath, pDelimiter) != LeadingDelimiters(pFolder, pDelimiter)) return TRelation::reApart;
  std::u16string_view ofPath;
  std::u16string_view ofFolder;
  while (NextPart(pFolder, ofFolder, pDelimiter))
    if (!NextPart(pPath, ofPath, pDelimiter) || !SamePart(ofPath, ofFolder, pDelimiter)) return TRelation::reApart;
  return NextPart(pPath, ofPath, pDelimiter) ? TRelation::reInside : TRelation::reSame;
}

// Where the last part begins, in a path without trailing delimiters; never inside the root.
size_t LastPart(std::u16string_view pPath, char16_t pDelimiter) {
  size_t at = pPath.size();
  const size_t root = RootLength(pPath, pDelimiter);
  while (at > root && !IsDelimiter(pPath[at - 1], pDelimiter)) --at;
  return at;
}

}  // namespace

std::u16string JoinPath(std::u16string_view pFolder, std::u16string_view pName, char16_t pDelimiter) {
  std::u16string result;
  result.reserve(pFolder.size() + 1 + pName.size());
  result = pFolder;
  if (!pFolder.empty() && !IsDelimiter(pFolder.back(), pDelimiter)) result += pDelimiter;
  return result += pName;
}

std::u16string_view WithoutTrailingDelimiter(std::u16string_view pPath, char16_t pDelimiter) {
  const size_t root = RootLength(pPath, pDelimiter);
  while (pPath.size() > root && IsDelimiter(pPath.back(), pDelimiter)) pPath.remove_suffix(1);
  return pPath;
}

std::u16string_view FileNameOfPath(std::u16string_view pPath, char16_t pDelimiter) {
  pPath = WithoutTrailingDelimiter(pPath, pDelimiter);
  const size_t name = LastPart(pPath, pDelimiter);
  return name == pPath.size() ? pPath : pPath.substr(name);
}

std::u16string_view FolderOfPath(std::u16string_view pPath, char16_t pDelimiter) {
  pPath = WithoutTrailingDelimiter(pPath, pDelimiter);
  const size_t name = LastPart(pPath, pDelimiter);
  if (name == pPath.size()) return {};
  return WithoutTrailingDelimiter(pPath.substr(0, name), pDelimiter);
}

bool HasExtension(std::u16string_view pPath, std::u16string_view pExtension) {
  return pPath.size() >= pExtension.size() && SameTextAscii(pPath.substr(pPath.size() - pExtension.size()), pExtension);
}

bool IsRootedPath(std::u16string_view pPath, char16_t pDelimiter) {
  const size_t root = RootLength(pPath, pDelimiter);
  return pDelimiter == u'\\' ? root >= 3 : root == 1;
}

bool SamePath(std::u16string_view pA, std::u16string_view pB, char16_t pDelimiter) {
  return Compare(pA, pB, pDelimiter) == TRelation::reSame;
}

bool IsSameOrInside(std::u16string_view pPath, std::u16string_view pFolder, char16_t pDelimiter) {
  return Compare(pPath, pFolder, pDelimiter) != TRelation::reApart;
}

}  // namespace Vantrel
