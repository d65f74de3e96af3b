#pragma once

// Folder nodes and the "[Files]" node. The sources: `CustomFolder.cpp` has the node itself, `FolderTotals.cpp` totals
// on their way up, `FolderRemoval.cpp` taking out, `FolderLoading.cpp` trees from files.

#include <atomic>
#include <boost/container/small_vector.hpp>
#include <memory>
#include <optional>
#include <vector>

#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileStatistics.h"
#include "model/tree/FileTable.h"
#include "model/tree/HierarchicalData.h"

namespace Vantrel {

class TCustomFolderData;
class TFileGroupData;

// Totals that are added to a folder and all its ancestors, or subtracted from them. A snapshot that no other thread
// changes meanwhile.
struct TFolderTotals {
  TSizeValues fValues;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  bool fLongPaths = false;

  // Whether the table holds every counted file, so that their statistics can be computed from it.
  bool AreAllIn(const TFileTable* pFiles) const {
    return pFiles && static_cast<int64_t>(pFiles->Count()) == fValues.fFiles;
  }
};

// The same with statistics, for a whole branch.
struct TFolderContribution : TFolderTotals {
  TFolderStatistics fStatistics;

  // What came since an earlier moment. Compression, the long-path mark and the dates are not sums, so they stay whole.
  TFolderContribution Since(const TFolderContribution& pEarlier) const;
};

// The same for a folder's files, as collected during its listing.
struct TFileGroupContents : TFolderTotals, TListedStatistics {
  TRef<const TFileTable> fFiles;  // nullptr when the scan keeps none
  bool KeepsAllFiles() const { return AreAllIn(fFiles.get()); }
};

// The children of a folder. Created with the first child.
struct TSubFolderList {
  TRef<TCustomFolderData> fFilesNode;          // the "[Files]" child, if any
  std::vector<TRef<TCustomFolderData>> fList;  // the sub-folders, in the order of their discovery
};

// All that a file tells about a folder node. The totals include everything beneath it.
struct TLoadedFolder {
  TEntryValues fEntry;  // dates: the newest beneath; sizes are ignored
  TSizeValues fValues;
  TFolderStates fState = 0;
  TKeyId fOwnerKey = kNoKey;
  TFolderStatistics fStatistics;
  TRef<const TFileTable> fFiles;  // nullptr if the file has none; for a folder with sub-folders, at its "[Files]" node
};

// Sorts children in the program's fixed order: largest first, then by name in code-unit order. Sizes are read once,
// since a running scan changes them during the sort.
std::vector<TRef<IFolderData>> SortedBySize(std::vector<TRef<IFolderData>> pChildren);

// A folder node. The totals beneath it grow during the scan. Every folder's files are added once to the folder and to
// each ancestor. They are subtracted in the same way when a branch is reset or removed.
//
// Addition: a scan adds a folder's listing to the folder alone. The totals then go up one step at a time, when a branch
// is complete, so the work does not grow with the depth. scan/engine/OpenFolder.h decides when, and what a reader sees
// meanwhile. All other changes of totals reach all ancestors at once, the top folder first.
//
// Subtraction: sizes, counts and statistics are sums, so subtracting exactly what was added leaves the sums of a fresh
// scan. Compression flags, the long-path mark and the newest dates are not sums. Each ancestor recomputes them from its
// direct children, whose number decides the cost. A folder therefore stores the dates of its own entry beside the
// newest ones beneath it.
//
// Statistics: a folder has its own arrays once it has sub-folders. For a folder without sub-folders, and for a
// "[Files]" node, they are computed from the table of files on each call, unless the scan keeps no files. The arrays
// are created under the folder's lock before any code can reach the first child. They are removed only while no scan
// runs. So the scan reads the pointer without the lock, and views copy the references under it.
//
// Locks: the per-folder locks are never nested. The scan and structural changes read the references to parent and root
// without the lock. They never run during a disposal; the root's synchronizer ensures that. All other code calls
// GetParentFolder and GetRoot.
class TCustomFolderData : public TContainerHierarchicalElement {
 public:
  // IHierarchicalElement
  IFolderData* AsFolder() override { return this; }
  void IncludeFolderState(TFolderStates pBits) override;
  void ExcludeFolderState(TFolderStates pBits) override;
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  TRef<IFolderData> CreateChild(std::u16string_view pName) override;
  std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const override;

