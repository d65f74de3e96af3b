#include "model/roots/Comparison.h"

#include <algorithm>

#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

// By what folders of the same parent are told apart: on Windows letter case does not count.
std::u16string KeyOf(const IFolderData& pFolder, char16_t pDelimiter) {
  std::u16string key(pFolder.GetObjectName());
  if (pDelimiter != u'/') std::transform(key.begin(), key.end(), key.begin(), UpcaseUnit);
  return key;
}

}  // namespace

TComparison::TComparison(IHierarchicalRoot& pCurrent, IHierarchicalRoot& pEarlier)
    : fScanTimeStamp(pEarlier.GetScanTimeStamp()), fDelimiter(pCurrent.GetPathDelimiter()) {
  const TRef<IFolderData> top = pCurrent.GetTopFolder();
  const TRef<IFolderData> earlierTop = pEarlier.GetTopFolder();
  fCompareDictionary[top.get()] = earlierTop->GetValues();
  std::vector<TPair> stack{{TRef<TCustomFolderData>(static_cast<TCustomFolderData*>(top.get())), earlierTop}};
  while (!stack.empty()) {
    const TPair pair = std::move(stack.back());
    stack.pop_back();
    PairChildren(pair, stack);
  }
}

void TComparison::PairChildren(const TPair& pPair, std::vector<TPair>& pStack) {
  boost::unordered_flat_map<std::u16string, TRef<TCustomFolderData>> current;
  TRef<TCustomFolderData> currentFiles;
  for (TRef<IFolderData>& child : pPair.fCurrent->FindSubFolders()) {
    auto* node = static_cast<TCustomFolderData*>(child.get());
    if (child->IsFileGroup())
      currentFiles = node;
    else
      current.emplace(KeyOf(*child, fDelimiter), node);
  }
  bool hasGone = false;
  for (TRef<IFolderData>& child : pPair.fEarlier->FindSubFolders()) {
    const bool isFiles = child->IsFileGroup();
    TRef<TCustomFolderData> node;
    if (isFiles)
      node = currentFiles;
    else if (const auto found = current.find(KeyOf(*child, fDelimiter)); found != current.end())
      node = found->second;
    // Files that a folder without sub-folders has now are its own: there is nothing to hang the earlier ones on.
    if (!node && isFiles && current.empty() && pPair.fCurrent->GetFiles() > 0) continue;
    if (!node) {
      node = pPair.fCurrent->AddLoadedChild(child->GetObjectName(), isFiles);
      node->IncludeFolderState(fsCreatedForComparison | fsIsDummyForComparison | fsSubFolderScanningFinished);
      hasGone = true;
    }
    fCompareDictionary[node.get()] = child->GetValues();
    if (!isFiles) pStack.push_back({std::move(node), std::move(child)});
  }
  // Of an earlier folder without sub-folders all files were its own.
  if (currentFiles && !fCompareDictionary.contains(currentFiles.get()) && pPair.fEarlier->GetSubFolderCount() == 0)
    fCompareDictionary[currentFiles.get()] = pPair.fEarlier->GetValues();
  if (hasGone) pPair.fCurrent->IncludeFolderState(fsDummySubFoldersAdded);
}

TSizeValues TComparison::EarlierValues(const IFolderData& pFolder) const {
  const auto found = fCompareDictionary.find(&pFolder);
  return found == fCompareDictionary.end() ? TSizeValues() : found->second;
}

}  // namespace Vantrel
