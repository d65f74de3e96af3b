#include "search/metadata/FileBytes.h"

#include <algorithm>
#include <cstring>

namespace Vantrel::Search {

namespace {

// Properties stand together in a few places of a file.
constexpr size_t kBlock = size_t{32} << 10;

}  // namespace

size_t TFileBytes::ReadAt(uint64_t pPosition, char* pBuffer, size_t pLength) {
  size_t done = 0;
  while (done < pLength) {
    const uint64_t place = pPosition + done;
    if (place >= fSize) break;
    if ((place < fBlockPlace || place >= fBlockPlace + fBlock.size()) && !Fill(place)) break;
    const auto offset = static_cast<size_t>(place - fBlockPlace);
    const size_t length = std::min(pLength - done, fBlock.size() - offset);
    std::memcpy(pBuffer + done, fBlock.data() + offset, length);
    done += length;
  }
  return done;
}

std::string TFileBytes::TextAt(uint64_t pPosition, size_t pLength) {
  if (pPosition >= fSize) return {};
  std::string text(static_cast<size_t>(std::min<uint64_t>(pLength, fSize - pPosition)), '\0');
  text.resize(ReadAt(pPosition, text.data(), text.size()));
  return text;
}

// Reads the block that begins at the place. A source that cannot seek is read up to it.
bool TFileBytes::Fill(uint64_t pPosition) {
  fBlock.clear();
  if (pPosition != fPlace && fSource.TrySeek(pPosition)) fPlace = pPosition;
  if (pPosition < fPlace) return false;
  fBlock.resize(kBlock);
  for (;;) {
    if (fRead >= kMostRead || fIsStopped()) break;
    const bool isBefore = fPlace < pPosition;
    const size_t wanted = isBefore ? static_cast<size_t>(std::min<uint64_t>(kBlock, pPosition - fPlace)) : kBlock;
    const size_t read = fSource.Read(fBlock.data(), wanted);
    if (read == 0) break;
    fPlace += read;
    fRead += read;
    if (isBefore) continue;
    fBlockPlace = pPosition;
    fBlock.resize(read);
    return true;
  }
  fBlock.clear();
  return false;
}

}  // namespace Vantrel::Search
