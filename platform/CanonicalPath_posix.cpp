#include "platform/CanonicalPath.h"
#include "platform/Paths.h"

namespace Kiv {

std::u16string CanonicalPathOfExisting(const std::u16string& pPath) {
  return ResolvedPath(pPath);
}

}  // namespace Kiv
