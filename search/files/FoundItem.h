#pragma once

// What a search has found.

#include <cstdint>
#include <string>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel::Search {

// The folder that found items lie in. They share it.
struct TFoundFolder : TInterfaced<IInterface> {
  TFoundFolder(std::u16string pPath, char16_t pDelimiter) : fPath(std::move(pPath)), fDelimiter(pDelimiter) {}
  const std::u16string fPath;
  const char16_t fDelimiter;
};

// A file or folder that a search has found, with its values of that moment.
struct TFoundItem {
  TRef<const TFoundFolder> fFolder;
  std::u16string fName;
  TEntryValues fValues;
  bool fIsFolder = false;
  // False for a folder on a storage: what is beneath it has not been added up.
  bool fHasSize = true;
  // In a tree: the item's own node if it is a folder, else the folder that holds it. nullptr on a storage.
  TRef<IHierarchicalElement> fNode{};

  std::u16string FullPath() const;
};

// Sorts by size, the largest first, then by path in code-unit order. What has no size comes last.
void SortFoundItems(std::vector<TFoundItem>& pItems);

}  // namespace Vantrel::Search
