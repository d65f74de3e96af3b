#pragma once

// The base of exports as lines of text, and the formatted report.

#include <string>
#include <string_view>
#include <vector>

#include "export/text/PaddedTable.h"
#include "export/text/RowLimit.h"
#include "export/walk/HierarchicalExport.h"

namespace Vantrel::Exporting {

// Exports lines of text, one row per line, with cells joined by a separator. Derived classes set the separator and the
// form of a row.
class TBaseTextExport : public TFileStreamExport {
 public:
  TMediaType MediaType() const override { return TMediaType::mtText; }

 protected:
  using TFileStreamExport::TFileStreamExport;

  // The separator of the derived class, or empty to use the one from the settings.
  virtual std::u16string_view OwnSeparator() const { return u"\t"; }
  std::string Separator() const;
  // The column's caption. It includes the unit if all values share one: "Size (MB)".
  std::string HeaderText(TColumn pColumn) const;
  // The cell's text on one line, safe to show.
  virtual std::string CellText(const TTreeRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const;
  // One text per column.
  std::vector<std::string> HeaderCells() const;
  std::vector<std::string> RowCells(const TTreeRow& pRow, const TValueFormat& pFormat) const;
};

// A table of fixed width under a head block, for people. It is the report on the console and in text files.
class TFormattedTextExport : public TBaseTextExport {
 public:
  // pOptions must outlive the exporter.
  TFormattedTextExport(const TMediaSettings& pSettings, const TGlobalOptions& pOptions, std::string pProgramName);

 protected:
  std::u16string_view OwnSeparator() const override { return {}; }
  std::string CellText(const TTreeRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const override;
  void WriteRoot(IHierarchicalRoot& pRoot) override;

 private:
  void ChooseColumns();
  void WriteHeadBlock(IHierarchicalRoot& pRoot);
  void WriteSummary(const IHierarchicalRoot& pRoot);
  void WriteLists(const IHierarchicalRoot& pRoot);
  void WriteTable(IFolderData& pTop);
  void MeasureColumns(IFolderData& pTop);
  // Calls pRow with the cells of each row, those of what the limit of rows leaves out included.
  using TTakeRow = std::function<bool(const std::vector<std::string>& pCells, const TRowLook& pLook)>;
  void ForEachRow(IFolderData& pTop, const TTakeRow& pRow) const;
  // pIsWhole: the share is no part of anything, or of no single thing.
  static TRowLook LookOf(TInk pName, bool pIsWhole, const TMetaDataValue& pShare);
  TRowLook LookOfRow(const TTreeRow& pRow) const;
  TRowLook LookOfRest(const TRestOfFolder& pRest) const;
  std::vector<std::string> RestCells(const TRestOfFolder& pRest) const;

  const TGlobalOptions& fOptions;
  const std::string fProgramName;
  TValueFormat fFormat;
  const IComparison* fComparison = nullptr;  // the root's comparison, if any; set while an export runs
  std::string fTopName;                      // the name of the top row; set while an export runs
  TLineLook fLook;                           // set while an export runs
  TPaddedTable fTable;                       // set while an export runs
};

}  // namespace Vantrel::Exporting
