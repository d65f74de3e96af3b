#pragma once

// Real engines over such storages; a root that they scan.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/roots/Root.h"
#include "scan/engine/ScanEngine.h"
#include "scan/storage/PathNotFoundEnumerator.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Testing {

// Real scan engines over storages in memory, found by the path of the root.
class TMemoryServices : public TInterfaced<IScanServices> {
 public:
  std::map<std::u16string, std::shared_ptr<TMemoryStorage>> fStorages;
  ThreadPool::TWorkerThreadPool::TSettings fPoolSettings;
  std::vector<int32_t> fThreads;  // asked for, scan by scan

  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pRootPath, uint32_t pOptions) override {
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
};

}  // namespace Vantrel::Testing
