#pragma once

// Reads a file at any place, within a limit.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/files/ByteStreams.h"

namespace Vantrel::Search {

// The bytes of one file. Of a hostile file at most kMostRead bytes are read; behind them, and when the search ends, the
// file seems to end. One thread.
class TFileBytes {
 public:
  static constexpr uint64_t kMostRead = uint64_t{64} << 20;

  // The source stands at its start. pIsStopped is asked before each read.
  TFileBytes(IByteSource& pSource, uint64_t pSize, std::function<bool()> pIsStopped)
      : fSource(pSource), fSize(pSize), fIsStopped(std::move(pIsStopped)) {}

  uint64_t Size() const { return fSize; }
  // Copies the bytes at the place. Fewer than asked for at the end. What the source throws passes through.
  size_t ReadAt(uint64_t pPosition, char* pBuffer, size_t pLength);
  // The same as a string.
  std::string TextAt(uint64_t pPosition, size_t pLength);

 private:
  bool Fill(uint64_t pPosition);

  IByteSource& fSource;
  const uint64_t fSize;
  const std::function<bool()> fIsStopped;
  uint64_t fPlace = 0;  // where the source stands
  uint64_t fRead = 0;
  std::vector<char> fBlock;  // the bytes that were read last
  uint64_t fBlockPlace = 0;
};

}  // namespace Vantrel::Search
