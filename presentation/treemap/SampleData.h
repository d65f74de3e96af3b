#pragma once

// A fixed demonstration tree, for previews of settings and for tests.

#include <cstdint>
#include <string_view>

#include "presentation/treemap/SizeArrayPresenters.h"

namespace Vantrel::Treemap {

// One entry of the demonstration tree.
struct TInitSampleData {
  std::u16string_view fName;
  int64_t fSize;        // megabytes; 0 for a folder, whose size is the sum of its children
  int32_t fImageIndex;  // 0 for a folder, else 1 + the index of a standard file-type group
  int32_t fChildCount;  // of direct children, which follow in the list with all that is beneath them
};

// The demonstration tree: a disk as people know it. The entries are listed depth first; the first is the top.
class TSampleData : public TInterfaced<ITreemapPresenter> {
 public:
  TSampleData();

  static size_t Count();
  // The calls with an index raise EInvalidArgumentValue for one outside 0..Count-1.
  static const TInitSampleData& GetSampleData(size_t pIndex);
  static int32_t GetSampleImageIndex(size_t pIndex) { return GetSampleData(pIndex).fImageIndex; }
  static int32_t GetSampleChildCount(size_t pIndex) { return GetSampleData(pIndex).fChildCount; }

  TRef<const ITreemapContainer> GetTop(const TTreemapSettings&) const override { return fTop; }
  const TTreemapColoring& GetColoring() const override { return fColoring; }
  std::vector<TTreemapLegendItem> GetLegend() const override { return {}; }

 private:
  TRef<const ITreemapContainer> fTop;
  const TTreemapColoring fColoring;
};

}  // namespace Vantrel::Treemap
