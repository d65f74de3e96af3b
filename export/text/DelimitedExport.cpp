#include "export/text/DelimitedExport.h"

#include <algorithm>
#include <optional>

#include "model/columns/ValueText.h"
#include "model/roots/EarlierFiles.h"
#include "platform/text/Text.h"

namespace Vantrel::Exporting {

namespace {

constexpr std::string_view kPathListSeparator = "   ";

}  // namespace

// Writes rows for the whole tree, or for the contents of one of its folders.
class TDelimitedExport::TRows final : public TRowWriter {
 public:
  // pExport must outlive this object.
  explicit TRows(const TDelimitedExport& pExport) : fExport(pExport) {
    if (pExport.GoneSince()) fEarlierFiles.emplace(pExport.GoneSince(), static_cast<char16_t>(pExport.fDelimiter));
  }

  std::unique_ptr<TRowWriter> Branch() const override;
  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override;
  bool EndNode(const TTreeRow& pRow) override;
  bool VisitFile(const TTreeRow& pRow) override;
  void Flush() override {
    if (fDates) fExport.GiveDateFormatter(std::move(fDates));
  }

 private:
  // The data of an open folder that its rows need.
  struct TOpenFolder {
    size_t fParentLength;  // of the parent folder's path
    int64_t fShareBasis;   // the size that shares within the folder refer to
  };

  std::string& Line() { return fText.fBytes; }
  void AppendDate(TKivFileTime pDate) {
    if (!fDates) fDates = fExport.TakeDateFormatter();
    fDates->Append(Line(), pDate);
  }
  TEntryView ViewOf(const TTreeRow& pRow) { return pRow.View(fEarlierFiles ? &*fEarlierFiles : nullptr); }
  void WriteRow(const TTreeRow& pRow, const TEntryView& pEntry, const TSizeValues& pSizes);
  void AppendField(const TTreeRow& pRow, const TEntryView& pEntry, const TSizeValues& pSizes, TColumn pColumn);
  void AppendNameField(const TTreeRow& pRow, const TEntryView& pEntry);
  bool AppendQuickly(const TEntryView& pEntry, const TSizeValues& pSizes, TColumn pColumn);
  bool AppendNumber(TColumn pColumn, int64_t pValue);
  void AppendShareOfParent(const TSizeValues& pSizes);
  void AppendSlowly(const TEntryView& pEntry, TColumn pColumn);
  void AppendToPath(std::u16string_view pName, bool pIsFileGroup);
  int64_t ShareBasis(const TSizeValues& pSizes) const { return LeadingSizeOf(pSizes, fExport.LeadingSize()); }

  const TDelimitedExport& fExport;
  std::unique_ptr<TIsoLocalFormatter> fDates;  // borrowed from the first date until Flush
  std::string fPath;  // of the row, as written, so no ancestors are asked and no folder's path is converted twice
  size_t fParentLength = 0;  // of the path of the row's folder; 0 for the top
  std::string fName;         // of the row, if names are written
  std::vector<TOpenFolder> fOpen;
  std::optional<TEarlierFiles> fEarlierFiles;  // if the root is compared
};

TDelimitedExport::TDelimitedExport(const TMediaSettings& pSettings) : TBaseTextExport(pSettings) {}

void TDelimitedExport::ChooseColumns() {
  if (!Settings().fColumns.empty()) return SetColumns(Settings().fColumns);
  std::vector<TColumn> columns{TColumn::mdFullPath,   TColumn::mdSize,       TColumn::mdAllocated,
                               TColumn::mdFiles,      TColumn::mdFolders,    TColumn::mdPercentOfParent,
                               TColumn::mdLastChange, TColumn::mdLastAccess, TColumn::mdError};
  if (GoneSince())
    columns.insert(columns.end(),
                   {TColumn::mdSizeChange, TColumn::mdAllocatedChange, TColumn::mdFileChange, TColumn::mdChangeState});
  SetColumns(std::move(columns));
}

void TDelimitedExport::WriteRoot(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) return;
  ShowChanges(pRoot);
  ChooseColumns();
  fFields = {Separator(), Settings().fNeutralizeFormulas};
  fFormat = WithoutMisleadingGroups(ValueFormat(), fFields);
  // Bare numbers and dates hold only these characters. A separator with any other character cannot occur in them.
  fQuotesNumbers =
      !fFormat.fPlainByteValues || fFormat.fShowUnits ||
      fFields.fSeparator.find_first_not_of("0123456789-: " + ToUtf8(fFormat.fDecimalSeparator)) == std::string::npos;
  fDelimiter = static_cast<char>(pRoot.GetPathDelimiter());
  if (LineCount() == 0) WriteHeader();
  TRows rows(*this);
  WalkInParallel(*top, rows, [this](const TRowText& pText) {
    size_t begin = 0;
    for (const size_t end : pText.fEnds) {
      if (!WriteRow(std::string_view(pText.fBytes).substr(begin, end - begin))) return false;
      begin = end;
    }
    return true;
  });
}

