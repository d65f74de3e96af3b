#pragma once

// Writes an export's lines to the standard output.

#include "export/walk/HierarchicalExport.h"
#include "platform/system/Console.h"

namespace Vantrel {

// Lines to the standard output.
class TConsoleOutput : public Exporting::ILineOutput {
 public:
  bool WriteLine(std::string_view pLine) override {
    ++fLines;
    return TConsole::Write(pLine);
  }
  int64_t LineCount() const override { return fLines; }
  Exporting::TLineWidth LineWidth() const override { return Exporting::ConsoleWidth(); }
  Exporting::TLineLook LineLook() const override { return Exporting::ConsoleLook(); }

 private:
  int64_t fLines = 0;
};

}  // namespace Vantrel