  // IFolderData
  bool IsFileGroup() const override { return false; }
  TRef<ICustomAssocSizeArray> GetUserSizeArray() const override;
  TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const override;
  TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType pDateType) const override;
  void ReadStatistics(TStatisticsReading& pReading) const override;
  void AddChildValues(const IFolderData& pChild, bool pNotify) override;
  void SetNewerLastAccessDate(TKivFileTime pDate) override;
  void SetNewerLastChangeDate(TKivFileTime pDate) override;
  TRef<IFolderData> GetFilesNode() const override;
  size_t GetSubFolderCount() const override;
  TRef<const TFileTable> GetFileTable() const override;
  std::vector<TRef<IHierarchicalElement>> FindFiles() override;
  bool Refresh(bool pRecursive) override;
  void Reset() override;
  void Remove() override;
  void Dispose() override;

  // Functions for the scan engine.

  // Makes a child node that is not in the child list yet. With pRaiseDates the entry's dates count: as the child's
  // newest dates, and later as those of its ancestors.
  TRef<TCustomFolderData> MakeChild(std::u16string_view pName, const TEntryValues& pValues, TKeyId pOwnerKey,
                                    bool pRaiseDates);
  // Adds the listing of a new folder, here alone: all its sub-folders at once, in a list of exactly their size, and its
  // files. PassUp carries the totals to the ancestors.
  void TakeInListing(std::vector<TRef<TCustomFolderData>> pChildren, const TFileGroupContents& pContents);
  // Adds totals of this folder to its parent, or with pToAll to all ancestors, the top folder first.
  void PassUp(const TFileGroupContents& pContents, bool pToAll, bool pNotify);
  void PassUp(const TFolderContribution& pValues, bool pToAll, bool pNotify);
  // All beneath the folder. Shares its arrays; a snapshot has copies of them.
  TFolderContribution Contribution() const;
  TFolderContribution Snapshot() const;
  // Reports a change of this folder and all its ancestors, the top folder first.
  void TellChangeUpwards();
  // Adds sub-folders to the list and counts them here and in every ancestor.
  void AppendChildren(std::vector<TRef<TCustomFolderData>> pChildren);
  // Sets the values of the folder's own entry. For the top folder, which no listing contains.
  void SetEntryValues(const TEntryValues& pValues, TKeyId pOwnerKey, bool pRaiseDates);
  // Sets the dates that a refresh found for the entry. The next Reset or ReplaceFiles applies them here and above.
  void SetOwnDates(const TEntryValues& pValues);
  // Adds the files of this folder's listing, here and in every ancestor. A folder with sub-folders holds them as its
  // "[Files]" child. A folder without sub-folders shows them directly.
  void AddFiles(const TFileGroupContents& pContents);
  // The same for a folder that was listed before. Its earlier own files are subtracted first.
  void ReplaceFiles(const TFileGroupContents& pContents);

  // For trees from a file. The totals of each node are set directly and are not added to ancestors. A node's children
  // are created and filled while no other code knows the tree.
  TRef<TCustomFolderData> AddLoadedChild(std::u16string_view pName, bool pIsFilesNode);
  void SetLoaded(const TLoadedFolder& pValues);
  void SetLoadedStatistics(const TFolderStatistics& pStatistics);

  // A folder is finished when its own listing and all its sub-folders are. Each part is announced, then reported done.
  // The last part sets fsSubFolderScanningFinished, and the folder is then a finished part of its parent. When a branch
  // is scanned again, its finished ancestors become unfinished for that time.
  void BeginScan(int32_t pParts) { fUnfinishedParts.store(pParts, std::memory_order_relaxed); }
  void AnnounceParts(int32_t pParts) { fUnfinishedParts.fetch_add(pParts, std::memory_order_acq_rel); }
  void FinishPart();
  void ReopenAncestors();
  // The number of unfinished direct sub-folders. Each is an unfinished part.
  int32_t CountUnfinishedChildren() const;

  TCustomFolderData* ParentFolder() const { return static_cast<TCustomFolderData*>(fParentFolder.get()); }

  // Reports a change to the root's subscribers. A node that is not in the tree yet reports nothing; EnterTree reports
  // its arrival.
  void TellChange(TNodeChanges pChanges = ncChanged);
  void EnterTree();
  // The first half of EnterTree, for children that are told of later.
  void BeInTree() { fChangeMarks.fetch_or(kIsInTree, std::memory_order_relaxed); }

  // Compares the running totals with a recount of the children. Debug builds only.
  void Test() const;

 protected:
  TCustomFolderData(TRef<IHierarchicalElement> pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName);
  ~TCustomFolderData() override;
  std::vector<TRef<TCustomFolderData>> Children() const;

  std::unique_ptr<TSubFolderList> fSubItems GUARDED_BY(fLock);
  TRef<const TFileTable> fFileTable GUARDED_BY(fLock);

