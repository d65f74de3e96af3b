#pragma once

// The interfaces IByteSink, which takes bytes, and IByteSource, which gives them.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vantrel {

// Takes bytes one after the other: a file, an entry of an archive, a test's string.
class IByteSink {
 public:
  virtual ~IByteSink() = default;
  // Takes all bytes or throws. A refusal by the system is an EOSError.
  virtual void Write(std::string_view pBytes) = 0;
};

// Gives bytes one after the other.
class IByteSource {
 public:
  virtual ~IByteSource() = default;
  // Fills the buffer from its start and returns the number of bytes: at least one, and 0 only at the end. Throws as
  // IByteSink::Write does.
  virtual size_t Read(char* pBuffer, size_t pLength) = 0;
  // Skips bytes that come next and that the source knows to be zero, as in a sparse file. Returns their number; 0 when
  // it knows of none.
  virtual uint64_t SkipZeros() { return 0; }
  // Reading goes on at this place, counted from the start. False when the source can only be read in order.
  virtual bool TrySeek(uint64_t /*pPosition*/) { return false; }
};

}  // namespace Vantrel
