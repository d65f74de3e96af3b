#include "presentation/treemap/SquarifiedLayout.h"

#include <algorithm>
#include <cmath>

namespace Vantrel::Treemap {

namespace {

constexpr double kAreaUnit = 100;  // pixels

int32_t Rounded(double pPosition, int32_t pMost) {
  return std::min(static_cast<int32_t>(std::floor(pPosition + 0.5)), pMost);
}

// Areas and running totals are double, because a float would lose the last of a million entries. A tile's own size
// needs less.
class TSquarifier {
 public:
  TSquarifier(const TTreemapRect& pRect, bool pKeepOrientation, std::vector<TElementEntry>& pEntries)
      : fRight(pRect.fRight),
        fBottom(pRect.fBottom),
        fKeepOrientation(pKeepOrientation),
        fEntries(pEntries),
        fLeft(pRect.fLeft),
        fTop(pRect.fTop) {}

  bool SetAreas(const TTreemapRect& pRect) {
    double sum = 0;
    for (const TElementEntry& entry : fEntries) sum += entry.fValue;
    if (!(sum > 0)) return false;
    const auto pixels = static_cast<double>(pRect.Area());
    double total = 0;
    for (TElementEntry& entry : fEntries) {
      entry.fArea = entry.fValue * pixels / sum / kAreaUnit;
      total += entry.fArea;
      entry.fCumulativeArea = total;
    }
    return true;
  }

  // Places the row that begins with an entry. Returns the first entry of the next row.
  size_t PlaceRow(size_t pFirst, std::vector<TLayoutRow>& pRows) {
    const double width = fRight - fLeft;
    const double height = fBottom - fTop;
    fIsColumn = fKeepOrientation ? height > width : width >= height;
    fLength = fIsColumn ? height : width;
    size_t end = pFirst + 1;
    for (float ratio = RatioOfLast(pFirst, pFirst); end < fEntries.size(); ++end) {
      const float next = RatioOfLast(pFirst, end);
      if (next > ratio || next < 0) break;
      ratio = next;
    }
    PlaceEntries(pFirst, end);
    pRows.push_back({pFirst, end - pFirst, Rounded(fLeft, fRight), Rounded(fTop, fBottom), fIsColumn});
    return end;
  }

 private:
  double AreaBefore(size_t pEntry) const { return pEntry == 0 ? 0 : fEntries[pEntry - 1].fCumulativeArea; }

  // The aspect ratio, at least 1, of an entry that is the last one of a row. 0 when it has no area.
  float RatioOfLast(size_t pFirst, size_t pLast) const {
    const TElementEntry& entry = fEntries[pLast];
    const double row = entry.fCumulativeArea - AreaBefore(pFirst);
    if (!(fLength > 0) || !(row > 0)) return 0;
    const auto across = static_cast<float>(row / fLength * kAreaUnit);
    const auto along = static_cast<float>(fLength * (entry.fArea / row));
    if (!(across > 0) || !(along > 0)) return 0;
    return std::max(along / across, across / along);
  }

  // Gives a row's entries their final size and place, and takes the row from what is free.
  void PlaceEntries(size_t pFirst, size_t pEnd) {
    const double before = AreaBefore(pFirst);
    const double row = fEntries[pEnd - 1].fCumulativeArea - before;
    const double thickness = fLength > 0 && row > 0 ? row / fLength * kAreaUnit : 0;
    const bool isLastRow = pEnd == fEntries.size();
    const double nearEdge = fIsColumn ? fLeft : fTop;
    const int32_t farthest = fIsColumn ? fRight : fBottom;
    const double farEdge = isLastRow ? farthest : std::min(nearEdge + thickness, static_cast<double>(farthest));
    const double start = fIsColumn ? fTop : fLeft;
    const int32_t last = fIsColumn ? fBottom : fRight;
    int32_t begin = Rounded(start, last);
    for (size_t i = pFirst; i < pEnd; ++i) {
      TElementEntry& entry = fEntries[i];
      const double position = row > 0 ? start + fLength * ((entry.fCumulativeArea - before) / row) : start;
      const int32_t end = i + 1 == pEnd ? last : Rounded(position, last);
      const auto along = static_cast<float>(row > 0 ? fLength * (entry.fArea / row) : 0);
      const auto across = static_cast<float>(thickness);
      const int32_t near = Rounded(nearEdge, farthest);
      const int32_t far = Rounded(farEdge, farthest);
      entry.fWidth = fIsColumn ? across : along;
      entry.fHeight = fIsColumn ? along : across;
      entry.fRect = fIsColumn ? TTreemapRect{near, begin, far, end} : TTreemapRect{begin, near, end, far};
      begin = end;
    }
    (fIsColumn ? fLeft : fTop) = farEdge;
  }

  const int32_t fRight;
  const int32_t fBottom;
  const bool fKeepOrientation;
  std::vector<TElementEntry>& fEntries;
  // What is free begins here, and ends at fRight and fBottom.
  double fLeft;
  double fTop;
  // The row being placed runs down a column or across, along so many pixels.
  bool fIsColumn = false;
  double fLength = 0;
};

}  // namespace

void LayOut(const TTreemapRect& pRect, bool pKeepOrientation, std::vector<TElementEntry>& pEntries,
            std::vector<TLayoutRow>& pRows) {
  TSquarifier squarifier(pRect, pKeepOrientation, pEntries);
  if (!squarifier.SetAreas(pRect)) return;
  for (size_t next = 0; next < pEntries.size();) next = squarifier.PlaceRow(next, pRows);
}

}  // namespace Vantrel::Treemap
