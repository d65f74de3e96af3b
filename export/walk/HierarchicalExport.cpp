#include "export/walk/HierarchicalExport.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "model/tree/CustomFolder.h"
#include "model/tree/SingleFile.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"

namespace Vantrel::Exporting {

TValueFormat FormatOf(const TMediaSettings& pSettings) {
  TValueFormat format;
  format.fSizeUnit = pSettings.fAutomaticUnit ? TSizeUnit::suAutomatic : pSettings.fSizeUnit;
  format.fPlainByteValues = pSettings.fUsePlainByteValues;
  // A fixed unit is written once, in the header line.
  format.fShowUnits = pSettings.fShowUnits && pSettings.fAutomaticUnit && !pSettings.fUsePlainByteValues;
  return format;
}

TRef<IHierarchicalElement> TExportRow::Element() const {
  if (IsFile()) return MakeRef<Vantrel::TFileData>(fFolder, *fFiles, *fFile);
  return TRef<IHierarchicalElement>(&fFolder);
}

namespace {

// Equal items keep their order.
template <class TItem, class TValueOf>
void SortByColumn(std::vector<TItem>& pItems, bool pDescending, const TValueOf& pValueOf) {
  std::vector<std::pair<TMetaDataValue, TItem>> keyed;
  keyed.reserve(pItems.size());
  for (TItem& item : pItems) {
    TMetaDataValue value = pValueOf(item);
    keyed.emplace_back(std::move(value), std::move(item));
  }
  std::stable_sort(keyed.begin(), keyed.end(), [pDescending](const auto& pA, const auto& pB) {
    return (pDescending ? CompareValues(pB.first, pA.first) : CompareValues(pA.first, pB.first)) < 0;
  });
  std::transform(keyed.begin(), keyed.end(), pItems.begin(), [](auto& pItem) { return std::move(pItem.second); });
}

// Sorts by the amount of change, the largest first, whether growth or shrinkage.
TMetaDataValue AmountOfChange(const IFolderData& pFolder) {
  const TMetaDataValue value = pFolder.GetValue(TColumn::mdSizeChange);
  const auto* change = std::get_if<int64_t>(&value);
  return change ? std::abs(*change) : int64_t{0};
}

}  // namespace

std::vector<TRef<IFolderData>> TBaseExport::IncludedChildren(IFolderData& pFolder) const {
  if (pFolder.IsFileGroup()) return {};
  std::vector<TRef<IFolderData>> children = pFolder.FindSubFolders();
  if (fGoneSince && (pFolder.GetFolderState() & fsIsDummyForComparison) == 0) {
    std::vector<TRef<IFolderData>> gone = fGoneSince->FindGone(pFolder);
    children.insert(children.end(), gone.begin(), gone.end());
    if (!gone.empty()) children = SortedBySize(std::move(children));
  }
  std::erase_if(children, [&](const TRef<IFolderData>& pChild) {
    return (pChild->IsFileGroup() && !Includes(ioFileGroups)) || pChild->GetSize() < fSettings.fSmallestFolder;
  });
  // The files are already in the tree's order.
  if (const auto& order = fSettings.fSortOrder; order && *order != TSortOrder()) {
    SortByColumn(children, order->fDescending, [&](const auto& pChild) { return pChild->GetValue(order->fColumn); });
  } else if (fSortByChange && !order) {
    SortByColumn(children, true, [](const auto& pChild) { return AmountOfChange(*pChild); });
  }
  return children;
}

// The files of a folder with sub-folders lie beneath its "[Files]" node, if such rows are exported.
TRef<const TFileTable> TBaseExport::IncludedFiles(const IFolderData& pFolder) const {
  if (!Includes(ioFiles) || (Includes(ioFileGroups) && !pFolder.IsFileGroup() && pFolder.GetFilesNode()))
    return nullptr;
  return pFolder.GetFileTable();
}

std::vector<uint32_t> TBaseExport::OrderOfFiles(IFolderData& pFolder, const TFileTable& pFiles) const {
  std::vector<uint32_t> indices = pFiles.SortedIndices();
  std::erase_if(indices, [&](uint32_t pIndex) { return pFiles[pIndex].fSize < fSettings.fSmallestFolder; });
  if (const auto& order = fSettings.fSortOrder; order && *order != TSortOrder())
    SortByColumn(indices, order->fDescending, [&](uint32_t pIndex) {
      return TExportRow{pFolder, 0, &pFiles, &pFiles[pIndex]}.Element()->GetValue(order->fColumn);
    });
  return indices;
}

// The walk keeps one entry per open level and does not recurse, because trees can be deeper than the stack.
class TBaseExport::TWalk {
 public:
  // pLevel is the level of the topmost folder.
  TWalk(const TBaseExport& pExport, IExportVisitor& pVisitor, int32_t pLevel)
      : fExport(pExport), fVisitor(pVisitor), fTopLevel(pLevel) {}

