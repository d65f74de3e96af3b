#pragma once

// An open file with buffered writing. It can also be a scratch file without a name.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/files/ByteStreams.h"

namespace Vantrel {

// An open file. Every failure is an EOSError that names the path. After a failed write every call that flushes fails
// with the same code, so no lost byte goes unnoticed. For one thread at a time.
class TFileStream final : public IByteSink, public IByteSource {
 public:
  // A descriptor, or Windows' handle.
  using THandle = intptr_t;

  // Opens a file for reading from its start. A folder is refused.
  static TFileStream OpenForReading(const std::u16string& pPath);
  // Creates a nameless file for writing and reading, in the same folder as the given path. Messages name that path. The
  // file is gone when it is closed or the process crashes.
  static TFileStream CreateScratch(const std::u16string& pBeside);

  // Closed.
  TFileStream() = default;
  // Takes over an open handle; the path is for messages.
  TFileStream(THandle pHandle, std::u16string pPath) : fHandle(pHandle), fOpen(true), fPath(std::move(pPath)) {}
  TFileStream(TFileStream&& pOther) noexcept;
  TFileStream& operator=(TFileStream&& pOther) noexcept;
  // Closes the file. Unflushed bytes are lost.
  ~TFileStream() override;

  // Both work at the position where the last Read, Write or Seek ended. Write collects small pieces.
  void Write(std::string_view pBytes) override;
  size_t Read(char* pBuffer, size_t pLength) override;
  // Both flush first. The position is from the start; a pipe has none.
  void Seek(uint64_t pPosition);
  bool TrySeek(uint64_t pPosition) override;
  uint64_t Size();
  // Whether the stream has positions. Files have them, pipes do not.
  bool CanSeek() const;

  // Hands what Write collected to the system.
  void Flush();
  // Waits until the disk has the file. Does nothing for anything but a file on a disk.
  void Sync();
  // Flushes and closes. A network file system may tell only now that there is no space.
  void Close();

 private:
  // These return the system's code, 0 for success.
  uint32_t WriteNow(const char* pBytes, size_t pLength) noexcept;
  uint32_t SyncNow() noexcept;
  uint32_t CloseNow() noexcept;
  [[noreturn]] void Fail(uint32_t pCode, std::string_view pOperation) const;

  THandle fHandle = 0;
  bool fOpen = false;
  uint32_t fWriteError = 0;
  std::u16string fPath;
  std::string fBuffer;  // written, but not handed to the system yet
};

}  // namespace Vantrel
