#include "model/statistics/KeyTotals.h"

#include <algorithm>

#include "model/statistics/AssocSizeArray.h"
#include "model/tree/FileNames.h"

namespace Vantrel {

void TKeyTotals::Add(TKeyId pKey, const TBasicSizeValues& pValues) {
  if (pKey >= fPositions.size()) fPositions.resize(pKey + 64);
  uint32_t& position = fPositions[pKey];
  if (position == 0) {
    fEntries.push_back({pKey, pValues});
    position = static_cast<uint32_t>(fEntries.size());
  } else {
    fEntries[position - 1].fValues += pValues;
  }
}

std::span<const TKeyedSizeValues> TKeyTotals::Sorted() {
  std::sort(fEntries.begin(), fEntries.end(), [](const auto& pA, const auto& pB) { return pA.fKey < pB.fKey; });
  for (size_t i = 0; i < fEntries.size(); ++i) fPositions[fEntries[i].fKey] = static_cast<uint32_t>(i + 1);
  return fEntries;
}

void TKeyTotals::Clear() {
  for (const TKeyedSizeValues& entry : fEntries) fPositions[entry.fKey] = 0;
  fEntries.clear();
}

TKeyId TExtensionKeys::KeyOfName(std::u16string_view pFileName) {
  const std::u16string_view extension = ExtensionOfName(pFileName);
  const auto known = fKeys.find(extension);
  if (known != fKeys.end()) return known->second;
  const TKeyId key = TExtensionSizeArray::KeyOf(extension);
  // Names with a running number as extension would fill the cache with texts that never occur again.
  constexpr size_t kMostKept = 4096;
  if (fKeys.size() < kMostKept) fKeys.emplace(extension, key);
  return key;
}

}  // namespace Vantrel
