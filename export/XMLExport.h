#pragma once

#include <functional>
#include <string>

#include "export/HierarchicalExport.h"
#include "export/XMLFileStream.h"
#include "model/FileStatistics.h"

namespace Kiv::Hierarchical::Exporting::XML {

// Writes a root as an XML scan file: what is known of the scan, then one element per folder, nested as the folders are.
// docs/xml-scan-file.md describes the format. The same tree gives the same bytes, but for the date of the scan.
//
// Statistics are written for folders that nothing follows beneath; those of the others are the sums of them.
class TCustomXMLExport : public TBaseExport, private IExportVisitor {
 public:
  TCustomXMLExport(const TMediaSettings& pSettings, std::string pProgramName, std::string pVersion);
  TMediaType MediaType() const override { return TMediaType::mtXML; }

  // Writes the root's tree as it is at this moment; no scan should be running. What the sink throws comes through.
  void Export(IHierarchicalRoot& pRoot, IByteSink& pSink);

  // The element of a column. EInvalidArgumentValue, argument "pMetaData", for a column that has none.
  static std::string_view TagOf(TColumn pMetaData);

 private:
  // What has gone since an earlier scan is no part of the tree.
  bool TakesIn(const IFolderData& pFolder) const override {
    return (pFolder.GetFolderState() & fsIsDummyForComparison) == 0;
  }
  bool BeginNode(const TExportRow& pRow, bool pIsComplete) override;
  bool EndNode(const TExportRow& pRow) override;

  void WriteHeader(IHierarchicalRoot& pRoot);
  void WriteFilters(const IHierarchicalRoot& pRoot);
  void WriteTopSizeListToXML(const ITopSizeList& pList);
  void WriteErrors(const IFolderData& pFolder);
  void WriteColumn(const IHierarchicalElement& pNode, TColumn pColumn);
  void WriteStatistics(const IFolderData& pFolder);
  void WriteSizeArray(std::string_view pName, const std::vector<TKeyedSizeValues>& pRecords);
  void WriteFileAges(const std::vector<TKeyedSizeValues>& pRecords);
  bool IsFullExport() const;

  const std::string fProgramName;
  const std::string fVersion;
  // While an export runs.
  XMLUtils::TXMLFileStream* fStream = nullptr;
  XMLUtils::TXMLAttributes fAttributes;
  TValueFormat fFormat;
  TDateType fFileAgesDateType = TDateType::dtNone;
  char16_t fDelimiter = 0;
  std::u16string fPath;               // of the innermost open folder: no node need ask its ancestors for it
  std::vector<size_t> fParentLengths;  // of the open folders' parents' paths
  std::vector<TScanError> fErrors;  // of the root, by folder
  TStatisticsReading fStatistics;
  std::vector<TKeyedSizeValues> fSorted;
  std::string fText;
  std::vector<std::string> fFileAgesNames;  // of the attributes, one per interval
};

// Exports to a file; one whose name ends in ".zip" becomes an archive that holds it. The file takes its place when it is
// complete; an earlier one stays untouched until then. EOSError when it cannot be written. pCheck is called now and then;
// what it throws ends the export.
void ExportXMLFile(TCustomXMLExport& pExport, IHierarchicalRoot& pRoot, const std::u16string& pPath,
                   const std::function<void()>& pCheck = {});

}  // namespace Kiv::Hierarchical::Exporting::XML
