#pragma once

// The interfaces of nodes and enumerators, and the bits for attributes, states and enumerator options.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "model/columns/MetaData.h"
#include "model/columns/SizeData.h"
#include "model/statistics/InternedKeys.h"
#include "platform/system/FileTime.h"
#include "platform/threads/Interface.h"

namespace Vantrel {

// The interfaces of the scan tree, of its enumerators and of its root. Any thread may use a node through these.
// Returned values are snapshots.

class IFolderData;
class IFileAgeDistribution;
class IFileAges;
class ICustomAssocSizeArray;
class IHierarchicalElement;
class IHierarchicalRoot;
class TFileTable;
class TStatisticsReading;
struct TFolderStatistics;
class ITopSizeList;

// File-system attribute bits, with the values of the Windows attribute word on every platform.
using TAttributes = uint32_t;
constexpr TAttributes kAttributeReadOnly = 0x1;
constexpr TAttributes kAttributeHidden = 0x2;
constexpr TAttributes kAttributeSystem = 0x4;
constexpr TAttributes kAttributeDirectory = 0x10;
constexpr TAttributes kAttributeArchive = 0x20;
constexpr TAttributes kAttributeDevice = 0x40;
constexpr TAttributes kAttributeNormal = 0x80;
constexpr TAttributes kAttributeSparse = 0x200;
constexpr TAttributes kAttributeReparsePoint = 0x400;
constexpr TAttributes kAttributeCompressed = 0x800;
constexpr TAttributes kAttributeOffline = 0x1000;
constexpr TAttributes kAttributeEncrypted = 0x4000;
constexpr TAttributes kAttributeIntegrityStream = 0x8000;
constexpr TAttributes kAttributeRecallOnDataAccess = 0x400000;

// Bits of a node's state. The values are kept in scan files.
enum TFolderState : uint16_t {
  fsScanning = 1 << 0,                   // the folder's own entries are being enumerated
  fsRemoving = 1 << 1,                   // the node is being removed or reset
  fsSubFolderScanningFinished = 1 << 2,  // the folder and every folder beneath it are finished
  fsContainsLongPaths = 1 << 3,          // some file beneath has a path of at least LongPathLength
  fsUpdatePending = 1 << 4,              // a refresh of this folder is queued
  fsDetectedDuringRefresh = 1 << 5,      // found new by a non-recursive refresh
  fsIsXMLImport = 1 << 6,                // built from an imported scan file
  fsCreatedForComparison = 1 << 7,       // made while comparing with an earlier scan
  fsIsDummyForComparison = 1 << 8,       // stands for a folder that exists only in the compared scan
  fsDummySubFoldersAdded = 1 << 9,       // such sub-folders have been added
  fsIsRoot = 1 << 10,                    // top folder of a root
  fsDisposed = 1 << 11,                  // node disposed; it answers no further changes
};
using TFolderStates = uint16_t;

// The date of a file that the age statistics use.
enum class TDateType : uint8_t { dtLastAccess, dtLastChange, dtCreation, dtLastSave, dtNone };

// Tells whether a root has been disposed. Every changing operation checks it first, and does nothing when the root is
// disposed.
class IDisposeToken : public IInterface {
 public:
  virtual bool IsDisposed() const noexcept = 0;
};

class TCancellationWatch;

// Tells whether work should stop. Any thread.
class ICancellationIndicator : public IInterface {
 public:
  virtual bool IsCancelled() const noexcept = 0;

 private:
  friend class TCancellationWatch;
  virtual void AddWatch(TCancellationWatch& pWatch) = 0;
  // Returns when none of the watch's calls is running any more.
  virtual void RemoveWatch(TCancellationWatch& pWatch) = 0;
};

class ICancellationToken : public ICancellationIndicator {
 public:
  // May be called again, and then calls the watches again. So a call that began to hang after the last look at the
  // token is interrupted the next time.
  virtual void Cancel() noexcept = 0;
};

// Calls back on each Cancel of a token, on the cancelling thread, as long as it lives. If the token is already
// cancelled, it calls back at once. The callback must return soon and must not take a lock that is held where the watch
// ends.
class TCancellationWatch {
 public:
  TCancellationWatch(TRef<ICancellationIndicator> pToken, std::function<void()> pOnCancel)
      : fOnCancel(std::move(pOnCancel)), fToken(std::move(pToken)) {
    if (fToken) fToken->AddWatch(*this);
  }
  ~TCancellationWatch() {
    if (fToken) fToken->RemoveWatch(*this);
  }
  TCancellationWatch(const TCancellationWatch&) = delete;
  TCancellationWatch& operator=(const TCancellationWatch&) = delete;

  const std::function<void()> fOnCancel;

