#include "export/opening/OpenedText.h"

#include <fmt/format.h>

namespace Vantrel::Opening {

bool TLines::ReadPiece() {
  constexpr size_t kPiece = 1 << 16;
  if (fProgress && !fProgress(fBytesRead)) {
    fCancelled = true;
    return false;
  }
  fBytes.erase(0, fBegin);
  fBegin = 0;
  const size_t kept = fBytes.size();
  if (kept > kLongestLine) {
    ++fLine;
    Fail("The line is too long");
  }
  fBytes.resize(kept + kPiece);
  const size_t length = fSource.Read(fBytes.data() + kept, kPiece);
  fBytes.resize(kept + length);
  fBytesRead += length;
  fEnded = length == 0;
  return !fEnded;
}

bool TLines::Next(std::string_view& pLine) {
  size_t searched = 0;
  size_t end = fBytes.find('\n', fBegin);
  while (end == std::string::npos && !fEnded) {
    searched = fBytes.size() - fBegin;
    if (!ReadPiece()) break;
    end = fBytes.find('\n', fBegin + searched);
  }
  if (fCancelled || (end == std::string::npos && fBegin == fBytes.size())) return false;
  fCutOff = end == std::string::npos;
  if (fCutOff) end = fBytes.size();
  pLine = std::string_view(fBytes).substr(fBegin, end - fBegin);
  if (pLine.ends_with('\r')) pLine.remove_suffix(1);
  fBegin = fCutOff ? end : end + 1;
  ++fLine;
  return true;
}

void TLines::Fail(const std::string& pMessage) const {
  throw EFileError(fmt::format("Line {}: {}", fLine, pMessage));
}

}  // namespace Vantrel::Opening
