#include "window/models/RowMatch.h"

#include <boost/unordered/unordered_flat_map.hpp>

namespace Vantrel::Window {

TRowName NameOfRow(const IFolderData* pFolder, const TFileTable* pFiles, uint32_t pFile) {
  using TKind = TRowName::TKind;
  if (pFolder) {
    const bool isGone = (pFolder->GetFolderState() & fsIsDummyForComparison) != 0;
    // The same thing has one address, whatever interface it is seen through. Rows of gone folders are made anew.
    if (!isGone) return {TKind::rkNode, pFolder, {}};
    return {pFolder->IsFileGroup() ? TKind::rkGoneFiles : TKind::rkGone, nullptr, pFolder->GetObjectName()};
  }
  if (pFiles && pFile < pFiles->Count()) return {TKind::rkFile, nullptr, pFiles->NameAt(pFile)};
  return {TKind::rkMore, nullptr, {}};
}

std::vector<int> MatchRows(const std::vector<TRowName>& pBefore, const std::vector<TRowName>& pAfter) {
  using TKind = TRowName::TKind;
  std::vector<int> rows(pBefore.size(), -1);
  if (pBefore.empty()) return rows;
  boost::unordered_flat_map<const void*, int> nodes;
  boost::unordered_flat_map<std::u16string_view, int> files;
  boost::unordered_flat_map<std::u16string_view, int> gone;
  int goneFiles = -1;
  int more = -1;
  for (size_t i = 0; i < pAfter.size(); ++i) {
    const int row = static_cast<int>(i);
    if (pAfter[i].fKind == TKind::rkNode) nodes.emplace(pAfter[i].fNode, row);
    if (pAfter[i].fKind == TKind::rkFile) files.emplace(pAfter[i].fName, row);
    if (pAfter[i].fKind == TKind::rkGone) gone.emplace(pAfter[i].fName, row);
    if (pAfter[i].fKind == TKind::rkGoneFiles) goneFiles = row;
    if (pAfter[i].fKind == TKind::rkMore) more = row;
  }
  const auto find = [](const auto& pMap, const auto& pKey) {
    const auto found = pMap.find(pKey);
    return found == pMap.end() ? -1 : found->second;
  };
  for (size_t i = 0; i < pBefore.size(); ++i) {
    const TRowName& name = pBefore[i];
    if (name.fKind == TKind::rkNode) rows[i] = find(nodes, name.fNode);
    if (name.fKind == TKind::rkFile) rows[i] = find(files, name.fName);
    if (name.fKind == TKind::rkGone) rows[i] = find(gone, name.fName);
    if (name.fKind == TKind::rkGoneFiles) rows[i] = goneFiles;
    if (name.fKind == TKind::rkMore) rows[i] = more;
  }
  return rows;
}

}  // namespace Vantrel::Window
