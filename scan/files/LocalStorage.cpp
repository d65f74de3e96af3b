#include "scan/files/LocalStorage.h"

#include <algorithm>

#include "platform/files/DeletedFiles.h"
#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "scan/files/DiskOrder.h"
#include "scan/files/LocalFile.h"
#include "scan/storage/EnumeratorFactory.h"
#include "scan/storage/FileSystemEnumerator.h"

namespace Vantrel::Storages {

namespace {

class TLocalStorage : public TInterfaced<IStorage> {
 public:
  std::u16string_view GetProtocol() const override { return Enumerators::TBaseFileSystemEnumerator::kProtocol; }
  char16_t GetPathDelimiter() const override { return NativePathDelimiter(); }

  std::u16string AbsolutePath(std::u16string_view pTyped) const override {
    return Vantrel::AbsolutePath(Enumerators::PathOfFileUrl(pTyped, NativePathDelimiter()));
  }

  bool Exists(const std::u16string& pPath) const override { return !ResolvedPath(pPath).empty(); }

  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                 const TScanContext& pContext) const override {
    return Enumerators::THierarchicalEnumeratorFactory::CreateForPath(pPath, pContext.fOptions);
  }

  TStorageInformation GetInformation(const std::u16string& pPath) const override {
    TVolumeInformation volume;
    if (!GetVolumeInformationOfPath(pPath, volume)) return {};
    const int64_t reserved = std::max<int64_t>(0, volume.fTotalBytes - volume.fUsedBytes - volume.fFreeBytes);
    // Asks every process, so only where the answer is shown.
    const bool isWhole = SamePath(pPath, volume.fMountPoint, NativePathDelimiter());
    return {.fMountPoint = volume.fMountPoint,
            .fLabel = volume.fLabel,
            .fFileSystem = volume.fFileSystem,
            .fBytesPerCluster = volume.fClusterSize,
            .fTotalBytes = volume.fTotalBytes,
            .fFreeBytes = volume.fFreeBytes,
            .fUsedBytes = volume.fUsedBytes,
            .fReservedBytes = reserved,
            .fDeletedBytes = isWhole ? OpenDeletedBytes(pPath) : 0};
  }

  std::string ErrorText(uint32_t pCode) const override { return OSErrorText(pCode); }

  std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext&) const override {
    return OpenLocalFile(pPath);
  }
  std::optional<TStoredFileFacts> QueryFacts(const std::u16string& pPath) const override {
    return QueryLocalFacts(pPath);
  }
  bool HasSeekPenalty(const std::u16string& pPath) const override { return LiesOnRotatingDisk(pPath); }
  std::optional<uint64_t> PlaceOnDisk(const std::u16string& pPath) const override { return PlaceOfFile(pPath); }
};

}  // namespace

TRef<IStorage> CreateLocalStorage() {
  return MakeRef<TLocalStorage>();
}

}  // namespace Vantrel::Storages
