#pragma once

// Exports as lines of text; the formatted report.

#include <string>
#include <string_view>
#include <vector>

#include "export/text/PaddedTable.h"
#include "export/walk/HierarchicalExport.h"

namespace Vantrel::Exporting {

// Exports as lines of text, one row per line, cells joined by a separator. The flavours fix the separator and the form
// of a row.
class TBaseTextExport : public TFileStreamExport {
 public:
  TMediaType MediaType() const override { return TMediaType::mtText; }

 protected:
  using TFileStreamExport::TFileStreamExport;

  // The flavour's own separator; empty to take that of the settings.
  virtual std::u16string_view OwnSeparator() const { return u"\t"; }
  std::string Separator() const;
  // The column's caption, with the unit where all values of the column share one: "Size (MB)".
  std::string HeaderText(TColumn pColumn) const;
  // The cell's text, one line, safe to show.
  virtual std::string CellText(const TExportRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const;
  // One text per column.
  std::vector<std::string> HeaderCells() const;
  std::vector<std::string> RowCells(const TExportRow& pRow, const TValueFormat& pFormat) const;
};

// A table of fixed width under a head block, for people: the report on the console, and in text files.
class TFormattedTextExport : public TBaseTextExport {
 public:
  // The options must outlive the exporter.
  TFormattedTextExport(const TMediaSettings& pSettings, const TGlobalOptions& pOptions, std::string pProgramName);

  // Columns that a line may take, 0 for any number. Where a row would be wider, names are shortened: a name of 200
  // characters would otherwise break every line of the table on a terminal.
  void SetMaximumWidth(int pColumns) { fMaximumWidth = pColumns; }

 protected:
  std::u16string_view OwnSeparator() const override { return {}; }
  std::string CellText(const TExportRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const override;
  void WriteRoot(IHierarchicalRoot& pRoot) override;

 private:
  void WriteHeadBlock(IHierarchicalRoot& pRoot);
  void WriteTable(IFolderData& pTop);
  void MeasureColumns(IFolderData& pTop);
  void LimitNameWidth();

  const TGlobalOptions& fOptions;
  const std::string fProgramName;
  int fMaximumWidth = 0;
  TValueFormat fFormat;
  const IComparison* fComparison = nullptr;  // while an export runs: the root's, if any
  std::string fTopName;                      // while an export runs: what the top row is called
  TPaddedTable fTable;                       // likewise
};

}  // namespace Vantrel::Exporting
