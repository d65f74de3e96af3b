#include "search/patterns/TypedPattern.h"

#include <algorithm>
#include <optional>
#include <string>

#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFile.h"
#include "search/patterns/PatternText.h"
#include "search/patterns/WildcardMatcher.h"

namespace Vantrel::PatternMatching {

namespace {

bool IsDelimiter(char16_t pUnit) {
  return pUnit == u'/' || pUnit == NativePathDelimiter();
}

bool IsPath(std::u16string_view pText) {
  return std::any_of(pText.begin(), pText.end(), IsDelimiter);
}

// Whether the text begins like "./x" or "../x".
bool BeginsAtCurrentFolder(std::u16string_view pText) {
  const size_t dots = pText.starts_with(u"..") ? 2 : pText.starts_with(u'.') ? 1 : 0;
  return dots > 0 && dots < pText.size() && IsDelimiter(pText[dots]);
}

bool IsExpression(std::u16string_view pBody) {
  return pBody.size() > 1 && pBody.starts_with(u'/') && (pBody.ends_with(u'/') || pBody.ends_with(u"/i"));
}

// The masks of a path and of everything beneath it.
std::u16string MasksOf(std::u16string_view pPath) {
  const char16_t delimiter = NativePathDelimiter();
  std::u16string path(pPath);
  if (IsRootedPath(path, delimiter) || BeginsAtCurrentFolder(path)) {
    path = AbsolutePath(path);
  } else {
    std::replace_if(path.begin(), path.end(), IsDelimiter, delimiter);
    path = std::u16string(u"*") + delimiter + std::u16string(WithoutTrailingDelimiter(path, delimiter));
  }
  return path + u';' + JoinPath(path, u"*", delimiter);
}

// The masks for a typed text. None when it is not a path, or says itself how it is matched.
std::optional<std::u16string> MasksOfPaths(std::u16string_view pBody) {
  if (pBody.size() < 2 || pBody.starts_with(u'"') || !IsPath(pBody)) return std::nullopt;
  // "/tmp/" is also an expression. If such a folder exists, the text means the folder.
  if (IsExpression(pBody) && !FolderExists(std::u16string(pBody))) return std::nullopt;
  const bool hasMasks = HasWildcards(pBody);
  bool hasPath = false;
  std::u16string masks;
  while (!pBody.empty()) {
    const size_t end = std::min(pBody.find(u';'), pBody.size());
    const std::u16string part(pBody.substr(0, end));
    pBody.remove_prefix(std::min(end + 1, pBody.size()));
    if (part.empty()) continue;
    if (!masks.empty()) masks += u';';
    if (IsPath(part) && !HasWildcards(part)) {
      hasPath = true;
      masks += MasksOf(part);
    } else {
      masks += hasMasks ? part : u"*" + part + u"*";
    }
  }
  if (!hasPath) return std::nullopt;
  return masks;
}

}  // namespace

TRef<IPattern> CreateTypedPattern(std::u16string_view pText, TPatternType pDefaultType) {
  std::u16string_view body = pText;
  while (!body.empty() && body.front() <= u' ') body.remove_prefix(1);
  while (!body.empty() && body.back() <= u' ') body.remove_suffix(1);
  const std::u16string_view whole = body;
  TakePrefix(body, u"<||");
  if (!TakePrefix(body, u"(+)")) TakePrefix(body, u"(-)");
  const std::u16string_view prefixes = whole.substr(0, whole.size() - body.size());
  constexpr std::u16string_view kFullPath = u"(FullPath)";
  const bool isNamed = TakePrefix(body, kFullPath);
  const std::optional<std::u16string> masks = body.starts_with(u'(') && !isNamed ? std::nullopt : MasksOfPaths(body);
  if (!masks) return CreateCheckedPattern(pText, pDefaultType);
  return CreateCheckedPattern(std::u16string(prefixes).append(kFullPath).append(*masks), pDefaultType);
}

}  // namespace Vantrel::PatternMatching
