#include "scan/storage/EnumeratorFactory.h"
#include "scan/files/UnixEnumerator_posix.h"

namespace Kiv::Enumerators {

void RegisterStandardEnumerators() {
  TEnumeratorClass folders;
  folders.fName = "TUnixEnumerator";
  folders.fProtocol = u"file:";
  folders.fCreateForPath = &TUnixEnumerator::CreateForPath;
  folders.fCreateForObject = &TUnixEnumerator::CreateForObject;
  THierarchicalEnumeratorFactory::RegisterEnumerator(folders, true);
}

}  // namespace Kiv::Enumerators