  bool Run(TRef<IFolderData> pTop) {
    if (!Begin(std::move(pTop))) return false;
    while (!fOpen.empty()) {
      TOpenFolder& folder = fOpen.back();
      if (folder.fNext < folder.fChildren.size() ? !Begin(std::move(folder.fChildren[folder.fNext++])) : !End())
        return false;
    }
    return true;
  }

 private:
  struct TOpenFolder {
    TRef<IFolderData> fFolder;
    std::vector<TRef<IFolderData>> fChildren;
    TRef<const TFileTable> fFiles;  // nullptr when no files are exported
    size_t fNext = 0;
  };

  bool Begin(TRef<IFolderData> pFolder) {
    const int32_t level = fTopLevel + static_cast<int32_t>(fOpen.size());
    const TExportRow row{.fFolder = *pFolder, .fLevel = level, .fIsShown = fExport.IsIncluded(*pFolder)};
    if (fVisitor.TakesBranch(row)) return true;
    TOpenFolder folder;
    // A folder that is not included still leads to those beneath it.
    if (level < fExport.Settings().fRecursionLevel.fLevel) {
      folder.fChildren = fExport.IncludedChildren(*pFolder);
      folder.fFiles = fExport.IncludedFiles(*pFolder);
    }
    const bool isComplete = folder.fChildren.empty() && !folder.fFiles;
    if (!fVisitor.BeginNode(row, isComplete)) return false;
    if (isComplete) return true;
    folder.fFolder = std::move(pFolder);
    fOpen.push_back(std::move(folder));
    return true;
  }

  bool End() {
    const TOpenFolder folder = std::move(fOpen.back());
    fOpen.pop_back();
    const int32_t level = fTopLevel + static_cast<int32_t>(fOpen.size());
    if (folder.fFiles) {
      for (const uint32_t index : fExport.OrderOfFiles(*folder.fFolder, *folder.fFiles))
        if (!fVisitor.VisitFile({*folder.fFolder, level + 1, folder.fFiles.get(), &(*folder.fFiles)[index]}))
          return false;
    }
    return fVisitor.EndNode(
        {.fFolder = *folder.fFolder, .fLevel = level, .fIsShown = fExport.IsIncluded(*folder.fFolder)});
  }

  const TBaseExport& fExport;
  IExportVisitor& fVisitor;
  const int32_t fTopLevel;
  std::vector<TOpenFolder> fOpen;
};

bool TBaseExport::WalkNodes(IFolderData& pTop, IExportVisitor& pVisitor) const {
  return TWalk(*this, pVisitor, 0).Run(&pTop);
}

// --- on several threads ----------------------------------------------------------------------------------------------

int64_t TBaseExport::RowsOf(const IFolderData& pFolder) const {
  constexpr int64_t kVeryMany = 1 << 30;  // limits the count, because a scan file may claim any number
  TSizeValues values = pFolder.GetValues();
  if (fGoneSince) values.fFolders += std::min(fGoneSince->EarlierValues(pFolder).fFolders, kVeryMany);
  return 1 + std::min(values.fFolders, kVeryMany) + (Includes(ioFiles) ? std::min(values.fFiles, kVeryMany) : 0);
}

// Gives small branches to other threads, and groups small siblings. It writes the folders above them itself. So every
// piece stays small for any shape of tree, and no thread gets all the work.
class TBaseExport::TBranchingVisitor final : public IExportVisitor {
 public:
  TBranchingVisitor(const TBaseExport& pExport, TRowWriter& pWriter, TParallelText& pText)
      : fExport(pExport), fWriter(pWriter), fText(pText) {}

