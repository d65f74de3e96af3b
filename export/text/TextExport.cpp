#include "export/text/TextExport.h"

#include <algorithm>
#include <utility>

#include "export/text/ListExport.h"
#include "export/text/RootDescription.h"
#include "export/text/TextChart.h"
#include "platform/text/Text.h"
#include "presentation/lists/RootLists.h"

namespace Vantrel::Exporting {

namespace {

constexpr int64_t kLinesOfAnEarlierReport = 5;  // an output with more lines already holds a report
constexpr int kRuleLength = 48;

}  // namespace

std::string TBaseTextExport::Separator() const {
  const std::u16string_view own = OwnSeparator();
  return ToUtf8(own.empty() ? std::u16string_view(Settings().Separator()) : own);
}

std::string TBaseTextExport::HeaderText(TColumn pColumn) const {
  return CaptionWithUnit(ColumnInfo(pColumn).fCaption, pColumn, ValueFormat());
}

std::string TBaseTextExport::CellText(const TTreeRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const {
  if (pColumn == TColumn::mdError) return ToDisplay(ErrorOf(pRow));
  return ToDisplay(pRow.View().GetFormattedValue(pColumn, pFormat));
}

std::vector<std::string> TBaseTextExport::HeaderCells() const {
  std::vector<std::string> cells;
  for (TColumn column : Columns()) cells.push_back(HeaderText(column));
  return cells;
}

std::vector<std::string> TBaseTextExport::RowCells(const TTreeRow& pRow, const TValueFormat& pFormat) const {
  std::vector<std::string> cells;
  for (TColumn column : Columns()) cells.push_back(CellText(pRow, column, pFormat));
  return cells;
}

TFormattedTextExport::TFormattedTextExport(const TMediaSettings& pSettings, const TGlobalOptions& pOptions,
                                           std::string pProgramName)
    : TBaseTextExport(pSettings), fOptions(pOptions), fProgramName(std::move(pProgramName)), fFormat(ValueFormat()) {
  SetColumns({TColumn::mdName, TColumn::mdSize, TColumn::mdAllocated, TColumn::mdFiles, TColumn::mdFolders,
              TColumn::mdPercentOfParent, TColumn::mdLastChange});
  if (!pSettings.fColumns.empty()) SetColumns(pSettings.fColumns);
}

void TFormattedTextExport::WriteRoot(IHierarchicalRoot& pRoot) {
  if (LineCount() > kLinesOfAnEarlierReport) {
    WriteLine("");
    WriteLine("");
    WriteLine(std::string(kRuleLength, '_'));
  }
  const TRef<IComparison> comparison = pRoot.GetComparison();
  fComparison = comparison.get();
  ShowGone(comparison);
  if (fComparison && Settings().fColumns.empty()) {
    SetColumns({TColumn::mdName, TColumn::mdSizeChange, TColumn::mdSizeChangePercent, TColumn::mdFileChange,
                TColumn::mdSize, TColumn::mdFiles, TColumn::mdLastChange});
    SetSortByChange(true);
  }
  if (Settings().fIncludeHeader) WriteHeadBlock(pRoot);
  if (const TRef<IFolderData> top = pRoot.GetTopFolder()) {
    fTopName = ToDisplay(pRoot.GetPath());
    WriteTable(*top);
    WriteLine("");
    if (Settings().fSmallestFolder > 0)
      WriteLine("What is smaller than " + ToUtf8(FormatValue(TColumn::mdSize, Settings().fSmallestFolder, fFormat)) +
                " is not shown.");
    const std::vector<Presentation::TRootList> lists = Presentation::ChosenLists(fOptions);
    for (const Presentation::TRootList& list : lists) WriteListAsText(list.fFill(pRoot), fFormat, Output());
    const int64_t before = LineCount();
    WriteChosenCharts(pRoot, fOptions, fFormat, fMaximumWidth, Output());
    if (!lists.empty() || LineCount() > before) WriteLine("");
  }
  for (const std::string& line : ScanSummary(pRoot, fFormat, static_cast<size_t>(fOptions.NumberOfListedErrors)))
    WriteLine(line);
}

void TFormattedTextExport::WriteHeadBlock(IHierarchicalRoot& pRoot) {
  const TKivFileTime now = TKivFileTime::Now();
  WriteLine(!fOptions.ExportTitle.empty()
                ? ToDisplay(FromUtf8(fOptions.ExportTitle))
                : fProgramName + " Report, " + FormatShortDate(now) + "  " + FormatLongTime(now));
  WriteLine("  " + RootHeaderLine(pRoot, fFormat));
  const std::string drive = DriveInformation(pRoot, fFormat);
  if (!drive.empty()) WriteLine("     " + drive);
  if (fComparison) WriteLine("     Compared with the scan of " + FormatIsoLocal(fComparison->GetScanTimeStamp()));
  WriteLine("");
}

// The table's rows are made twice, to measure and to write. The texts of a million folders would take more memory than
// the tree, so they are not kept.
void TFormattedTextExport::WriteTable(IFolderData& pTop) {
  MeasureColumns(pTop);
  LimitNameWidth();
  if (Settings().fIncludeHeader && (Settings().fIncludedObjectTypes & ioFolders) != 0) {
    WriteLine(fTable.Row(HeaderCells()));
    WriteLine(fTable.Underline());
  }
  WalkTree(pTop, [&](const TTreeRow& pRow) { return WriteLine(fTable.Row(RowCells(pRow, fFormat))); });
}

void TFormattedTextExport::MeasureColumns(IFolderData& pTop) {
  fTable = TPaddedTable({Columns().begin(), Columns().end()}, Separator());
  fTable.Measure(HeaderCells());
  WalkTree(pTop, [&](const TTreeRow& pRow) {
    fTable.Measure(RowCells(pRow, fFormat));
    return true;
  });
}

void TFormattedTextExport::LimitNameWidth() {
  if (fMaximumWidth <= 0) return;
  const auto name = std::find(Columns().begin(), Columns().end(), TColumn::mdName);
  if (name == Columns().end()) return;
  fTable.LimitRowWidth(static_cast<size_t>(name - Columns().begin()), fMaximumWidth);
}

std::string TFormattedTextExport::CellText(const TTreeRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const {
  if (pColumn != TColumn::mdName) return TBaseTextExport::CellText(pRow, pColumn, pFormat);
  if (pRow.fLevel == 0) return fTopName;
  const TEntryView entry = pRow.View();
  std::string name = std::string(static_cast<size_t>(pRow.fLevel) * 2, ' ') + ToDisplay(entry.GetObjectName());
  if (const std::u16string state = entry.GetFormattedValue(TColumn::mdChangeState, pFormat); !state.empty())
    name += " (" + ToDisplay(state) + ")";
  return name;
}

}  // namespace Vantrel::Exporting
