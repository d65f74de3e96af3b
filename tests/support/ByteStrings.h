#pragma once

// Bytes taken and given in memory, with staged failures.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

namespace Vantrel::Testing {

// A sink in memory whose n-th write fails.
class TStringSink final : public Vantrel::IByteSink {
 public:
  std::string fBytes;
  int fWrites = 0;
  int fFailingWrite = -1;  // counted from 0

  void Write(std::string_view pBytes) override {
    if (fWrites++ == fFailingWrite) throw Vantrel::EOSError(28, "Writing a file", u"in memory");
    fBytes += pBytes;
  }
};

// A source in memory that gives a few bytes at a time, and fails at its end when told to.
class TStringSource final : public Vantrel::IByteSource {
 public:
  explicit TStringSource(std::string_view pBytes, size_t pPiece = 1 << 20) : fBytes(pBytes), fPiece(pPiece) {}
  bool fFails = false;

  size_t Read(char* pBuffer, size_t pLength) override {
    const size_t length = std::min({pLength, fPiece, fBytes.size()});
    if (length == 0 && fFails) throw Vantrel::EOSError(5, "Reading a file", u"in memory");
    if (length > 0) std::memcpy(pBuffer, fBytes.data(), length);
    fBytes.remove_prefix(length);
    return length;
  }

 private:
  std::string_view fBytes;
  size_t fPiece;
};

}  // namespace Vantrel::Testing
