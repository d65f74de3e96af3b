#include "scan/storage/FileSystemEnumerator.h"

#include <algorithm>
#include <utility>

#include "platform/text/Text.h"

namespace Vantrel::Enumerators {

std::u16string PathOfFileUrl(std::u16string_view pPath, char16_t pDelimiter) {
  constexpr std::u16string_view protocol = TBaseFileSystemEnumerator::kProtocol;
  if (!SameTextAscii(pPath.substr(0, protocol.size()), protocol)) return std::u16string(pPath);
  std::u16string path(pPath.substr(protocol.size()));
  if (pDelimiter != u'\\') {
    size_t slashes = std::min(path.find_first_not_of(pDelimiter), path.size());
    return slashes > 1 ? path.substr(slashes - 1) : path;
  }
  std::replace(path.begin(), path.end(), u'/', u'\\');
  if (path.starts_with(u"\\\\\\")) path.erase(0, 3);
  return path;
}

TBaseFileSystemEnumerator::TBaseFileSystemEnumerator(std::u16string pPath, THierarchicalEnumeratorOptions pOptions)
    : TBaseVisualHierarchicalEnumerator(pOptions),
      fPath(std::move(pPath)),
      fRootPath(std::make_shared<const std::u16string>(fPath)) {}

TBaseFileSystemEnumerator::TBaseFileSystemEnumerator(std::u16string pPath, const TBaseFileSystemEnumerator& pParent)
    : TBaseVisualHierarchicalEnumerator(pParent.fOptions),
      fPath(std::move(pPath)),
      fClusterSize(pParent.fClusterSize),
      fRootPath(pParent.fRootPath) {}

}  // namespace Vantrel::Enumerators
