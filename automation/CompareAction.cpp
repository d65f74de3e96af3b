#include "automation/CompareAction.h"

#include "automation/ExitCodes.h"
#include "export/XMLCompareReader.h"

namespace Kiv::PostScanActions {

void TComparePostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  Vantrel::XML::Parser::TQZXMLCompareReader::CompareWithXMLFile(fFileName, pRoot, fRoots);
}

int TComparePostScanAction::GetFailureCode() const { return Vantrel::ecPathNotFound; }

}  // namespace Kiv::PostScanActions
