#include "model/tree/TreeWalk.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <utility>

#include "model/tree/CustomFolder.h"

namespace Vantrel {

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

TMetaDataValue AmountOfChange(const IFolderData& pFolder, TColumn pColumn) {
  const TMetaDataValue value = TEntryView(pFolder).GetValue(pColumn);
  const auto* change = std::get_if<int64_t>(&value);
  return change ? std::abs(*change) : int64_t{0};
}

}  // namespace

template <class TEntry>
bool TTreeWalk::IsTooSmall(const TEntry& pEntry) const {
  return fSettings.fSmallest > 0 &&
         (fSettings.fSmallestAllocated ? pEntry.GetAllocated() : pEntry.GetSize()) < fSettings.fSmallest;
}

std::vector<TRef<IFolderData>> TTreeWalk::ChildrenOf(IFolderData& pFolder) const {
  if (pFolder.IsFileGroup()) return {};
  std::vector<TRef<IFolderData>> children = pFolder.FindSubFolders();
  if (fSettings.fGoneSince && (pFolder.GetFolderState() & fsIsDummyForComparison) == 0) {
    std::vector<TRef<IFolderData>> gone = fSettings.fGoneSince->FindGone(pFolder);
    children.insert(children.end(), gone.begin(), gone.end());
    if (!gone.empty()) children = SortedBySize(std::move(children));
  }
  std::erase_if(children, [&](const TRef<IFolderData>& pChild) {
    return (pChild->IsFileGroup() && !fSettings.fShowsFileGroups) || IsTooSmall(*pChild);
  });
  if (fSettings.fOnlyChanged) {
    size_t shown = 0;
    std::erase_if(children, [&](const TRef<IFolderData>& pChild) {
      const bool isUnchanged = !fSettings.fOnlyChanged->Contains(*pChild);
      if (isUnchanged && Shows(*pChild)) ++shown;
      return isUnchanged;
    });
    TellUnchanged(shown);
  }
  if (fSettings.fOrder == TSiblingOrder::soColumn)
    SortByColumn(children, fSettings.fDescending,
                 [&](const auto& pChild) { return TEntryView(*pChild).GetValue(fSettings.fOrderColumn); });
  else if (fSettings.fOrder == TSiblingOrder::soChange)
    SortByColumn(children, true, [&](const auto& pChild) { return AmountOfChange(*pChild, fSettings.fOrderColumn); });
  return children;
}

void TTreeWalk::TellUnchanged(size_t pRows) const {
  if (pRows > 0 && fSettings.fOnUnchanged) fSettings.fOnUnchanged(static_cast<int64_t>(pRows));
}

// The files of a folder with sub-folders lie beneath its "[Files]" node, if such nodes are shown.
TRef<const TFileTable> TTreeWalk::FilesOf(const IFolderData& pFolder) const {
  if (!fSettings.fShowsFiles || (fSettings.fShowsFileGroups && !pFolder.IsFileGroup() && pFolder.GetFilesNode()))
    return nullptr;
  return pFolder.GetFileTable();
}

std::vector<uint32_t> TTreeWalk::OrderOfFiles(const IFolderData& pFolder, const TFileTable& pFiles) const {
  std::vector<uint32_t> indices(fSettings.fOrder == TSiblingOrder::soAny ? pFiles.Count() : 0);
  std::iota(indices.begin(), indices.end(), 0u);
  if (fSettings.fOrder != TSiblingOrder::soAny) indices = pFiles.SortedIndices();
  std::erase_if(indices, [&](uint32_t pIndex) { return IsTooSmall(TEntryView(pFiles, pFiles[pIndex], nullptr)); });
  if (fSettings.fOnlyChanged) {
    TEarlierFiles earlier = fSettings.fOnlyChanged->EarlierFiles();
    TellUnchanged(std::erase_if(indices, [&](uint32_t pIndex) {
      return !TChangedFolders::HasFileChanged(pFolder, pFiles, pFiles[pIndex], earlier);
    }));
  }
  if (fSettings.fOrder == TSiblingOrder::soColumn)
    SortByColumn(indices, fSettings.fDescending, [&](uint32_t pIndex) {
      return TEntryView(pFiles, pFiles[pIndex], &pFolder).GetValue(fSettings.fOrderColumn);
    });
  return indices;
}

