#include "platform/volumes/VolumeReader.h"

namespace Vantrel {

size_t ReadVolume(IVolumeReader& pReader, int64_t pPosition, std::span<std::byte> pBuffer) {
  pReader.Start(0, pPosition, pBuffer);
  return pReader.Wait(0);
}

}  // namespace Vantrel
