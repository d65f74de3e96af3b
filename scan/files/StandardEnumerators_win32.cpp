// Registers the Windows enumerators with the factory.

#include "scan/files/NTApiEnumerator_win32.h"
#include "scan/files/Win32FindEnumerator_win32.h"
#include "scan/storage/EnumeratorFactory.h"

namespace Vantrel::Enumerators {

void RegisterStandardEnumerators() {
  constexpr std::u16string_view protocol = TBaseFileSystemEnumerator::kProtocol;
  THierarchicalEnumeratorFactory::RegisterEnumerator(
      {"TFileSystemEnumerator", protocol, TFileSystemEnumerator::CreateForPath, TFileSystemEnumerator::CreateForObject},
      false);
  THierarchicalEnumeratorFactory::RegisterEnumerator(
      {"TNTApiEnumerator", protocol, TNTApiEnumerator::CreateForPath, TNTApiEnumerator::CreateForObject}, true);
}

}  // namespace Vantrel::Enumerators
