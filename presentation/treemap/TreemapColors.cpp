#include "presentation/treemap/TreemapColors.h"

#include <algorithm>
#include <cmath>

#include "model/statistics/ColorPalette.h"
#include "model/tree/FileNames.h"

namespace Vantrel::Treemap {

namespace {

// In the order of the standard groups: audio, videos, images, applications … A search chose those of the rarer groups,
// so that shaded tiles can be told apart by normal eyes and by those that lack red, green or blue. The closest two are
// about as different as two shades of a step of 8 in lightness.
constexpr std::array<TColor, 17> kGroupColors = {0x6DB649, 0xDB0092, 0xE69F00, 0x0072B2, 0xB6496D, 0x56B4E9,
                                                 0x4900F0, 0xE8D820, 0x496D00, 0x6D4924, 0x240049, 0xB6F06D,
                                                 0x2424B6, 0x24F0DB, 0x490000, 0x496DF0, 0x00006D};
constexpr TColor kOtherFiles = 0xC2A67F;
constexpr std::array<TColor, 6> kLayerColors = {0x0072B2, 0xE69F00, 0x009E73, 0xCC79A7, 0x56B4E9, 0xD55E00};
constexpr std::array<TColor, 7> kAgeColors = {0xF6E32B, 0x90D743, 0x35B779, 0x21918C, 0x31688E, 0x443983, 0x440154};
constexpr TColor kShrunk = 0x0072B2;
constexpr TColor kUnchanged = 0xA9ADB2;
constexpr TColor kGrown = 0xD55E00;
constexpr TColor kNew = 0xF2D64B;

double ChannelOf(TColor pColor, size_t pIndex) {
  return static_cast<double>((pColor >> (16 - 8 * pIndex)) & 0xFF);
}

TColor Between(TColor pFrom, TColor pTo, double pPart) {
  TColor color = 0;
  for (size_t i = 0; i < 3; ++i) {
    const double channel = ChannelOf(pFrom, i) + pPart * (ChannelOf(pTo, i) - ChannelOf(pFrom, i));
    color = color << 8 | static_cast<TColor>(channel + 0.5);
  }
  return color;
}

}  // namespace

TColor ColorOfFileTypeGroup(int pIndex, int pCount) {
  if (pIndex < 0 || pIndex + 1 >= pCount) return kOtherFiles;
  return kGroupColors[static_cast<size_t>(pIndex) % kGroupColors.size()];
}

TColor ColorOfLayer(int32_t pLayer) {
  return kLayerColors[static_cast<size_t>(std::max(pLayer - 1, 0)) % kLayerColors.size()];
}

TColor ColorOfAge(int pIndex, int pCount) {
  if (pCount < 2) return kAgeColors[0];
  const double place =
      std::clamp(static_cast<double>(pIndex) / (pCount - 1), 0.0, 1.0) * static_cast<double>(kAgeColors.size() - 1);
  const auto below = std::min(static_cast<size_t>(place), kAgeColors.size() - 2);
  return Between(kAgeColors[below], kAgeColors[below + 1], place - static_cast<double>(below));
}

TColor ColorOfGrowth(int64_t pEarlier, int64_t pNow) {
  if (pEarlier <= 0) return pNow > 0 ? kNew : kUnchanged;
  const auto now = static_cast<double>(pNow);
  const auto earlier = static_cast<double>(pEarlier);
  // The root makes a growth by a tenth visible, too.
  const double strength = std::sqrt(std::abs(now - earlier) / std::max(now, earlier));
  return Between(kUnchanged, now < earlier ? kShrunk : kGrown, std::min(strength, 1.0));
}

TColor ColorOfFrame(int32_t pLayer, bool pDark) {
  if (pDark) return pLayer % 2 == 0 ? 0x2D333B : 0x3B434D;
  return pLayer % 2 == 0 ? 0xDCE1E7 : 0xC9D1DA;
}

TColor ColorOfFreeSpace(bool pDark) {
  return pDark ? 0x22272E : 0xEEF1F4;
}

// The square stands for the curve of screens, which is close to it.
void TColorMixer::Add(TColor pColor, double pWeight) {
  if (!(pWeight > 0)) return;
  for (size_t i = 0; i < 3; ++i) fLight[i] += pWeight * ChannelOf(pColor, i) * ChannelOf(pColor, i);
  fWeight += pWeight;
}

TColor TColorMixer::Mixed(TColor pOtherwise) const {
  if (!(fWeight > 0)) return pOtherwise;
  TColor color = 0;
  for (const double light : fLight) color = color << 8 | static_cast<TColor>(std::sqrt(light / fWeight) + 0.5);
  return color;
}

int64_t ValueIn(const TBasicSizeValues& pValues, TColumn pColumn) {
  return pColumn == TColumn::mdFiles ? pValues.fFiles : LeadingSizeOf(pValues, pColumn);
}

int64_t ValueIn(const TFileRecord& pFile, TColumn pColumn) {
  return pColumn == TColumn::mdFiles ? 1 : LeadingSizeOf(pFile, pColumn);
}

TColor TColorLookup::OfFile(std::u16string_view pName, const TFileRecord& pFile, int32_t pLayer, int64_t pEarlier) {
  switch (fColoring.fScheme) {
    case TTreemapColorScheme::csType:
    case TTreemapColorScheme::csExtension:
      return OfExtension(pName);
    case TTreemapColorScheme::csAge:
      return OfDate(fColoring.fDateType == TDateType::dtCreation     ? pFile.fCreationDate
                    : fColoring.fDateType == TDateType::dtLastAccess ? pFile.fLastAccessDate
                                                                     : pFile.fLastChangeDate);
    case TTreemapColorScheme::csGrowth:
      return ColorOfGrowth(pEarlier, ValueIn(pFile, fColoring.fValueColumn));
    case TTreemapColorScheme::csDepth:
      break;
  }
  return ColorOfLayer(pLayer);
}

TColor TColorLookup::OfExtension(std::u16string_view pName) {
  const std::u16string_view extension = ExtensionOfName(pName);
  const auto known = fByExtension.find(extension);
  if (known != fByExtension.end()) return known->second;
  const TColor color = OfKey(TExtensionSizeArray::KeyOf(extension));
  // Names with a running number as extension would fill the cache with texts that never occur again.
  constexpr size_t kMostKept = 4096;
  if (fByExtension.size() < kMostKept) fByExtension.emplace(extension, color);
  return color;
}

TColor TColorLookup::OfKey(TKeyId pExtension) {
  const auto known = fByKey.find(pExtension);
  if (known != fByKey.end()) return known->second;
  TColor color = kOtherFiles;
  if (fColoring.fScheme == TTreemapColorScheme::csExtension) {
    color = CommonColorPalette().GetColorForKey(TextOfKey(pExtension));
  } else {
    const std::vector<int> groups = fColoring.fGroups->GetGroupIndexesOfKey(pExtension);
    if (!groups.empty()) color = ColorOfFileTypeGroup(groups.front(), fColoring.fGroups->GetCount());
  }
  fByKey.emplace(pExtension, color);
  return color;
}

TColor TColorLookup::OfDate(TKivFileTime pDate) const {
  const int index = fColoring.fAges->GetIndexOfMatchingInterval(FileAgeInDays(fColoring.fNow, pDate));
  return ColorOfAge(index, fColoring.fAges->GetCount());
}

TColor TColorLookup::OfGrowth(const IFolderData& pFolder) const {
  const int64_t now = ValueIn(pFolder.GetValues(), fColoring.fValueColumn);
  if (!fColoring.fComparison) return ColorOfGrowth(now, now);
  if (!fColoring.fComparison->WasThere(pFolder)) return kNew;
  return ColorOfGrowth(ValueIn(fColoring.fComparison->EarlierValues(pFolder), fColoring.fValueColumn), now);
}

// A folder without sub-folders stores no statistics as long as its files are kept. Computing them would look at every
// file.
TColor TColorLookup::OfFolder(const IFolderData& pFolder, int32_t pLayer) {
  if (fColoring.fScheme == TTreemapColorScheme::csDepth) return ColorOfLayer(pLayer);
  if (fColoring.fScheme == TTreemapColorScheme::csGrowth) return OfGrowth(pFolder);
  if (pFolder.GetSubFolderCount() == 0)
    if (const TRef<const TFileTable> files = pFolder.GetFileTable()) return OfSample(*files);
  return OfStatistics(pFolder);
}

TColor TColorLookup::OfSample(const TFileTable& pFiles) {
  constexpr size_t kMostLooks = 32;
  TColorMixer mixer;
  const size_t step = std::max<size_t>(1, pFiles.Count() / kMostLooks);
  for (size_t i = 0; i < pFiles.Count(); i += step) {
    const TFileRecord& file = pFiles[i];
    mixer.Add(OfFile(pFiles.NameOf(file), file, 0, 0), static_cast<double>(ValueIn(file, fColoring.fValueColumn)));
  }
  return mixer.Mixed(kOtherFiles);
}

TColor TColorLookup::OfStatistics(const IFolderData& pFolder) {
  pFolder.ReadStatistics(fReading);
  const bool byExtension = fColoring.fScheme != TTreemapColorScheme::csAge;
  const std::vector<TKeyedSizeValues>* entries = byExtension ? fReading.Extensions() : fReading.Ages();
  if (!entries) return byExtension ? kOtherFiles : OfDate(pFolder.GetLastChangeDate());
  TColorMixer mixer;
  for (const TKeyedSizeValues& entry : *entries) {
    const TColor color =
        byExtension ? OfKey(entry.fKey) : ColorOfAge(static_cast<int>(entry.fKey), fColoring.fAges->GetCount());
    mixer.Add(color, static_cast<double>(ValueIn(entry.fValues, fColoring.fValueColumn)));
  }
  return mixer.Mixed(kOtherFiles);
}

}  // namespace Vantrel::Treemap
