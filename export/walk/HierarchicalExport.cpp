#include "export/walk/HierarchicalExport.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/system/Console.h"
#include "platform/system/System.h"

namespace Vantrel::Exporting {

TLineWidth ConsoleWidth() {
  constexpr int kUsualWidth = 80;
  const int columns = TConsole::OutputWidth();
  return columns > 0 ? TLineWidth{columns, true} : TLineWidth{kUsualWidth, false};
}

TLineLook ConsoleLook() {
  return {TConsole::HasOutputColors(), TConsole::HasOutputDrawings(), TConsole::PartsOfBlock()};
}

TValueFormat FormatOf(const TMediaSettings& pSettings) {
  TValueFormat format;
  format.fSizeUnit = pSettings.fAutomaticUnit ? TSizeUnit::suAutomatic : pSettings.fSizeUnit;
  format.fDecimalUnits = pSettings.fDecimalUnits;
  format.fPlainByteValues = pSettings.fUsePlainByteValues;
  // A fixed unit is written once, in the header line.
  format.fShowUnits = pSettings.fShowUnits && pSettings.fAutomaticUnit && !pSettings.fUsePlainByteValues;
  return format;
}

int64_t TBaseExport::SmallestShown(const IFolderData& pTop) const {
  const int64_t whole = LeadingSizeOf(pTop.GetValues(), fLeadingSize);
  const double share = std::ceil(fSettings.fSmallestShare * static_cast<double>(whole));
  return std::max(fSettings.fSmallestFolder, static_cast<int64_t>(share));
}

void TBaseExport::ShowChanges(IHierarchicalRoot& pRoot) {
  fGoneSince = pRoot.GetComparison();
  fOnlyChanged = nullptr;
  fUnchangedRows = 0;
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!fGoneSince || !top || fSettings.fShowUnchanged) return;
  const bool withFiles = (fSettings.fIncludedObjectTypes & ioFiles) != 0;
  fOnlyChanged = std::make_shared<TChangedFolders>(*top, fGoneSince, pRoot.GetPathDelimiter(), withFiles);
}

TTreeWalk TBaseExport::Walk(const IFolderData& pTop) const {
  auto includes = [this](TIncludedObjectTypes pTypes) { return (fSettings.fIncludedObjectTypes & pTypes) != 0; };
  TTreeWalkSettings settings;
  settings.fDeepestLevel = fSettings.fRecursionLevel.fLevel;
  settings.fSmallest = SmallestShown(pTop);
  settings.fSmallestAllocated = fLeadingSize == TColumn::mdAllocated;
  settings.fShowsFolders = includes(ioFolders);
  settings.fShowsFileGroups = includes(ioFileGroups);
  settings.fShowsFiles = includes(ioFiles);
  settings.fGoneSince = fGoneSince;
  settings.fOnlyChanged = fOnlyChanged;
  if (fOnlyChanged) settings.fOnUnchanged = [this](int64_t pRows) { fUnchangedRows += pRows; };
  if (fSettings.fIncludeExpandedOnly) settings.fExpanded = fExpanded;
  if (const auto& order = fSettings.fSortOrder; order && *order != TSortOrder()) {
    settings.fOrder = TSiblingOrder::soColumn;
    settings.fOrderColumn = order->fColumn;
    settings.fDescending = order->fDescending;
  } else if (fSortByChange && !order) {
    settings.fOrder = TSiblingOrder::soChange;
    settings.fOrderColumn = LeadingChange();
  } else if (fLeadingSize != TColumn::mdSize && !order) {
    settings.fOrder = TSiblingOrder::soColumn;
    settings.fOrderColumn = fLeadingSize;
  }
  return TTreeWalk(settings);
}

bool TBaseExport::WalkTree(IFolderData& pTop, const std::function<bool(const TTreeRow&)>& pRow) const {
  return Walk(pTop).ForEach(pTop, pRow);
}

// --- on several threads ----------------------------------------------------------------------------------------------

// Gives small branches to other threads, and groups small siblings. It writes the folders above them itself. So every
// piece stays small for any shape of tree, and no thread gets all the work.
class TBaseExport::TBranchingVisitor final : public ITreeVisitor {
 public:
  TBranchingVisitor(const TTreeWalk& pWalk, TRowWriter& pWriter, TParallelText& pText)
      : fWalk(pWalk), fWriter(pWriter), fText(pText) {}

  bool TakesBranch(const TTreeRow& pRow) override {
    const int64_t rows = fWalk.RowsOf(pRow.fFolder);
    if (rows > kRowsPerPiece) return false;
    if (fRows + rows > kRowsPerPiece) SendBranches();
    fBranches.emplace_back(&pRow.fFolder);
    fLevel = pRow.fLevel;
    fRows += rows;
    return true;
  }
  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override {
    return SendBranches() && fWriter.BeginNode(pRow, pIsComplete) && SendLongText();
  }
  bool EndNode(const TTreeRow& pRow) override { return SendBranches() && fWriter.EndNode(pRow) && SendLongText(); }
  bool VisitFile(const TTreeRow& pRow) override { return SendBranches() && fWriter.VisitFile(pRow) && SendLongText(); }
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
    auto make = [&walk = fWalk, writer = std::shared_ptr<TRowWriter>(fWriter.Branch()), level = fLevel,
                 folders = std::exchange(fBranches, {})](TRowText& pText) {
      std::swap(writer->fText, pText);
      for (const TRef<IFolderData>& folder : folders) walk.Run(*folder, *writer, level);
      writer->Flush();
      std::swap(writer->fText, pText);
    };
    return fText.Add(std::move(make));
  }

  const TTreeWalk& fWalk;
  TRowWriter& fWriter;
  TParallelText& fText;
  std::vector<TRef<IFolderData>> fBranches;  // siblings not sent yet
  int32_t fLevel = 0;                        // the level of fBranches
  int64_t fRows = 0;                         // the rows of fBranches
};

bool TBaseExport::WalkInParallel(IFolderData& pTop, TRowWriter& pWriter, const TParallelText::TTake& pTake) const {
  const TTreeWalk walk = Walk(pTop);
  TParallelText text(ProcessorCount(), pTake);
  TBranchingVisitor visitor(walk, pWriter, text);
  return walk.Run(pTop, visitor) && visitor.Finish();
}

bool TFileStreamExport::Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) {
  fOutput = &pOutput;
  fFailed = false;
  ReadErrors(pRoot);
  SetLeadingSize(pRoot.GetScanConfiguration()->GetShareBasis());
  WriteRoot(pRoot);
  ForgetErrors();
  fOutput = nullptr;
  return !fFailed;
}

void TBaseExport::ReadErrors(const IHierarchicalRoot& pRoot) {
  for (const TScanError& error : pRoot.GetErrors())
    if (error.fObject)
      fErrors.emplace(error.fObject.get(), error.fPartial ? error.fText + std::u16string(kPartialError) : error.fText);
}

std::u16string_view TBaseExport::ErrorOf(const TTreeRow& pRow) const {
  if (fErrors.empty() || pRow.IsFile()) return {};
  const auto found = fErrors.find(&pRow.fFolder);
  return found == fErrors.end() ? std::u16string_view() : found->second;
}

bool TFileStreamExport::WriteLine(std::string_view pLine) {
  if (!fFailed) fFailed = !fOutput->WriteLine(pLine);
  return !fFailed;
}

}  // namespace Vantrel::Exporting
