#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "export/DelimitedText.h"
#include "export/TextExport.h"
#include "platform/FileTime.h"

namespace Kiv::Hierarchical::Exporting::Text {

// The tree as lines for programs: a row per folder or file, fields quoted where they need it. Rows of a million files
// are written in little more time than their bytes take, so values are read from the tree directly where that is
// possible.
class TDelimitedExport : public TBaseTextExport, private IExportVisitor {
 protected:
  explicit TDelimitedExport(const TMediaSettings& pSettings);

  void WriteRoot(IHierarchicalRoot& pRoot) override;

 private:
  // What rows need to know of an open folder.
  struct TOpenFolder {
    size_t fParentLength;  // of the path of the folder around it
    int64_t fShareBasis;   // the size that shares of what lies in it are of
  };

  bool BeginNode(const TExportRow& pRow, bool pIsComplete) override;
  bool EndNode(const TExportRow& pRow) override;
  bool VisitFile(const TExportRow& pRow) override;

  void WriteHeader();
  void BeginLine();
  bool WriteRow(const TExportRow& pRow, const TSizeValues& pSizes);
  void AppendField(const TExportRow& pRow, const TSizeValues& pSizes, TColumn pColumn);
  bool AppendQuickly(const TExportRow& pRow, const TSizeValues& pSizes, TColumn pColumn);
  bool AppendNumber(TColumn pColumn, int64_t pValue);
  void AppendShareOfParent(const TSizeValues& pSizes);
  void AppendSlowly(const TExportRow& pRow, TColumn pColumn);
  void AppendToPath(std::u16string_view pName);
  int64_t ShareBasis(const TSizeValues& pSizes) const { return fSharesOfAllocated ? pSizes.fAllocated : pSizes.fSize; }

  TValueFormat fFormat;
  TDelimitedFormat fFields;
  TIsoLocalFormatter fDates;
  // While an export runs.
  std::string fLine;
  std::string
      fPath;  // of the row, as it is written: no node need ask its ancestors, and no folder's is converted twice
  std::vector<TOpenFolder> fOpen;
  char fDelimiter = 0;
  std::string fDecimalSeparator;
  bool fQuotesNumbers = false;  // where they need it: the separator may turn up in numbers and dates
  bool fSharesOfAllocated = false;
};

// Fields between tabs.
class TTextExport : public TDelimitedExport {
 public:
  explicit TTextExport(const TMediaSettings& pSettings) : TDelimitedExport(pSettings) {}
};

// Fields between the separators of the settings, a comma unless somebody has chosen another one.
class TCSVExport : public TDelimitedExport {
 public:
  explicit TCSVExport(const TMediaSettings& pSettings) : TDelimitedExport(pSettings) {}
  TMediaType MediaType() const override { return TMediaType::mtCSV; }

 protected:
  std::u16string_view OwnSeparator() const override { return {}; }
};

// A path per line. Further columns, where the settings name some, follow behind three blanks each.
class TPathListExport : public TFileStreamExport {
 public:
  explicit TPathListExport(const TMediaSettings& pSettings);
  TMediaType MediaType() const override { return TMediaType::mtText; }

 protected:
  void WriteRoot(IHierarchicalRoot& pRoot) override;
};

}  // namespace Kiv::Hierarchical::Exporting::Text
