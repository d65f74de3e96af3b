#pragma once

// Exports the tree as lines for programs: CSV, tab-separated text, and the list of paths.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/text/DelimitedText.h"
#include "export/text/TextExport.h"
#include "platform/system/FileTime.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::Exporting {

// Exports the tree as lines for programs, one row per folder or file. Fields are quoted if needed. Speed matters for a
// million files. So values are read directly from the tree where possible, and several threads write.
class TDelimitedExport : public TBaseTextExport {
 protected:
  explicit TDelimitedExport(const TMediaSettings& pSettings);

  void WriteRoot(IHierarchicalRoot& pRoot) override;

 private:
  class TRows;

  void ChooseColumns();
  void WriteHeader();
  bool WriteRow(std::string_view pRow);
  // Lends a formatter to the thread that is writing rows.
  std::unique_ptr<TIsoLocalFormatter> TakeDateFormatter() const;
  void GiveDateFormatter(std::unique_ptr<TIsoLocalFormatter> pFormatter) const;

  // The next values are the same for all rows of a root.
  TValueFormat fFormat;
  TDelimitedFormat fFields;
  char fDelimiter = 0;
  bool fQuotesNumbers = false;  // quotes numbers and dates if needed, because the separator may occur in them

  mutable TCriticalSection fLock;
  // Formatters not in use. They are reused because they remember what they have asked the system.
  mutable std::vector<std::unique_ptr<TIsoLocalFormatter>> fDateFormatters GUARDED_BY(fLock);
};

// Fields separated by tabs, with the settings of text.
class TTextExport : public TDelimitedExport {
 public:
  explicit TTextExport(const TMediaSettings& pText) : TDelimitedExport(TabSettings(pText)) {}
};

// Fields with the separator from the settings, a comma by default.
class TCSVExport : public TDelimitedExport {
 public:
  explicit TCSVExport(const TMediaSettings& pSettings) : TDelimitedExport(pSettings) {}
  TMediaType MediaType() const override { return TMediaType::mtCSV; }

 protected:
  std::u16string_view OwnSeparator() const override { return {}; }
};

// One path per line. Further columns from the settings follow, each after three blanks. With pBytesOfNames the paths
// are written as the system's bytes, without further columns. That form suits an output whose lines end with NUL.
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
