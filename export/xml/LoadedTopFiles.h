#pragma once

// The largest files listed in a scan file, and the nodes of their folders.

#include <boost/unordered/unordered_flat_map.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "model/statistics/TopSizeList.h"
#include "model/tree/CustomFolder.h"

namespace Vantrel::XML {

// Collects the largest files while they are read. It finds their folders when the whole tree is loaded, because the
// list may come before or after the tree. One thread.
class TLoadedTopFiles {
 public:
  // pFolderPath is the path of the folder that holds the file.
  void Add(TTopSizeEntry pFile, std::u16string pFolderPath);
  // Returns the files with their folders. If the file is limited to some levels, the tree may lack a listed file's
  // folder. The folder then gets a node outside the tree, beneath the nearest folder in it. Its path is right, and it
  // lives as long as the list. Files that do not lie beneath the top folder are left out. Call it once.
  std::vector<TTopSizeEntry> Take(TCustomFolderData& pTop, std::u16string_view pTopPath, char16_t pDelimiter);

 private:
  struct TListed {
    TTopSizeEntry fFile;
    std::u16string fFolderPath;
  };
  using TChildren = boost::unordered_flat_map<std::u16string_view, TRef<TCustomFolderData>>;

  TRef<TCustomFolderData> FolderOf(const std::u16string& pPath, TCustomFolderData& pTop, std::u16string_view pTopPath,
                                   char16_t pDelimiter);
  const TChildren& ChildrenOf(TCustomFolderData& pFolder);

  std::vector<TListed> fFiles;
  boost::unordered_flat_map<std::u16string, TRef<TCustomFolderData>> fFolders;  // by path; nullptr outside the root
  boost::unordered_flat_map<const TCustomFolderData*, TChildren> fChildren;     // by name, for folders already searched
};

}  // namespace Vantrel::XML
