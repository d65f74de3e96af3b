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

// Values that travel from a folder's files into the folder and all its ancestors, or back out of them: a snapshot that
// no other thread changes while it is on its way.
struct TFolderTotals {
  TSizeValues fValues;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  bool fLongPaths = false;

  // Whether the table holds every file that was counted, so that their statistics can be worked out from it.
  bool AreAllIn(const TFileTable* pFiles) const {
    return pFiles && static_cast<int64_t>(pFiles->Count()) == fValues.fFiles;
  }
};

// The same with statistics, as a whole branch has them.
struct TFolderContribution : TFolderTotals {
  TFolderStatistics fStatistics;
};

// The same as listing one folder brought it together about its files.
struct TFileGroupContents : TFolderTotals, TListedStatistics {
  TRef<const TFileTable> fFiles;  // nullptr when the scan keeps none
  bool KeepsAllFiles() const { return AreAllIn(fFiles.get()); }
};

// The children of a folder. Made with the first child.
struct TSubFolderList {
  TRef<TCustomFolderData> fFilesNode;          // the "[Files]" child, if any
  std::vector<TRef<TCustomFolderData>> fList;  // the sub-folders, in the order of their discovery
};

// All that a file says of a folder node. Totals are those of everything beneath it.
struct TLoadedFolder {
  TEntryValues fEntry;  // dates: the newest beneath; sizes do not count
  TSizeValues fValues;
  TFolderStates fState = 0;
  TKeyId fOwnerKey = kNoKey;
  TFolderStatistics fStatistics;
};

// Children in the one order that they have everywhere: largest first, then by name in code-unit order. Sizes are read
// once, since a running scan changes them under the sort.
std::vector<TRef<IFolderData>> SortedBySize(std::vector<TRef<IFolderData>> pChildren);

// A folder node. The totals beneath it are kept up to date as the scan goes on: every folder's files are added once to
// the folder and to each ancestor, and taken out again the same way when a branch is reset or removed.
//
// Subtraction: sizes, counts and statistics are sums, so taking out exactly what was put in leaves the sums of a fresh
// scan. Compression flags, the long-path mark and the newest dates are not sums; each ancestor works them out anew from
// its children, which costs time in proportion to its direct children only. A folder therefore remembers the dates of
// its own entry beside the newest ones of everything beneath it.
//
// Statistics: a folder has arrays of its own once it has sub-folders. Without sub-folders, and in a "[Files]" node,
// they are worked out from the table of files whenever somebody asks, unless the scan keeps no files. They come into
// being under the folder's lock before the first child is known to anybody, and go only where no scan runs; so the scan
// reads the pointer without the lock, and views copy the references under it.
//
// Locks: the per-folder locks are never nested. References to parent and root are read without the lock by the scan and
// by structural changes, which never run beside a disposal (the root's synchronizer sees to that); everybody else asks
// GetParentFolder and GetRoot.
class TCustomFolderData : public TContainerHierarchicalElement {
 public:
  // IHierarchicalElement
  IFolderData* AsFolder() override { return this; }
  void IncludeFolderState(TFolderStates pBits) override;
  void ExcludeFolderState(TFolderStates pBits) override;
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  TRef<IFolderData> CreateChild(std::u16string_view pName) override;
  TMetaDataValue GetValue(TColumn pColumn) const override;
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

  // For the scan engine.

  // Makes a child node that is not in the child list yet; AppendChildren puts a listing's children there in one go, in
  // a list of just their size, and counts them in every ancestor. The entry's dates are raised here and above when
  // pRaise.
  TRef<TCustomFolderData> MakeChild(std::u16string_view pName, const TEntryValues& pValues, TKeyId pOwnerKey,
                                    bool pRaiseDates);
  void AppendChildren(std::vector<TRef<TCustomFolderData>> pChildren);
  // The values of the folder's own entry; for the top folder, which no listing brings.
  void SetEntryValues(const TEntryValues& pValues, TKeyId pOwnerKey, bool pRaiseDates);
  // The dates of the entry as a refresh finds them. They count here and above with the next Reset or ReplaceFiles.
  void SetOwnDates(const TEntryValues& pValues);
  // Takes in what the listing of this folder brought, here and in every ancestor. A folder with sub-folders keeps it as
  // its "[Files]" child; one without shows its files directly.
  void AddFiles(const TFileGroupContents& pContents, bool pNotify);
  // The same for a folder that had been listed before: what it counted as its own files is taken out first.
  void ReplaceFiles(const TFileGroupContents& pContents);

  // For trees that come from a file. The totals of each node are set as they are and reach no ancestor; a node's
  // children are made and filled while nobody else knows the tree.
  TRef<TCustomFolderData> AddLoadedChild(std::u16string_view pName, bool pIsFilesNode);
  void SetLoaded(const TLoadedFolder& pValues);

