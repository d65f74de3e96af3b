#pragma once

// A root as an XML scan file; `docs/xml-scan-file.md`.

#include <functional>
#include <string>

#include "export/walk/HierarchicalExport.h"
#include "export/xml/XMLFileStream.h"

namespace Vantrel::Exporting {

// Writes a root as an XML scan file: what is known of the scan, then one element per folder, nested as the folders are.
// docs/xml-scan-file.md describes the format. The same tree gives the same bytes, but for the date of the scan.
//
// Statistics are written for folders that nothing follows beneath; those of the others are the sums of them.
class TCustomXMLExport : public TBaseExport {
 public:
  TCustomXMLExport(const TMediaSettings& pSettings, std::string pProgramName, std::string pVersion);
  TMediaType MediaType() const override { return TMediaType::mtXML; }

  // Writes the root's tree as it is at this moment; no scan should be running. What the sink throws comes through.
  // Other threads make parts of the text; the sink is used by this one alone.
  void Export(IHierarchicalRoot& pRoot, IByteSink& pSink);

  // The element of a column. EInvalidArgumentValue, argument "pMetaData", for a column that has none.
  static std::string_view TagOf(TColumn pMetaData);

 private:
  class TFolderElements;

  void PrepareFolders(IHierarchicalRoot& pRoot);
  void WriteHeader(IHierarchicalRoot& pRoot, XML::TXMLFileStream& pStream) const;
  bool IsFullExport() const;

  const std::string fProgramName;
  const std::string fVersion;
  // The same for all folders of a root.
  TValueFormat fFormat;
  char16_t fDelimiter = 0;
  std::vector<TScanError> fErrors;          // by folder
  std::vector<std::string> fFileAgesNames;  // of the attributes, one per interval
};

// Exports to a file; one whose name ends in ".zip" becomes an archive that holds it. The file takes its place when it
// is complete; an earlier one stays untouched until then. EOSError when it cannot be written. pCheck is called now and
// then; what it throws ends the export.
void ExportXMLFile(TCustomXMLExport& pExport, IHierarchicalRoot& pRoot, const std::u16string& pPath,
                   const std::function<void()>& pCheck = {});

}  // namespace Vantrel::Exporting
