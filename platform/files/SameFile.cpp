#include "platform/files/SameFile.h"

#include "platform/files/Paths.h"

namespace Vantrel {

bool IsSamePlace(const TFilePlace& pA, const TFilePlace& pB) {
  return (pA.fNumbers && pA.fNumbers == pB.fNumbers) || SamePath(pA.fPath, pB.fPath, NativePathDelimiter());
}

}  // namespace Vantrel