// A second root follows the first one's rows without captions, which would be read as a row.
void TDelimitedExport::WriteHeader() {
  if (!Settings().fIncludeHeader || (Settings().fIncludedObjectTypes & ioFolders) == 0) return;
  std::string line;
  for (size_t i = 0; i < Columns().size(); ++i) {
    if (i > 0) line += fFields.fSeparator;
    AppendOwnField(line, HeaderText(Columns()[i]), fFields);
  }
  WriteRow(line);
}

bool TDelimitedExport::WriteRow(std::string_view pRow) {
  if (Settings().fByteOrderMark && LineCount() == 0) return WriteLine(std::string(kByteOrderMark).append(pRow));
  return WriteLine(pRow);
}

std::unique_ptr<TIsoLocalFormatter> TDelimitedExport::TakeDateFormatter() const {
  TCriticalSectionLock lock(fLock);
  if (fDateFormatters.empty()) return std::make_unique<TIsoLocalFormatter>();
  std::unique_ptr<TIsoLocalFormatter> formatter = std::move(fDateFormatters.back());
  fDateFormatters.pop_back();
  return formatter;
}

void TDelimitedExport::GiveDateFormatter(std::unique_ptr<TIsoLocalFormatter> pFormatter) const {
  TCriticalSectionLock lock(fLock);
  fDateFormatters.push_back(std::move(pFormatter));
}

// --- rows ------------------------------------------------------------------------------------------------------------

std::unique_ptr<TRowWriter> TDelimitedExport::TRows::Branch() const {
  auto rows = std::make_unique<TRows>(fExport);
  rows->fPath = fPath;
  if (!fOpen.empty()) rows->fOpen.push_back(fOpen.back());
  return rows;
}

void TDelimitedExport::TRows::AppendToPath(std::u16string_view pName, bool pIsFileGroup) {
  if (fPath.empty())
    AppendUnambiguous(fPath, pName);  // the top's name is a path
  else
    AppendNameToPath(fPath, pName, fExport.fDelimiter, pIsFileGroup);
}

bool TDelimitedExport::TRows::BeginNode(const TTreeRow& pRow, bool pIsComplete) {
  const TEntryView entry = ViewOf(pRow);
  const TSizeValues sizes = entry.GetValues();
  const size_t parentLength = fPath.size();
  AppendToPath(entry.GetObjectName(), pRow.fFolder.IsFileGroup());
  fParentLength = parentLength;
  if (pRow.fIsShown) WriteRow(pRow, entry, sizes);
  if (pIsComplete) {
    fPath.resize(parentLength);
    return true;
  }
  // A file's share refers to its folder, with or without a "[Files]" row between them.
  const bool isGroup = pRow.fFolder.IsFileGroup() && !fOpen.empty();
  fOpen.push_back({parentLength, isGroup ? fOpen.back().fShareBasis : ShareBasis(sizes)});
  return true;
}

bool TDelimitedExport::TRows::EndNode(const TTreeRow&) {
  fPath.resize(fOpen.back().fParentLength);
  fOpen.pop_back();
  return true;
}

// A file lies in the folder itself. The "[Files]" node around its row is not part of the path.
bool TDelimitedExport::TRows::VisitFile(const TTreeRow& pRow) {
  const std::u16string_view group = pRow.fFolder.IsFileGroup() ? pRow.fFolder.GetObjectName() : std::u16string_view();
  if (!group.empty()) fPath.resize(fOpen.back().fParentLength);
  const size_t length = fPath.size();
  const TEntryView file = ViewOf(pRow);
  AppendToPath(file.GetObjectName(), false);
  fParentLength = length;
  WriteRow(pRow, file, file.GetValues());
  fPath.resize(length);
  if (!group.empty()) AppendToPath(group, true);
  return true;
}

void TDelimitedExport::TRows::WriteRow(const TTreeRow& pRow, const TEntryView& pEntry, const TSizeValues& pSizes) {
  for (size_t i = 0; i < fExport.Columns().size(); ++i) {
    if (i > 0) Line() += fExport.fFields.fSeparator;
    AppendField(pRow, pEntry, pSizes, fExport.Columns()[i]);
  }
  fText.fEnds.push_back(Line().size());
}

