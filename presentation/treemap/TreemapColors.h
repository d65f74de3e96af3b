#pragma once

// The colours of tiles: schemes, palettes, and the colours of frames and headings.

#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/FileAges.h"
#include "model/statistics/FileTypeGroups.h"
#include "model/tree/FileTable.h"
#include "presentation/treemap/TreemapPicture.h"
#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

// The colour of a file-type group by its index. Neighbours in the list differ in lightness as well as in hue. The last
// group of a list, which takes all other files, is a grey blue.
TColor ColorOfFileTypeGroup(int pIndex, int pCount);
// The colour of a depth. Six colours take turns.
TColor ColorOfLayer(int32_t pLayer);
// The colour of an age interval: bright yellow for the youngest to dark blue for the oldest. The lightness falls with
// each interval.
TColor ColorOfAge(int pIndex, int pCount);
// The colour of a change: blue for what shrank, grey for what stayed, orange for what grew, yellow for what is new.
TColor ColorOfGrowth(int64_t pEarlier, int64_t pNow);
constexpr TColor kNewColor = 0xF2D64B;

// Frames, headings and what else is not a tile.
struct TTreemapThemeColors {
  TColor fBackground;
  TColor fText;
  TColor fFrame[2];  // of opened folders, in turn by depth
  TColor fFreeSpace;
};
const TTreemapThemeColors& ThemeColors(TTreemapTheme pTheme);

// Mixes colours by weight. The mean is taken of the amounts of light, so a mix is as bright as its parts seen from far
// away.
class TColorMixer {
 public:
  void Add(TColor pColor, double pWeight);
  // The mixed colour; pOtherwise when nothing was added.
  TColor Mixed(TColor pOtherwise) const;

 private:
  std::array<double, 3> fLight{};
  double fWeight = 0;
};

// What the colours of a tree's tiles are computed from. Fixed after construction.
struct TTreemapColoring {
  TTreemapColorScheme fScheme = TTreemapColorScheme::csType;
  TTreemapTheme fTheme = TTreemapTheme::thLight;
  TRef<const IFileTypeGroups> fGroups;  // for csType
  TRef<IFileAges> fAges;                // for csAge
  TDateType fDateType = TDateType::dtLastChange;
  TKivFileTime fNow;
  TRef<IComparison> fComparison;  // for csGrowth; nullptr when there is none
  TColumn fValueColumn = TColumn::mdSize;
};

// Finds colours through caches. Used by one thread.
class TColorLookup {
 public:
  explicit TColorLookup(const TTreemapColoring& pColoring) : fColoring(pColoring) {}

  TColor OfExtension(std::u16string_view pExtension);  // for csType and csExtension, with the dot
  TColor OfKey(TKeyId pExtension);                     // the same
  TColor OfAge(TKivFileTime pDate);
  TColor OfFile(std::u16string_view pName, const TFileRecord& pFile, int32_t pLayer);
  const TTreemapColoring& Coloring() const { return fColoring; }

 private:
  struct TTextHash {
    using is_transparent = void;  // look-up by view, without making a string
    size_t operator()(std::u16string_view pText) const { return std::hash<std::u16string_view>()(pText); }
  };

  const TTreemapColoring& fColoring;
  boost::unordered_flat_map<std::u16string, TColor, TTextHash, std::equal_to<>> fByExtension;
  boost::unordered_flat_map<TKeyId, TColor> fByKey;
};

}  // namespace Vantrel::Treemap
