#include "platform/files/FileContents.h"

#include "platform/files/FileStream.h"
#include "platform/system/Errors.h"

namespace Vantrel {

std::string ReadFileContents(const std::u16string& pPath, size_t pMostBytes) {
  TFileStream file = TFileStream::OpenForReading(pPath);
  std::string contents;
  char buffer[64 * 1024];
  while (const size_t length = file.Read(buffer, sizeof buffer)) {
    contents.append(buffer, length);
    if (contents.size() > pMostBytes) throw EOSError(kErrorFileTooLarge, "Reading a file", pPath);
  }
  return contents;
}

}  // namespace Vantrel
