#pragma once

// The presenters that feed a treemap: the folder tree, and the statistics by extension and by owner.

#include <memory>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/FileTypeGroups.h"
#include "presentation/treemap/TreemapColors.h"
#include "presentation/treemap/TreemapElements.h"
#include "presentation/treemap/TreemapPicture.h"

namespace Vantrel::Treemap {

// Where a treemap gets its elements from. Fixed after construction; any thread.
class ITreemapPresenter : public IInterface {
 public:
  // A snapshot of the top: a container whose only child is the top element.
  virtual TRef<const ITreemapContainer> GetTop() const = 0;
  // A finder of colours for one thread.
  virtual std::unique_ptr<TColorLookup> CreateColorLookup() const = 0;
  // What the colours mean.
  virtual std::vector<TTreemapLegendItem> GetLegend() const = 0;
};

// What a treemap of a folder tree shows.
struct TTreeMapOptions {
  TColumn fValueColumn = TColumn::mdSize;  // or mdAllocated or mdFiles: what areas are proportional to
  TTreemapColorScheme fScheme = TTreemapColorScheme::csType;
  TTreemapTheme fTheme = TTreemapTheme::thLight;
  bool fShowFiles = true;               // false: tmfShowLeafs is off
  bool fShowFreeSpace = false;          // of the drive of the root, beside the top folder's contents
  TRef<const IFileTypeGroups> fGroups;  // nullptr: the standard groups
};

// The folder tree from a folder downwards. The tree may change while it is shown.
class TTreeMapChartBasePresenter : public TInterfaced<ITreemapPresenter> {
 public:
  TTreeMapChartBasePresenter(TRef<IFolderData> pFolder, TTreeMapOptions pOptions);

  TRef<const ITreemapContainer> GetTop() const override;
  std::unique_ptr<TColorLookup> CreateColorLookup() const override;
  std::vector<TTreemapLegendItem> GetLegend() const override;

 private:
  const TRef<IFolderData> fFolder;
  const TTreeMapOptions fOptions;
  TTreemapColoring fColoring;
};

// A size statistic of a folder. It is read once, when the presenter is made.
class TSizeArrayMapBasePresenter : public TInterfaced<ITreemapPresenter> {
 public:
  TRef<const ITreemapContainer> GetTop() const override { return fTop; }
  std::unique_ptr<TColorLookup> CreateColorLookup() const override;
  std::vector<TTreemapLegendItem> GetLegend() const override { return fLegend; }

 protected:
  TRef<const ITreemapContainer> fTop;
  std::vector<TTreemapLegendItem> fLegend;
  TTreemapColoring fColoring;
};

// The extensions below a folder, inside their file-type groups. An extension of several groups stands in the first. The
// value column is mdSize, mdAllocated or mdFiles.
class TExtensionSizeArrayMapPresenter : public TSizeArrayMapBasePresenter {
 public:
  TExtensionSizeArrayMapPresenter(const IFolderData& pFolder, TRef<const IFileTypeGroups> pGroups,
                                  TColumn pValueColumn);
};

// The owners below a folder.
class TUserSizeArrayMapPresenter : public TSizeArrayMapBasePresenter {
 public:
  TUserSizeArrayMapPresenter(const IFolderData& pFolder, TColumn pValueColumn);
};

}  // namespace Vantrel::Treemap
