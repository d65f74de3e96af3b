#include "scan/engine/ScanServices.h"

#include "scan/engine/ScanEngine.h"
#include "scan/storage/EnumeratorFactory.h"

namespace Vantrel::ScanEngine {

namespace {

class TScanServices : public TInterfaced<IScanServices> {
 public:
  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pRootPath, uint32_t pOptions) override {
    return Enumerators::THierarchicalEnumeratorFactory::CreateForPath(pRootPath, pOptions);
  }

  TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
                                     std::function<void()> pOnAllDone) override {
    return MakeRef<TScanEngine>(pThreads, std::move(pConfiguration), pPriority, std::move(pOnAllDone));
  }
};

}  // namespace

TRef<IScanServices> CreateScanServices() {
  return MakeRef<TScanServices>();
}

}  // namespace Vantrel::ScanEngine
