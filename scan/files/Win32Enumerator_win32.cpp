#include "scan/files/Win32Enumerator_win32.h"

#include <functional>
#include <utility>

#include "platform/files/Paths.h"
#include "platform/system/OwnerNames.h"
#include "scan/files/BackupPrivilege_win32.h"

namespace Vantrel::Enumerators {
namespace {

constexpr TAttributes kAttributeRecallOnOpen = 0x40000;
// Files whose data may be stored elsewhere. No call is made that could fetch their data.
constexpr TAttributes kRemoteData = kAttributeOffline | kAttributeRecallOnDataAccess | kAttributeRecallOnOpen;

int64_t TicksOf(const FILETIME& pTime) {
  return static_cast<int64_t>((uint64_t{pTime.dwHighDateTime} << 32) | pTime.dwLowDateTime);
}

}  // namespace

TWin32Enumerator::TWin32Enumerator(std::u16string pPath, std::u16string pObjectName,
                                   THierarchicalEnumeratorOptions pOptions, IWin32FileApi& pApi)
    : TBaseFileSystemEnumerator(std::move(pPath), pOptions),
      fApi(pApi),
      fForFile(std::move(pObjectName)),
      fScan(std::make_shared<TWin32Scan>()),
      fVolumePath(std::make_shared<const std::u16string>(fPath)) {}

TWin32Enumerator::TWin32Enumerator(std::u16string pPath, const TWin32Enumerator& pParent)
    : TBaseFileSystemEnumerator(std::move(pPath), pParent),
      fApi(pParent.fApi),
      fScan(pParent.fScan),
      fVolumePath(pParent.fVolumePath) {}

// ---- Listing

bool TWin32Enumerator::Next() {
  if (fHasEnded) return false;
  try {
    while (FetchRecord(fRecord)) {
      if (fRecord.fName == u"." || fRecord.fName == u"..") continue;
      TakeRecord();
      return true;
    }
  } catch (...) {
    EndListing();
    throw;
  }
  EndListing();
  return false;
}

void TWin32Enumerator::TakeRecord() {
  fIsOnEntry = true;
  fFullPath.clear();
  fAllocated = kAllocatedUnknown;
  fCheckedForCompressedFileSize = false;
  fADSSize = 0;
  fNumberOfHardLinks = 1;
  fAttributes = AdjustedAttributes(fRecord.fAttributes);
  fLinkDecision = TLinkDecision::ldOrdinary;
  bool isLink = false;
  if ((fAttributes & kAttributeReparsePoint) != 0) {
    if ((fAttributes & kAttributeDirectory) != 0) {
      fLinkDecision = DecideLink(GetFullPath(), fRecord.fReparseTag);
      isLink = fLinkDecision != TLinkDecision::ldOrdinary;
      if (!isLink) fAttributes &= ~kAttributeReparsePoint;
    } else {
      isLink = IsNameSurrogate(fRecord.fReparseTag);
    }
    if (!isLink) fSawOrdinaryReparsePoint = true;
    if (IsCloudTag(fRecord.fReparseTag) && IsFolder()) fSawCloudFolder = true;
  }
  if (!isLink) fSawOtherThanLink = true;
}

void TWin32Enumerator::EndListing() {
  CloseListing();
  fIsOnEntry = false;
  fHasEnded = true;
  fFullPath.clear();
  fRecord = {};
}

void TWin32Enumerator::Reset() {
  RestartListing();
  fIsOnEntry = false;
  fHasEnded = false;
  fErrorCode = 0;
  fFullPath.clear();
  fSawOtherThanLink = fSawOrdinaryReparsePoint = fSawCloudFolder = false;
}

bool TWin32Enumerator::Fail(uint32_t pErrorCode) {
  fErrorCode = pErrorCode;
  return false;
}

// A server that did not answer was asked again when the folder was opened. So no retry is made here.
TEnumeratorError TWin32Enumerator::GetError() const {
  return ClassifyEnumeratorError(fErrorCode, {});
}

// ---- Values

const TWin32Enumerator::TRecord& TWin32Enumerator::OwnRecord() const {
  if (!fOwnRecord) {
    TKivWin32FindData data{};
    fApi.QueryEntry(ApiPath(fPath), data);  // a failure leaves the dates unset
    fOwnRecord = RecordOf(data);
    fOwnRecord->fName = {};  // fPath holds the name
    fOwnRecord->fAttributes = AdjustedAttributes(fOwnRecord->fAttributes) | kAttributeDirectory;
  }
  return *fOwnRecord;
}

TWin32Enumerator::TRecord TWin32Enumerator::RecordOf(const TKivWin32FindData& pData) {
  TRecord record;
  record.fName = Win32::Narrow(std::wstring_view(pData.cFileName));
  record.fAttributes = pData.dwFileAttributes;
  if ((record.fAttributes & kAttributeReparsePoint) != 0) record.fReparseTag = pData.dwReserved0;
  record.fSize = static_cast<int64_t>((uint64_t{pData.nFileSizeHigh} << 32) | pData.nFileSizeLow);
  record.fLastAccessDate = DateOf(TicksOf(pData.ftLastAccessTime));
  record.fLastChangeDate = DateOf(TicksOf(pData.ftLastWriteTime));
  record.fCreationDate = DateOf(TicksOf(pData.ftCreationTime));
  return record;
}

std::u16string_view TWin32Enumerator::GetObjectName() const {
  return fIsOnEntry ? fRecord.fName : FileNameOfPath(fPath, u'\\');
}

int64_t TWin32Enumerator::GetSize() const {
  return IsFolder() ? 0 : Record().fSize;
}

std::u16string TWin32Enumerator::GetFullPath() const {
  if (fIsOnEntry && fFullPath.empty()) fFullPath = JoinPath(fPath, fRecord.fName, u'\\');
  return TBaseFileSystemEnumerator::GetFullPath();
}

std::u16string TWin32Enumerator::GetOwner() const {
  return OwnerNameOfPath(GetFullPath());
}

int64_t TWin32Enumerator::ClusterSize() const {
  if (fClusterSize == 0) fClusterSize = fApi.ClusterSize(*fVolumePath);
  return fClusterSize;
}

// Asking for links opens the file, which takes a hundred times as long as reading its record. So only files with
// storage to share are asked. Files whose data the opening could fetch are never asked.
bool TWin32Enumerator::SharesHardLinks(int64_t pAllocation) const {
  return (fOptions & heoShareHardLinks) != 0 && pAllocation > 0 &&
         (fAttributes & (kRemoteData | kAttributeReparsePoint)) == 0 && !fAnyParentIsReparseTagCloud.value_or(false);
}

void TWin32Enumerator::CheckLinks() const {
  if (std::exchange(fCheckedForCompressedFileSize, true)) return;
  TLinkInformation information;
  // A file that cannot be asked counts as one link without streams.
  if (fApi.QueryLinks(ApiPath(GetFullPath()), information) != 0) return;
  fADSSize = information.fADSSize;
  fNumberOfHardLinks = information.fNumberOfHardLinks;
}

int64_t TWin32Enumerator::GetAllocated() const {
  if (!fIsOnEntry || IsFolder()) return 0;
  if (fAllocated == kAllocatedUnknown) {
    TAllocationFacts facts;
    facts.fRecordAllocation = RecordAllocation();
    facts.fClusterSize = ResidentLimit();
    fAllocated = AllocatedSizeOf(facts);
    if (SharesHardLinks(fAllocated)) {
      CheckLinks();
      facts.fSharesHardLinks = true;
      facts.fADSSize = fADSSize;
      facts.fNumberOfHardLinks = fNumberOfHardLinks;
      fAllocated = AllocatedSizeOf(facts);
    }
  }
  return fAllocated;
}

// ---- Links and opening

template <class TOpen>
uint32_t TWin32Enumerator::OpenWithRetries(const std::u16string& pPath, TOpen pOpen) const {
  auto openEitherForm = [&] {
    std::u16string apiPath = ApiPath(pPath);
    uint32_t code = pOpen(apiPath);
    if (code != ERROR_FILE_NOT_FOUND) return code;
    std::u16string longPath = LongPathForm(pPath);
    return longPath == apiPath ? code : pOpen(longPath);
  };
  bool mayTry = (fOptions & heoNoBackupPrivilege) == 0;
  return TBackupPrivilege::Open(fApi, mayTry, openEitherForm);
}

uint32_t TWin32Enumerator::OpenFolder(const std::u16string& pPath,
                                      const std::function<uint32_t(const std::u16string&)>& pOpen) const {
  uint32_t code = OpenWithRetries(pPath, pOpen);
  bool isNetworkError = code == kErrorRpcServerUnavailable || code == kErrorInvalidNetworkAddress;
  return isNetworkError && IsReachable(pPath) ? OpenWithRetries(pPath, pOpen) : code;
}

bool TWin32Enumerator::IsReachable(const std::u16string& pPath) const {
  TKivWin32FindData data{};
  return fApi.QueryEntry(ApiPath(pPath), data) == 0;
}

TLinkDecision TWin32Enumerator::DecideLink(const std::u16string& pPath, uint32_t pTag) const {
  if (pTag != 0 && !IsNameSurrogate(pTag)) return TLinkDecision::ldOrdinary;
  TReparsePoint point;
  uint32_t code = OpenWithRetries(pPath, [&](const std::u16string& pApiPath) {
    point = {};
    return fApi.ReadReparsePoint(pApiPath, point);
  });
  uint32_t tag = pTag != 0 ? pTag : point.fTag;
  TLinkKind kind = tag == IO_REPARSE_TAG_MOUNT_POINT ? TLinkKind::lkMountPoint : TLinkKind::lkSymbolicLink;
  if (code == 0) return DecideResolvedLink(kind, point, pPath);
  TEnumeratorError error = ClassifyEnumeratorError(code, [&] { return IsReachable(pPath); });
  return DecideUnresolvedLink(pPath, kind, code, error, fOptions);
}

std::u16string TWin32Scan::RealRootPath(IWin32FileApi& pApi, const std::u16string& pRootPath) {
  TCriticalSectionLock lock(fLock);
  if (fRealRootPath.empty()) fRealRootPath = pApi.ResolvePath(pRootPath);
  if (fRealRootPath.empty()) fRealRootPath = Win32::WithoutExtendedPrefix(pRootPath);
  return fRealRootPath;
}

std::u16string TWin32Enumerator::RealPathOf(const std::u16string& pFolder) const {
  std::u16string real = fApi.ResolvePath(pFolder);
  return real.empty() ? Win32::WithoutExtendedPrefix(pFolder) : real;
}

// Only real paths are compared, since the scan's root and the target may themselves be reached through links. A volume
// without a drive letter has no real path, so its name is compared instead.
TLinkDecision TWin32Enumerator::DecideResolvedLink(TLinkKind pKind, const TReparsePoint& pPoint,
                                                   const std::u16string& pPath) const {
  if (!IsNameSurrogate(pPoint.fTag)) return TLinkDecision::ldOrdinary;
  if (!IsFollowingEnabled(pKind, fOptions)) return TLinkDecision::ldNotFollowed;
  std::u16string folder = RealPathOf(std::u16string(FolderOfPath(pPath, u'\\')));
  std::u16string link = JoinPath(folder, FileNameOfPath(pPath, u'\\'), u'\\');
  std::u16string target;
  if (!pPoint.fTarget.empty() && !pPoint.fTarget.starts_with(u"\\\\?\\Volume{")) target = fApi.ResolvePath(pPath);
  if (target.empty()) target = pPoint.fTarget;
  return FollowLink(link, target, fScan->RealRootPath(fApi, RootPath()), u'\\') ? TLinkDecision::ldFollowed
                                                                                : TLinkDecision::ldNotFollowed;
}

// With links followed, many paths may lead to one folder. The first to open it shows its contents; the others show an
// empty folder. So every folder counts once, and the work does not grow with the number of paths.
bool TWin32Enumerator::BelongsToScan(HANDLE pFolder) {
  if (fIsUndecidedLink && DecideLink(fPath, 0) == TLinkDecision::ldNotFollowed) return false;
  if (!FollowsLinks() || !fForFile.empty()) return true;
  constexpr uint64_t withoutIds = UINT64_MAX;  // stands for the volume; a hash of the real path is the ID
  TFolderIdentity identity;
  if (fApi.QueryIdentity(pFolder, identity) != 0)
    identity = {withoutIds, std::hash<std::u16string>()(RealPathOf(fPath))};
  return fScan->fEntered.Enter(identity, std::hash<std::u16string>()(fPath));
}

bool TWin32Enumerator::BelongsToScan() {
  if (!fIsUndecidedLink && (!FollowsLinks() || !fForFile.empty())) return true;
  HANDLE folder = INVALID_HANDLE_VALUE;
  uint32_t code = OpenFolder(fPath, [&](const std::u16string& pApiPath) {
    uint32_t error = 0;
    folder = fApi.OpenDirectory(pApiPath, OpenFlags(), error);
    return error;
  });
  if (code != 0) return true;  // the listing reports the error
  bool belongs = BelongsToScan(folder);
  fApi.CloseDirectory(folder);
  return belongs;
}

bool TWin32Enumerator::CanDescend() const {
  return IsFolder() && !(fIsOnEntry && fLinkDecision == TLinkDecision::ldNotFollowed);
}

// ---- Children

void TWin32Enumerator::HandDown(TWin32Enumerator& pChild, TAttributes pAttributes, bool pMayBeReparsePoint,
                                bool pIsCloud) const {
  if (!fAnyParentIsReparseTagCloud && !pIsCloud)
    pChild.fAnyParentIsReparseTagCloud = (OwnRecord().fAttributes & kAttributeRecallOnDataAccess) != 0;
  else
    pChild.fAnyParentIsReparseTagCloud = pIsCloud || *fAnyParentIsReparseTagCloud;
  pChild.fParentWasSymLink = (pAttributes & kAttributeReparsePoint) != 0;
  if (fHasEnded) pChild.fAllSiblingsAreLinks = !fSawOtherThanLink;
  pChild.fOpenReparsePoint = !pMayBeReparsePoint;
  if (!pChild.fParentWasSymLink.value()) return;
  // A link may lead to another volume.
  pChild.fVolumePath = std::make_shared<const std::u16string>(pChild.fPath);
  pChild.fClusterSize = 0;
  pChild.fIsUndecidedLink = !fIsOnEntry && !fHasEnded;
}

TRef<IHierarchicalEnumerator> TWin32Enumerator::GetChildHierarchicalEnumerator() {
  if (!fIsOnEntry) return Clone();
  TRef<TWin32Enumerator> child = CreateForFolder(GetFullPath());
  bool isReparsePoint = (fRecord.fAttributes & kAttributeReparsePoint) != 0;
  HandDown(*child, fAttributes, isReparsePoint, IsCloudTag(fRecord.fReparseTag));
  return child;
}

// The reparse tag is no longer known here, so the listing's findings about all its entries decide. This errs on the
// safe side: a folder beside a cloud folder is treated as one. The only effect is that its files are not opened to
// count their links.
TRef<IHierarchicalEnumerator> TWin32Enumerator::CreateChildEnumerator(std::u16string_view pName,
                                                                      TAttributes pAttributes) {
  TRef<TWin32Enumerator> child = CreateForFolder(JoinPath(fPath, pName, u'\\'));
  bool mayBeReparsePoint = (pAttributes & kAttributeReparsePoint) != 0 || fSawOrdinaryReparsePoint;
  HandDown(*child, pAttributes, mayBeReparsePoint, fSawCloudFolder);
  return child;
}

TRef<IHierarchicalEnumerator> TWin32Enumerator::Clone() const {
  TRef<TWin32Enumerator> clone = CreateForFolder(fPath);
  clone->fForFile = fForFile;
  clone->fAnyParentIsReparseTagCloud = fAnyParentIsReparseTagCloud;
  clone->fParentWasSymLink = fParentWasSymLink;
  clone->fAllSiblingsAreLinks = fAllSiblingsAreLinks;
  clone->fOpenReparsePoint = fOpenReparsePoint;
  clone->fIsUndecidedLink = fIsUndecidedLink;
  return clone;
}

std::u16string RootedPathOf(std::u16string_view pPath) {
  std::u16string path = PathOfFileUrl(pPath, u'\\');
  // The bare name of a shadow copy means the device. With a delimiter it means the folder.
  if (IsShadowCopyPath(path) && FolderOfPath(path, u'\\').empty() && !path.ends_with(u'\\')) path += u'\\';
  bool isExact = path.starts_with(u"\\\\?\\") || path.starts_with(u"\\\\.\\") || IsShadowCopyPath(path);
  return isExact ? path : AbsolutePath(path);
}

}  // namespace Vantrel::Enumerators
