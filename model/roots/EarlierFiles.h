#pragma once

// Finds the files of an earlier scan by name, folder after folder.

#include <boost/unordered/unordered_flat_map.hpp>
#include <string>
#include <string_view>

#include "model/roots/RootInterfaces.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// The earlier files of the folders of a compared root. It keeps an index of one folder's files, so a caller asks for
// all files of a folder before those of the next. One thread.
class TEarlierFiles {
 public:
  // The delimiter is that of the root. With the backslash, letter case does not count.
  TEarlierFiles(TRef<const IComparison> pComparison, char16_t pPathDelimiter);

  // Whether the earlier scan kept its files. If not, Find finds none.
  bool AreKnown() const { return fComparison->KnowsFiles(); }
  // The earlier file of this name directly in the folder, or in that of a "[Files]" node. nullptr when there was none.
  // Valid until another folder is asked for.
  const TFileRecord* Find(const IFolderData& pFolder, std::u16string_view pName);

 private:
  std::u16string KeyOf(std::u16string_view pName) const;

  const TRef<const IComparison> fComparison;
  const bool fLetterCaseCounts;
  TRef<const IFolderData> fFolder;  // of the files below
  TRef<const TFileTable> fFiles;
  boost::unordered_flat_map<std::u16string, const TFileRecord*> fFileByName;
};

}  // namespace Vantrel
