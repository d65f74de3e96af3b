#pragma once

// The largest files that a scan file lists, and the nodes of their folders.

#include <boost/unordered/unordered_flat_map.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "model/statistics/TopSizeList.h"
#include "model/tree/CustomFolder.h"

namespace Vantrel::XML {

// Collects the largest files as they are read, and finds their folders once the whole tree is there: the list may stand
// before the tree or after it. For one thread.
class TLoadedTopFiles {
 public:
  // The path is the one of the folder that holds the file.
  void Add(TTopSizeEntry pFile, std::u16string pFolderPath);
  // The files with their folders. A file whose folder the tree does not hold, since the file is limited to some levels,
  // gets a node outside the tree, beneath the nearest folder that is there: its path is right, and it goes with the
  // list. A file that does not lie beneath the top folder at all is left out. Called once.
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
  boost::unordered_flat_map<const TCustomFolderData*, TChildren> fChildren;     // by name, of folders looked into
};

}  // namespace Vantrel::XML
