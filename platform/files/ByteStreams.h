#pragma once

// Who takes bytes, and who gives them.

#include <cstddef>
#include <string_view>

namespace Vantrel {

// Takes bytes one after the other: a file, an entry of an archive, a test's string.
class IByteSink {
 public:
  virtual ~IByteSink() = default;
  // Takes all of them or throws, EOSError when it is the system that refuses.
  virtual void Write(std::string_view pBytes) = 0;
};

// Gives bytes one after the other.
class IByteSource {
 public:
  virtual ~IByteSource() = default;
  // Fills the buffer from its start and returns how many bytes there were: at least one, and 0 at the end only. Throws
  // as IByteSink::Write does.
  virtual size_t Read(char* pBuffer, size_t pLength) = 0;
};

}  // namespace Vantrel
