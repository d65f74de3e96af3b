#include "scan/files/UnixEnumerator_posix.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/stat.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/files/MountTable.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/system/OwnerNames.h"
#include "platform/text/Text.h"
#include "scan/files/DuplicateMounts.h"
#include "scan/files/LinkRules.h"
#include "scan/files/PseudoFileSystems_posix.h"
#include "scan/storage/FileSystemEnumerator.h"
#include "scan/storage/PathNotFoundEnumerator.h"

#ifndef STATX_MNT_ID
#define STATX_MNT_ID 0x1000U
#endif

namespace Vantrel::Enumerators {

namespace {

constexpr size_t kBufferBytes = 65'536;
constexpr unsigned kWantedFields = STATX_BASIC_STATS | STATX_BTIME | STATX_MNT_ID;

// Each thread keeps one spare buffer for its next folder, so listing a folder allocates none.
thread_local std::unique_ptr<std::byte[]> tSpareBuffer;

std::unique_ptr<std::byte[]> TakeBuffer() {
  if (tSpareBuffer) return std::move(tSpareBuffer);
  return std::unique_ptr<std::byte[]>(new std::byte[kBufferBytes]);
}

void GiveBuffer(std::unique_ptr<std::byte[]> pBuffer) {
  tSpareBuffer = std::move(pBuffer);
}

// The record layout of getdents64.
struct TDirectoryRecord {
  uint64_t fInode;
  int64_t fOffset;
  uint16_t fLength;
  uint8_t fType;
  char fName[1];
};

TKivFileTime FileTimeOf(const statx_timestamp& pTime) {
  return TKivFileTime::FromUnix(pTime.tv_sec, pTime.tv_nsec);
}

TAttributes AttributesOf(const struct statx& pStatus, std::string_view pName) {
  TAttributes attributes = 0;
  if (S_ISDIR(pStatus.stx_mode)) attributes |= kAttributeDirectory;
  if (S_ISLNK(pStatus.stx_mode)) attributes |= kAttributeReparsePoint;
  if (S_ISFIFO(pStatus.stx_mode) || S_ISSOCK(pStatus.stx_mode) || S_ISCHR(pStatus.stx_mode) ||
      S_ISBLK(pStatus.stx_mode))
    attributes |= kAttributeDevice;
  if (!S_ISLNK(pStatus.stx_mode) && (pStatus.stx_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
    attributes |= kAttributeReadOnly;
  if (pName.starts_with('.')) attributes |= kAttributeHidden;
  if ((pStatus.stx_attributes & STATX_ATTR_COMPRESSED) != 0) attributes |= kAttributeCompressed;
  if ((pStatus.stx_attributes & STATX_ATTR_ENCRYPTED) != 0) attributes |= kAttributeEncrypted;
  if (S_ISREG(pStatus.stx_mode) && pStatus.stx_blocks * 512 < pStatus.stx_size) attributes |= kAttributeSparse;
  return attributes != 0 ? attributes : kAttributeNormal;
}

}  // namespace

// --- data shared by one scan -----------------------------------------------------------------------------------------

std::u16string TUnixScan::RealRootPath() {
  TCriticalSectionLock lock(fLock);
  if (fRealRootPath.empty()) fRealRootPath = ResolvedPath(fRootPath);
  return fRealRootPath.empty() ? fRootPath : fRealRootPath;
}

bool TUnixScan::IsDuplicateMount(uint64_t pMountId) {
  const std::u16string root = RealRootPath();
  TCriticalSectionLock lock(fLock);
  if (!fMountsRead) {
    fDuplicateMounts = DuplicateMounts(ReadMountTable(), ToNativeBytes(root));
    fMountsRead = true;
  }
  return fDuplicateMounts.contains(pMountId);
}

bool TUnixScan::HasMountsBeneath() {
  {
    TCriticalSectionLock lock(fLock);
    if (fHasMountsBeneath) return *fHasMountsBeneath;
  }
  const std::string root = ToNativeBytes(RealRootPath());
  const std::vector<TMount> mounts = ReadMountTable();
  const bool has = mounts.empty() || std::any_of(mounts.begin(), mounts.end(), [&](const TMount& pMount) {
                     return pMount.fMountPoint != root && IsSameOrBeneath(pMount.fMountPoint, root);
                   });
  TCriticalSectionLock lock(fLock);
  return *(fHasMountsBeneath = has);
}

bool TUnixScan::IsPseudoDevice(uint64_t pDevice, const std::function<std::optional<bool>()>& pAsk) {
  {
    TCriticalSectionLock lock(fLock);
    if (auto found = fPseudoDevices.find(pDevice); found != fPseudoDevices.end()) return found->second;
  }
  const std::optional<bool> answer = pAsk();
  if (!answer) return false;
  TCriticalSectionLock lock(fLock);
  return fPseudoDevices.emplace(pDevice, *answer).first->second;
}

// --- making enumerators --------------------------------------------------------------------------------------------

namespace {

struct TReachedPath {
  int fError = 0;
  struct statx fStatus {};
  bool fIsPseudoFileSystem = false;
};

// No value when the system does not answer.
std::optional<bool> IsOnPseudoFileSystem(int pHandle) {
  struct statfs fileSystem {};
  if (fstatfs(pHandle, &fileSystem) != 0) return {};
  return IsPseudoFileSystem(static_cast<uint64_t>(fileSystem.f_type));
}

// Reads the status of a path of any length, following links.
TReachedPath ReachPath(const std::string& pPath) {
  TReachedPath reached;
  const int handle = OpenInSteps(AT_FDCWD, pPath, O_PATH);
  if (handle < 0) {
    reached.fError = errno;
    return reached;
  }
  if (statx(handle, "", AT_EMPTY_PATH | AT_NO_AUTOMOUNT, kWantedFields, &reached.fStatus) != 0) reached.fError = errno;
  reached.fIsPseudoFileSystem = IsOnPseudoFileSystem(handle).value_or(false);
  close(handle);
  return reached;
}

TFolderIdentity IdentityOf(const struct statx& pStatus) {
  return {static_cast<uint64_t>(pStatus.stx_dev_major) << 32 | pStatus.stx_dev_minor, pStatus.stx_ino};
}

}  // namespace

TUnixEnumerator::TUnixEnumerator(TRef<TUnixScan> pScan, TRef<TUnixDirectory> pDirectory)
    : TBaseVisualHierarchicalEnumerator(pScan->fOptions), fScan(std::move(pScan)), fDirectory(std::move(pDirectory)) {
  fDirectory->Hold();
}

TUnixEnumerator::~TUnixEnumerator() {
  Close();
  fDirectory->LetGo();
}

TRef<IHierarchicalEnumerator> TUnixEnumerator::CreateForPath(const std::u16string& pPath,
                                                             THierarchicalEnumeratorOptions pOptions) {
  const std::u16string path = PathOfFileUrl(pPath, u'/');
  const std::string bytes = ToNativeBytes(path);
  const TReachedPath reached = ReachPath(bytes);
  if (reached.fError != 0) return MakeRef<TPathNotFoundEnumerator>(path, reached.fError, pOptions);
  if (reached.fIsPseudoFileSystem) return MakeRef<TPathNotFoundEnumerator>(path, kErrorPseudoFileSystem, pOptions);
  if (!S_ISDIR(reached.fStatus.stx_mode)) return CreateForObject(path, pOptions);
  TRef<TUnixEnumerator> enumerator(new TUnixEnumerator(MakeRef<TUnixScan>(path, IdentityOf(reached.fStatus), pOptions),
                                                       MakeRef<TUnixDirectory>(bytes)));
  enumerator->fName = FileNameOfPath(path, u'/');
  enumerator->FillEntry(reached.fStatus, {});
  return enumerator;
}

TRef<IHierarchicalEnumerator> TUnixEnumerator::CreateForObject(const std::u16string& pPath,
                                                               THierarchicalEnumeratorOptions pOptions) {
  const std::u16string path = PathOfFileUrl(pPath, u'/');
  const TReachedPath reached = ReachPath(ToNativeBytes(path));
  if (reached.fError != 0) return MakeRef<TPathNotFoundEnumerator>(path, reached.fError, pOptions);
  const std::u16string_view folder = FolderOfPath(path, u'/');
  TRef<TUnixEnumerator> enumerator(
      new TUnixEnumerator(MakeRef<TUnixScan>(std::u16string(folder), TFolderIdentity(), pOptions),
                          MakeRef<TUnixDirectory>(ToNativeBytes(folder))));
  enumerator->fName = FileNameOfPath(path, u'/');
  enumerator->FillEntry(reached.fStatus, ToNativeBytes(enumerator->fName));
  enumerator->fSingleObjectOnly = TSingleObject::soAhead;
  return enumerator;
}

TRef<IHierarchicalEnumerator> TUnixEnumerator::CreateChildEnumerator(std::u16string_view pName,
                                                                     TAttributes pAttributes) {
  const bool isLink = (pAttributes & kAttributeReparsePoint) != 0;
  TRef<TUnixEnumerator> child(new TUnixEnumerator(fScan, MakeRef<TUnixDirectory>(fDirectory, pName, isLink)));
  child->fIsUnlisted = !fIsOpen && !fAtEnd && fSingleObjectOnly == TSingleObject::soNo;
  return child;
}

TRef<IHierarchicalEnumerator> TUnixEnumerator::GetChildHierarchicalEnumerator() {
  return CreateChildEnumerator(fName, fIsRead ? GetAttributes() : kAttributeDirectory);
}

TRef<IHierarchicalEnumerator> TUnixEnumerator::Clone() const {
  TRef<TUnixEnumerator> clone(new TUnixEnumerator(fScan, fDirectory->Again()));
  clone->fName = fName;
  clone->fEntry = Entry();
  clone->fIsUnlisted = fIsUnlisted;
  if (fSingleObjectOnly != TSingleObject::soNo) clone->fSingleObjectOnly = TSingleObject::soAhead;
  return clone;
}

// --- listing -------------------------------------------------------------------------------------------------------

bool TUnixEnumerator::Next() {
  if (fSingleObjectOnly != TSingleObject::soNo) {
    const bool first = fSingleObjectOnly == TSingleObject::soAhead;
    fSingleObjectOnly = TSingleObject::soDone;
    return first;
  }
  if (!fIsOpen && !Open()) return false;
  while (fBufferIndex < fBufferUsed || ReadBuffer()) {
    const auto* record = reinterpret_cast<const TDirectoryRecord*>(fBuffer.get() + fBufferIndex);
    fBufferIndex += record->fLength;
    const char* name = record->fName;
    if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
    if (ReadEntry(name, record->fType)) return true;
  }
  return false;
}

bool TUnixEnumerator::Open() {
  if (fAtEnd) return false;
  if (const int error = fDirectory->Open(); error != 0) {
    fErrorCode = static_cast<uint32_t>(error);
    fAtEnd = true;
    return false;
  }
  if (!BelongsToScan()) {
    fAtEnd = true;
    fDirectory->CloseWhenShort();
    return false;
  }
  fBuffer = TakeBuffer();
  fIsOpen = true;
  return true;
}

bool TUnixEnumerator::ReadBuffer() {
  const long bytes = syscall(SYS_getdents64, fDirectory->Handle(), fBuffer.get(), kBufferBytes);
  if (bytes < 0) fErrorCode = static_cast<uint32_t>(errno);
  if (bytes <= 0) {
    Close();
    return false;
  }
  fBufferUsed = static_cast<uint32_t>(bytes);
  fBufferIndex = 0;
  return true;
}

void TUnixEnumerator::Close() {
  if (!fIsOpen) return;
  fIsOpen = false;
  fAtEnd = true;
  if (!fIsRead) fEntry = {};  // the name that its values are read by goes with the buffer
  fIsRead = true;
  fBufferUsed = fBufferIndex = 0;
  GiveBuffer(std::move(fBuffer));
  fDirectory->CloseWhenShort();
}

void TUnixEnumerator::Reset() {
  if (fSingleObjectOnly != TSingleObject::soNo) {
    fSingleObjectOnly = TSingleObject::soAhead;
    return;
  }
  Close();
  fAtEnd = false;
  fErrorCode = 0;
  if (fDirectory->Handle() >= 0) lseek(fDirectory->Handle(), 0, SEEK_SET);
}

bool TUnixEnumerator::ReadEntry(const char* pName, uint8_t pType) {
  // A link that is to be followed may be a folder.
  const bool isKnown = pType != DT_UNKNOWN && (pType != DT_LNK || (fOptions & heoFollowSymbolicLinks) == 0);
  if (isKnown && (fOptions & heoValuesOnDemand) != 0) {
    fIsRead = false;
    fIsListedFolder = pType == DT_DIR;
    fListedName = pName;
  } else if (!ReadStatus(pName)) {
    return false;
  }
  fName.clear();
  AppendFromNativeBytes(fName, pName);
  if (fIsRead && (fEntry.fValues.fAttributes & kAttributeReparsePoint) != 0 && (fOptions & heoFollowSymbolicLinks) != 0)
    FollowLinkIfWanted(pName);
  return true;
}

bool TUnixEnumerator::ReadStatus(const char* pName) {
  fIsRead = true;
  struct statx status;
  if (statx(fDirectory->Handle(), pName, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, kWantedFields, &status) != 0) {
    // An entry deleted since the folder was read is skipped. Any other error makes the folder incomplete.
    if (errno != ENOENT && fErrorCode == 0) fErrorCode = static_cast<uint32_t>(errno);
    return false;
  }
  FillEntry(status, pName);
  return true;
}

void TUnixEnumerator::ReadLateValues() {
  if (ReadStatus(fListedName)) return;
  fEntry = {};
  fEntry.fValues.fAttributes = fIsListedFolder ? kAttributeDirectory : kAttributeNormal;
  fEntry.fIsGone = true;
}

void TUnixEnumerator::FillEntry(const struct statx& pStatus, std::string_view pName) {
  fIsRead = true;
  TEntryValues& values = fEntry.fValues;
  fEntry.fIsGone = false;
  values.fAttributes = AttributesOf(pStatus, pName);
  const bool isFolder = (values.fAttributes & kAttributeDirectory) != 0;
  values.fSize = isFolder ? 0 : static_cast<int64_t>(pStatus.stx_size);
  TAllocationFacts facts;
  facts.fIsFolder = isFolder;
  facts.fRecordAllocation = static_cast<int64_t>(pStatus.stx_blocks) * 512;
  facts.fSharesHardLinks = (fOptions & heoShareHardLinks) != 0;
  facts.fNumberOfHardLinks = pStatus.stx_nlink;
  values.fAllocated = AllocatedSizeOf(facts);
  values.fLastAccessDate = FileTimeOf(pStatus.stx_atime);
  values.fLastChangeDate = FileTimeOf(pStatus.stx_mtime);
  // A file system upgraded from one without creation dates reports 1970 for its older files.
  const bool isBorn = (pStatus.stx_mask & STATX_BTIME) != 0 && pStatus.stx_btime.tv_sec != 0;
  values.fCreationDate = isBorn ? FileTimeOf(pStatus.stx_btime) : TKivFileTime();
  fEntry.fIdentity = IdentityOf(pStatus);
  fEntry.fMountId = pStatus.stx_mnt_id;
  fEntry.fUser = pStatus.stx_uid;
  fEntry.fIsMountPoint = (pStatus.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

const std::u16string& TUnixEnumerator::RealPath() {
  if (fRealPath.empty()) fRealPath = ResolvedPath(fDirectory->Path());
  return fRealPath;
}

// A link to a folder outside the scan becomes a folder whose contents are scanned. It keeps its reparse attribute. A
// link to a file stays a link. Only real paths are compared, since the scan's root and the target may themselves be
// reached through links.
void TUnixEnumerator::FollowLinkIfWanted(const char* pName) {
  struct statx status;
  if (statx(fDirectory->Handle(), pName, AT_NO_AUTOMOUNT, kWantedFields, &status) != 0 || !S_ISDIR(status.stx_mode))
    return;
  if (RealPath().empty()) return;
  const std::u16string target = ResolvedPath(GetFullPath());
  if (!FollowLink(JoinPath(RealPath(), fName, u'/'), target, fScan->RealRootPath(), u'/')) return;
  FillEntry(status, pName);
  fEntry.fValues.fAttributes |= kAttributeReparsePoint;
}

bool TUnixEnumerator::CanDescend() const {
  if (!IsFolder()) return false;
  // Without other mounts, a folder lies on the root's file system or in a volume of it.
  if (!fIsRead && (fOptions & heoStayOnFileSystem) == 0 && !fScan->HasMountsBeneath()) return true;
  const TEntry& entry = Entry();
  return !entry.fIsGone && MayEnter(entry, [this] { return IsPseudoFileSystemEntry(); });
}

bool TUnixEnumerator::MayEnter(const TEntry& pEntry, const TAskPseudo& pAskPseudo) const {
  if (pEntry.fIdentity == fScan->fRootIdentity) return false;
  if (pEntry.fIsMountPoint && fScan->IsDuplicateMount(pEntry.fMountId)) return false;
  // The root's own file system was checked when the scan began.
  if (pEntry.fIdentity.fVolume == fScan->fRootIdentity.fVolume) return true;
  return (fOptions & heoStayOnFileSystem) == 0 && !fScan->IsPseudoDevice(pEntry.fIdentity.fVolume, pAskPseudo);
}

std::optional<bool> TUnixEnumerator::IsPseudoFileSystemEntry() const {
  const int handle = OpenAt(fDirectory->Handle(), ToNativeBytes(fName).c_str(), O_PATH | O_DIRECTORY);
  if (handle < 0) return {};  // the later opening reports the error
  const std::optional<bool> pseudo = IsOnPseudoFileSystem(handle);
  close(handle);
  return pseudo;
}

// Decides on the open folder whether the scan counts it, whatever its name meant when it was listed. With links
// followed, many paths may lead to one folder. The first to open it shows its contents; the others show an empty
// folder. So each reachable folder counts once, and totals do not depend on the order.
bool TUnixEnumerator::BelongsToScan() {
  const bool followsLinks = (fOptions & heoFollowSymbolicLinks) != 0;
  if (!fIsUnlisted && !followsLinks) return true;
  struct statx status;
  if (statx(fDirectory->Handle(), "", AT_EMPTY_PATH | AT_NO_AUTOMOUNT, kWantedFields, &status) != 0) {
    fErrorCode = static_cast<uint32_t>(errno);
    return false;
  }
  if (fIsUnlisted && !IsOpenFolderAllowed(status)) return false;
  return !followsLinks || fScan->fEntered.Enter(IdentityOf(status), fDirectory->Road());
}

// Applies the rules of a listing to a folder that was opened by name.
bool TUnixEnumerator::IsOpenFolderAllowed(const struct statx& pStatus) {
  TEntry folder;
  folder.fIdentity = IdentityOf(pStatus);
  folder.fMountId = pStatus.stx_mnt_id;
  folder.fIsMountPoint = true;  // the folder is a mount point, or may lie beneath one
  if (!MayEnter(folder, [this] { return IsOnPseudoFileSystem(fDirectory->Handle()); })) return false;
  return !fDirectory->IsBeyondLink() || !AreRelatedPaths(RealPath(), fScan->RealRootPath(), u'/');
}

// --- values of the entry ---------------------------------------------------------------------------------------------

std::u16string TUnixEnumerator::GetFullPath() const {
  return JoinPath(fDirectory->Path(), fName, u'/');
}

std::u16string TUnixEnumerator::GetOwner() const {
  return OwnerNameOfUser(Entry().fUser);
}

TEnumeratorError TUnixEnumerator::GetError() const {
  return ClassifyEnumeratorError(fErrorCode, {});
}

}  // namespace Vantrel::Enumerators
