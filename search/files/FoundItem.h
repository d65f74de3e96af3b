#pragma once

// What a search has found.

#include <cstdint>
#include <string>
#include <vector>

#include "model/roots/Storage.h"

namespace Vantrel::Search {

// The folder that found items lie in. They share it.
struct TFoundFolder : TInterfaced<IInterface> {
  TFoundFolder(std::u16string pPath, char16_t pDelimiter, TRef<IStorage> pStorage = nullptr)
      : fPath(std::move(pPath)), fDelimiter(pDelimiter), fStorage(std::move(pStorage)) {}
  const std::u16string fPath;
  const char16_t fDelimiter;
  const TRef<IStorage> fStorage;  // opens the items by their paths; nullptr when nothing can be opened
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
  // Of a folder: whether the search goes into it, apart from the level that the query asks for.
  bool fIsEntered = false;

  std::u16string FullPath() const;
};

// Sorts by size, the largest first, then by path in code-unit order. What has no size comes last.
void SortFoundItems(std::vector<TFoundItem>& pItems);

}  // namespace Vantrel::Search
