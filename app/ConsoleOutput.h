#pragma once

#include "export/walk/HierarchicalExport.h"
#include "platform/system/Console.h"

namespace Vantrel {

// Lines to the standard output.
class TConsoleOutput : public Kiv::Hierarchical::Exporting::ILineOutput {
 public:
  bool WriteLine(std::string_view pLine) override {
    ++fLines;
    return Kiv::TConsole::Write(pLine);
  }
  int64_t LineCount() const override { return fLines; }

 private:
  int64_t fLines = 0;
};

}  // namespace Vantrel
