#pragma once

// Exports a tree in the JSON form of ncdu.

#include <string>

#include "export/walk/HierarchicalExport.h"
#include "platform/files/ByteStreams.h"

namespace Vantrel::Exporting {

// Writes a root so that ncdu browses it: always the whole tree with its files. docs/json.md says what of a scan the
// form holds. Several threads make the text.
class TNcduExport : public TBaseExport {
 public:
  TNcduExport(std::string pProgramName, std::string pVersion);
  TMediaType MediaType() const override { return TMediaType::mtCSV; }

  // Writes the root's tree as it is now. No scan should be running. Exceptions of the sink are passed on.
  void Export(IHierarchicalRoot& pRoot, IByteSink& pSink);

 private:
  class TItems;

  const std::string fProgramName;
  const std::string fVersion;
};

}  // namespace Vantrel::Exporting