  bool TakesBranch(const TExportRow& pRow) override {
    const int64_t rows = fExport.RowsOf(pRow.fFolder);
    if (rows > kRowsPerPiece) return false;
    if (fRows + rows > kRowsPerPiece) SendBranches();
    fBranches.emplace_back(&pRow.fFolder);
    fLevel = pRow.fLevel;
    fRows += rows;
    return true;
  }
  bool BeginNode(const TExportRow& pRow, bool pIsComplete) override {
    return SendBranches() && fWriter.BeginNode(pRow, pIsComplete) && SendLongText();
  }
  bool EndNode(const TExportRow& pRow) override { return SendBranches() && fWriter.EndNode(pRow) && SendLongText(); }
  bool VisitFile(const TExportRow& pRow) override {
    return SendBranches() && fWriter.VisitFile(pRow) && SendLongText();
  }
  bool Finish() { return SendBranches() && SendText() && fText.Finish(); }

 private:
  static constexpr int64_t kRowsPerPiece = 500;
  static constexpr size_t kLongText = 128 * 1024;

  // Long chains of folders and huge folders are never small branches, so their text is sent when it grows long.
  bool SendLongText() { return fWriter.fText.fBytes.size() < kLongText || SendText(); }

  bool SendText() {
    fWriter.Flush();
    return fWriter.fText.fBytes.empty() || fText.Add(fWriter.fText);
  }

  // All collected branches lie in the innermost open folder.
  bool SendBranches() {
    if (fBranches.empty()) return true;
    if (!SendText()) return false;
    fRows = 0;
    auto make = [&exporter = fExport, writer = std::shared_ptr<TRowWriter>(fWriter.Branch()), level = fLevel,
                 folders = std::exchange(fBranches, {})](TRowText& pText) {
      std::swap(writer->fText, pText);
      for (const TRef<IFolderData>& folder : folders) TWalk(exporter, *writer, level).Run(folder);
      writer->Flush();
      std::swap(writer->fText, pText);
    };
    return fText.Add(std::move(make));
  }

  const TBaseExport& fExport;
  TRowWriter& fWriter;
  TParallelText& fText;
  std::vector<TRef<IFolderData>> fBranches;  // siblings not sent yet
  int32_t fLevel = 0;                        // the level of fBranches
  int64_t fRows = 0;                         // the rows of fBranches
};

bool TBaseExport::WalkInParallel(IFolderData& pTop, TRowWriter& pWriter, const TParallelText::TTake& pTake) const {
  TParallelText text(ProcessorCount(), pTake);
  TBranchingVisitor visitor(*this, pWriter, text);
  return WalkNodes(pTop, visitor) && visitor.Finish();
}

bool TBaseExport::WalkTree(IFolderData& pTop, const std::function<bool(const TExportRow&)>& pRow) const {
  struct TRows : IExportVisitor {
    explicit TRows(const std::function<bool(const TExportRow&)>& pCall) : fCall(pCall) {}
    bool BeginNode(const TExportRow& pRow, bool) override { return !pRow.fIsShown || fCall(pRow); }
    bool EndNode(const TExportRow&) override { return true; }
    bool VisitFile(const TExportRow& pFile) override { return fCall(pFile); }
    const std::function<bool(const TExportRow&)>& fCall;
  } rows(pRow);
  return WalkNodes(pTop, rows);
}

bool TFileStreamExport::Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) {
  fOutput = &pOutput;
  fFailed = false;
  ReadErrors(pRoot);
  WriteRoot(pRoot);
  fErrors.clear();
  fOutput = nullptr;
  return !fFailed;
}

void TFileStreamExport::ReadErrors(const IHierarchicalRoot& pRoot) {
  for (const TScanError& error : pRoot.GetErrors())
    if (error.fObject) fErrors.emplace(error.fObject.get(), error.fText + (error.fPartial ? u" (read in part)" : u""));
}

std::u16string_view TFileStreamExport::ErrorOf(const TExportRow& pRow) const {
  if (fErrors.empty() || pRow.IsFile()) return {};
  const auto found = fErrors.find(&pRow.fFolder);
  return found == fErrors.end() ? std::u16string_view() : found->second;
}

bool TFileStreamExport::WriteLine(std::string_view pLine) {
  if (!fFailed) fFailed = !fOutput->WriteLine(pLine);
  return !fFailed;
}

}  // namespace Vantrel::Exporting
