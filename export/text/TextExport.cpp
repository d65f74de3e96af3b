#include "export/text/TextExport.h"

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
    : TBaseTextExport(pSettings), fOptions(pOptions), fProgramName(std::move(pProgramName)), fFormat(ValueFormat()) {}

void TFormattedTextExport::ChooseColumns() {
  SetSortByChange(fComparison != nullptr);
  if (!Settings().fColumns.empty()) return SetColumns(Settings().fColumns);
  const TColumn other = LeadingSize() == TColumn::mdSize ? TColumn::mdAllocated : TColumn::mdSize;
  SetColumns({TColumn::mdName, LeadingSize(), other, TColumn::mdFiles, TColumn::mdFolders, TColumn::mdPercentOfParent,
              TColumn::mdLastChange});
  if (!fComparison) return;
  const bool ofSize = LeadingSize() == TColumn::mdSize;
  SetColumns({TColumn::mdName, LeadingChange(), ofSize ? TColumn::mdSizeChangePercent : TColumn::mdSizeChange,
              TColumn::mdFileChange, LeadingSize(), TColumn::mdFiles, TColumn::mdLastChange});
}

void TFormattedTextExport::WriteRoot(IHierarchicalRoot& pRoot) {
  if (LineCount() > kLinesOfAnEarlierReport) {
    WriteLine("");
    WriteLine("");
    WriteLine(std::string(kRuleLength, '_'));
  }
  fLook = Output().LineLook();
  const TRef<IComparison> comparison = pRoot.GetComparison();
  fComparison = comparison.get();
  ShowChanges(pRoot);
  ChooseColumns();
  if (Settings().fIncludeHeader) WriteHeadBlock(pRoot);
  if (const TRef<IFolderData> top = pRoot.GetTopFolder()) {
    fTopName = ToDisplay(pRoot.GetPath());
    WriteTable(*top);
    WriteLine("");
    if (const int64_t smallest = SmallestShown(*top); smallest > 0)
      WriteLine("What is smaller than " + ToUtf8(FormatValue(TColumn::mdSize, smallest, fFormat)) + " is not shown.");
    if (UnchangedRows() > 0)
      WriteLine("Not shown: " + CountText(UnchangedRows(), "row", "rows", fFormat) +
                " without a change. --unchanged shows all.");
    const int64_t before = LineCount();
    WriteLists(pRoot);
    WriteChosenCharts(pRoot, fOptions, fFormat, Output());
    if (LineCount() > before) WriteLine("");
  }
  WriteSummary(pRoot);
}

// Errors come first.
void TFormattedTextExport::WriteSummary(const IHierarchicalRoot& pRoot) {
  const auto listed = static_cast<size_t>(fOptions.NumberOfListedErrors);
  size_t errors = ErrorSummary(pRoot, fFormat, listed).size();
  for (const std::string& line : ScanSummary(pRoot, fFormat, listed)) {
    WriteLine(Painted(line, errors > 0 ? TInk::ikBad : TInk::ikNone, fLook));
    errors -= errors > 0 ? 1 : 0;
  }
}

void TFormattedTextExport::WriteHeadBlock(IHierarchicalRoot& pRoot) {
  const TKivFileTime now = TKivFileTime::Now();
  const std::string title = !fOptions.ExportTitle.empty()
                                ? ToDisplay(FromUtf8(fOptions.ExportTitle))
                                : fProgramName + " Report, " + FormatShortDate(now) + "  " + FormatLongTime(now);
  WriteLine(Painted(title, TInk::ikTitle, fLook));
  WriteLine("  " + RootHeaderLine(pRoot, fFormat));
  const std::string drive = DriveInformation(pRoot, fFormat);
  if (!drive.empty()) WriteLine("     " + drive);
  const std::string unseen = UnseenInformation(pRoot, fFormat);
  if (!unseen.empty()) WriteLine("     " + unseen);
  if (fComparison) WriteLine("     Compared with the scan of " + FormatIsoLocal(fComparison->GetScanTimeStamp()));
  WriteLine("");
}

