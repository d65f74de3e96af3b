#include "export/json/JSONExport.h"

#include <optional>

#include "model/roots/EarlierFiles.h"
#include "platform/system/Errors.h"
#include "search/patterns/PatternFilter.h"

namespace Vantrel::Exporting {

using JSON::TMembers;

// Writes rows for the whole tree, or for the contents of one of its folders.
class TJSONExport::TRows final : public TRowWriter {
 public:
  // pExport must outlive this object.
  explicit TRows(const TJSONExport& pExport) : fExport(pExport) {
    if (pExport.GoneSince()) fEarlierFiles.emplace(pExport.GoneSince(), pExport.fDelimiter);
  }

  std::unique_ptr<TRowWriter> Branch() const override;
  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override;
  bool EndNode(const TTreeRow& pRow) override;
  bool VisitFile(const TTreeRow& pRow) override;

 private:
  // The data of an open folder that its rows need.
  struct TOpenFolder {
    size_t fParentLength;  // of the parent folder's path
    int64_t fShareBasis;   // the size that shares within the folder refer to
  };

  TEntryView ViewOf(const TTreeRow& pRow) { return pRow.View(fEarlierFiles ? &*fEarlierFiles : nullptr); }
  int64_t ShareBasis(const TSizeValues& pSizes) const { return LeadingSizeOf(pSizes, fExport.LeadingSize()); }
  void AppendToPath(std::u16string_view pName);
  void WriteRow(const TTreeRow& pRow, const TEntryView& pEntry, const TSizeValues& pSizes);
  void AddColumn(TMembers& pMembers, size_t pColumn, const TTreeRow& pRow, const TEntryView& pEntry,
                 const TSizeValues& pSizes);

  const TJSONExport& fExport;
  std::string fPath;  // of the row, as written, so no ancestors are asked and no folder's path is converted twice
  std::vector<TOpenFolder> fOpen;
  std::optional<TEarlierFiles> fEarlierFiles;  // if the root is compared
};

void TJSONExport::ChooseColumns(const IHierarchicalRoot& pRoot) {
  std::vector<TColumn> columns = Settings().fColumns;
  if (columns.empty()) {
    columns = {TColumn::mdFullPath,   TColumn::mdSize,       TColumn::mdAllocated,  TColumn::mdFiles,
               TColumn::mdFolders,    TColumn::mdLastChange, TColumn::mdLastAccess, TColumn::mdCreation,
               TColumn::mdAttributes, TColumn::mdError};
    if (pRoot.GetScanConfiguration()->GetDoUsersStatistics()) columns.push_back(TColumn::mdOwner);
    if (GoneSince())
      columns.insert(columns.end(), {TColumn::mdSizeChange, TColumn::mdAllocatedChange, TColumn::mdFileChange,
                                     TColumn::mdChangeState});
  }
  fKeys.clear();
  for (const TColumn column : columns) fKeys.push_back(JSON::KeyOf(column));
  SetColumns(std::move(columns));
}

bool TJSONExport::IsWhole(const IFolderData& pTop) const {
  return Settings().fRecursionLevel.fLevel == TRecursionLevel::kUnlimited && SmallestShown(pTop) == 0 &&
         (Settings().fIncludedObjectTypes & ioFolders) != 0 && !Settings().fIncludeExpandedOnly &&
         !LeavesOutUnchanged();
}

std::string TJSONExport::Head(const IHierarchicalRoot& pRoot, const IFolderData& pTop) const {
  std::string text;
  TMembers head = JSON::BeginHead(text, "tree");
  const TRootStates state = pRoot.GetState();
  const TStorageInformation storage = pRoot.GetStorageInformation();
  head.Add("path", pRoot.GetPath());
  head.Add("title", pRoot.GetTitle());
  head.Add("delimiter", std::u16string_view(&fDelimiter, 1));
  head.AddDate("date", pRoot.GetScanTimeStamp());
  head.Add("filesystem", storage.fFileSystem);
  head.AddNumber("clustersize", storage.fBytesPerCluster);
  head.AddNumber("totalbytes", storage.fTotalBytes);
  head.AddNumber("freebytes", storage.fFreeBytes);
  head.Add("filter", FilterText(pRoot));
  head.AddNumber("excluded", pRoot.GetProgress().fExcludedObjects);
  head.AddBoolean("stopped", (state & rsCancelled) != 0);
  const bool isWhole = IsWhole(pTop) && (state & rsIsPartialImport) == 0;
  head.AddBoolean("whole", isWhole);
  // A reader then knows whether a file with rows in lines was cut off.
  head.AddBoolean("singlefiles", isWhole && (Settings().fIncludedObjectTypes & ioFiles) != 0 &&
                                     pRoot.GetScanConfiguration()->GetKeepFiles());
  if (GoneSince()) head.AddDate("comparedwith", GoneSince()->GetScanTimeStamp());
  head.End();
  return text;
}

void TJSONExport::Export(IHierarchicalRoot& pRoot, IByteSink& pSink) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) throw EInvalidOperation("TJSONExport.Export: the root has not been scanned");
  ShowChanges(pRoot);
  ReadErrors(pRoot);
  ChooseColumns(pRoot);
  fDelimiter = pRoot.GetPathDelimiter();
  SetLeadingSize(pRoot.GetScanConfiguration()->GetShareBasis());
  JSON::TDocument document(pSink, fLayout, Head(pRoot, *top));
  fRowBegin = document.RowBegin();
  TRows rows(*this);
  WalkInParallel(*top, rows, [&document](const TRowText& pText) {
    document.WriteRows(pText.fBytes);
    return true;
  });
  document.End();
  ForgetErrors();
}

