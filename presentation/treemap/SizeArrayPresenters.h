#pragma once

// The presenters that feed a treemap with statistics by extension and by owner, and the list that holds such elements.

#include <string>
#include <vector>

#include "presentation/treemap/TreemapPresenters.h"

namespace Vantrel::Treemap {

// A list of elements that are made beforehand, for treemaps of some thousand elements.
class TElementList : public TInterfaced<ITreemapContainer> {
 public:
  void Add(TRef<TTreeMapElement> pElement, TColor pColor, int64_t pValue, TRef<const TElementList> pInside = nullptr) {
    fItems.push_back({std::move(pElement), pColor, pValue, std::move(pInside)});
  }

  void AppendChildren(std::vector<TTreemapChild>& pChildren) const override;
  bool ComesBefore(uint32_t pItem, uint32_t pOther) const override {
    return fItems[pItem].fElement->GetCaption() < fItems[pOther].fElement->GetCaption();
  }
  TTreemapLook GetLook(uint32_t pItem, int32_t pLayer, TColorLookup& pColors) const override;
  TRef<const ITreemapContainer> Open(uint32_t pItem) const override { return fItems[pItem].fInside; }
  std::u16string GetCaption(uint32_t pItem) const override { return fItems[pItem].fElement->GetCaption(); }
  TRef<TTreeMapElement> CreateElement(uint32_t pItem) const override { return fItems[pItem].fElement; }

 private:
  struct TItem {
    TRef<TTreeMapElement> fElement;
    TColor fColor;
    int64_t fValue;
    TRef<const TElementList> fInside;  // nullptr when the element cannot be opened
  };
  std::vector<TItem> fItems;
};

// A size statistic of a folder, read once when the presenter is made. The colours are those of the statistics' charts;
// a file-type group has the colour that it has in a treemap of the tree.
class TSizeArrayMapBasePresenter : public TInterfaced<ITreemapPresenter> {
 public:
  TRef<const ITreemapContainer> GetTop(const TTreemapSettings&) const override { return fTop; }
  const TTreemapColoring& GetColoring() const override { return fColoring; }
  std::vector<TTreemapLegendItem> GetLegend() const override { return fLegend; }

 protected:
  TSizeArrayMapBasePresenter(IFolderData& pFolder, TColumn pValueColumn);
  // Sets the top: the folder with the elements inside.
  void SetTop(IFolderData& pFolder, TRef<const TElementList> pElements);

  const TTreemapElementID fFolderID;
  TTreemapColoring fColoring;
  std::vector<TTreemapLegendItem> fLegend;

 private:
  TRef<const ITreemapContainer> fTop;
};

// The extensions below a folder, inside their file-type groups. An extension of several groups stands in the first. The
// value column is mdSize, mdAllocated or mdFiles.
class TExtensionSizeArrayMapPresenter : public TSizeArrayMapBasePresenter {
 public:
  // Without pGroups the standard groups.
  TExtensionSizeArrayMapPresenter(IFolderData& pFolder, TColumn pValueColumn,
                                  TRef<const IFileTypeGroups> pGroups = nullptr);
};

// The owners below a folder.
class TUserSizeArrayMapPresenter : public TSizeArrayMapBasePresenter {
 public:
  TUserSizeArrayMapPresenter(IFolderData& pFolder, TColumn pValueColumn);
};

}  // namespace Vantrel::Treemap
