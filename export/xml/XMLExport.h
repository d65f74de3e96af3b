#pragma once

// Exports a root as an XML scan file. See `docs/xml-scan-file.md`.

#include <functional>
#include <string>

#include "export/walk/HierarchicalExport.h"
#include "export/xml/XMLFileStream.h"

namespace Vantrel::Exporting {

// Writes a root as an XML scan file. The data of the scan comes first, then one element per folder, nested like the
// folders. docs/xml-scan-file.md describes the format. The same tree gives the same bytes, except for the date of the
// scan.
//
// Statistics are written for folders without folder elements beneath them. The statistics of other folders are the sums
// of these.
class TCustomXMLExport : public TBaseExport {
 public:
  TCustomXMLExport(const TMediaSettings& pSettings, std::string pProgramName, std::string pVersion);
  TMediaType MediaType() const override { return TMediaType::mtXML; }

  // Writes the root's tree as it is now. No scan should be running. Exceptions of the sink are passed on. Other threads
  // make parts of the text, but only the calling thread uses the sink.
  void Export(IHierarchicalRoot& pRoot, IByteSink& pSink);

  // The element of a column. EInvalidArgumentValue with the argument "pMetaData" for a column without one.
  static std::string_view TagOf(TColumn pMetaData);

 private:
  class TFolderElements;

  void PrepareFolders(IHierarchicalRoot& pRoot);
  void WriteHeader(IHierarchicalRoot& pRoot, XML::TXMLFileStream& pStream) const;
  bool IsFullExport() const;

  const std::string fProgramName;
  const std::string fVersion;
  // The next value is the same for all folders of a root.
  TValueFormat fFormat;
  char16_t fDelimiter = 0;
  std::vector<TScanError> fErrors;          // sorted by folder
  std::vector<std::string> fFileAgesNames;  // names of the attributes, one per interval
};

// Exports to a file. A name that ends in ".zip" makes an archive that holds the file. The new file replaces an earlier
// one only when complete. EOSError when it cannot be written. pCheck is called regularly; its exceptions end the
// export.
void ExportXMLFile(TCustomXMLExport& pExport, IHierarchicalRoot& pRoot, const std::u16string& pPath,
                   const std::function<void()>& pCheck = {});

}  // namespace Vantrel::Exporting
