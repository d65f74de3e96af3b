#include "export/DelimitedExport.h"

#include <charconv>
#include <cmath>

#include "model/FileTable.h"
#include "platform/Text.h"

namespace Kiv::Hierarchical::Exporting::Text {

namespace {

constexpr std::string_view kPathListSeparator = "   ";

void AppendInteger(std::string& pTarget, int64_t pValue) {
  char digits[24];
  pTarget.append(digits, std::to_chars(digits, digits + sizeof digits, pValue).ptr);
}

TSizeValues SizesOf(const TFileRecord& pFile) {
  TSizeValues sizes;
  sizes.fSize = pFile.fSize;
  sizes.fAllocated = pFile.fAllocated;
  sizes.fFiles = 1;
  return sizes;
}

}  // namespace

TDelimitedExport::TDelimitedExport(const TMediaSettings& pSettings) : TBaseTextExport(pSettings) {
  SetColumns({TColumn::mdFullPath, TColumn::mdSize, TColumn::mdAllocated, TColumn::mdFiles, TColumn::mdFolders,
              TColumn::mdPercentOfParent, TColumn::mdLastChange, TColumn::mdLastAccess});
  if (!pSettings.fColumns.empty()) SetColumns(pSettings.fColumns);
}

void TDelimitedExport::WriteRoot(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) return;
  fFormat = ValueFormat();
  fFields = {Separator(), Settings().fNeutralizeFormulas};
  // A digit group could be taken for the end of a field, or of the whole number.
  const std::u16string thousands = fFormat.fThousandsSeparator;
  if (ToUtf8(thousands) == fFields.fSeparator || thousands == fFormat.fDecimalSeparator)
    fFormat.fThousandsSeparator.clear();
  fDecimalSeparator = ToUtf8(fFormat.fDecimalSeparator);
  // A separator with another character than these is in no bare number and in no date.
  fQuotesNumbers = !fFormat.fPlainByteValues || fFormat.fShowUnits ||
                   fFields.fSeparator.find_first_not_of("0123456789-: " + fDecimalSeparator) == std::string::npos;
  fDelimiter = static_cast<char>(pRoot.GetPathDelimiter());
  fSharesOfAllocated = pRoot.GetScanConfiguration().GetShareBasis() == TColumn::mdAllocated;
  fPath.clear();
  fOpen.clear();
  if (LineCount() == 0) WriteHeader();
  WalkNodes(*top, *this);
}

// A second root goes on below the first one: its captions would be taken for a row.
void TDelimitedExport::WriteHeader() {
  if (!Settings().fIncludeHeader || (Settings().fIncludedObjectTypes & ioFolders) == 0) return;
  BeginLine();
  for (size_t i = 0; i < Columns().size(); ++i) {
    if (i > 0) fLine += fFields.fSeparator;
    AppendOwnField(fLine, HeaderText(Columns()[i]), fFields);
  }
  WriteLine(fLine);
}

void TDelimitedExport::BeginLine() {
  fLine.clear();
  if (Settings().fByteOrderMark && LineCount() == 0) fLine = kByteOrderMark;
}

void TDelimitedExport::AppendToPath(std::u16string_view pName) {
  if (!fPath.empty() && fPath.back() != fDelimiter) fPath += fDelimiter;
  AppendUtf8Escaped(fPath, pName);
}

bool TDelimitedExport::BeginNode(const TExportRow& pRow, bool pIsComplete) {
  const TSizeValues sizes = pRow.fFolder.GetValues();
  const size_t parentLength = fPath.size();
  AppendToPath(pRow.Name());
  if (pRow.fIsShown && !WriteRow(pRow, sizes)) return false;
  if (pIsComplete) {
    fPath.resize(parentLength);
    return true;
  }
  // A file's share is of its folder, whether or not a "[Files]" row stands between them.
  const bool isGroup = pRow.fFolder.IsFileGroup() && !fOpen.empty();
  fOpen.push_back({parentLength, isGroup ? fOpen.back().fShareBasis : ShareBasis(sizes)});
  return true;
}

bool TDelimitedExport::EndNode(const TExportRow&) {
  fPath.resize(fOpen.back().fParentLength);
  fOpen.pop_back();
  return true;
}

// A file lies in the folder itself: the "[Files]" node around its row is no part of the path.
bool TDelimitedExport::VisitFile(const TExportRow& pRow) {
  const std::u16string_view group = pRow.fFolder.IsFileGroup() ? pRow.fFolder.GetObjectName() : std::u16string_view();
  if (!group.empty()) fPath.resize(fOpen.back().fParentLength);
  const size_t length = fPath.size();
  AppendToPath(pRow.Name());
  const bool written = WriteRow(pRow, SizesOf(*pRow.fFile));
  fPath.resize(length);
  if (!group.empty()) AppendToPath(group);
  return written;
}

