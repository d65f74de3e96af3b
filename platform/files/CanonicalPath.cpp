#include "platform/files/CanonicalPath.h"

#include "platform/files/Paths.h"

namespace Vantrel {

namespace {

std::u16string WithCanonicalFolders(const std::u16string& pPath) {
  const char16_t delimiter = NativePathDelimiter();
  const std::u16string absolute = AbsolutePath(pPath);
  std::u16string gone;  // the parts at the end that do not exist
  for (std::u16string path = absolute; !path.empty(); path = FolderOfPath(path, delimiter)) {
    const std::u16string existing = CanonicalPathOfExisting(path);
    if (!existing.empty()) return gone.empty() ? existing : JoinPath(existing, gone, delimiter);
    const std::u16string name(FileNameOfPath(path, delimiter));
    gone = gone.empty() ? name : JoinPath(name, gone, delimiter);
  }
  return absolute;
}

}  // namespace

std::u16string CanonicalPath(const std::u16string& pPath) {
  std::u16string path = WithCanonicalFolders(pPath);
  // Users type the root of a share with or without a trailing delimiter. The share may also be unreachable for a while.
  if (path.starts_with(u"\\\\") && path.back() == u'\\') path.pop_back();
  return path;
}

}  // namespace Vantrel
