#pragma once

// The colours of tiles: palettes, mixtures, and the colour of each file and folder in a scheme.

#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/FileAges.h"
#include "model/statistics/FileStatistics.h"
#include "model/statistics/FileTypeGroups.h"
#include "model/tree/FileTable.h"
#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

// The palettes can be told apart by people who see fewer hues: neighbours differ in lightness too.

// The colour of a file-type group by its index. The last group of the list, which takes all other files, has the
// colour of sand.
TColor ColorOfFileTypeGroup(int pIndex, int pCount);
// The colour of a depth. Six colours take turns.
TColor ColorOfLayer(int32_t pLayer);
// The colour of an age interval, from yellow for the youngest over green to violet for the oldest. Each is darker than
// the one before it.
TColor ColorOfAge(int pIndex, int pCount);
// The colour of a change: blue for what shrank, grey for what stayed, orange for what grew, yellow for what is new. The
// stronger the change, the stronger the colour.
TColor ColorOfGrowth(int64_t pEarlier, int64_t pNow);

// The colours of what is not a tile: frames and headings by depth, and free space.
TColor ColorOfFrame(int32_t pLayer, bool pDark);
TColor ColorOfFreeSpace(bool pDark);

// Mixes colours by weight. The mean is taken of the amounts of light. So a mix looks like its parts seen from far away.
class TColorMixer {
 public:
  void Add(TColor pColor, double pWeight);
  // The mixed colour; pOtherwise when nothing was added.
  TColor Mixed(TColor pOtherwise) const;

 private:
  std::array<double, 3> fLight{};
  double fWeight = 0;
};

// What the colours of a folder tree are computed from. Fixed after construction.
struct TTreemapColoring {
  TTreemapColorScheme fScheme = TTreemapColorScheme::csType;
  TColumn fValueColumn = TColumn::mdSize;  // the weights of mixtures, and what grows
  TRef<const IFileTypeGroups> fGroups;     // for csType
  TRef<IFileAges> fAges;                   // for csAge
  TDateType fDateType = TDateType::dtLastChange;
  TKivFileTime fNow;
  TRef<IComparison> fComparison;  // for csGrowth; nullptr when there is none
};

// A value column of sizes or of a file: mdSize, mdAllocated or mdFiles.
int64_t ValueIn(const TBasicSizeValues& pValues, TColumn pColumn);
int64_t ValueIn(const TFileRecord& pFile, TColumn pColumn);

// Finds the colours of files and folders, through caches. Used by one thread.
class TColorLookup {
 public:
  explicit TColorLookup(const TTreemapColoring& pColoring) : fColoring(pColoring) {}

  // pName may be empty in the schemes that do not look at it. For csGrowth, pEarlier is the file's earlier value.
  TColor OfFile(std::u16string_view pName, const TFileRecord& pFile, int32_t pLayer, int64_t pEarlier);
  // The mixed colour of all beneath a folder. Its time does not depend on how much that is: it takes the folder's
  // statistics, or a sample of its files where the folder stores none.
  TColor OfFolder(const IFolderData& pFolder, int32_t pLayer);
  TColor OfGrowth(const IFolderData& pFolder) const;

 private:
  struct TTextHash {
    using is_transparent = void;  // look-up by view, without making a string
    size_t operator()(std::u16string_view pText) const { return std::hash<std::u16string_view>()(pText); }
  };

  TColor OfExtension(std::u16string_view pName);
  TColor OfKey(TKeyId pExtension);
  TColor OfDate(TKivFileTime pDate) const;
  TColor OfSample(const TFileTable& pFiles);
  TColor OfStatistics(const IFolderData& pFolder);

  const TTreemapColoring& fColoring;
  boost::unordered_flat_map<std::u16string, TColor, TTextHash, std::equal_to<>> fByExtension;
  boost::unordered_flat_map<TKeyId, TColor> fByKey;
  TStatisticsReading fReading;
};

}  // namespace Vantrel::Treemap
