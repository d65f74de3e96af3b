#include "export/opening/GzipSource.h"

#include <zlib.h>

#include <new>

#include "export/opening/OpenedText.h"

namespace Vantrel::Opening {

struct TGzipSource::TInflater {
  static constexpr size_t kPiece = 1 << 16;
  static constexpr int kGzipWindow = 16 + MAX_WBITS;

  TInflater() {
    if (inflateInit2(&fStream, kGzipWindow) != Z_OK) throw std::bad_alloc();
  }
  ~TInflater() { inflateEnd(&fStream); }
  TInflater(const TInflater&) = delete;
  TInflater& operator=(const TInflater&) = delete;

  z_stream fStream{};
  char fInput[kPiece];
  bool fAtEnd = false;  // of a packed part, which another one may follow
};

TGzipSource::TGzipSource(IByteSource& pPacked) : fPacked(pPacked), fInflater(std::make_unique<TInflater>()) {}

TGzipSource::~TGzipSource() = default;

size_t TGzipSource::Read(char* pBuffer, size_t pLength) {
  z_stream& stream = fInflater->fStream;
  stream.next_out = reinterpret_cast<Bytef*>(pBuffer);
  stream.avail_out = static_cast<uInt>(pLength);
  while (stream.avail_out == pLength) {
    if (stream.avail_in == 0) {
      stream.next_in = reinterpret_cast<Bytef*>(fInflater->fInput);
      stream.avail_in = static_cast<uInt>(fPacked.Read(fInflater->fInput, TInflater::kPiece));
      if (stream.avail_in == 0 && fInflater->fAtEnd) return 0;
      if (stream.avail_in == 0) throw EFileError("The packed file ends too early");
    }
    if (fInflater->fAtEnd) inflateReset(&stream);
    const int result = inflate(&stream, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
      throw EFileError("The packed file is damaged");
    fInflater->fAtEnd = result == Z_STREAM_END;
  }
  return pLength - stream.avail_out;
}

}  // namespace Vantrel::Opening
