#include "platform/files/CanonicalPath.h"
#include "platform/files/Paths.h"

namespace Vantrel {

std::u16string CanonicalPathOfExisting(const std::u16string& pPath) {
  return ResolvedPath(pPath);
}

}  // namespace Vantrel
