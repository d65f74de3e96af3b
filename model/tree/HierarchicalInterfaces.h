#pragma once

// The interfaces of nodes and enumerators; attribute bits, state bits, enumerator options.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "model/columns/MetaData.h"
#include "model/columns/SizeData.h"
#include "platform/system/FileTime.h"
#include "platform/threads/Interface.h"

namespace Vantrel {

// The interfaces of the scan tree, of the enumerators that feed it and of the root that holds it together. A node is
// used through these from any thread; what a call returns is a snapshot.

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

// Which date of a file the age statistics use.
enum class TDateType : uint8_t { dtLastAccess, dtLastChange, dtCreation, dtLastSave, dtNone };

// Tells whether a root has been disposed. Every changing operation asks it first and does nothing once the root is
// gone.
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
  // Returns when none of the watch's calls runs any more.
  virtual void RemoveWatch(TCancellationWatch& pWatch) = 0;
};

class ICancellationToken : public ICancellationIndicator {
 public:
  // May come again, and then calls the watches again: what hung between two looks at the token is met the next time.
  virtual void Cancel() noexcept = 0;
};

// While it lives, each Cancel of a token calls back, on the cancelling thread; at once when the token is cancelled
// already. The call returns soon and takes no lock that is held where the watch ends.
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

// The values of one entry, be it a node or the current entry of an enumerator.
class IHierarchicalBase : public IMetaDataFormatter {
 public:
  // The own name, not the path. The view is good until the entry changes (nodes: until they are released).
  virtual std::u16string_view GetObjectName() const = 0;
  virtual int64_t GetSize() const = 0;       // bytes; for a folder node of everything beneath it
  virtual int64_t GetAllocated() const = 0;  // bytes on storage
  virtual TKivFileTime GetLastAccessDate() const = 0;
  virtual TKivFileTime GetLastChangeDate() const = 0;
  virtual TKivFileTime GetCreationDate() const = 0;
  virtual TAttributes GetAttributes() const = 0;
  virtual bool IsFolder() const = 0;
  virtual std::u16string GetFullPath() const = 0;
};

// A node of a tree or a free-standing object: what every other part of the program knows of a file or folder.
class IHierarchicalObject : public IHierarchicalBase {
 public:
  // The root that the node belongs to; nullptr for a free-standing object and after disposal.
  virtual TRef<IHierarchicalRoot> GetRoot() const = 0;
  virtual int64_t GetFiles() const = 0;  // files beneath; 1 for a file
  virtual IMetaDataCache& GetMetaDataCache() = 0;
};

// A node inside a tree.
class IHierarchicalElement : public IHierarchicalObject {
 public:
  virtual TRef<IHierarchicalElement> GetParentFolder() const = 0;  // nullptr for the top folder and after disposal
  // Bits of TFolderState; each call is one atomic step.
  virtual TFolderStates GetFolderState() const = 0;
  virtual void IncludeFolderState(TFolderStates pBits) = 0;
  virtual void ExcludeFolderState(TFolderStates pBits) = 0;
  // The node as a folder, nullptr for a file.
  virtual IFolderData* AsFolder() = 0;
  // A snapshot of the sub-folders, largest first, then by name in code-unit order, the "[Files]" node among them.
  // A file has none: EInvalidOperation.
  virtual std::vector<TRef<IFolderData>> FindSubFolders() = 0;
  // Makes a child node and appends it. EInvalidOperation for a file.
  virtual TRef<IFolderData> CreateChild(std::u16string_view pName) = 0;
};

// Values that an enumerator knows of a folder or file entry, handed to a new node in one go.
struct TEntryValues {
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  TKivFileTime fCreationDate;
  TAttributes fAttributes = 0;
};

// Option bits handed down from parent to child enumerators.
enum THierarchicalEnumeratorOption : uint32_t {
  heoShareHardLinks = 2,       // add alternate data streams and share the allocated size among hard links
  heoFollowSymbolicLinks = 4,  // enter links to folders outside the scan; on Windows unresolvable ones as well
  heoFollowMountPoints = 8,    // the same for junctions and mounted volumes; Windows only
  heoNoBackupPrivilege = 16,   // do not try the backup privilege
  heoStayOnFileSystem = 32,    // do not enter other file systems; Linux only
};
using THierarchicalEnumeratorOptions = uint32_t;

// What an enumerator says went wrong with the folder that it lists.
enum class TEnumeratorError : uint8_t { eeOk, eeAccessDenied, eeOther };

