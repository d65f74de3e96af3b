#include "scan/ScanServices.h"

#include "platform/Paths.h"
#include "scan/EnumeratorFactory.h"
#include "scan/ScanEngine.h"

namespace Vantrel::ScanEngine {

using namespace Kiv;

namespace {

class TScanServices : public TInterfaced<IScanServices> {
 public:
  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath, const std::u16string& pRootPath,
                                                 uint32_t pOptions) override {
    TRef<IHierarchicalEnumerator> enumerator =
        Enumerators::THierarchicalEnumeratorFactory::CreateForPath(pRootPath, pOptions);
    // A branch is reached from the root down, so that its enumerator knows which scan it belongs to.
    const char16_t delimiter = NativePathDelimiter();
    if (!IsSameOrInside(pPath, pRootPath, delimiter)) return enumerator;
    std::u16string_view rest = std::u16string_view(pPath).substr(pRootPath.size());
    while (!rest.empty() && enumerator->GetErrorCode() == 0) {
      const size_t end = std::min(rest.find(delimiter), rest.size());
      if (end > 0) enumerator = enumerator->CreateChildEnumerator(rest.substr(0, end), kAttributeDirectory);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return enumerator;
  }

  TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
                                     std::function<void()> pOnAllDone) override {
    return MakeRef<TScanEngine>(pThreads, std::move(pConfiguration), pPriority, std::move(pOnAllDone));
  }
};

}  // namespace

TRef<IScanServices> CreateScanServices() { return MakeRef<TScanServices>(); }

}  // namespace Vantrel::ScanEngine