// What the writer knows of the row's place is not asked of the ancestors again.
void TDelimitedExport::TRows::AppendField(const TTreeRow& pRow, const TEntryView& pEntry, const TSizeValues& pSizes,
                                          TColumn pColumn) {
  if (pColumn == TColumn::mdName) return AppendNameField(pRow, pEntry);
  if (pColumn == TColumn::mdFullPath) return AppendEscapedField(Line(), fPath, fExport.fFields);
  if (pColumn == TColumn::mdParentPath && fParentLength > 0)
    return AppendEscapedField(Line(), std::string_view(fPath).substr(0, fParentLength), fExport.fFields);
  if (pColumn == TColumn::mdError) return AppendTextField(Line(), fExport.ErrorOf(pRow), fExport.fFields);
  const size_t begin = Line().size();
  if (!AppendQuickly(pEntry, pSizes, pColumn)) return AppendSlowly(pEntry, pColumn);
  if (fExport.fQuotesNumbers) QuoteField(Line(), begin, fExport.fFields);
}

void TDelimitedExport::TRows::AppendNameField(const TTreeRow& pRow, const TEntryView& pEntry) {
  fName.clear();
  AppendName(fName, pEntry.GetObjectName(), !pRow.IsFile() && pRow.fFolder.IsFileGroup());
  AppendEscapedField(Line(), fName, fExport.fFields);
}

// Appends numbers and dates that the entry itself holds. False for all other columns.
bool TDelimitedExport::TRows::AppendQuickly(const TEntryView& pEntry, const TSizeValues& pSizes, TColumn pColumn) {
  switch (pColumn) {
    case TColumn::mdSize:
      return AppendNumber(pColumn, pSizes.fSize);
    case TColumn::mdAllocated:
      return AppendNumber(pColumn, pSizes.fAllocated);
    case TColumn::mdFiles:
      return AppendNumber(pColumn, pSizes.fFiles);
    case TColumn::mdFolders:
      // A file's cell is empty, as in all lists.
      return !pEntry.IsFolder() || AppendNumber(pColumn, pSizes.fFolders);
    case TColumn::mdPercentOfParent:
      AppendShareOfParent(pSizes);
      return true;
    case TColumn::mdLastChange:
      AppendDate(pEntry.GetLastChangeDate());
      return true;
    case TColumn::mdLastAccess:
      AppendDate(pEntry.GetLastAccessDate());
      return true;
    case TColumn::mdCreation:
      AppendDate(pEntry.GetCreationDate());
      return true;
    default:
      return false;
  }
}

bool TDelimitedExport::TRows::AppendNumber(TColumn pColumn, int64_t pValue) {
  AppendNumberText(Line(), pColumn, pValue, fExport.fFormat);
  return true;
}

void TDelimitedExport::TRows::AppendShareOfParent(const TSizeValues& pSizes) {
  // The top is the whole.
  const double share = fOpen.empty() ? 1.0 : ShareOfWhole(ShareBasis(pSizes), fOpen.back().fShareBasis);
  AppendShareText(Line(), share, fExport.fFormat);
}

void TDelimitedExport::TRows::AppendSlowly(const TEntryView& pEntry, TColumn pColumn) {
  const std::u16string text = pEntry.GetFormattedValue(pColumn, fExport.fFormat);
  if (ColumnInfo(pColumn).fKind == TColumnKind::ckText)
    AppendTextField(Line(), text, fExport.fFields);
  else
    AppendOwnField(Line(), ToUtf8(text), fExport.fFields);
}

// --- paths ---------------------------------------------------------------------------------------------------------

TPathListExport::TPathListExport(const TMediaSettings& pSettings, bool pBytesOfNames)
    : TFileStreamExport(pSettings), fBytesOfNames(pBytesOfNames) {
  if (!pBytesOfNames) SetColumns(pSettings.fColumns);
}

void TPathListExport::WriteRoot(IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) return;
  ShowChanges(pRoot);
  const TValueFormat format = ValueFormat();
  WalkTree(*top, [&](const TTreeRow& pRow) {
    // A "[Files]" row has no path in the storage, and neither has a deleted item.
    if (!pRow.IsFile() && pRow.fFolder.IsFileGroup()) return true;
    const TEntryView entry = pRow.View();
    if (entry.GetFolderState() & fsIsDummyForComparison) return true;
    std::string line = fBytesOfNames ? ToNativeBytes(entry.GetFullPath()) : ToDisplay(entry.GetFullPath());
    for (const TColumn column : Columns()) {
      if (column == TColumn::mdFullPath) continue;
      line += kPathListSeparator;
      line += ToDisplay(entry.GetFormattedValue(column, format));
    }
    return WriteLine(line);
  });
}

}  // namespace Vantrel::Exporting
