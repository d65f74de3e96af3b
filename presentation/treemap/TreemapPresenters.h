#pragma once

// The presenters that feed a treemap: their interface, and the one of the folder tree.

#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/FileTypeGroups.h"
#include "presentation/treemap/TreemapColors.h"
#include "presentation/treemap/TreemapElements.h"
#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

// What a colour means.
struct TTreemapLegendItem {
  std::u16string fText;
  TColor fColor = 0;
};

// Where a treemap gets its elements from. Fixed after construction; any thread.
class ITreemapPresenter : public IInterface {
 public:
  // A snapshot of the top: a container whose only child is the top element, with number 0. The settings say whether
  // files are shown, and on which background.
  virtual TRef<const ITreemapContainer> GetTop(const TTreemapSettings& pSettings) const = 0;
  // What the lookups of the threads that compute a picture need. Lives as long as the presenter.
  virtual const TTreemapColoring& GetColoring() const = 0;
  // The column of the tiles' values: mdSize, mdAllocated or mdFiles.
  TColumn GetValueColumn() const { return GetColoring().fValueColumn; }
  virtual std::vector<TTreemapLegendItem> GetLegend() const = 0;
};

// What a treemap of a folder tree shows.
struct TTreeMapOptions {
  TColumn fValueColumn = TColumn::mdSize;  // or mdAllocated or mdFiles: what areas are proportional to
  TTreemapColorScheme fScheme = TTreemapColorScheme::csType;
  bool fShowFreeSpace = false;          // of the root's drive, beside the contents of the top; not for mdFiles
  TRef<const IFileTypeGroups> fGroups;  // nullptr: the standard groups
};

// The folder tree from a folder downwards. The tree may change while it is shown: each folder is read once, when it is
// opened.
class TTreeMapChartBasePresenter : public TInterfaced<ITreemapPresenter> {
 public:
  TTreeMapChartBasePresenter(TRef<IFolderData> pFolder, TTreeMapOptions pOptions);

  TRef<const ITreemapContainer> GetTop(const TTreemapSettings& pSettings) const override;
  const TTreemapColoring& GetColoring() const override { return fTree.fColoring; }
  std::vector<TTreemapLegendItem> GetLegend() const override;

  // What all containers of a tree share.
  struct TTree : TInterfaced<IInterface> {
    TTreemapColoring fColoring;
    bool fLetterCaseCounts = true;  // in names
    bool fShowFreeSpace = false;
    bool fShowFiles = true;  // otherwise a folder's own files are one tile
    bool fDark = false;
  };

 private:
  std::vector<TTreemapLegendItem> LegendOfExtensions() const;

  const TRef<IFolderData> fFolder;
  TTree fTree;
};

}  // namespace Vantrel::Treemap