// Keeps one entry per open level and does not recurse, because trees can be deeper than the stack.
class TTreeWalk::TRun {
 public:
  // pLevel is the level of the topmost folder.
  TRun(const TTreeWalk& pWalk, ITreeVisitor& pVisitor, int32_t pLevel)
      : fWalk(pWalk), fVisitor(pVisitor), fTopLevel(pLevel) {}

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
    TRef<const TFileTable> fFiles;  // nullptr when no files are shown
    size_t fNext = 0;
  };

  TTreeRow RowOf(IFolderData& pFolder) const {
    const int32_t level = fTopLevel + static_cast<int32_t>(fOpen.size());
    return {.fFolder = pFolder, .fLevel = level, .fIsShown = fWalk.Shows(pFolder)};
  }

  bool Begin(TRef<IFolderData> pFolder) {
    const TTreeRow row = RowOf(*pFolder);
    if (fVisitor.TakesBranch(row)) return true;
    TOpenFolder folder;
    // A folder that is not shown still leads to those beneath it.
    if (row.fLevel < fWalk.fSettings.fDeepestLevel && fWalk.Enters(*pFolder)) {
      folder.fChildren = fWalk.ChildrenOf(*pFolder);
      folder.fFiles = fWalk.FilesOf(*pFolder);
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
    const TTreeRow row = RowOf(*folder.fFolder);
    return (!folder.fFiles || VisitFiles(*folder.fFolder, *folder.fFiles, row.fLevel + 1)) && fVisitor.EndNode(row);
  }

  bool VisitFiles(IFolderData& pFolder, const TFileTable& pFiles, int32_t pLevel) {
    const TTreeWalkSettings& settings = fWalk.fSettings;
    if (settings.fOrder == TSiblingOrder::soAny && settings.fSmallest <= 0 && !settings.fOnlyChanged)
      return fVisitor.VisitFiles(pFolder, pLevel, pFiles);
    for (const uint32_t index : fWalk.OrderOfFiles(pFolder, pFiles))
      if (!fVisitor.VisitFile({pFolder, pLevel, &pFiles, &pFiles[index]})) return false;
    return true;
  }

  const TTreeWalk& fWalk;
  ITreeVisitor& fVisitor;
  const int32_t fTopLevel;
  std::vector<TOpenFolder> fOpen;
};

bool TTreeWalk::Run(IFolderData& pTop, ITreeVisitor& pVisitor, int32_t pLevel) const {
  return TRun(*this, pVisitor, pLevel).Run(TRef<IFolderData>(&pTop));
}

bool TTreeWalk::ForEach(IFolderData& pTop, const std::function<bool(const TTreeRow&)>& pRow) const {
  struct TRows : ITreeVisitor {
    explicit TRows(const std::function<bool(const TTreeRow&)>& pCall) : fCall(pCall) {}
    bool BeginNode(const TTreeRow& pRow, bool) override { return !pRow.fIsShown || fCall(pRow); }
    bool EndNode(const TTreeRow&) override { return true; }
    bool VisitFile(const TTreeRow& pFile) override { return fCall(pFile); }
    const std::function<bool(const TTreeRow&)>& fCall;
  } rows(pRow);
  return Run(pTop, rows);
}

int64_t TTreeWalk::RowsOf(const IFolderData& pFolder) const {
  constexpr int64_t kVeryMany = 1 << 30;  // limits the count, because a scan file may claim any number
  TSizeValues values = pFolder.GetValues();
  if (fSettings.fGoneSince)
    values.fFolders += std::min(fSettings.fGoneSince->EarlierValues(pFolder).fFolders, kVeryMany);
  return 1 + std::min(values.fFolders, kVeryMany) + (fSettings.fShowsFiles ? std::min(values.fFiles, kVeryMany) : 0);
}

}  // namespace Vantrel
