#pragma once

// What of a tree changed since an earlier scan, for walks over changes alone.

#include <boost/unordered/unordered_flat_map.hpp>

#include "model/roots/EarlierFiles.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel {

// The folders of a tree that differ from an earlier scan, found when this is made. A folder has changed when it is new,
// when one of its sums differs (size, allocated, files, folders), or when something beneath it has changed: what moved
// from one sub-folder to another leaves the sums above as they were. What has gone has changed. Then read by any
// thread.
class TChangedFolders {
 public:
  // With pSingleFiles, a folder has also changed when one of its files has, whatever the sums. That takes an earlier
  // scan that kept its files. No scan may run. The delimiter is that of the root.
  TChangedFolders(IFolderData& pTop, TRef<const IComparison> pComparison, char16_t pPathDelimiter, bool pSingleFiles);

  bool Contains(const IFolderData& pFolder) const {
    return (pFolder.GetFolderState() & fsIsDummyForComparison) != 0 || fChanged.contains(&pFolder);
  }
  // For HasFileChanged; one for each thread.
  TEarlierFiles EarlierFiles() const { return TEarlierFiles(fComparison, fPathDelimiter); }
  // Whether a file of the folder, or of a "[Files]" node, is new or has another size. True when the earlier scan did
  // not keep its files.
  static bool HasFileChanged(const IFolderData& pFolder, const TFileTable& pFiles, const TFileRecord& pFile,
                             TEarlierFiles& pEarlier);

 private:
  bool HasChangedItself(const IFolderData& pFolder) const;
  bool HasChangedFiles(const IFolderData& pFolder) const;

  const TRef<const IComparison> fComparison;
  const char16_t fPathDelimiter;
  const bool fSingleFiles;
  // Holds the folders, so that no other folder gets the address of one.
  boost::unordered_flat_map<const IFolderData*, TRef<const IFolderData>> fChanged;
};

}  // namespace Vantrel
