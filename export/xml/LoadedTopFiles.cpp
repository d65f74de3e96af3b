#include "export/xml/LoadedTopFiles.h"

#include <algorithm>

namespace Vantrel::XML {

void TLoadedTopFiles::Add(TTopSizeEntry pFile, std::u16string pFolderPath) {
  fFiles.push_back({std::move(pFile), std::move(pFolderPath)});
}

std::vector<TTopSizeEntry> TLoadedTopFiles::Take(TCustomFolderData& pTop, std::u16string_view pTopPath,
                                                 char16_t pDelimiter) {
  std::vector<TTopSizeEntry> files;
  for (TListed& listed : fFiles) {
    const auto [known, isNew] = fFolders.try_emplace(listed.fFolderPath);
    if (isNew) known->second = FolderOf(listed.fFolderPath, pTop, pTopPath, pDelimiter);
    if (!known->second) continue;
    listed.fFile.fParentFolder = TRef<IHierarchicalElement>(known->second.get());
    files.push_back(std::move(listed.fFile));
  }
  fFiles.clear();
  fFolders.clear();
  fChildren.clear();
  return files;
}

TRef<TCustomFolderData> TLoadedTopFiles::FolderOf(const std::u16string& pPath, TCustomFolderData& pTop,
                                                  std::u16string_view pTopPath, char16_t pDelimiter) {
  std::u16string_view rest = pPath;
  if (!rest.starts_with(pTopPath)) return nullptr;
  rest.remove_prefix(pTopPath.size());
  if (!rest.empty() && !pTopPath.ends_with(pDelimiter)) {
    if (!rest.starts_with(pDelimiter)) return nullptr;
    rest.remove_prefix(1);
  }
  TRef<TCustomFolderData> folder(&pTop);
  while (!rest.empty()) {
    const size_t end = std::min(rest.find(pDelimiter), rest.size());
    const TChildren& children = ChildrenOf(*folder);
    const auto child = children.find(rest.substr(0, end));
    if (child == children.end()) return MakeRef<TFolderData>(*folder, folder->GetRoot(), rest);
    folder = child->second;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return folder;
}

const TLoadedTopFiles::TChildren& TLoadedTopFiles::ChildrenOf(TCustomFolderData& pFolder) {
  const auto [known, isNew] = fChildren.try_emplace(&pFolder);
  if (isNew) {
    for (const TRef<IFolderData>& child : pFolder.FindSubFolders())
      if (!child->IsFileGroup())
        known->second.emplace(child->GetObjectName(), static_cast<TCustomFolderData*>(child.get()));
  }
  return known->second;
}

}  // namespace Vantrel::XML