bool TDelimitedExport::WriteRow(const TExportRow& pRow, const TSizeValues& pSizes) {
  BeginLine();
  for (size_t i = 0; i < Columns().size(); ++i) {
    if (i > 0) fLine += fFields.fSeparator;
    AppendField(pRow, pSizes, Columns()[i]);
  }
  return WriteLine(fLine);
}

void TDelimitedExport::AppendField(const TExportRow& pRow, const TSizeValues& pSizes, TColumn pColumn) {
  if (pColumn == TColumn::mdName) return AppendTextField(fLine, pRow.Name(), fFields);
  if (pColumn == TColumn::mdFullPath) return AppendEscapedField(fLine, fPath, fFields);
  const size_t begin = fLine.size();
  if (!AppendQuickly(pRow, pSizes, pColumn)) return AppendSlowly(pRow, pColumn);
  if (fQuotesNumbers) QuoteField(fLine, begin, fFields);
}

// Numbers and dates, of what the row itself holds. False for all else.
bool TDelimitedExport::AppendQuickly(const TExportRow& pRow, const TSizeValues& pSizes, TColumn pColumn) {
  const bool isFile = pRow.IsFile();
  switch (pColumn) {
    case TColumn::mdSize:
      return AppendNumber(pColumn, pSizes.fSize);
    case TColumn::mdAllocated:
      return AppendNumber(pColumn, pSizes.fAllocated);
    case TColumn::mdFiles:
      return AppendNumber(pColumn, pSizes.fFiles);
    case TColumn::mdFolders:
      // A file's cell is empty, as in every list.
      return isFile || AppendNumber(pColumn, pSizes.fFolders);
    case TColumn::mdPercentOfParent:
      AppendShareOfParent(pSizes);
      return true;
    case TColumn::mdLastChange:
      fDates.Append(fLine, isFile ? pRow.fFile->fLastChangeDate : pRow.fFolder.GetLastChangeDate());
      return true;
    case TColumn::mdLastAccess:
      fDates.Append(fLine, isFile ? pRow.fFile->fLastAccessDate : pRow.fFolder.GetLastAccessDate());
      return true;
    case TColumn::mdCreation:
      fDates.Append(fLine, isFile ? pRow.fFile->fCreationDate : pRow.fFolder.GetCreationDate());
      return true;
    default:
      return false;
  }
}

bool TDelimitedExport::AppendNumber(TColumn pColumn, int64_t pValue) {
  if (fFormat.fPlainByteValues)
    AppendInteger(fLine, pValue);
  else
    fLine += ToUtf8(FormatValue(pColumn, pValue, fFormat));
  return true;
}

void TDelimitedExport::AppendShareOfParent(const TSizeValues& pSizes) {
  double share = 1.0;  // the top is the whole
  if (!fOpen.empty()) {
    const int64_t whole = fOpen.back().fShareBasis;
    share = whole == 0 ? 0.0 : static_cast<double>(ShareBasis(pSizes)) / static_cast<double>(whole);
  }
  if (fFormat.fShowUnits || fFormat.fDecimals != 1) {
    fLine += ToUtf8(FormatValue(TColumn::mdPercentOfParent, share, fFormat));
    return;
  }
  // The same for a million rows: tenths of a per cent, halves away from zero.
  const auto tenths = std::llround(share * 100.0 * 10);
  AppendInteger(fLine, tenths / 10);
  fLine += fDecimalSeparator;
  AppendInteger(fLine, tenths % 10);
}

void TDelimitedExport::AppendSlowly(const TExportRow& pRow, TColumn pColumn) {
  const std::u16string text = FormatValue(pColumn, pRow.Element()->GetValue(pColumn), fFormat);
  if (ColumnInfo(pColumn).fKind == TColumnKind::ckText)
    AppendTextField(fLine, text, fFields);
  else
    AppendOwnField(fLine, ToUtf8(text), fFields);
}

// --- paths ---------------------------------------------------------------------------------------------------------

TPathListExport::TPathListExport(const TMediaSettings& pSettings) : TFileStreamExport(pSettings) {
  SetColumns(pSettings.fColumns);
}

void TPathListExport::WriteRoot(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) return;
  const TValueFormat format = ValueFormat();
  WalkTree(*top, [&](const TExportRow& pRow) {
    if (!pRow.IsFile() && pRow.fFolder.IsFileGroup()) return true;  // no path of the storage
    const TRef<IHierarchicalElement> element = pRow.Element();
    std::string line = ToDisplay(element->GetFullPath());
    for (const TColumn column : Columns()) {
      if (column == TColumn::mdFullPath) continue;
      line += kPathListSeparator;
      line += ToDisplay(element->GetFormattedValue(column, format));
    }
    return WriteLine(line);
  });
}

}  // namespace Kiv::Hierarchical::Exporting::Text
