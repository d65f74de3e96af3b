#pragma once

// What the readers of saved scans have in common: errors with their place, progress, and lines.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

namespace Vantrel::Opening {

// Reports what is wrong with a file that is opened as a scan, and where.
class EFileError : public EException {
 public:
  using EException::EException;
};

// Called before each piece of the file, with the number of bytes read. A result of false cancels.
using TFileProgress = std::function<bool(uint64_t pBytesRead)>;

// The limit for bytes or items. Two such numbers can be added, and no storage holds so much.
constexpr int64_t kMostOfAnything = INT64_MAX / 2;

// Reads a text line by line. One thread.
class TLines {
 public:
  TLines(IByteSource& pSource, const TFileProgress& pProgress) : fSource(pSource), fProgress(pProgress) {}

  // The next line without its end, "\n" or "\r\n". False at the end, and after a cancellation.
  bool Next(std::string_view& pLine);
  bool WasCancelled() const { return fCancelled; }
  // Whether the last line had no end, as in a file that was cut off.
  bool IsCutOff() const { return fCutOff; }
  // Throws an EFileError that begins with the number of the last line.
  [[noreturn]] void Fail(const std::string& pMessage) const;

 private:
  bool ReadPiece();

  static constexpr size_t kLongestLine = 1 << 20;

  IByteSource& fSource;
  const TFileProgress& fProgress;
  std::string fBytes;
  size_t fBegin = 0;  // of the next line in fBytes
  uint64_t fBytesRead = 0;
  int64_t fLine = 0;
  bool fEnded = false;
  bool fCancelled = false;
  bool fCutOff = false;
};

}  // namespace Vantrel::Opening
