#pragma once

// A folder's sub-folders and files as children of a treemap.

#include <boost/unordered/unordered_flat_map.hpp>
#include <memory>
#include <string>
#include <vector>

#include "presentation/treemap/TreemapPresenters.h"

namespace Vantrel::Treemap {

using TTreeRef = TRef<const TTreeMapChartBasePresenter::TTree>;

// The identifier of a folder, from the names on its way down from its root.
TTreemapElementID IDOfFolder(IFolderData& pFolder);
// Whether a folder can be opened, and its look as an element.
TTreemapLook LookOfFolder(IFolderData& pFolder, TTreemapElementID pID, int32_t pLayer, const TTreeRef& pTree,
                          TColorLookup& pColors);

// A snapshot of one folder. The numbers of its sub-folders come first, then those of its files. Its own files are
// children beside the sub-folders, without a row "[Files]". Only when the files were not kept, or are not to be shown,
// one child stands for all of them.
class TFolderContainer : public TInterfaced<ITreemapContainer> {
 public:
  // pFreeBytes is the value of a further child, the free space; 0 for none.
  TFolderContainer(TRef<IFolderData> pFolder, TTreemapElementID pID, TTreeRef pTree, int64_t pFreeBytes = 0);

  void AppendChildren(std::vector<TTreemapChild>& pChildren) const override;
  bool ComesBefore(uint32_t pItem, uint32_t pOther) const override { return NameOf(pItem) < NameOf(pOther); }
  TTreemapLook GetLook(uint32_t pItem, int32_t pLayer, TColorLookup& pColors) const override;
  TRef<const ITreemapContainer> Open(uint32_t pItem) const override;
  std::u16string GetCaption(uint32_t pItem) const override { return std::u16string(NameOf(pItem)); }
  TRef<TTreeMapElement> CreateElement(uint32_t pItem) const override;

 private:
  static constexpr uint32_t kFreeSpace = 0xFFFFFFFE;

  bool IsFolder(uint32_t pItem) const { return pItem < fFolders.size(); }
  std::u16string_view NameOf(uint32_t pItem) const;
  const TFileRecord& FileOf(uint32_t pItem) const { return (*fFiles)[pItem - fFolders.size()]; }
  TTreemapElementID IDOf(uint32_t pItem) const;
  void ReadEarlierFiles();
  int64_t EarlierValueOf(uint32_t pItem) const;
  std::u16string FoldedName(std::u16string_view pName) const;

  const TRef<IFolderData> fFolder;
  const TTreemapElementID fID;
  const TTreeRef fTree;
  const int64_t fFreeBytes;
  std::vector<TRef<IFolderData>> fFolders;
  TRef<const TFileTable> fFiles;  // nullptr when files are no tiles
  // For the colours of growth: the values of the files that the earlier scan had. nullptr when it kept no files.
  std::unique_ptr<boost::unordered_flat_map<std::u16string, int64_t>> fEarlierFiles;
};

}  // namespace Vantrel::Treemap
