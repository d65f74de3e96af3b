#include "search/duplicates/FolderContents.h"

#include <algorithm>
#include <span>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "platform/files/Paths.h"
#include "search/duplicates/EqualRuns.h"

namespace Vantrel::Search {

namespace {

TFoundItem TopItem(const std::u16string& pPath, char16_t pDelimiter) {
  TFoundItem item;
  item.fFolder = MakeRef<const TFoundFolder>(std::u16string(FolderOfPath(pPath, pDelimiter)), pDelimiter);
  item.fName = FileNameOfPath(pPath, pDelimiter);
  item.fValues.fAttributes = kAttributeDirectory;
  item.fIsFolder = true;
  item.fIsEntered = true;
  return item;
}

template <class TEntry, class TName>
void SortByName(std::vector<TEntry>& pEntries, const TName& pNameOf) {
  std::sort(pEntries.begin(), pEntries.end(),
            [&](const TEntry& pA, const TEntry& pB) { return pNameOf(pA) < pNameOf(pB); });
  const auto last = std::unique(pEntries.begin(), pEntries.end(),
                                [&](const TEntry& pA, const TEntry& pB) { return pNameOf(pA) == pNameOf(pB); });
  pEntries.erase(last, pEntries.end());
}

}  // namespace

TFolderContents::TFolderContents(std::vector<TFoundItem> pItems, const TDuplicateSearchSettings& pSettings) {
  if (pItems.empty()) return;
  TNodesByPath nodes = AddFolders(pItems, pSettings.fTops);
  AddFiles(std::move(pItems), nodes);
  for (const std::u16string& path : pSettings.fIncompleteFolders)
    if (const auto folder = nodes.find(path); folder != nodes.end()) folder->second->fIsIncomplete = true;
  for (TFolderNode& node : fNodes) {
    SortByName(node.fFolders, [](const TFolderNode* pNode) { return pNode->fItem->GetObjectName(); });
    SortByName(node.fFiles, [](const TDuplicateFile* pFile) { return pFile->GetObjectName(); });
  }
  AddUp();
}

TFolderContents::TNodesByPath TFolderContents::AddFolders(std::vector<TFoundItem>& pItems,
                                                          const std::vector<std::u16string>& pTops) {
  TNodesByPath nodes;
  const auto addNode = [&](std::u16string pPath, TFoundItem&& pItem) {
    const auto [entry, isNew] = nodes.try_emplace(std::move(pPath), nullptr);
    if (!isNew) return;
    TFolderNode& node = fNodes.emplace_back();
    node.fIsIncomplete = !pItem.fIsEntered;
    node.fItem = MakeRef<TDuplicateFile>(std::move(pItem), 0);
    entry->second = &node;
  };
  std::unordered_set<std::u16string_view> holders;
  for (const TFoundItem& item : pItems) holders.insert(item.fFolder->fPath);
  // A searched path with entries is a folder, if it is not the folder of a file that was searched itself.
  for (const std::u16string& top : pTops)
    if (holders.contains(top)) addNode(top, TopItem(top, pItems.front().fFolder->fDelimiter));
  for (TFoundItem& item : pItems)
    if (item.fIsFolder) addNode(item.FullPath(), std::move(item));
  for (TFolderNode& node : fNodes) {
    const auto parent = nodes.find(node.fItem->fItem.fFolder->fPath);
    if (parent == nodes.end()) continue;
    node.fParent = parent->second;
    node.fParent->fFolders.push_back(&node);
  }
  return nodes;
}

void TFolderContents::AddFiles(std::vector<TFoundItem> pItems, const TNodesByPath& pNodes) {
  for (TFoundItem& item : pItems) {
    if (item.fIsFolder) continue;
    const auto folder = pNodes.find(item.fFolder->fPath);
    if (folder == pNodes.end()) continue;
    if (!HasContentsToRead(item)) {
      folder->second->fIsIncomplete = true;
      continue;
    }
    fFiles.push_back(MakeRef<TDuplicateFile>(std::move(item), 0));
    folder->second->fFiles.push_back(fFiles.back().get());
  }
}

// From the folders without a parent down, and then back.
void TFolderContents::AddUp() {
  for (TFolderNode& node : fNodes)
    if (!node.fParent) fDownwards.push_back(&node);
  for (size_t i = 0; i < fDownwards.size(); ++i)
    fDownwards.insert(fDownwards.end(), fDownwards[i]->fFolders.begin(), fDownwards[i]->fFolders.end());
  for (auto node = fDownwards.rbegin(); node != fDownwards.rend(); ++node) {
    TFolderNode& folder = **node;
    for (const TDuplicateFile* file : folder.fFiles) folder.fBytes += file->GetSize();
    folder.fAllFiles += static_cast<int64_t>(folder.fFiles.size());
    if (!folder.fParent) continue;
    folder.fParent->fBytes += folder.fBytes;
    folder.fParent->fAllFiles += folder.fAllFiles;
    folder.fParent->fAllFolders += folder.fAllFolders + 1;
  }
  PassUp();
}

void TFolderContents::PassUp() {
  for (auto node = fDownwards.rbegin(); node != fDownwards.rend(); ++node)
    if ((*node)->fIsIncomplete && (*node)->fParent) (*node)->fParent->fIsIncomplete = true;
}

std::vector<TFolderNode*> TFolderContents::Candidates(const TDuplicateSearchSettings& pSettings) {
  std::vector<TFolderNode*> known;
  std::copy_if(fDownwards.begin(), fDownwards.end(), std::back_inserter(known), [&](const TFolderNode* pNode) {
    return !pNode->fIsIncomplete && (pNode->fAllFiles > 0 || pSettings.fWithEmpty);
  });
  const bool byName = ComparesBy(pSettings.fDuplicatesCompareTypes, TDuplicatesCompareType::ctName);
  const auto keys = [byName](const TFolderNode* pNode) {
    return std::tuple(pNode->fBytes, pNode->fAllFiles, pNode->fAllFolders,
                      byName ? pNode->fItem->GetObjectName() : std::u16string_view());
  };
  std::vector<TFolderNode*> candidates;
  uint32_t bucket = 0;
  ForEachEqualRun(known, keys, [&](std::span<TFolderNode*> pRun) {
    for (TFolderNode* const node : pRun) node->fItem->fBucket = bucket;
    candidates.insert(candidates.end(), pRun.begin(), pRun.end());
    ++bucket;
  });
  return candidates;
}

std::vector<TRef<TDuplicateFile>> TFolderContents::FilesOf(std::vector<TFolderNode*> pCandidates) {
  std::vector<TRef<TDuplicateFile>> files;
  std::unordered_map<int64_t, int64_t> counts;
  for (TFolderNode& node : fNodes) node.fIsLookedAt = false;
  for (size_t i = 0; i < pCandidates.size(); ++i) {
    TFolderNode& folder = *pCandidates[i];
    if (std::exchange(folder.fIsLookedAt, true)) continue;
    for (TDuplicateFile* const file : folder.fFiles) {
      ++counts[file->GetSize()];
      files.emplace_back(file);
    }
    pCandidates.insert(pCandidates.end(), folder.fFolders.begin(), folder.fFolders.end());
  }
  std::unordered_map<int64_t, uint32_t> buckets;
  for (const auto& [size, count] : counts) buckets.emplace(size, static_cast<uint32_t>(buckets.size()));
  for (const TRef<TDuplicateFile>& file : files) file->fBucket = buckets[file->GetSize()];
  // No folder above a file with a size of its own can be equal to another one.
  for (TFolderNode& node : fNodes) {
    if (!node.fIsLookedAt) continue;
    const auto isAlone = [&](const TDuplicateFile* pFile) { return counts[pFile->GetSize()] < 2; };
    if (std::any_of(node.fFiles.begin(), node.fFiles.end(), isAlone)) node.fIsIncomplete = true;
  }
  PassUp();
  return files;
}

void TFolderContents::MarkIncomplete() {
  for (TFolderNode& node : fNodes) {
    const auto hasLeft = [](const TDuplicateFile* pFile) { return pFile->Primary().fHasLeft || pFile->fHasLeft; };
    if (std::any_of(node.fFiles.begin(), node.fFiles.end(), hasLeft)) node.fIsIncomplete = true;
  }
  PassUp();
}

std::unordered_map<const TDuplicateFile*, const TFolderNode*> TFolderContents::ByItem() const {
  std::unordered_map<const TDuplicateFile*, const TFolderNode*> nodes;
  for (const TFolderNode& node : fNodes) nodes.emplace(node.fItem.get(), &node);
  return nodes;
}

}  // namespace Vantrel::Search
