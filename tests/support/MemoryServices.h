#pragma once

// Real engines over such storages; a root that they scan.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/roots/Root.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "scan/engine/ScanEngine.h"
#include "scan/storage/PathNotFoundEnumerator.h"
#include "scan/storage/Storages.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Testing {

// Real scan engines over storages in memory, found by the path of the root.
class TMemoryServices : public TInterfaced<IScanServices> {
 public:
  std::map<std::u16string, std::shared_ptr<TMemoryStorage>> fStorages;
  ThreadPool::TWorkerThreadPool::TSettings fPoolSettings;
  std::vector<int32_t> fThreads;  // asked for, scan by scan
  // Opens files for reading; empty: none is there any more.
  std::function<std::unique_ptr<IStoredFile>()> fOpenFile;

  TRef<IStorage> FindStorage(std::u16string_view) override { return MakeRef<TStorage>(*this); }
  TRef<IStorage> GetLoadedScanStorage(char16_t pPathDelimiter) override {
    return Storages::CreateLoadedScanStorage(pPathDelimiter);
  }

  virtual TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pRootPath, uint32_t pOptions) {
    const auto storage = fStorages.find(pRootPath);
    if (storage == fStorages.end())
      return MakeRef<Enumerators::TPathNotFoundEnumerator>(pRootPath, TMemoryStorage::NotFoundCode(), pOptions);
    return storage->second->CreateEnumerator(pOptions);
  }

  TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
                                     std::function<void()> pOnAllDone) override {
    fThreads.push_back(pThreads);
    return MakeRef<Vantrel::ScanEngine::TScanEngine>(pThreads, std::move(pConfiguration), pPriority,
                                                     std::move(pOnAllDone), fPoolSettings);
  }

 private:
  // All of them together, as the kind that serves every path.
  class TStorage : public TInterfaced<IStorage> {
   public:
    explicit TStorage(TMemoryServices& pServices) : fServices(&pServices) {}
    std::u16string_view GetProtocol() const override { return u"memory:"; }
    char16_t GetPathDelimiter() const override { return NativePathDelimiter(); }
    std::u16string AbsolutePath(std::u16string_view pTyped) const override { return Vantrel::AbsolutePath(pTyped); }
    bool Exists(const std::u16string& pPath) const override { return fServices->fStorages.contains(pPath); }
    TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                   const TScanContext& pContext) const override {
      return fServices->CreateEnumerator(pPath, pContext.fOptions);
    }
    TStorageInformation GetInformation(const std::u16string&) const override { return {}; }
    std::string ErrorText(uint32_t pCode) const override { return OSErrorText(pCode); }
    std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext&) const override {
      if (fServices->fOpenFile) return fServices->fOpenFile();
      throw EOSError(TMemoryStorage::NotFoundCode(), "TMemoryServices.OpenFile", pPath);
    }

   private:
    const TRef<TMemoryServices> fServices;
  };
};

}  // namespace Vantrel::Testing
