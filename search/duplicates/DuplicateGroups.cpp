#include "search/duplicates/DuplicateGroups.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

#include "platform/files/Paths.h"

namespace Vantrel::Search {

namespace {

using TNodes = std::unordered_map<const TDuplicateFile*, const TFolderNode*>;

void SortNames(std::vector<TDuplicateName>& pNames) {
  std::vector<std::pair<std::u16string, TDuplicateName>> keyed;
  keyed.reserve(pNames.size());
  for (TDuplicateName& name : pNames) {
    std::u16string path = name.fFile->GetFullPath();
    keyed.emplace_back(std::move(path), std::move(name));
  }
  std::sort(keyed.begin(), keyed.end(), [](const auto& pA, const auto& pB) { return pA.first < pB.first; });
  for (size_t i = 0; i < keyed.size(); ++i) pNames[i] = std::move(keyed[i].second);
}

// Calls back for each file in the folder and beneath it.
template <class TVisit>
void ForEachFile(const TFolderNode& pFolder, const TVisit& pVisit) {
  std::vector<const TFolderNode*> open{&pFolder};
  while (!open.empty()) {
    const TFolderNode& folder = *open.back();
    open.pop_back();
    for (const TDuplicateFile* file : folder.fFiles) pVisit(*file);
    open.insert(open.end(), folder.fFolders.begin(), folder.fFolders.end());
  }
}

// The bytes of the folders but the first. A file that has a name in an earlier folder takes no space in a later one.
int64_t WastedBy(std::span<const TDuplicateName> pFolders, const TNodes& pNodes) {
  std::unordered_set<const TDuplicateFile*> seen;
  int64_t wasted = 0;
  for (size_t i = 0; i < pFolders.size(); ++i)
    ForEachFile(*pNodes.at(pFolders[i].fFile.get()), [&](const TDuplicateFile& pFile) {
      if (seen.insert(&pFile.Primary()).second && i > 0) wasted += pFile.GetSize();
    });
  return wasted;
}

}  // namespace

TDuplicateGroup GroupOfFiles(std::span<const TRef<TDuplicateFile>> pFiles) {
  TDuplicateGroup group;
  group.fSize = pFiles.front()->GetSize();
  group.fWasted = group.fSize * (static_cast<int64_t>(pFiles.size()) - 1);
  for (const TRef<TDuplicateFile>& file : pFiles)
    for (TDuplicateFile* name = file.get(); name; name = name->fNextLink)
      group.fNames.push_back({TRef<TDuplicateFile>(name)});
  SortNames(group.fNames);
  std::unordered_set<const TDuplicateFile*> seen;
  for (TDuplicateName& name : group.fNames) name.fIsLink = !seen.insert(&name.fFile->Primary()).second;
  return group;
}

void SortGroups(std::vector<TDuplicateGroup>& pGroups) {
  std::vector<std::pair<std::u16string, TDuplicateGroup>> keyed;
  keyed.reserve(pGroups.size());
  for (TDuplicateGroup& group : pGroups) {
    std::u16string path = group.fNames.front().fFile->GetFullPath();
    keyed.emplace_back(std::move(path), std::move(group));
  }
  std::sort(keyed.begin(), keyed.end(), [](const auto& pA, const auto& pB) {
    if (pA.second.fWasted != pB.second.fWasted) return pA.second.fWasted > pB.second.fWasted;
    return pA.first < pB.first;
  });
  for (size_t i = 0; i < keyed.size(); ++i) pGroups[i] = std::move(keyed[i].second);
}

std::vector<TDuplicateGroup> GroupsOfFolders(const std::vector<TRef<TDuplicatesGroup>>& pGroups, const TNodes& pNodes) {
  std::unordered_map<const TFolderNode*, const TDuplicatesGroup*> groupOf;
  for (const TRef<TDuplicatesGroup>& group : pGroups)
    for (const TRef<IHierarchicalObject>& folder : group->Files())
      groupOf.emplace(pNodes.at(static_cast<TDuplicateFile*>(folder.get())), group.get());
  const auto liesInAnother = [&](const std::vector<TRef<IHierarchicalObject>>& pFolders) {
    std::unordered_set<const TFolderNode*> parents;
    const TDuplicatesGroup* above = nullptr;
    for (const TRef<IHierarchicalObject>& folder : pFolders) {
      const TFolderNode* const parent = pNodes.at(static_cast<TDuplicateFile*>(folder.get()))->fParent;
      const auto found = groupOf.find(parent);
      if (found == groupOf.end() || (above && found->second != above) || !parents.insert(parent).second) return false;
      above = found->second;
    }
    return true;
  };
  std::vector<TDuplicateGroup> groups;
  for (const TRef<TDuplicatesGroup>& equal : pGroups) {
    const std::vector<TRef<IHierarchicalObject>> folders = equal->Files();
    if (liesInAnother(folders)) continue;
    TDuplicateGroup group;
    for (const TRef<IHierarchicalObject>& folder : folders)
      group.fNames.push_back({TRef<TDuplicateFile>(static_cast<TDuplicateFile*>(folder.get()))});
    group.fSize = pNodes.at(group.fNames.front().fFile.get())->fBytes;
    SortNames(group.fNames);
    group.fWasted = WastedBy(group.fNames, pNodes);
    groups.push_back(std::move(group));
  }
  SortGroups(groups);
  return groups;
}

int64_t WastedByFolders(std::span<const TDuplicateGroup> pGroups) {
  std::unordered_set<std::u16string> spare;
  for (const TDuplicateGroup& group : pGroups)
    for (size_t i = 1; i < group.fNames.size(); ++i) spare.insert(group.fNames[i].fFile->GetFullPath());
  const auto liesInSpare = [&](const TFoundItem& pFolder) {
    const char16_t delimiter = pFolder.fFolder->fDelimiter;
    for (std::u16string_view path = pFolder.fFolder->fPath; !path.empty();) {
      if (spare.contains(std::u16string(path))) return true;
      path = FolderOfPath(path, delimiter);
    }
    return false;
  };
  int64_t wasted = 0;
  for (const TDuplicateGroup& group : pGroups) {
    int64_t inside = 0;
    for (size_t i = 1; i < group.fNames.size(); ++i) inside += liesInSpare(group.fNames[i].fFile->fItem) ? 1 : 0;
    // Each folder has the same part in what its group wastes.
    wasted += group.fWasted - group.fWasted / (static_cast<int64_t>(group.fNames.size()) - 1) * inside;
  }
  return wasted;
}

}  // namespace Vantrel::Search
