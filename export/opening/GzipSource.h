#pragma once

// Unpacks what gzip packed, piece by piece.

#include <memory>

#include "platform/files/ByteStreams.h"

namespace Vantrel::Opening {

// The unpacked bytes of a source in the form of gzip. EFileError for damaged data. pPacked must outlive it. One thread.
class TGzipSource final : public IByteSource {
 public:
  explicit TGzipSource(IByteSource& pPacked);
  ~TGzipSource() override;
  size_t Read(char* pBuffer, size_t pLength) override;

 private:
  struct TInflater;
  IByteSource& fPacked;
  std::unique_ptr<TInflater> fInflater;
};

}  // namespace Vantrel::Opening
