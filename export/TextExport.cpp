#include "export/TextExport.h"

#include <algorithm>
#include <utility>

#include "export/RootDescription.h"
#include "platform/Text.h"

namespace Kiv::Hierarchical::Exporting::Text {

namespace {

constexpr int64_t kLinesOfAnEarlierReport = 5;  // an output with more lines than this holds a report already
constexpr int kRuleLength = 48;
constexpr int kLeastNameWidth = 12;

bool IsRightAligned(TColumn pColumn) {
  const TColumnKind kind = ColumnInfo(pColumn).fKind;
  return kind == TColumnKind::ckSize || kind == TColumnKind::ckCount || kind == TColumnKind::ckShare;
}

size_t Blanks(int pWanted, int pTaken) {
  return static_cast<size_t>(std::max(0, pWanted - pTaken));
}

}  // namespace

std::string ShortenedToWidth(std::string_view pUtf8, int pWidth) {
  if (DisplayWidth(pUtf8) <= pWidth) return std::string(pUtf8);
  std::string shortened;
  int width = 0;
  size_t position = 0;
  while (position < pUtf8.size()) {
    size_t end = position + 1;
    while (end < pUtf8.size() && (static_cast<unsigned char>(pUtf8[end]) & 0xC0) == 0x80) ++end;
    const std::string_view character = pUtf8.substr(position, end - position);
    width += DisplayWidth(character);
    if (width > pWidth - 1) break;
    shortened += character;
    position = end;
  }
  return shortened + "…";
}

std::string TBaseTextExport::Separator() const {
  const std::u16string_view own = OwnSeparator();
  return ToUtf8(own.empty() ? std::u16string_view(Settings().Separator()) : own);
}

std::string TBaseTextExport::HeaderText(TColumn pColumn) const {
  const TColumnInfo& info = ColumnInfo(pColumn);
  std::string text = ToUtf8(info.fCaption);
  const TMediaSettings& settings = Settings();
  if (!settings.fAutomaticUnit && settings.fSizeUnit < TSizeUnit::suAutomatic && info.fKind == TColumnKind::ckSize)
    text += " (" + ToUtf8(UnitName(settings.fSizeUnit)) + ")";
  return text;
}

std::string TBaseTextExport::CellText(const TExportRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const {
  return ToDisplay(pRow.Element()->GetFormattedValue(pColumn, pFormat));
}

std::vector<std::string> TBaseTextExport::HeaderCells() const {
  std::vector<std::string> cells;
  for (TColumn column : Columns()) cells.push_back(HeaderText(column));
  return cells;
}

std::vector<std::string> TBaseTextExport::RowCells(const TExportRow& pRow, const TValueFormat& pFormat) const {
  std::vector<std::string> cells;
  for (TColumn column : Columns()) cells.push_back(CellText(pRow, column, pFormat));
  return cells;
}

std::string TBaseTextExport::JoinCells(const std::vector<std::string>& pCells) const {
  const std::string separator = Separator();
  std::string line;
  for (size_t i = 0; i < pCells.size(); ++i) {
    if (i > 0) line += separator;
    line += pCells[i];
  }
  return line;
}

TFormattedTextExport::TFormattedTextExport(const TMediaSettings& pSettings, const TGlobalOptions& pOptions,
                                           std::string pProgramName)
    : TBaseTextExport(pSettings),
      fTitle(pOptions.ExportTitle),
      fProgramName(std::move(pProgramName)),
      fListedErrors(static_cast<size_t>(pOptions.NumberOfListedErrors)),
      fFormat(ValueFormat()) {
  SetColumns({TColumn::mdName, TColumn::mdSize, TColumn::mdAllocated, TColumn::mdFiles, TColumn::mdFolders,
              TColumn::mdPercentOfParent, TColumn::mdLastChange});
}

void TFormattedTextExport::WriteRoot(IHierarchicalRoot& pRoot) {
  if (LineCount() > kLinesOfAnEarlierReport) {
    WriteLine("");
    WriteLine("");
    WriteLine(std::string(kRuleLength, '_'));
  }
  const TRef<IComparison> comparison = pRoot.GetComparison();
  fComparison = comparison.get();
  if (fComparison) {
    SetColumns({TColumn::mdName, TColumn::mdSizeChange, TColumn::mdSizeChangePercent, TColumn::mdFileChange,
                TColumn::mdSize, TColumn::mdFiles, TColumn::mdLastChange});
    SetSortByChange(true);
  }
  if (Settings().fIncludeHeader) WriteHeadBlock(pRoot);
  if (const TRef<IFolderData> top = pRoot.GetTopFolder()) {
    fTopName = ToDisplay(pRoot.GetPath());
    WriteTable(*top);
    WriteLine("");
  }
  for (const std::string& line : ScanSummary(pRoot, fFormat, fListedErrors)) WriteLine(line);
}

void TFormattedTextExport::WriteHeadBlock(IHierarchicalRoot& pRoot) {
  const TKivFileTime now = TKivFileTime::Now();
  WriteLine(!fTitle.empty() ? ToDisplay(FromUtf8(fTitle))
                            : fProgramName + " Report, " + FormatShortDate(now) + "  " + FormatLongTime(now));
  WriteLine("  " + RootHeaderLine(pRoot, fFormat));
  const std::string drive = DriveInformation(pRoot, fFormat);
  if (!drive.empty()) WriteLine("     " + drive);
  if (fComparison) WriteLine("     Compared with the scan of " + FormatIsoLocal(fComparison->GetScanTimeStamp()));
  WriteLine("");
}

// The table's rows are made twice, once to measure and once to write: kept in memory in between, the texts of a million
// folders would take more room than the tree.
void TFormattedTextExport::WriteTable(IFolderData& pTop) {
  MeasureColumns(pTop);
  LimitNameWidth();
  if (Settings().fIncludedObjectTypes & ioFolders) {
    WriteLine(PaddedRow(HeaderCells()));
    std::vector<std::string> lines;
    for (int width : fWidths) lines.emplace_back(static_cast<size_t>(width), '-');
    WriteLine(JoinCells(lines));
  }
  WalkTree(pTop, [&](const TExportRow& pRow) { return WriteLine(PaddedRow(RowCells(pRow, fFormat))); });
}

void TFormattedTextExport::MeasureColumns(IFolderData& pTop) {
  fWidths.clear();
  for (const std::string& caption : HeaderCells()) fWidths.push_back(DisplayWidth(caption));
  WalkTree(pTop, [&](const TExportRow& pRow) {
    const std::vector<std::string> cells = RowCells(pRow, fFormat);
    for (size_t i = 0; i < cells.size(); ++i) fWidths[i] = std::max(fWidths[i], DisplayWidth(cells[i]));
    return true;
  });
}

void TFormattedTextExport::LimitNameWidth() {
  if (fMaximumWidth <= 0) return;
  const auto name = std::find(Columns().begin(), Columns().end(), TColumn::mdName);
  if (name == Columns().end()) return;
  int& nameWidth = fWidths[static_cast<size_t>(name - Columns().begin())];
  int rowWidth = DisplayWidth(Separator()) * (static_cast<int>(fWidths.size()) - 1);
  for (int width : fWidths) rowWidth += width;
  const int room = std::max(kLeastNameWidth, nameWidth - (rowWidth - fMaximumWidth));
  nameWidth = std::min(nameWidth, room);
}

std::string TFormattedTextExport::CellText(const TExportRow& pRow, TColumn pColumn, const TValueFormat& pFormat) const {
  if (pColumn != TColumn::mdName) return TBaseTextExport::CellText(pRow, pColumn, pFormat);
  if (pRow.fLevel == 0) return fTopName;
  std::string name = std::string(static_cast<size_t>(pRow.fLevel) * 2, ' ') + ToDisplay(pRow.Name());
  if (pRow.IsFile()) return name;
  if (pRow.fFolder.GetFolderState() & fsIsDummyForComparison)
    name += " (gone)";
  else if (fComparison && !fComparison->WasThere(pRow.fFolder))
    name += " (new)";
  return name;
}

std::string TFormattedTextExport::PaddedRow(const std::vector<std::string>& pCells) const {
  std::vector<std::string> padded;
  for (size_t i = 0; i < pCells.size(); ++i) {
    std::string cell = ShortenedToWidth(pCells[i], fWidths[i]);
    const std::string blanks(Blanks(fWidths[i], DisplayWidth(cell)), ' ');
    padded.push_back(IsRightAligned(Columns()[i]) ? blanks + cell : cell + blanks);
  }
  return JoinCells(padded);
}

}  // namespace Kiv::Hierarchical::Exporting::Text
