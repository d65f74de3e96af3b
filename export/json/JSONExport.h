#pragma once

// Exports a tree as JSON, one row for each folder and file.

#include <string>
#include <vector>

#include "export/json/JSONText.h"
#include "export/walk/HierarchicalExport.h"

namespace Vantrel::Exporting {

// Writes a root as JSON with the settings of CSV: levels, elements, columns and order. Sizes are bytes in any case.
// docs/json.md describes the format. Several threads make the text.
class TJSONExport : public TBaseExport {
 public:
  TJSONExport(const TMediaSettings& pSettings, JSON::TLayout pLayout) : TBaseExport(pSettings), fLayout(pLayout) {}
  TMediaType MediaType() const override { return TMediaType::mtCSV; }

  // Writes the root's tree as it is now. No scan should be running. Exceptions of the sink are passed on. Only the
  // calling thread uses the sink.
  void Export(IHierarchicalRoot& pRoot, IByteSink& pSink);

 private:
  class TRows;

  void ChooseColumns(const IHierarchicalRoot& pRoot);
  std::string Head(const IHierarchicalRoot& pRoot, const IFolderData& pTop) const;
  bool IsWhole(const IFolderData& pTop) const;

  const JSON::TLayout fLayout;
  // The next values are the same for all rows of a root.
  char16_t fDelimiter = 0;
  std::string_view fRowBegin;
  std::vector<std::string> fKeys;  // of the columns
};

}  // namespace Vantrel::Exporting
