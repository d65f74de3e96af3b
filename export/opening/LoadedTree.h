#pragma once

// Builds a root and its tree from what a file tells of folders and files, one after the other.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export/opening/OpenedText.h"
#include "model/roots/Root.h"

namespace Vantrel::Opening {

// A folder or file as a file tells of it.
struct TLoadedEntry {
  std::u16string_view fName;  // of the top folder: unused
  TEntryValues fValues;
  TKeyId fOwnerKey = kNoKey;
};

// The part of a file for a folder's totals. A file that has none lets them be worked out.
using TStatedTotals = std::optional<TSizeValues>;

// Builds a tree from the top down. A folder's files and sub-folders come in any order between its begin and its end.
// Where the file states no totals, they are the sums of what came. Folders themselves count no bytes, as in a scan.
// Statistics and the largest files are worked out if the file has all files.
//
// EFileError for what cannot be: a bad name, a name that is there twice, sums that no storage holds. One thread.
class TLoadedTree {
 public:
  explicit TLoadedTree(IScanRoots& pTarget) : fTarget(pTarget) {}
  ~TLoadedTree();
  TLoadedTree(const TLoadedTree&) = delete;
  TLoadedTree& operator=(const TLoadedTree&) = delete;

  // The top folder, with the root's path and its delimiter. The delimiter 0 is taken from the path.
  void BeginTop(std::u16string_view pPath, char16_t pDelimiter, const TLoadedEntry& pEntry,
                const TStatedTotals& pTotals = {});
  void BeginFolder(const TLoadedEntry& pEntry, const TStatedTotals& pTotals = {});
  // States the values of the open folder's own files, together.
  void SetFiles(const TLoadedEntry& pEntry, const TSizeValues& pTotals);
  void AddFile(const TLoadedEntry& pEntry);
  // The open folder could not be read, or only in part.
  void AddError(std::u16string pText, bool pPartial);
  void EndFolder();

  bool HasTop() const { return fRoot != nullptr; }
  size_t OpenFolders() const { return fOpen.size(); }
  char16_t Delimiter() const { return fDelimiter; }
  // The path of the innermost open folder.
  const std::u16string& Path() const { return fPath; }
  // Folders so far, the top not counted.
  int64_t FolderCount() const { return fFolders; }

  // Returns the root after the top folder has ended.
  TRef<IHierarchicalRoot> Finish(TLoadedScan pScan);

 private:
  struct TOpenFolder {
    TRef<TCustomFolderData> fNode;
    TLoadedFolder fValues;
    bool fHasTotals = false;
    std::optional<TLoadedFolder> fFiles;  // as stated
    TLoadedFolder fOwnFiles;              // as they came
    TSizeValues fChildren;
    std::vector<TRef<TCustomFolderData>> fNodes;  // of the sub-folders
    size_t fPathLength = 0;                       // of the folder's path, with which fPath begins
    bool fHasLongPaths = false;
  };

  void CheckName(std::u16string_view pName) const;
  void Open(TRef<TCustomFolderData> pNode, const TLoadedEntry& pEntry, const TStatedTotals& pTotals);
  void Count(const TBasicSizeValues& pValues);
  void CheckNames(const TOpenFolder& pFolder) const;
  void PlaceFiles(TOpenFolder& pFolder);

  IScanRoots& fTarget;
  TRef<TCustomRoot> fRoot;
  char16_t fDelimiter = 0;
  std::u16string fPath;
  std::vector<TOpenFolder> fOpen;
  std::vector<TFileTableBuilder> fTables;  // of the open folders; kept to reuse their memory
  std::vector<TScanError> fErrors;
  TBasicSizeValues fCounted;  // of all that came, so no sum of some of it is larger
  int64_t fFolders = 0;
  int64_t fFilesInTables = 0;
  size_t fLongPathLength = 0;
  bool fHasOwners = false;
  bool fTopEnded = false;
};

}  // namespace Vantrel::Opening
