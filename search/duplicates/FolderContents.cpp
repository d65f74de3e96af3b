#include "search/duplicates/FolderContents.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "platform/files/Paths.h"

namespace Vantrel::Search {

namespace {

// Not read: a link is no contents of its own, a device has none, and a file that is elsewhere would be fetched.
constexpr TAttributes kNotRead =
    kAttributeReparsePoint | kAttributeDevice | kAttributeOffline | kAttributeRecallOnDataAccess;

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
  const char16_t delimiter = pItems.front().fFolder->fDelimiter;
  std::unordered_map<std::u16string, TFolderNode*> nodes;
  const auto addNode = [&](std::u16string pPath, TFoundItem&& pItem) {
    const auto [entry, isNew] = nodes.try_emplace(std::move(pPath), nullptr);
    if (!isNew) return;
    TFolderNode& node = fNodes.emplace_back();
    node.fIsIncomplete = !pItem.fIsEntered;
    node.fItem = MakeRef<TDuplicateFile>(std::move(pItem), 0);
    entry->second = &node;
  };
  std::unordered_map<std::u16string_view, bool> holders;
  for (const TFoundItem& item : pItems) holders.emplace(item.fFolder->fPath, true);
  // A searched path with entries is a folder, if it is not the folder of a file that was searched itself.
  for (const std::u16string& top : pSettings.fTops)
    if (holders.contains(top)) addNode(top, TopItem(top, delimiter));
  for (TFoundItem& item : pItems)
    if (item.fIsFolder) addNode(item.FullPath(), std::move(item));
  const auto nodeOf = [&](const std::u16string& pPath) {
    const auto found = nodes.find(pPath);
    return found == nodes.end() ? nullptr : found->second;
  };
  for (TFolderNode& node : fNodes) {
    node.fParent = nodeOf(node.fItem->fItem.fFolder->fPath);
    if (node.fParent) node.fParent->fFolders.push_back(&node);
  }
  for (TFoundItem& item : pItems) {
    TFolderNode* const folder = item.fIsFolder ? nullptr : nodeOf(item.fFolder->fPath);
    if (!folder) continue;
    if ((item.fValues.fAttributes & kNotRead) != 0) {
      folder->fIsIncomplete = true;
      continue;
    }
    fFiles.push_back(MakeRef<TDuplicateFile>(std::move(item), 0));
    folder->fFiles.push_back(fFiles.back().get());
  }
  for (const std::u16string& path : pSettings.fIncompleteFolders)
    if (TFolderNode* const folder = nodeOf(path)) folder->fIsIncomplete = true;
  for (TFolderNode& node : fNodes) {
    SortByName(node.fFolders, [](const TFolderNode* pNode) { return pNode->fItem->GetObjectName(); });
    SortByName(node.fFiles, [](const TDuplicateFile* pFile) { return pFile->GetObjectName(); });
  }
  AddUp();
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
  std::sort(known.begin(), known.end(),
            [&](const TFolderNode* pA, const TFolderNode* pB) { return keys(pA) < keys(pB); });
  std::vector<TFolderNode*> candidates;
  uint32_t bucket = 0;
  for (size_t begin = 0, end = 0; begin < known.size(); begin = end) {
    while (end < known.size() && keys(known[end]) == keys(known[begin])) ++end;
    if (end - begin < 2) continue;
    for (size_t i = begin; i < end; ++i) {
      known[i]->fItem->fBucket = bucket;
      candidates.push_back(known[i]);
    }
    ++bucket;
  }
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
