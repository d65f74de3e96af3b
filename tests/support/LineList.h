#pragma once

// Trees, roots and outputs whose values are simply set.

#include <string>
#include <vector>

#include "export/walk/HierarchicalExport.h"

namespace Vantrel::Testing {

// Keeps the lines of an export; takes only so many before it says that the disk is full.
class TLineList : public Vantrel::Exporting::ILineOutput {
 public:
  std::vector<std::string> fLines;
  size_t fCapacity = SIZE_MAX;
  int fRefused = 0;
  Vantrel::Exporting::TLineWidth fWidth;
  Vantrel::Exporting::TLineLook fLook;

  bool WriteLine(std::string_view pLine) override {
    if (fLines.size() == fCapacity) {
      ++fRefused;
      return false;
    }
    fLines.emplace_back(pLine);
    return true;
  }
  Vantrel::Exporting::TLineWidth LineWidth() const override { return fWidth; }
  Vantrel::Exporting::TLineLook LineLook() const override { return fLook; }
  int64_t LineCount() const override { return static_cast<int64_t>(fLines.size()); }
};

}  // namespace Vantrel::Testing