// --- rows ------------------------------------------------------------------------------------------------------------

std::unique_ptr<TRowWriter> TJSONExport::TRows::Branch() const {
  auto rows = std::make_unique<TRows>(fExport);
  rows->fPath = fPath;
  if (!fOpen.empty()) rows->fOpen.push_back(fOpen.back());
  return rows;
}

void TJSONExport::TRows::AppendToPath(std::u16string_view pName) {
  const bool isTop = fPath.empty();
  // A final backslash stands in the path as two.
  const bool endsWithDelimiter = fPath.ends_with(static_cast<char>(fExport.fDelimiter));
  if (!isTop && !endsWithDelimiter) JSON::AppendText(fPath, std::u16string_view(&fExport.fDelimiter, 1));
  JSON::AppendText(fPath, pName);
}

bool TJSONExport::TRows::BeginNode(const TTreeRow& pRow, bool pIsComplete) {
  const TEntryView entry = ViewOf(pRow);
  const TSizeValues sizes = entry.GetValues();
  const size_t parentLength = fPath.size();
  const bool isGroup = pRow.fFolder.IsFileGroup();
  // The files of a folder have its path.
  if (!isGroup) AppendToPath(entry.GetObjectName());
  if (pRow.fIsShown) WriteRow(pRow, entry, sizes);
  if (pIsComplete) {
    fPath.resize(parentLength);
    return true;
  }
  // A file's share refers to its folder, with or without a row for the files between them.
  fOpen.push_back({parentLength, isGroup && !fOpen.empty() ? fOpen.back().fShareBasis : ShareBasis(sizes)});
  return true;
}

bool TJSONExport::TRows::EndNode(const TTreeRow&) {
  fPath.resize(fOpen.back().fParentLength);
  fOpen.pop_back();
  return true;
}

bool TJSONExport::TRows::VisitFile(const TTreeRow& pRow) {
  const size_t length = fPath.size();
  const TEntryView file = ViewOf(pRow);
  AppendToPath(file.GetObjectName());
  WriteRow(pRow, file, file.GetValues());
  fPath.resize(length);
  return true;
}

void TJSONExport::TRows::WriteRow(const TTreeRow& pRow, const TEntryView& pEntry, const TSizeValues& pSizes) {
  std::string& text = fText.fBytes;
  text += fExport.fRowBegin;
  TMembers members(text);
  members.AddOwn("type", pRow.IsFile() ? "file" : pRow.fFolder.IsFileGroup() ? "files" : "folder");
  for (size_t i = 0; i < fExport.fKeys.size(); ++i) AddColumn(members, i, pRow, pEntry, pSizes);
  members.End();
}

// What the writer knows of the row's place is not asked of the ancestors again.
void TJSONExport::TRows::AddColumn(TMembers& pMembers, size_t pColumn, const TTreeRow& pRow, const TEntryView& pEntry,
                                   const TSizeValues& pSizes) {
  const TColumn column = fExport.Columns()[pColumn];
  const std::string& key = fExport.fKeys[pColumn];
  switch (column) {
    case TColumn::mdFullPath:
      pMembers.BeginText(key);
      fText.fBytes += fPath;
      return pMembers.EndText();
    case TColumn::mdName:
      return pMembers.Add(key, pEntry.GetObjectName());
    case TColumn::mdSize:
      return pMembers.AddNumber(key, pSizes.fSize);
    case TColumn::mdAllocated:
      return pMembers.AddNumber(key, pSizes.fAllocated);
    case TColumn::mdFiles:
      // A file is one file, which need not be said.
      return pRow.IsFile() ? void() : pMembers.AddNumber(key, pSizes.fFiles);
    case TColumn::mdFolders:
      return pRow.IsFile() ? void() : pMembers.AddNumber(key, pSizes.fFolders);
    case TColumn::mdPercentOfParent:
      // The top is the whole.
      return pMembers.AddPercent(key, fOpen.empty() ? 1.0 : ShareOfWhole(ShareBasis(pSizes), fOpen.back().fShareBasis));
    case TColumn::mdLastChange:
      return pMembers.AddDate(key, pEntry.GetLastChangeDate());
    case TColumn::mdLastAccess:
      return pMembers.AddDate(key, pEntry.GetLastAccessDate());
    case TColumn::mdCreation:
      return pMembers.AddDate(key, pEntry.GetCreationDate());
    case TColumn::mdAttributes:
      return pMembers.AddNumber(key, pEntry.GetAttributes());
    case TColumn::mdError:
      return pMembers.Add(key, fExport.ErrorOf(pRow));
    default:
      return pMembers.AddValue(key, pEntry.GetValue(column));
  }
}

}  // namespace Vantrel::Exporting
