#pragma once

// The enumerator that lists a Linux folder by getdents64 and statx, with its handling of links and mounts.

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "platform/threads/CriticalSection.h"
#include "scan/files/EnteredFolders.h"
#include "scan/files/UnixDirectory_posix.h"
#include "scan/storage/EnumeratorBase.h"

struct statx;  // declared by the system

namespace Vantrel::Enumerators {

// Data shared by all enumerators of one scan.
class TUnixScan : public TInterfaced<IInterface> {
 public:
  TUnixScan(std::u16string pRootPath, TFolderIdentity pRootIdentity, THierarchicalEnumeratorOptions pOptions)
      : fRootPath(std::move(pRootPath)), fRootIdentity(pRootIdentity), fOptions(pOptions) {}

  // The root's path with all links resolved.
  std::u16string RealRootPath();
  // Whether the scan also reaches this mount's contents by another path.
  bool IsDuplicateMount(uint64_t pMountId);
  // Whether the device belongs to a pseudo file system, in which nothing is stored. pAsk answers it once per device,
  // with no value when it cannot tell.
  bool IsPseudoDevice(uint64_t pDevice, const std::function<std::optional<bool>()>& pAsk);
  // Whether other mounts lie beneath the root, so that a folder may be one.
  bool HasMountsBeneath();

  const std::u16string fRootPath;
  const TFolderIdentity fRootIdentity;
  const THierarchicalEnumeratorOptions fOptions;
  TEnteredFolders fEntered;

 private:
  TCriticalSection fLock;
  std::u16string fRealRootPath GUARDED_BY(fLock);  // empty until first asked for
  bool fMountsRead GUARDED_BY(fLock) = false;
  std::optional<bool> fHasMountsBeneath GUARDED_BY(fLock);
  std::unordered_set<uint64_t> fDuplicateMounts GUARDED_BY(fLock);
  std::unordered_map<uint64_t, bool> fPseudoDevices GUARDED_BY(fLock);
};

// Lists a Linux folder. It reads getdents64 into a 64 KiB buffer and calls statx on each entry, relative to the
// folder's handle. With heoValuesOnDemand it calls statx only on entries of which more is asked than getdents64 tells.
class TUnixEnumerator : public TBaseVisualHierarchicalEnumerator {
 public:
  // For the factory. The path may have the protocol in front. If the path cannot be reached, the enumerator reports the
  // error. If it is a file, the enumerator's only entry is that file.
  static TRef<IHierarchicalEnumerator> CreateForPath(const std::u16string& pPath,
                                                     THierarchicalEnumeratorOptions pOptions);
  static TRef<IHierarchicalEnumerator> CreateForObject(const std::u16string& pPath,
                                                       THierarchicalEnumeratorOptions pOptions);
  ~TUnixEnumerator() override;

  bool Next() override;
  void Reset() override;
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> Clone() const override;

  std::u16string_view GetObjectName() const override { return fName; }
  int64_t GetSize() const override { return Entry().fValues.fSize; }
  int64_t GetAllocated() const override { return Entry().fValues.fAllocated; }
  TKivFileTime GetLastAccessDate() const override { return Entry().fValues.fLastAccessDate; }
  TKivFileTime GetLastChangeDate() const override { return Entry().fValues.fLastChangeDate; }
  TKivFileTime GetCreationDate() const override { return Entry().fValues.fCreationDate; }
  TAttributes GetAttributes() const override { return Entry().fValues.fAttributes; }
  bool ReadValues() override { return !Entry().fIsGone; }
  TEntryValues GetEntryValues() const override { return Entry().fValues; }
  bool IsFolder() const override {
    return fIsRead ? (fEntry.fValues.fAttributes & kAttributeDirectory) != 0 : fIsListedFolder;
  }
  std::u16string GetFullPath() const override;
  std::u16string GetOwner() const override;
  uint64_t GetOwnerId() const override { return static_cast<uint64_t>(Entry().fUser) + 1; }
  bool CanDescend() const override;
  uint32_t GetErrorCode() const override { return fErrorCode; }
  TEnumeratorError GetError() const override;
  std::u16string GetPath() const override { return fDirectory->Path(); }
  size_t GetPathLength() const override { return fDirectory->PathLength(); }

 private:
  struct TEntry {
    TEntryValues fValues;
    TFolderIdentity fIdentity;
    uint64_t fMountId = 0;
    uint32_t fUser = 0;
    bool fIsMountPoint = false;
    bool fIsGone = false;  // vanished since the folder was read, or not to be read
  };
  using TAskPseudo = std::function<std::optional<bool>()>;
  enum class TSingleObject : uint8_t { soNo, soAhead, soDone };

  TUnixEnumerator(TRef<TUnixScan> pScan, TRef<TUnixDirectory> pDirectory);
  bool Open();
  bool ReadBuffer();
  void Close();
  bool ReadEntry(const char* pName, uint8_t pType);
  bool ReadStatus(const char* pName);
  // The current entry with its values, which are read now if that was left until here.
  const TEntry& Entry() const {
    if (!fIsRead) const_cast<TUnixEnumerator*>(this)->ReadLateValues();
    return fEntry;
  }
  void ReadLateValues();
  void FillEntry(const struct statx& pStatus, std::string_view pName);
  void FollowLinkIfWanted(const char* pName);
  bool MayEnter(const TEntry& pEntry, const TAskPseudo& pAskPseudo) const;
  std::optional<bool> IsPseudoFileSystemEntry() const;
  bool BelongsToScan();
  bool IsOpenFolderAllowed(const struct statx& pStatus);
  const std::u16string& RealPath();

  const TRef<TUnixScan> fScan;
  const TRef<TUnixDirectory> fDirectory;
  std::u16string fName;      // of the current entry
  std::u16string fRealPath;  // of the folder, with all links resolved; empty until first needed
  TEntry fEntry;             // for a scan's root, the folder itself before the first Next
  std::unique_ptr<std::byte[]> fBuffer;
  uint32_t fBufferUsed = 0;
  uint32_t fBufferIndex = 0;
  uint32_t fErrorCode = 0;
  const char* fListedName = nullptr;  // in the buffer, of an entry whose values are not read yet
  bool fIsRead = true;                // whether fEntry is that of the current entry
  bool fIsListedFolder = false;       // of an entry whose values are not read yet
  bool fIsOpen = false;
  bool fAtEnd = false;
  bool fIsUnlisted = false;  // opened by name alone, so no listing has checked whether the folder may be entered
  TSingleObject fSingleObjectOnly = TSingleObject::soNo;
};

}  // namespace Vantrel::Enumerators