void TFormattedTextExport::WriteLists(const IHierarchicalRoot& pRoot) {
  const auto most = static_cast<size_t>(Settings().fMostRows.value_or(0));
  for (const Presentation::TRootList& chosen : Presentation::ChosenLists(fOptions)) {
    Presentation::TList list = chosen.fFill(pRoot);
    const size_t left = most > 0 && list.fRows.size() > most ? list.fRows.size() - most : 0;
    list.fRows.resize(list.fRows.size() - left);
    WriteListAsText(list, fFormat, Output());
    if (left > 0) WriteLine(MoreText(static_cast<int64_t>(left), fFormat));
  }
}

// The table's rows are made twice, to measure and to write. The texts of a million folders would take more memory than
// the tree, so they are not kept.
void TFormattedTextExport::WriteTable(IFolderData& pTop) {
  MeasureColumns(pTop);
  fTable.Fit(Output().LineWidth(), fLook, Settings().fColumns.empty());
  if (Settings().fIncludeHeader && (Settings().fIncludedObjectTypes & ioFolders) != 0) {
    WriteLine(fTable.Captions(HeaderCells()));
    WriteLine(fTable.Underline());
  }
  ForgetUnchangedRows();
  ForEachRow(pTop, [&](const std::vector<std::string>& pCells, const TRowLook& pLook) {
    return WriteLine(fTable.Row(pCells, pLook));
  });
}

void TFormattedTextExport::MeasureColumns(IFolderData& pTop) {
  fTable = TPaddedTable({Columns().begin(), Columns().end()}, Separator());
  fTable.MeasureCaptions(HeaderCells());
  ForEachRow(pTop, [&](const std::vector<std::string>& pCells, const TRowLook& pLook) {
    fTable.Measure(pCells, pLook.fShare);
    return true;
  });
}

void TFormattedTextExport::ForEachRow(IFolderData& pTop, const TTakeRow& pRow) const {
  TRowLimit limit(Settings().fMostRows.value_or(0),
                  [&](const TRestOfFolder& pRest) { return pRow(RestCells(pRest), LookOfRest(pRest)); });
  if (WalkTree(pTop, [&](const TTreeRow& pTreeRow) {
        const TRowLimit::TVerdict verdict = limit.Take(pTreeRow);
        return verdict == TRowLimit::TVerdict::rvLeaveOut ||
               (verdict == TRowLimit::TVerdict::rvShow && pRow(RowCells(pTreeRow, fFormat), LookOfRow(pTreeRow)));
      }))
    limit.Finish();
}

TRowLook TFormattedTextExport::LookOf(TInk pName, bool pIsWhole, const TMetaDataValue& pShare) {
  const auto* share = std::get_if<double>(&pShare);
  return {.fName = pName, .fShare = share ? std::optional(*share) : std::nullopt, .fIsWhole = pIsWhole};
}

TRowLook TFormattedTextExport::LookOfRest(const TRestOfFolder& pRest) const {
  const std::optional<TColumn> column = fTable.ShareColumn();
  return LookOf(TInk::ikFaint, true, column ? pRest.GetValue(*column, LeadingSize()) : TMetaDataValue());
}

TRowLook TFormattedTextExport::LookOfRow(const TTreeRow& pRow) const {
  if (!fLook.fHasColors && !fLook.fHasBars) return {};
  const bool isFolder = !pRow.IsFile() && !pRow.fFolder.IsFileGroup();
  const TInk name = !ErrorOf(pRow).empty() ? TInk::ikBad : isFolder ? TInk::ikFolder : TInk::ikNone;
  const std::optional<TColumn> column = fTable.ShareColumn();
  return LookOf(name, pRow.fLevel == 0, column ? pRow.View().GetValue(*column) : TMetaDataValue());
}

std::vector<std::string> TFormattedTextExport::RestCells(const TRestOfFolder& pRest) const {
  std::vector<std::string> cells;
  for (const TColumn column : Columns()) {
    if (column == TColumn::mdName)
      cells.push_back(std::string(static_cast<size_t>(pRest.fLevel) * 2, ' ') + MoreText(pRest.fRows, fFormat));
    else
      cells.push_back(ToDisplay(FormatValue(column, pRest.GetValue(column, LeadingSize()), fFormat)));
  }
  return cells;
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
