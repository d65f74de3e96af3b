#include "model/roots/EarlierFiles.h"

#include <algorithm>
#include <utility>

#include "platform/text/Utf.h"

namespace Vantrel {

TEarlierFiles::TEarlierFiles(TRef<const IComparison> pComparison, char16_t pPathDelimiter)
    : fComparison(std::move(pComparison)), fLetterCaseCounts(pPathDelimiter == u'/') {}

std::u16string TEarlierFiles::KeyOf(std::u16string_view pName) const {
  std::u16string key(pName);
  if (!fLetterCaseCounts) std::transform(key.begin(), key.end(), key.begin(), UpcaseUnit);
  return key;
}

const TFileRecord* TEarlierFiles::Find(const IFolderData& pFolder, std::u16string_view pName) {
  if (fFolder.get() != &pFolder) {
    fFolder = TRef<const IFolderData>(&pFolder);
    fFileByName.clear();
    fFiles = fComparison->EarlierFiles(pFolder);
    for (size_t i = 0; fFiles && i < fFiles->Count(); ++i) {
      const TFileRecord& file = (*fFiles)[i];
      fFileByName.emplace(KeyOf(fFiles->NameOf(file)), &file);
    }
  }
  const auto found = fFileByName.find(KeyOf(pName));
  return found == fFileByName.end() ? nullptr : found->second;
}

}  // namespace Vantrel
