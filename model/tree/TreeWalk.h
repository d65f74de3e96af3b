#pragma once

// The one walk over a tree: its order, its limits, and what it shows.

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/tree/ChangedFolders.h"
#include "model/tree/EntryView.h"
#include "model/tree/ExpandedFolders.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// The order of siblings. Equal ones keep the order of the tree: by size, the largest first, then by name.
enum class TSiblingOrder : uint8_t {
  soTree,
  soColumn,  // by a column
  soChange,  // folders by the amount of their change in fOrderColumn, the largest first, be it growth or shrinkage
  soAny,     // whatever costs least
};

// What a walk visits. By default: all nodes of the tree, without files.
struct TTreeWalkSettings {
  static constexpr int32_t kUnlimited = std::numeric_limits<int32_t>::max();

  int32_t fDeepestLevel = kUnlimited;  // counted from the top, which is level 0
  int64_t fSmallest = 0;               // bytes; smaller folders and files are left out, with all beneath them
  bool fSmallestAllocated = false;     // they are bytes on the disk
  bool fShowsFolders = true;
  bool fShowsFileGroups = true;  // the "[Files]" nodes; without them, the files follow their folder's sub-folders
  bool fShowsFiles = false;
  TSiblingOrder fOrder = TSiblingOrder::soTree;
  TColumn fOrderColumn = TColumn::mdSize;             // for soColumn; for soChange one of the columns of change
  bool fDescending = true;                            // for soColumn
  std::shared_ptr<const TExpandedFolders> fExpanded;  // only these are entered; nullptr: all are
  TRef<IComparison> fGoneSince;  // what has gone since then is visited too; nullptr: only the tree is
  // Beneath the top, only what changed since then is visited; nullptr: all is.
  std::shared_ptr<const TChangedFolders> fOnlyChanged;
  // Called with the number of rows that a folder lacks for that. By any thread that walks.
  std::function<void(int64_t)> fOnUnchanged;
};

// A folder or file met on a walk. A tree has millions of files without nodes of their own, so a file is passed as its
// record in the folder's table. Valid during the call that passes it.
struct TTreeRow {
  IFolderData& fFolder;                // the node, or the node at which the file is kept
  int32_t fLevel = 0;                  // of the top folder: 0, unless the walk began elsewhere
  const TFileTable* fFiles = nullptr;  // set for a file only, as is fFile
  const TFileRecord* fFile = nullptr;
  bool fIsShown = true;  // false for a folder that only leads to rows beneath it

  bool IsFile() const { return fFile != nullptr; }
  TEntryView View(TEarlierFiles* pEarlier = nullptr) const {
    return fFile ? TEntryView(*fFiles, *fFile, &fFolder, pEarlier) : TEntryView(fFolder);
  }
};

// Takes the rows of a walk, a folder before its contents. A return value of false ends the walk.
class ITreeVisitor {
 public:
  virtual ~ITreeVisitor() = default;
  // pIsComplete means that nothing beneath the node follows and EndNode is not called for it.
  virtual bool BeginNode(const TTreeRow& pRow, bool pIsComplete) = 0;
  virtual bool EndNode(const TTreeRow& pRow) = 0;
  virtual bool VisitFile(const TTreeRow&) { return true; }
  // All files of a folder at once, where their order does not matter and all are shown. pFolder and pLevel are those of
  // their rows.
  virtual bool VisitFiles(IFolderData& pFolder, int32_t pLevel, const TFileTable& pFiles) {
    for (size_t i = 0; i < pFiles.Count(); ++i)
      if (!VisitFile({pFolder, pLevel, &pFiles, &pFiles[i]})) return false;
    return true;
  }
  // Called first for each folder. True means that the visitor itself handles the folder and everything beneath it. It
  // may walk the branch later, or on another thread.
  virtual bool TakesBranch(const TTreeRow&) { return false; }
};

// Walks trees. A folder comes before its contents, sub-folders before files. A running scan may change the tree
// meanwhile: each folder's children are those of the moment when the walk enters it. Several threads may use one walk.
class TTreeWalk {
 public:
  explicit TTreeWalk(TTreeWalkSettings pSettings) : fSettings(std::move(pSettings)) {}

  // Visits a folder and everything beneath it that the settings show. pLevel is the folder's level. False when the
  // visitor ended the walk.
  bool Run(IFolderData& pTop, ITreeVisitor& pVisitor, int32_t pLevel = 0) const;
  // Calls pRow for each shown row. False when pRow ended the walk by returning false.
  bool ForEach(IFolderData& pTop, const std::function<bool(const TTreeRow&)>& pRow) const;
  // The approximate number of rows that a walk of the branch visits.
  int64_t RowsOf(const IFolderData& pFolder) const;

 private:
  class TRun;

  template <class TEntry>
  bool IsTooSmall(const TEntry& pEntry) const;
  bool Shows(const IFolderData& pFolder) const {
    return pFolder.IsFileGroup() ? fSettings.fShowsFileGroups : fSettings.fShowsFolders;
  }
  bool Enters(const IFolderData& pFolder) const {
    return !fSettings.fExpanded || fSettings.fExpanded->Contains(pFolder);
  }
  void TellUnchanged(size_t pRows) const;
  std::vector<TRef<IFolderData>> ChildrenOf(IFolderData& pFolder) const;
  TRef<const TFileTable> FilesOf(const IFolderData& pFolder) const;
  std::vector<uint32_t> OrderOfFiles(const IFolderData& pFolder, const TFileTable& pFiles) const;

  const TTreeWalkSettings fSettings;
};

}  // namespace Vantrel
