// Registers the Linux enumerator with the factory.

#include "scan/files/UnixEnumerator_posix.h"
#include "scan/storage/EnumeratorFactory.h"

namespace Vantrel::Enumerators {

void RegisterStandardEnumerators() {
  TEnumeratorClass folders;
  folders.fName = "TUnixEnumerator";
  folders.fProtocol = u"file:";
  folders.fCreateForPath = &TUnixEnumerator::CreateForPath;
  folders.fCreateForObject = &TUnixEnumerator::CreateForObject;
  THierarchicalEnumeratorFactory::RegisterEnumerator(folders, true);
}

}  // namespace Vantrel::Enumerators