  // A folder is finished when its own listing and all sub-folders are: each part is announced, then reported done. The
  // last one marks the folder fsSubFolderScanningFinished and is itself a part done of the parent. A branch that is
  // scanned again makes its finished ancestors unfinished for that time.
  void BeginScan(int32_t pParts) { fUnfinishedParts.store(pParts, std::memory_order_relaxed); }
  void AnnounceParts(int32_t pParts) { fUnfinishedParts.fetch_add(pParts, std::memory_order_acq_rel); }
  void FinishPart();
  void ReopenAncestors();
  // Direct sub-folders that are not finished: each is an unfinished part.
  int32_t CountUnfinishedChildren() const;

  TCustomFolderData* ParentFolder() const { return static_cast<TCustomFolderData*>(fParentFolder.get()); }

  // Tells the root's subscribers. Nothing is told of a node that is not in the tree yet; EnterTree tells that it is.
  void TellChange(TNodeChanges pChanges = ncChanged);
  void EnterTree();

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

  TMetaDataValue ChangeSince(TColumn pColumn) const;
  // Copies of the references, or statistics made from the files. Empty after disposal.
  // What the folder holds of its own, else the files to work it out from.
  struct TStatisticsSource {
    std::optional<TFolderStatistics> fOwn;
    TRef<const TFileTable> fFiles;
  };
  TStatisticsSource FindStatistics() const;
  TFolderStatistics Statistics() const;
  // The folder's own, made from the files it has so far when there are none yet.
  TFolderStatistics& EnsureStatistics();
  std::unique_ptr<TFolderStatistics> TakeStatistics();  // out of the folder
  TFolderContribution Contribution() const;             // all beneath the folder, the arrays perhaps shared with it
  // The same for the folder's own files alone, in copies that do not change with the folder.
  TFolderContribution OwnFilesContribution() const;
  // This folder first, the top folder last.
  using TAncestry = boost::container::small_vector<TCustomFolderData*, 32>;
  TAncestry Ancestry();

  // Into this folder alone.
  void Add(const TFolderContribution& pValues);
  void Add(const TFileGroupContents& pContents);
  void AddTotals(const TFolderTotals& pTotals);
  // The same with the files themselves, for a folder that is its files.
  void HoldFiles(const TFileGroupContents& pContents);
  // Into the top folder first and pFirst last; nullptr is no folder.
  template <class TValues>
  static void AddUpwards(TCustomFolderData* pFirst, const TValues& pValues, bool pNotify);
  void AttachFilesNode(TRef<TFileGroupData> pGroup);
  void LogFilesNode(bool pComes) const;
  void MoveOwnFilesIntoNode();

  // Out of this folder alone.
  void Subtract(const TFolderContribution& pValues);
  // Out of pFirst and all above it.
  static void SubtractUpwards(TCustomFolderData* pFirst, const TFolderContribution& pValues);
  // Compression, long-path mark and newest dates from the entry itself and the children.
  void RecomputeFromChildren();
  void SetDerived(TCompressionStates pCompression, bool pLongPaths, TKivFileTime pAccess, TKivFileTime pChange);
  void ClearTotals();
  void RemoveChild(const TCustomFolderData& pChild);
  // Disposes of a node that its parent has let go, and tells of it.
  void LeaveTree();
  // Takes the folder's own files out of it and of every ancestor. Returns their node, if there was one.
  TRef<TCustomFolderData> RemoveOwnFiles();
  TRef<TCustomFolderData> DetachFilesNode();
  void DisposeNode(std::vector<TRef<TCustomFolderData>>& pChildren);

  std::atomic<TFolderStatistics*> fStatistics{nullptr};  // owned; changed under fLock
  TNewestDate fOwnLastAccessDate;                        // of the entry itself, without what lies beneath
  TNewestDate fOwnLastChangeDate;
};

// An ordinary folder.
class TFolderData : public TCustomFolderData {
 public:
  // A top folder: its name is the root's path.
  TFolderData(TRef<IHierarchicalRoot> pRoot, std::u16string_view pPath);
  TFolderData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName);
};

// The "[Files]" pseudo-folder: the sum of a folder's own files.
class TFileGroupData : public TCustomFolderData {
 public:
  static constexpr std::u16string_view kName = u"[Files]";
  TFileGroupData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot);
  // Fills a new node.
  void Fill(const TFileGroupContents& pContents) { HoldFiles(pContents); }
  void Fill(const TFolderContribution& pValues, TRef<const TFileTable> pFiles);
  bool IsFileGroup() const override { return true; }
  std::u16string_view GetObjectName() const override { return kName; }  // all share it
  std::u16string GetFullPath() const override;                          // of the folder whose files these are
  // Both take the files out of the folder and all above it: there is no empty "[Files]" node.
  void Reset() override { Remove(); }
  void Remove() override;
};

}  // namespace Vantrel
