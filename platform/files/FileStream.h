#pragma once

// An open file, written through a buffer; scratch files without a name.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/files/ByteStreams.h"

namespace Vantrel {

// An open file. Every failure is an EOSError that names the path; after the first one of writing, everything that
// flushes fails with the same code, so that a lost byte cannot go unnoticed. For one thread at a time.
class TFileStream final : public IByteSink, public IByteSource {
 public:
  // A descriptor, or Windows' handle.
  using THandle = intptr_t;

  // To be read from its start; a folder is refused.
  static TFileStream OpenForReading(const std::u16string& pPath);
  // A file without a name to write and read back, in the same folder as the given path, which messages name. It is gone
  // when it is closed, and on a crash.
  static TFileStream CreateScratch(const std::u16string& pBeside);

  // Closed.
  TFileStream() = default;
  // Takes over an open handle; the path is for messages.
  TFileStream(THandle pHandle, std::u16string pPath) : fHandle(pHandle), fOpen(true), fPath(std::move(pPath)) {}
  TFileStream(TFileStream&& pOther) noexcept;
  TFileStream& operator=(TFileStream&& pOther) noexcept;
  // Closes it. What was not flushed is lost.
  ~TFileStream() override;

  // At the position where the last Read, Write or Seek left off. Small pieces are collected.
  void Write(std::string_view pBytes) override;
  size_t Read(char* pBuffer, size_t pLength) override;
  // Both flush first. The position is from the start; a pipe has none.
  void Seek(uint64_t pPosition);
  uint64_t Size();
  // Whether it has positions, as files have and pipes have not.
  bool CanSeek() const;

  // Hands what Write collected to the system.
  void Flush();
  // Waits until the disk has the file. Does nothing for what is no file on a disk.
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