 private:
  const TRef<ICancellationIndicator> fToken;
};

// The values of one entry: a node, or the current entry of an enumerator.
class IHierarchicalBase : public IMetaDataFormatter {
 public:
  // The entry's own name, not the path. The view is valid until the entry changes (for nodes: until their release).
  virtual std::u16string_view GetObjectName() const = 0;
  virtual int64_t GetSize() const = 0;       // bytes; for a folder node, of everything beneath it
  virtual int64_t GetAllocated() const = 0;  // bytes on storage
  virtual TKivFileTime GetLastAccessDate() const = 0;
  virtual TKivFileTime GetLastChangeDate() const = 0;
  virtual TKivFileTime GetCreationDate() const = 0;
  virtual TAttributes GetAttributes() const = 0;
  virtual bool IsFolder() const = 0;
  virtual std::u16string GetFullPath() const = 0;
};

// A node of a tree or a free-standing object: the program's view of a file or folder.
class IHierarchicalObject : public IHierarchicalBase {
 public:
  // The root that the node belongs to; nullptr for a free-standing object and after disposal.
  virtual TRef<IHierarchicalRoot> GetRoot() const = 0;
  virtual int64_t GetFiles() const = 0;    // files beneath; 1 for a file
  virtual TKeyId GetOwnerKey() const = 0;  // of the owner's name; kNoKey when unknown
};

// A node inside a tree.
class IHierarchicalElement : public IHierarchicalObject {
 public:
  virtual TRef<IHierarchicalElement> GetParentFolder() const = 0;  // nullptr for the top folder and after disposal
  // Bits of TFolderState; each call is one atomic step.
  virtual TFolderStates GetFolderState() const = 0;
  virtual void IncludeFolderState(TFolderStates pBits) = 0;
  virtual void ExcludeFolderState(TFolderStates pBits) = 0;
  // The node as a folder; nullptr for a file.
  virtual IFolderData* AsFolder() = 0;
  // A snapshot of the sub-folders, including the "[Files]" node: largest first, then by name in code-unit order.
  // EInvalidOperation for a file.
  virtual std::vector<TRef<IFolderData>> FindSubFolders() = 0;
  // Creates a child node and appends it. EInvalidOperation for a file.
  virtual TRef<IFolderData> CreateChild(std::u16string_view pName) = 0;
};

// The values of a folder or file entry, which an enumerator passes to a new node at once.
struct TEntryValues {
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  TKivFileTime fCreationDate;
  TAttributes fAttributes = 0;
};

// Option bits. Child enumerators inherit them from their parent.
enum THierarchicalEnumeratorOption : uint32_t {
  heoShareHardLinks = 2,       // add alternate data streams and share the allocated size among hard links
  heoFollowSymbolicLinks = 4,  // enter links to folders outside the scan; on Windows unresolvable ones as well
  heoFollowMountPoints = 8,    // the same for junctions and mounted volumes; Windows only
  heoNoBackupPrivilege = 16,   // do not try the backup privilege
  heoStayOnFileSystem = 32,    // do not enter other file systems; Linux only
  heoScanMft = 64,             // read a whole NTFS volume through its file table where possible
  heoMftCompatible = 128,      // read file tables by the compatible rules
  heoMftSystemFiles = 256,     // show the files that an NTFS volume keeps about itself
  heoValuesOnDemand = 512,     // read an entry's values when they are first asked for, if that saves time
};
using THierarchicalEnumeratorOptions = uint32_t;

// The kind of error in the folder that an enumerator lists.
enum class TEnumeratorError : uint8_t { eeOk, eeAccessDenied, eeOther };

// Lists the entries of one folder of a storage. After Next returned true, the IHierarchicalBase values are those of the
// current entry. Before the first Next they are those of the folder itself. Used by one thread at a time.
class IHierarchicalEnumerator : public IHierarchicalBase {
 public:
  // Advances to the next entry. False at the end and after an error. GetErrorCode tells the two apart, so an error in
  // the middle is never taken for the end.
  virtual bool Next() = 0;
  // Starts again at the first entry.
  virtual void Reset() = 0;
  // Creates an enumerator of the current entry's contents, of the same kind and with the same options. Opens nothing
  // yet.
  virtual TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() = 0;
  // The same for an entry listed earlier. A scan lists a folder to its end before it descends, so open handles and
  // buffers do not accumulate with depth. An enumerator that has listed nothing also accepts the call, as when a branch
  // is opened from the root down. The rules of CanDescend then apply too: a folder outside the scan gives an enumerator
  // that lists nothing, without an error.
  virtual TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) = 0;
  // A number that stands for the current entry within its storage; 0 when the storage has none. The second call does
  // the same as CreateChildEnumerator for an entry with a number, without a search for its name.
  virtual uint64_t GetEntryId() const { return 0; }
  virtual TRef<IHierarchicalEnumerator> CreateChildEnumeratorById(uint64_t, std::u16string_view pName,
                                                                  TAttributes pAttributes) {
    return CreateChildEnumerator(pName, pAttributes);
  }
  virtual TRef<IHierarchicalEnumerator> Clone() const = 0;

