#include "model/columns/MetaDataCache.h"

namespace Vantrel {

bool TMetaDataCache::Find(TColumn pColumn, std::u16string& pText) const {
  TSharedLock lock(fLock);
  for (const auto& [column, text] : fTexts) {
    if (column != pColumn) continue;
    pText = text;
    return true;
  }
  return false;
}

void TMetaDataCache::Store(TColumn pColumn, const std::u16string& pText) {
  TExclusiveLock lock(fLock);
  for (auto& [column, text] : fTexts) {
    if (column != pColumn) continue;
    text = pText;
    return;
  }
  fTexts.emplace_back(pColumn, pText);
}

void TMetaDataCache::Clear() {
  TExclusiveLock lock(fLock);
  fTexts.clear();
}

}  // namespace Vantrel
