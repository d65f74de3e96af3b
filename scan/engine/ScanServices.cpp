#include "scan/engine/ScanServices.h"

#include "scan/engine/ScanEngine.h"
#include "scan/files/LocalStorage.h"
#include "scan/ntfs/MountedNtfsStorage.h"
#include "scan/ntfs/NtfsStorage.h"
#include "scan/storage/Storages.h"

namespace Vantrel::ScanEngine {

namespace {

class TScanServices : public TInterfaced<IScanServices> {
 public:
  TRef<IStorage> FindStorage(std::u16string_view pPath) override { return fStorages->FindForPath(pPath); }

  TRef<IStorage> GetLoadedScanStorage(char16_t pPathDelimiter) override {
    return Storages::CreateLoadedScanStorage(pPathDelimiter);
  }

  TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
                                     std::function<void()> pOnAllDone) override {
    return MakeRef<TScanEngine>(pThreads, std::move(pConfiguration), pPriority, std::move(pOnAllDone));
  }

 private:
  const TRef<IStorages> fStorages = Storages::CreateStorages(
      {Ntfs::CreateMountedNtfsStorage(Storages::CreateLocalStorage()), Ntfs::CreateNtfsStorage()});
};

}  // namespace

TRef<IScanServices> CreateScanServices() {
  return MakeRef<TScanServices>();
}

}  // namespace Vantrel::ScanEngine
