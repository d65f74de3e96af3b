#include "model/tree/ChangedFolders.h"

#include <utility>
#include <vector>

namespace Vantrel {

// Keeps its own stack, because trees can be deeper than the one of the thread.
TChangedFolders::TChangedFolders(IFolderData& pTop, TRef<const IComparison> pComparison, char16_t pPathDelimiter,
                                 bool pSingleFiles)
    : fComparison(std::move(pComparison)),
      fPathDelimiter(pPathDelimiter),
      fSingleFiles(pSingleFiles && fComparison->KnowsFiles()) {
  struct TOpenFolder {
    TRef<IFolderData> fFolder;
    std::vector<TRef<IFolderData>> fChildren;
    bool fHasChanged;
  };
  std::vector<TOpenFolder> open;
  auto enter = [&](TRef<IFolderData> pFolder) {
    const bool hasChanged = HasChangedItself(*pFolder);
    std::vector<TRef<IFolderData>> children;
    if (!pFolder->IsFileGroup()) children = pFolder->FindSubFolders();
    open.push_back({std::move(pFolder), std::move(children), hasChanged});
  };
  enter(TRef<IFolderData>(&pTop));
  while (!open.empty()) {
    if (!open.back().fChildren.empty()) {
      TRef<IFolderData> child = std::move(open.back().fChildren.back());
      open.back().fChildren.pop_back();
      enter(std::move(child));
      continue;
    }
    const bool hasChanged = open.back().fHasChanged;
    if (hasChanged) fChanged.emplace(open.back().fFolder.get(), open.back().fFolder);
    open.pop_back();
    if (hasChanged && !open.empty()) open.back().fHasChanged = true;
  }
}

bool TChangedFolders::HasChangedItself(const IFolderData& pFolder) const {
  TSizeValues now = pFolder.GetValues();
  TSizeValues then = fComparison->EarlierValues(pFolder);
  now.fCompression = then.fCompression = 0;  // no sum
  return now != then || !fComparison->WasThere(pFolder) || (fSingleFiles && HasChangedFiles(pFolder));
}

bool TChangedFolders::HasChangedFiles(const IFolderData& pFolder) const {
  const TRef<const TFileTable> files = pFolder.GetFileTable();
  TEarlierFiles earlier = EarlierFiles();
  for (size_t i = 0; files && i < files->Count(); ++i)
    if (HasFileChanged(pFolder, *files, (*files)[i], earlier)) return true;
  return false;
}

bool TChangedFolders::HasFileChanged(const IFolderData& pFolder, const TFileTable& pFiles, const TFileRecord& pFile,
                                     TEarlierFiles& pEarlier) {
  if (!pEarlier.AreKnown()) return true;
  const TFileRecord* then = pEarlier.Find(pFolder, pFiles.NameOf(pFile));
  return then == nullptr || then->fSize != pFile.fSize || then->fAllocated != pFile.fAllocated;
}

}  // namespace Vantrel
