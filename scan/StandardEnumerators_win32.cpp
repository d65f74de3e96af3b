#include "scan/EnumeratorFactory.h"
#include "scan/NTApiEnumerator_win32.h"
#include "scan/Win32FindEnumerator_win32.h"

namespace Kiv::Enumerators {

void RegisterStandardEnumerators() {
  constexpr std::u16string_view protocol = TBaseFileSystemEnumerator::kProtocol;
  THierarchicalEnumeratorFactory::RegisterEnumerator(
      {"TFileSystemEnumerator", protocol, TFileSystemEnumerator::CreateForPath, TFileSystemEnumerator::CreateForObject},
      false);
  THierarchicalEnumeratorFactory::RegisterEnumerator(
      {"TNTApiEnumerator", protocol, TNTApiEnumerator::CreateForPath, TNTApiEnumerator::CreateForObject}, true);
}

}  // namespace Kiv::Enumerators