  // Reads the values of the current entry, if that was left until they are needed (heoValuesOnDemand). False if the
  // entry is not there any more or cannot be read; GetErrorCode tells of the latter. Values asked for without this call
  // are read all the same, and are zeros then.
  virtual bool ReadValues() { return true; }
  // All values of the current entry at once.
  virtual TEntryValues GetEntryValues() const {
    return {GetSize(), GetAllocated(), GetLastAccessDate(), GetLastChangeDate(), GetCreationDate(), GetAttributes()};
  }
  // The account name of the current entry's owner; empty when unknown. GetOwnerId gives a number that means the same
  // owner throughout a scan, so names are looked up once. It is 0 when the storage has none.
  virtual std::u16string GetOwner() const = 0;
  virtual uint64_t GetOwnerId() const = 0;
  // Whether the current entry is a folder whose contents belong to the scan. False for a link that is not followed, a
  // kernel's pseudo file system, and a folder that the scan also reaches by another path.
  virtual bool CanDescend() const = 0;

  // The system's code of the error that ended the listing or hid entries from it, 0 when there was none; and its kind.
  // The entries listed before tell whether the whole folder is missing or only a part.
  virtual uint32_t GetErrorCode() const = 0;
  virtual TEnumeratorError GetError() const = 0;
  virtual std::u16string GetPath() const = 0;       // the folder being listed
  virtual uint64_t GetParentPathDepth() const = 0;  // the number of parts in that path
  // The length of its path in UTF-16 units, without the final delimiter of a drive's or the system's root.
  virtual size_t GetPathLength() const {
    const std::u16string path = GetPath();
    return path.ends_with(u'/') || path.ends_with(u'\\') ? path.size() - 1 : path.size();
  }
};

// A folder node with the functions that the scan engine uses.
class IFolderData : public IHierarchicalElement {
 public:
  virtual int64_t GetFolders() const = 0;  // folders beneath, all levels
  virtual TSizeValues GetValues() const = 0;
  virtual bool IsFileGroup() const = 0;  // the "[Files]" pseudo-folder

  virtual TRef<ICustomAssocSizeArray> GetUserSizeArray() const = 0;       // nullptr when not collected
  virtual TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const = 0;  // nullptr when not collected
  // The age statistics for the date kind that the scan collected; nullptr when it collected none. Another kind is an
  // error: "Folder data can only provide the file ages as configured during the scan".
  virtual TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType pDateType) const = 0;

  // All three at once, as plain records, for walks of a whole tree.
  virtual void ReadStatistics(TStatisticsReading& pReading) const = 0;

  // Adds a child's values to this folder and to every ancestor, the top folder first. With pNotify the root's
  // subscribers are notified.
  virtual void AddChildValues(const IFolderData& pChild, bool pNotify) = 0;
  // Raises the date, here and in each ancestor until one is not raised by it. Never lowers a date.
  virtual void SetNewerLastAccessDate(TKivFileTime pDate) = 0;
  virtual void SetNewerLastChangeDate(TKivFileTime pDate) = 0;

  virtual TRef<IFolderData> GetFilesNode() const = 0;  // the "[Files]" child, if any
  // The folder's own files, packed. nullptr when it has none or the scan kept none. In a folder with sub-folders they
  // belong to its "[Files]" node. The folder and that node return the same table.
  virtual TRef<const TFileTable> GetFileTable() const = 0;
  // The same files as separate nodes, made for the caller, largest first.
  virtual std::vector<TRef<IHierarchicalElement>> FindFiles() = 0;
  virtual size_t GetSubFolderCount() const = 0;  // direct sub-folders, "[Files]" not counted

  // Scans the branch again, or only the folder's own entries; see IHierarchicalRoot::RefreshFolder.
  virtual bool Refresh(bool pRecursive) = 0;
  // Reset and Remove change the tree's structure. The root calls them (RefreshFolder, RemoveFolder) while no scan runs.
  // Empties the folder for a new scan. Its totals are subtracted from all ancestors.
  virtual void Reset() = 0;
  // Removes the folder with all its totals from its parent, and disposes it.
  virtual void Remove() = 0;
  // Final: releases children, statistics and references, also for all nodes beneath.
  virtual void Dispose() = 0;
};

}  // namespace Vantrel