// Lists the entries of one folder of some storage. After Next returned true the IHierarchicalBase values are those of
// the current entry; before the first Next they are those of the folder itself. Used by one thread at a time.
class IHierarchicalEnumerator : public IHierarchicalBase {
 public:
  // Advances to the next entry; false at the end and after an error, which GetErrorCode then tells: an error in the
  // middle of a listing is never taken for its end.
  virtual bool Next() = 0;
  // Starts again at the first entry.
  virtual void Reset() = 0;
  // An enumerator of the current entry's contents, of the same kind and with the same options. Opens nothing yet.
  virtual TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() = 0;
  // The same for an entry listed earlier: a scan lists a folder to its end before it descends, so that neither open
  // handles nor buffers pile up with depth. It may also be asked of an enumerator that has listed nothing, as when a
  // branch is opened from the root down; the rules of CanDescend then hold as well. A folder that does not belong to
  // the scan gives an enumerator that lists nothing, and that is no error.
  virtual TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) = 0;
  virtual TRef<IHierarchicalEnumerator> Clone() const = 0;

  // The current entry, all values at once.
  virtual TEntryValues GetEntryValues() const {
    return {GetSize(), GetAllocated(), GetLastAccessDate(), GetLastChangeDate(), GetCreationDate(), GetAttributes()};
  }
  // Account name of the current entry's owner; empty when unknown. GetOwnerId gives a number that stands for the same
  // owner throughout a scan, or 0 when the storage has none, so that names are looked up once.
  virtual std::u16string GetOwner() const = 0;
  virtual uint64_t GetOwnerId() const = 0;
  // Whether the current entry is a folder whose contents belong to the scan: not a link that is not followed, not a
  // kernel's pseudo file system, not a folder that the scan reaches by another road as well.
  virtual bool CanDescend() const = 0;

  // The system's code of the error that ended the listing or kept entries out of it, 0 when there was none; and how it
  // counts. Whether the whole folder is missing or only a part says what was listed before.
  virtual uint32_t GetErrorCode() const = 0;
  virtual TEnumeratorError GetError() const = 0;
  virtual std::u16string GetPath() const = 0;  // of the folder being listed
  // The length of its path in UTF-16 units, without the delimiter that a drive's or the system's root ends with.
  virtual size_t GetPathLength() const {
    const std::u16string path = GetPath();
    return path.ends_with(u'/') || path.ends_with(u'\\') ? path.size() - 1 : path.size();
  }
};

// A folder node as the scan engine uses it.
class IFolderData : public IHierarchicalElement {
 public:
  virtual int64_t GetFolders() const = 0;  // folders beneath, all levels
  virtual TSizeValues GetValues() const = 0;
  virtual bool IsFileGroup() const = 0;  // the "[Files]" pseudo-folder

  virtual TRef<ICustomAssocSizeArray> GetUserSizeArray() const = 0;       // nullptr when not collected
  virtual TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const = 0;  // nullptr when not collected
  // The age statistics for the date kind that the scan collected, nullptr when it collected none. Another kind is
  // refused: "Folder data can only provide the file ages as configured during the scan".
  virtual TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType pDateType) const = 0;

  // All three at once, as plain records; for whoever walks a whole tree.
  virtual void ReadStatistics(TStatisticsReading& pReading) const = 0;

  // Adds a child's values to this folder and to every ancestor, the top-most first. With pNotify observers of the root
  // are told.
  virtual void AddChildValues(const IFolderData& pChild, bool pNotify) = 0;
  // Raise-only, carried to all ancestors as long as they change.
  virtual void SetNewerLastAccessDate(TKivFileTime pDate) = 0;
  virtual void SetNewerLastChangeDate(TKivFileTime pDate) = 0;

  virtual TRef<IFolderData> GetFilesNode() const = 0;  // the "[Files]" child, if any
  // The folder's own files, packed; nullptr when it has none or the scan kept none. In a folder with sub-folders they
  // belong to its "[Files]" node, and either of the two answers.
  virtual TRef<const TFileTable> GetFileTable() const = 0;
  // The same as nodes of their own, made for the caller, largest first.
  virtual std::vector<TRef<IHierarchicalElement>> FindFiles() = 0;
  virtual size_t GetSubFolderCount() const = 0;  // direct sub-folders, "[Files]" not counted

  // Scans the branch, or only the folder's own entries, again; see IHierarchicalRoot::RefreshFolder.
  virtual bool Refresh(bool pRecursive) = 0;
  // The next two change the tree's structure; the root calls them (RefreshFolder, RemoveFolder) where no scan runs
  // beside them.
  // Empties the folder for a rescan: its totals leave all ancestors.
  virtual void Reset() = 0;
  // Takes the folder out of its parent, with all its totals, and disposes it.
  virtual void Remove() = 0;
  // Final: releases children, statistics and references, for all nodes beneath as well.
  virtual void Dispose() = 0;
};

}  // namespace Vantrel
