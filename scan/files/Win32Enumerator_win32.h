#pragma once

// The base of both Windows enumerators: values of the current record, links, retries, children.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/threads/CriticalSection.h"
#include "scan/files/Win32FileApi_win32.h"
#include "scan/storage/FileSystemEnumerator.h"

namespace Vantrel::Enumerators {

// Data shared by all enumerators of one scan.
class TWin32Scan {
 public:
  // The scanned folder's path with all links resolved.
  std::u16string RealRootPath(IWin32FileApi& pApi, const std::u16string& pRootPath);

  TEnteredFolders fEntered;

 private:
  TCriticalSection fLock;
  std::u16string fRealRootPath GUARDED_BY(fLock);  // empty until first asked for
};

// The base of the Windows enumerators: values of the current record, links, errors and children. Derived classes fetch
// the records.
//
// A listing has nothing open before the first Next and after the last. So thousands of enumerators can wait in a queue.
// A link is judged when its record is read, while the path is known.
class TWin32Enumerator : public TBaseFileSystemEnumerator {
 public:
  // pObjectName limits the listing to this entry of the folder. Empty lists all entries.
  TWin32Enumerator(std::u16string pPath, std::u16string pObjectName, THierarchicalEnumeratorOptions pOptions,
                   IWin32FileApi& pApi);
  TWin32Enumerator(std::u16string pPath, const TWin32Enumerator& pParent);

  // Throws EOSError 3 when the system refuses the listing itself, as it does for a file.
  bool Next() override;
  void Reset() override;
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  // An enumerator of the same folder, positioned before its first entry.
  TRef<IHierarchicalEnumerator> Clone() const override;

  std::u16string_view GetObjectName() const override;
  int64_t GetSize() const override;
  int64_t GetAllocated() const override;
  TKivFileTime GetLastAccessDate() const override { return Record().fLastAccessDate; }
  TKivFileTime GetLastChangeDate() const override { return Record().fLastChangeDate; }
  TKivFileTime GetCreationDate() const override { return Record().fCreationDate; }
  TAttributes GetAttributes() const override { return fIsOnEntry ? fAttributes : Record().fAttributes; }
  bool IsFolder() const override { return (GetAttributes() & kAttributeDirectory) != 0; }
  std::u16string GetFullPath() const override;
  std::u16string GetOwner() const override;
  bool CanDescend() const override;
  uint32_t GetErrorCode() const override { return fErrorCode; }
  TEnumeratorError GetError() const override;

 protected:
  // One entry as the system describes it. The name is valid until the next record is fetched.
  struct TRecord {
    std::u16string_view fName;
    TAttributes fAttributes = 0;
    uint32_t fReparseTag = 0;  // 0 if none or unknown
    int64_t fSize = 0;
    int64_t fAllocation = 0;  // bytes, if the record has them
    TKivFileTime fLastAccessDate;
    TKivFileTime fLastChangeDate;
    TKivFileTime fCreationDate;
  };

  // Fetches the next record and opens the folder first if needed. False at the end and after Fail.
  virtual bool FetchRecord(TRecord& pRecord) = 0;
  virtual void CloseListing() noexcept = 0;
  virtual void RestartListing() = 0;
  virtual TRef<TWin32Enumerator> CreateForFolder(std::u16string pPath) const = 0;
  // The record's bytes on storage, and the size below which data lies inside the file record (0: never).
  virtual int64_t RecordAllocation() const = 0;
  virtual int64_t ResidentLimit() const = 0;

  bool Fail(uint32_t pErrorCode);  // records the error and returns false
  // Whether the folder's contents belong to the scan; called when it is opened. False for a link that is not followed,
  // and for a folder already entered by another path. The second form opens the folder to find out.
  bool BelongsToScan(HANDLE pFolder);
  bool BelongsToScan();
  // Calls pOpen with the path in API form, and returns its code. If the path was not found, retries with the long form.
  // If it was refused, retries with the backup privilege. If a server did not answer but does now, tries once more.
  uint32_t OpenFolder(const std::u16string& pPath, const std::function<uint32_t(const std::u16string&)>& pOpen) const;
  uint32_t OpenFlags() const {
    return FILE_FLAG_BACKUP_SEMANTICS | (fOpenReparsePoint ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
  }
  int64_t ClusterSize() const;
  const TRecord& Record() const { return fIsOnEntry ? fRecord : OwnRecord(); }
  static TKivFileTime DateOf(int64_t pTicks) { return {pTicks > 0 ? pTicks : 0}; }
  static TRecord RecordOf(const TKivWin32FindData& pData);

  IWin32FileApi& fApi;
  TAttributes fAttributes = 0;     // of the current entry, as shown
  std::u16string fForFile;         // the only entry to list; empty lists all
  bool fOpenReparsePoint = false;  // do not follow a link, in case the folder became one since it was listed
  // Whether data beyond the record was fetched for the current entry's size: streams, links, compressed size.
  mutable bool fCheckedForCompressedFileSize = false;
  uint32_t fErrorCode = 0;

 private:
  template <class TOpen>
  uint32_t OpenWithRetries(const std::u16string& pPath, TOpen pOpen) const;
  bool IsReachable(const std::u16string& pPath) const;
  void TakeRecord();
  void EndListing();
  TLinkDecision DecideLink(const std::u16string& pPath, uint32_t pTag) const;
  TLinkDecision DecideResolvedLink(TLinkKind pKind, const TReparsePoint& pPoint, const std::u16string& pPath) const;
  std::u16string RealPathOf(const std::u16string& pFolder) const;
  bool FollowsLinks() const { return (fOptions & (heoFollowSymbolicLinks | heoFollowMountPoints)) != 0; }
  bool SharesHardLinks(int64_t pAllocation) const;
  void CheckLinks() const;
  const TRecord& OwnRecord() const;
  void HandDown(TWin32Enumerator& pChild, TAttributes pAttributes, bool pMayBeReparsePoint, bool pIsCloud) const;

  TRecord fRecord;
  mutable std::optional<TRecord> fOwnRecord;  // of the folder itself, fetched on first use
  mutable int64_t fAllocated = kAllocatedUnknown;
  TLinkDecision fLinkDecision = TLinkDecision::ldOrdinary;
  bool fIsOnEntry = false;
  bool fHasEnded = false;
  const std::shared_ptr<TWin32Scan> fScan;
  std::shared_ptr<const std::u16string> fVolumePath;  // the folder at which the scan entered the volume
  bool fIsUndecidedLink = false;  // a link opened by name, so no listing has decided whether to follow it
  // These fields say what the listing has found so far.
  bool fSawOtherThanLink = false;
  bool fSawOrdinaryReparsePoint = false;
  bool fSawCloudFolder = false;
};

// Makes a typed path, with or without "file:", a full path. Shadow copies and volumes given by GUID stay as they are.
std::u16string RootedPathOf(std::u16string_view pPath);

}  // namespace Vantrel::Enumerators
