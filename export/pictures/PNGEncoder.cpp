#include "export/pictures/PNGEncoder.h"

#include <zlib.h>

#include <array>
#include <cstdlib>
#include <string_view>

#include "platform/system/Errors.h"

namespace Vantrel::Pictures {

namespace {

constexpr size_t kChannels = 3;

void AppendNumber(std::string& pTarget, uint32_t pNumber) {
  for (const int shift : {24, 16, 8, 0}) pTarget += static_cast<char>(pNumber >> shift & 0xFF);
}

void AppendChunk(std::string& pTarget, std::string_view pType, std::string_view pData) {
  AppendNumber(pTarget, static_cast<uint32_t>(pData.size()));
  const size_t begin = pTarget.size();
  pTarget.append(pType).append(pData);
  const auto* bytes = reinterpret_cast<const Bytef*>(pTarget.data() + begin);
  AppendNumber(pTarget, static_cast<uint32_t>(crc32_z(0, bytes, pTarget.size() - begin)));
}

std::string RowOf(std::span<const uint32_t> pPixels) {
  std::string row;
  row.reserve(pPixels.size() * kChannels);
  for (const uint32_t pixel : pPixels)
    for (const int shift : {16, 8, 0}) row += static_cast<char>(pixel >> shift & 0xFF);
  return row;
}

// The differences of a row's bytes from those before them, or from those above. Shaded surfaces change slowly, so the
// differences are small and compress well.
std::string Filtered(std::string_view pRow, std::string_view pAbove, char pFilter) {
  std::string filtered(1, pFilter);
  for (size_t i = 0; i < pRow.size(); ++i) {
    const char before = pFilter == 1 ? (i < kChannels ? '\0' : pRow[i - kChannels]) : pAbove[i];
    filtered += static_cast<char>(pRow[i] - before);
  }
  return filtered;
}

int64_t WeightOf(std::string_view pBytes) {
  int64_t weight = 0;
  for (const char byte : pBytes) weight += std::abs(static_cast<int>(static_cast<signed char>(byte)));
  return weight;
}

class TDeflater {
 public:
  TDeflater() {
    if (deflateInit(&fStream, Z_DEFAULT_COMPRESSION) != Z_OK) throw std::bad_alloc();
  }
  ~TDeflater() { deflateEnd(&fStream); }
  TDeflater(const TDeflater&) = delete;
  TDeflater& operator=(const TDeflater&) = delete;

  void Write(std::string_view pBytes, int pFlush, std::string& pTarget) {
    fStream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pBytes.data()));
    fStream.avail_in = static_cast<uInt>(pBytes.size());
    do {
      fStream.next_out = reinterpret_cast<Bytef*>(fBuffer.data());
      fStream.avail_out = static_cast<uInt>(fBuffer.size());
      deflate(&fStream, pFlush);
      pTarget.append(fBuffer.data(), fBuffer.size() - fStream.avail_out);
    } while (fStream.avail_out == 0);
  }

 private:
  z_stream fStream{};
  std::array<char, 65536> fBuffer{};
};

}  // namespace

std::string EncodePNG(int pWidth, int pHeight, std::span<const uint32_t> pPixels) {
  if (pWidth <= 0 || pHeight <= 0 || pPixels.size() != static_cast<size_t>(pWidth) * static_cast<size_t>(pHeight))
    throw EInvalidArgumentValue("EncodePNG: the pixels do not fill the size");
  const auto width = static_cast<size_t>(pWidth);
  std::string header;
  AppendNumber(header, static_cast<uint32_t>(pWidth));
  AppendNumber(header, static_cast<uint32_t>(pHeight));
  header.append("\x08\x02\x00\x00\x00", 5);  // bits per channel, RGB, and the only methods that exist
  std::string packed;
  TDeflater deflater;
  std::string above(width * kChannels, '\0');
  for (size_t y = 0; y < static_cast<size_t>(pHeight); ++y) {
    std::string row = RowOf(pPixels.subspan(y * width, width));
    const std::string fromLeft = Filtered(row, above, 1);
    const std::string fromAbove = Filtered(row, above, 2);
    deflater.Write(WeightOf(fromLeft) <= WeightOf(fromAbove) ? fromLeft : fromAbove, Z_NO_FLUSH, packed);
    above = std::move(row);
  }
  deflater.Write({}, Z_FINISH, packed);
  std::string file("\x89PNG\r\n\x1A\n", 8);
  AppendChunk(file, "IHDR", header);
  AppendChunk(file, "IDAT", packed);
  AppendChunk(file, "IEND", {});
  return file;
}

}  // namespace Vantrel::Pictures
