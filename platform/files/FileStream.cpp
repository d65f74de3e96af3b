#include "platform/files/FileStream.h"

#include <utility>

#include "platform/system/Errors.h"

namespace Vantrel {

namespace {

// Large enough that the cost of the system's calls does not matter.
constexpr size_t kBufferSize = 128 * 1024;

}  // namespace

TFileStream::TFileStream(TFileStream&& pOther) noexcept {
  *this = std::move(pOther);
}

TFileStream& TFileStream::operator=(TFileStream&& pOther) noexcept {
  std::swap(fHandle, pOther.fHandle);
  std::swap(fOpen, pOther.fOpen);
  std::swap(fWriteError, pOther.fWriteError);
  fPath.swap(pOther.fPath);
  fBuffer.swap(pOther.fBuffer);
  return *this;
}

TFileStream::~TFileStream() {
  CloseNow();
}

void TFileStream::Write(std::string_view pBytes) {
  if (fBuffer.size() + pBytes.size() < kBufferSize) {
    fBuffer.reserve(kBufferSize);
    fBuffer += pBytes;
    return;
  }
  Flush();
  if (pBytes.size() < kBufferSize) {
    fBuffer += pBytes;
    return;
  }
  fWriteError = WriteNow(pBytes.data(), pBytes.size());
  if (fWriteError != 0) Fail(fWriteError, "Writing a file");
}

bool TFileStream::TrySeek(uint64_t pPosition) {
  if (!CanSeek()) return false;
  Seek(pPosition);
  return true;
}

void TFileStream::Flush() {
  if (fWriteError == 0 && !fBuffer.empty()) fWriteError = WriteNow(fBuffer.data(), fBuffer.size());
  fBuffer.clear();
  if (fWriteError != 0) Fail(fWriteError, "Writing a file");
}

void TFileStream::Sync() {
  Flush();
  fWriteError = SyncNow();
  if (fWriteError != 0) Fail(fWriteError, "Writing a file to disk");
}

void TFileStream::Close() {
  Flush();
  fWriteError = CloseNow();
  if (fWriteError != 0) Fail(fWriteError, "Closing a file");
}

void TFileStream::Fail(uint32_t pCode, std::string_view pOperation) const {
  throw EOSError(pCode, pOperation, fPath);
}

}  // namespace Vantrel
