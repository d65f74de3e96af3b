#include "platform/files/FileStream.h"
#include "scan/files/LocalFile.h"

namespace Vantrel::Storages {

// Listings hold no pipes, and the system keeps access dates by its own settings.
std::unique_ptr<IByteSource> OpenLocalFile(const std::u16string& pPath) {
  return std::make_unique<TFileStream>(TFileStream::OpenForReading(pPath));
}

}  // namespace Vantrel::Storages
