#pragma once

// The tree as lines for programs: CSV, tab-separated text; the list of paths.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/text/DelimitedText.h"
#include "export/text/TextExport.h"
#include "platform/system/FileTime.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::Exporting {

// The tree as lines for programs: a row per folder or file, fields quoted where they need it. Rows of a million files
// are written in little more time than their bytes take, so values are read from the tree directly where that is
// possible, and several threads write.
class TDelimitedExport : public TBaseTextExport {
 protected:
  explicit TDelimitedExport(const TMediaSettings& pSettings);

  void WriteRoot(IHierarchicalRoot& pRoot) override;

 private:
  class TRows;

  void ChooseColumns();
  void WriteHeader();
  bool WriteRow(std::string_view pRow);
  // For whichever thread writes rows just now.
  std::unique_ptr<TIsoLocalFormatter> TakeDateFormatter() const;
  void GiveDateFormatter(std::unique_ptr<TIsoLocalFormatter> pFormatter) const;

  // The same for all rows of a root.
  TValueFormat fFormat;
  TDelimitedFormat fFields;
  char fDelimiter = 0;
  std::string fDecimalSeparator;
  bool fQuotesNumbers = false;  // where they need it: the separator may turn up in numbers and dates
  bool fSharesOfAllocated = false;

  mutable TCriticalSection fLock;
  // Not in use; they remember what they have asked the system for, so they serve again.
  mutable std::vector<std::unique_ptr<TIsoLocalFormatter>> fDateFormatters GUARDED_BY(fLock);
};

// Fields between tabs; takes the settings of text.
class TTextExport : public TDelimitedExport {
 public:
  explicit TTextExport(const TMediaSettings& pText) : TDelimitedExport(TabSettings(pText)) {}
};

// Fields between the separators of the settings, a comma unless somebody has chosen another one.
class TCSVExport : public TDelimitedExport {
 public:
  explicit TCSVExport(const TMediaSettings& pSettings) : TDelimitedExport(pSettings) {}
  TMediaType MediaType() const override { return TMediaType::mtCSV; }

 protected:
  std::u16string_view OwnSeparator() const override { return {}; }
};

// A path per line. Further columns, where the settings name some, follow behind three blanks each. With pBytesOfNames
// paths are the bytes by which the system knows them, and no columns follow: for an output whose lines end with NUL.
class TPathListExport : public TFileStreamExport {
 public:
  explicit TPathListExport(const TMediaSettings& pSettings, bool pBytesOfNames = false);
  TMediaType MediaType() const override { return TMediaType::mtText; }

 protected:
  void WriteRoot(IHierarchicalRoot& pRoot) override;

 private:
  const bool fBytesOfNames;
};

}  // namespace Vantrel::Exporting
