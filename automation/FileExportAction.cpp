#include "automation/FileExportAction.h"

#include "export/XMLExport.h"
#include "platform/Errors.h"

namespace Kiv::PostScanActions {

TFileExportPostScanAction::TFileExportPostScanAction(const TPostProcessActionHandler& pHandler, TMediaType pMedia,
                                                     std::u16string pFileName, std::string pProgramName,
                                                     std::string pVersion)
    : fHandler(pHandler),
      fMedia(pMedia),
      fFileName(std::move(pFileName)),
      fProgramName(std::move(pProgramName)),
      fVersion(std::move(pVersion)) {
  if (fMedia != TMediaType::mtXML)
    throw ENotImplemented("TFileExportPostScanAction.Create: there is no export to files of this kind");
}

void TFileExportPostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  using namespace Hierarchical::Exporting::XML;
  TCustomXMLExport xml(fHandler.MergedRecursionLevel(fMedia), fProgramName, fVersion);
  ExportXMLFile(xml, pRoot, fFileName);
}

std::u16string TFileExportPostScanAction::GetInformation() const { return u"Export to \"" + fFileName + u"\""; }

}  // namespace Kiv::PostScanActions