 private:
  friend class TFileGroupData;

  // The folder's own statistics, else the files from which they are computed. FindStatistics returns copies of the
  // references; Statistics computes the statistics where needed. Both are empty after disposal.
  struct TStatisticsSource {
    std::optional<TFolderStatistics> fOwn;
    TRef<const TFileTable> fFiles;
  };
  TStatisticsSource FindStatistics() const;
  TFolderStatistics Statistics() const;
  // The folder's own statistics. Created from its present files if missing.
  TFolderStatistics& EnsureStatistics();
  std::unique_ptr<TFolderStatistics> TakeStatistics();  // removes them from the folder
  TFolderTotals Totals() const;                         // all beneath the folder
  // The folder's own files alone, as copies that do not change with the folder.
  TFolderContribution OwnFilesContribution() const;
  // This folder first, the top folder last.
  using TAncestry = boost::container::small_vector<TCustomFolderData*, 32>;
  TAncestry Ancestry();

  // Adds to this folder alone.
  void Add(const TFolderTotals& pTotals);
  void Add(const TFolderContribution& pValues);
  void Add(const TFileGroupContents& pContents);
  void AddTotals(const TFolderTotals& pTotals);
  // The same, and stores the files. For a folder that shows its files directly.
  void HoldFiles(const TFileGroupContents& pContents);
  template <class TValues>
  void PassValuesUp(const TValues& pValues, bool pToAll, bool pNotify);
  // Adds to the top folder first and to pFirst last. Does nothing for nullptr.
  template <class TValues>
  static void AddUpwards(TCustomFolderData* pFirst, const TValues& pValues, bool pNotify);
  // Adds nodes to the child list, which is all that changes. Returns what they add to this folder's totals.
  TFolderTotals EnterChildren(std::vector<TRef<TCustomFolderData>> pChildren);
  // Adds the folder's own files to this folder alone, as its "[Files]" child where it has sub-folders.
  void HoldOwnFiles(const TFileGroupContents& pContents);
  void AttachFilesNode(TRef<TFileGroupData> pGroup);
  void TellAddedChildren(size_t pCount);
  void LogFilesNode(bool pComes) const;
  void MoveOwnFilesIntoNode();

  // Subtracts from this folder alone.
  void Subtract(const TFolderContribution& pValues);
  // Subtracts from pFirst and all its ancestors.
  static void SubtractUpwards(TCustomFolderData* pFirst, const TFolderContribution& pValues);
  // Recomputes compression, the long-path mark and the newest dates from the folder's own entry and its children.
  void RecomputeFromChildren();
  void SetDerived(TCompressionStates pCompression, bool pLongPaths, TKivFileTime pAccess, TKivFileTime pChange);
  void ClearTotals();
  void RemoveChild(const TCustomFolderData& pChild);
  // Disposes a node that its parent has released, and reports the removal.
  void LeaveTree();
  // Subtracts the folder's own files from it and from every ancestor. Returns their node, if there was one.
  TRef<TCustomFolderData> RemoveOwnFiles();
  TRef<TCustomFolderData> DetachFilesNode();
  void DisposeNode(std::vector<TRef<TCustomFolderData>>& pChildren);

  std::atomic<TFolderStatistics*> fStatistics{nullptr};  // owned; changed under fLock
  TNewestDate fOwnLastAccessDate;                        // of the folder's own entry, without what is beneath
  TNewestDate fOwnLastChangeDate;
};

// An ordinary folder.
class TFolderData : public TCustomFolderData {
 public:
  // A top folder. Its name is the root's path.
  TFolderData(TRef<IHierarchicalRoot> pRoot, std::u16string_view pPath);
  TFolderData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName);
};

// The "[Files]" pseudo-folder: the sum of a folder's direct files.
class TFileGroupData : public TCustomFolderData {
 public:
  static constexpr std::u16string_view kName = u"[Files]";
  TFileGroupData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot);
  // Fills a new node.
  void Fill(const TFileGroupContents& pContents) { HoldFiles(pContents); }
  void Fill(const TFolderContribution& pValues, TRef<const TFileTable> pFiles);
  bool IsFileGroup() const override { return true; }
  std::u16string_view GetObjectName() const override { return kName; }  // all nodes share this name
  std::u16string GetFullPath() const override;                          // the path of the folder that holds the files
  // Both remove the files from the folder and all its ancestors: an empty "[Files]" node does not exist.
  void Reset() override { Remove(); }
  void Remove() override;
};

}  // namespace Vantrel
