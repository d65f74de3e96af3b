#include "model/roots/Root.h"

#include "model/roots/ScanConfiguration.h"
#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/system/MemoryReserve.h"
#include "platform/system/System.h"

namespace Vantrel {

TBaseRoot::TBaseRoot(std::u16string pPath, char16_t pDelimiter)
    : fPath(std::move(pPath)), fPathDelimiter(pDelimiter), fDisposeToken(MakeRef<TDisposeToken>()), fTitle(fPath) {}

std::u16string TBaseRoot::GetTitle() const {
  TCriticalSectionLock lock(fTitleLock);
  return fTitle;
}

void TBaseRoot::SetTitle(std::u16string_view pTitle) {
  TCriticalSectionLock lock(fTitleLock);
  fTitle = pTitle;
}

void TBaseRoot::NotifyObservers(IHierarchicalObject& pObject, TChangeKind pKind) {
  fObservers.Notify([&](IHierarchicalObserver& pObserver) { pObserver.ObjectChanged(pObject, pKind); });
}

TMetaDataValue TBaseRoot::GetValue(TColumn pColumn) const {
  if (pColumn == TColumn::mdName) return GetTitle();
  if (pColumn == TColumn::mdFullPath) return fPath;
  TRef<IFolderData> top = GetTopFolder();
  return top ? top->GetValue(pColumn) : TMetaDataValue();
}

}  // namespace Vantrel

namespace Vantrel {

namespace {

// How often the folder shown as "being scanned now" changes: often enough for the eye, too seldom to cost anything.
constexpr int64_t kLastScannedFolderMilliseconds = 50;

}  // namespace

TCustomRoot::TCustomRoot(std::u16string pPath, std::u16string pPathWithWildcards, char16_t pDelimiter,
                         TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions,
                         IScanRoots* pOwner)
    : TBaseRoot(std::move(pPath), pDelimiter),
      fPathWithWildcards(std::move(pPathWithWildcards)),
      fFileMask(FileNameOfPath(fPathWithWildcards, pDelimiter)),
      fServices(std::move(pServices)),
      fOptions(std::move(pOptions)),
      fOwner(pOwner),
      fConfiguration(MakeRef<TScanConfiguration>(this, *fOptions)) {
  if (!fPathWithWildcards.empty()) SetTitle(fPathWithWildcards);
}

TCustomRoot::~TCustomRoot() = default;

IScanConfiguration& TCustomRoot::GetScanConfiguration() {
  return *fConfiguration;
}

TRef<IFolderData> TCustomRoot::GetTopFolder() const {
  TCriticalSectionLock lock(fLock);
  return fFolderData;
}

TRef<IScanEngine> TCustomRoot::GetScanEngine() const {
  TCriticalSectionLock lock(fLock);
  return fScanEngine;
}

std::vector<TScanError> TCustomRoot::GetErrors() const {
  TCriticalSectionLock lock(fLock);
  return fErrors;
}

TScanProgress TCustomRoot::GetProgress() const {
  TScanProgress progress;
  progress.fFiles = fTotalFilesFound.load(std::memory_order_relaxed);
  progress.fFolders = fNumFolders.load(std::memory_order_relaxed);
  progress.fBytes = fBytesFound.load(std::memory_order_relaxed);
  progress.fExcludedObjects = fExcludedObjects.load(std::memory_order_relaxed);
  progress.fErrors = fErrorCount.load(std::memory_order_relaxed);
  TCriticalSectionLock lock(fLock);
  progress.fLastScannedFolder = fLastScannedFolder;
  return progress;
}

uint32_t TCustomRoot::EnumeratorOptions() const {
  return (fOptions->ShareHardLinks ? heoShareHardLinks : 0u) |
         (fOptions->FollowSymbolicLinks ? heoFollowSymbolicLinks : 0u) |
         (fOptions->FollowMountPoints ? heoFollowMountPoints : 0u) |
         (fOptions->UseBackupPrivilege ? 0u : heoNoBackupPrivilege) |
         (fOptions->StayOnFileSystem ? heoStayOnFileSystem : 0u);
}

std::unique_ptr<IEntryFilter> TCustomRoot::CreateEntryFilter() {
  std::unique_ptr<IEntryFilter> filter = fScanFilter ? fScanFilter->CreateEntryFilter() : nullptr;
  if (fFileMask.empty() && !fExpression) return filter;
  return std::make_unique<TRootEntryFilter>(fRootExclusions, fFileMask, fExpression, std::move(filter));
}

std::vector<TExclusion> TCustomRoot::GetExclusions() const {
  std::vector<TExclusion> exclusions;
  if (fScanFilter) exclusions = fScanFilter->GetExclusions();
  if (const int64_t objects = fRootExclusions.fByFileMask.load(std::memory_order_relaxed); objects > 0)
    exclusions.push_back({u"not named like " + fFileMask, objects});
  if (const int64_t objects = fRootExclusions.fByExpression.load(std::memory_order_relaxed); objects > 0)
    exclusions.push_back({u"not meeting the condition", objects});
  return exclusions;
}

// --- scanning ------------------------------------------------------------------------------------------------------

bool TCustomRoot::BeginScanning(bool pWholeTree) {
  auto token = MakeRef<TCancellationToken>();
  TRef<IScanEngine> earlier;
  {
    TCriticalSectionLock lock(fLock);
    if (fScanRunning || fDisposeToken->IsDisposed()) return false;
    fScanRunning = true;
    fScanStarted = TickCount64();
    fCancellationToken = token;
    earlier.swap(fScanEngine);
    if (pWholeTree) {
      fErrors.clear();
      fErrorCount = 0;
    }
  }
  try {
    if (earlier) earlier->Dispose();
    PrepareScan(pWholeTree, std::move(token));
  } catch (...) {
    SetScanEnded();
    throw;
  }
  ExcludeState(rsFinished | rsCancelled | rsPathNotFound | (pWholeTree ? rsHasErrors | rsIsXMLImport : 0u));
  IncludeState(rsScanning);
  return true;
}

void TCustomRoot::PrepareScan(bool pWholeTree, TRef<TCancellationToken> pToken) {
  fLastScanNumberOfFiles = fTotalFilesFound.exchange(0);
  fNumFolders = 0;
  fBytesFound = 0;
  fExcludedObjects = 0;
  if (pWholeTree) {
    TRef<ITopSizeList> list;
    if (fOptions->NumberOfTopFiles > 0)
      list = MakeRef<TTopSizeFileList>(static_cast<size_t>(fOptions->NumberOfTopFiles), fPathDelimiter);
    SetTopSizeList(std::move(list));
    fTopSizeListHasGaps = false;
    fScanTimeStamp = TKivFileTime::Now().fTicks;
  }
  if (pWholeTree && (GetState() & rsIsXMLImport) != 0) fConfiguration = MakeRef<TScanConfiguration>(this, *fOptions);
  if (pWholeTree) SetComparison(nullptr);  // its nodes are about to go
  fRootExclusions.Clear();
  if (fScanFilter) fScanFilter->BeginScan();
  fConfiguration->Begin(std::move(pToken), GetTopSizeList(), GetScanTimeStamp());
}

void TCustomRoot::StartEngine() {
  const int32_t activeScans = fOwner ? fOwner->CountActiveScans() : 1;
  TRef<TCustomRoot> self(this);  // the callback may come after the last outside reference has gone
  TRef<IScanEngine> engine = fServices->CreateScanEngine(fOptions->MaximumThreads - activeScans + 1, fConfiguration,
                                                         fOptions->ThreadPriority, [self] { self->EndScanning(); });
  TCriticalSectionLock lock(fLock);
  fScanEngine = std::move(engine);
}

// Opened from the root down, by the nodes on the way: a link that was followed is followed again.
TRef<IHierarchicalEnumerator> TCustomRoot::OpenFolder(IFolderData& pFolder) {
  std::vector<TRef<IHierarchicalElement>> way;
  for (TRef<IHierarchicalElement> node(&pFolder); node->GetParentFolder(); node = node->GetParentFolder())
    way.push_back(node);
  TRef<IHierarchicalEnumerator> enumerator = fServices->CreateEnumerator(fPath, EnumeratorOptions());
  for (auto node = way.rbegin(); node != way.rend() && enumerator->GetErrorCode() == 0; ++node)
    enumerator = enumerator->CreateChildEnumerator((*node)->GetObjectName(), (*node)->GetAttributes());
  return enumerator;
}

void TCustomRoot::Scan() {
  if (!BeginScanning(true)) throw EInvalidOperation("TCustomRoot.Scan: a scan of this root is running already");
  try {
    GiveUpTree();
    BeginTree();
  } catch (...) {
    FailScan(CodeOfCaughtException("TCustomRoot.Scan"));
  }
}

void TCustomRoot::BeginTree() {
  TRef<IHierarchicalEnumerator> enumerator = fServices->CreateEnumerator(fPath, EnumeratorOptions());
  // A single file is scanned as the only entry of the folder that it lies in, so that its path comes out right.
  const bool isFile = enumerator->GetErrorCode() == 0 && !enumerator->IsFolder();
  auto top = MakeRef<TFolderData>(TRef<IHierarchicalRoot>(this),
                                  isFile ? FolderOfPath(fPath, fPathDelimiter) : std::u16string_view(fPath));
  const bool reached = enumerator->GetErrorCode() == 0;
  if (reached && !isFile) {
    const TKeyId owner =
        fConfiguration->GetDoUsersStatistics() ? TUserSizeArray::KeyOf(enumerator->GetOwner()) : kNoKey;
    top->SetEntryValues(enumerator->GetEntryValues(), owner, !fConfiguration->GetFolderDateBasedOnFilesOnly());
  }
  {
    TCriticalSectionLock lock(fLock);
    fFolderData = top;  // from here on others see it
  }
  if (!reached) {
    RecordError(*top, *enumerator, false);
    IncludeState(rsPathNotFound);
    EndScanning();
    return;
  }
  NotifyObservers(*top, TChangeKind::ckScanStarted);
  StartEngine();
  GetScanEngine()->AddScanJob(top, std::move(enumerator));
}

// A scan that could not begin, for an exception, ends like one whose path cannot be opened.
void TCustomRoot::FailScan(uint32_t pCode) noexcept {
  TReserveUse reserve;
  TRef<TCustomFolderData> top;
  {
    TCriticalSectionLock lock(fLock);
    if (!fFolderData) fFolderData = MakeRef<TFolderData>(TRef<IHierarchicalRoot>(this), fPath);
    top = fFolderData;
  }
  top->ExcludeFolderState(fsScanning | fsUpdatePending);
  AddError({top, top->GetFullPath(), pCode, TEnumeratorError::eeOther, false});
  IncludeState(rsPathNotFound);
  EndScanning();
}

TStorageInformation TCustomRoot::AskStorage() const {
  try {
    if (TVolumeInformation volume; GetVolumeInformationOfPath(fPath, volume))
      return {volume.fFileSystem, volume.fClusterSize, volume.fTotalBytes, volume.fFreeBytes};
  } catch (...) {  // the tree stands without it
    CodeOfCaughtException("TCustomRoot.AskStorage");
  }
  return {};
}

// noexcept: whoever waits for the scan would wait for ever.
void TCustomRoot::EndScanning() noexcept {
  TReserveUse reserve;
  RefillTopSizeList();
  TStorageInformation storage = AskStorage();
  TRef<TCustomFolderData> top;
  {
    TCriticalSectionLock lock(fLock);
    top = fFolderData;
    fStorage = std::move(storage);
    fScanDuration = TickCount64() - fScanStarted;
    if (fCancellationToken->IsCancelled())
      IncludeState(rsCancelled);
    else if ((GetState() & rsPathNotFound) == 0)
      IncludeState(rsFinished);
    ExcludeState(rsScanning);
  }
  NotifyObservers(*top, TChangeKind::ckScanFinished);
  SetScanEnded();
}

void TCustomRoot::SetScanEnded() {
  TCriticalSectionLock lock(fLock);
  fScanRunning = false;
  fScanEnded.notify_all();
}

namespace {

// Whether the folder to be listed is not there any more. Most enumerators open it with the first Next only.
bool IsGone(IHierarchicalEnumerator& pEnumerator) {
  try {
    if (pEnumerator.GetErrorCode() == 0 && pEnumerator.Next()) {
      pEnumerator.Reset();
      return false;
    }
  } catch (const EOSError&) {  // the scan will meet and record it
  }
  if (ClassifyOSError(pEnumerator.GetErrorCode()) == TErrorKind::ekNotFound) return true;
  pEnumerator.Reset();
  return false;
}

}  // namespace

bool TCustomRoot::RefreshFolder(IFolderData& pFolder, bool pRecursive) {
  if ((GetState() & rsFinished) == 0) {
    LogDebug(u"TCustomFolderData.Refresh: Not performing update on \"" + pFolder.GetFullPath() +
             u"\". The root was never scanned.");
    return false;
  }
  if ((GetState() & (rsShowsPreviousState | rsIsXMLImport)) != 0) {
    LogDebug(u"For a root that shows a previous state a sub-branch refresh should no be performed.");
    return false;
  }
  TRef<IHierarchicalEnumerator> enumerator = OpenFolder(pFolder);
  if (pFolder.GetParentFolder() && IsGone(*enumerator)) return RemoveFolder(pFolder);
  if (!BeginScanning(false)) return false;
  auto& folder = static_cast<TCustomFolderData&>(pFolder);
  folder.IncludeFolderState(fsUpdatePending);
  {
    TExclusiveLock structure(fSynchronizer);
    if (pRecursive)
      folder.Reset();
    else
      folder.ExcludeFolderState(fsSubFolderScanningFinished);
    folder.ReopenAncestors();
  }
  try {
    StartEngine();
    if (pRecursive)
      GetScanEngine()->AddScanJob(TRef<IFolderData>(&pFolder), std::move(enumerator));
    else
      GetScanEngine()->AddRefreshJob(TRef<IFolderData>(&pFolder), std::move(enumerator));
  } catch (...) {
    FailRefresh(folder, CodeOfCaughtException("TCustomRoot.RefreshFolder"));
  }
  return true;
}

// The folder stays as it is now, with an error of its own.
void TCustomRoot::FailRefresh(TCustomFolderData& pFolder, uint32_t pCode) noexcept {
  TReserveUse reserve;
  pFolder.ExcludeFolderState(fsScanning | fsUpdatePending);
  ForgetOwnEntries(pFolder);
  AddError({TRef<IHierarchicalObject>(&pFolder), pFolder.GetFullPath(), pCode, TEnumeratorError::eeOther, false});
  pFolder.BeginScan(1);
  pFolder.FinishPart();
  EndScanning();
}

bool TCustomRoot::RemoveFolder(IFolderData& pFolder) {
  {
    TCriticalSectionLock lock(fLock);
    if (fScanRunning) return false;
    fScanRunning = true;  // keeps a scan from starting meanwhile
  }
  {
    TExclusiveLock structure(fSynchronizer);
    pFolder.Remove();
    RefillTopSizeList();
  }
  TCriticalSectionLock lock(fLock);
  fScanRunning = false;
  fScanEnded.notify_all();
  return true;
}

void TCustomRoot::CancelScan() {
  TCriticalSectionLock lock(fLock);
  if (fCancellationToken) fCancellationToken->Cancel();
}

bool TCustomRoot::WaitForScan(int64_t pMilliseconds) {
  const int64_t end = TickCount64() + pMilliseconds;
  TCriticalSectionLock lock(fLock);
  while (fScanRunning) {
    const int64_t left = end - TickCount64();
    if (left <= 0) return false;
    lock.WaitFor(fScanEnded, left);
  }
  return true;
}

TStorageInformation TCustomRoot::GetStorageInformation() const {
  TCriticalSectionLock lock(fLock);
  return fStorage;
}

TRef<ITopSizeList> TCustomRoot::GetTopSizeList() const {
  TCriticalSectionLock lock(fLock);
  return fTopSizeList;
}

void TCustomRoot::SetTopSizeList(TRef<ITopSizeList> pList) {
  TCriticalSectionLock lock(fLock);
  fTopSizeList.swap(pList);  // the one before goes outside the lock
}

TRef<IComparison> TCustomRoot::GetComparison() const {
  TCriticalSectionLock lock(fLock);
  return fCompareData;
}

void TCustomRoot::SetComparison(TRef<IComparison> pComparison) {
  TCriticalSectionLock lock(fLock);
  fCompareData.swap(pComparison);  // the one before goes outside the lock
}

// --- loading -------------------------------------------------------------------------------------------------------

TRef<TCustomFolderData> TCustomRoot::BeginLoading() {
  IncludeState(rsIsXMLImport);
  auto top = MakeRef<TFolderData>(TRef<IHierarchicalRoot>(this), fPath);
  TCriticalSectionLock lock(fLock);
  fFolderData = top;
  return top;
}

void TCustomRoot::EndLoading(const TLoadedScan& pScan) {
  if (!pScan.fTitle.empty()) SetTitle(pScan.fTitle);
  fScanTimeStamp = pScan.fScanTimeStamp.fTicks;
  fScanFilter = pScan.fFilter;
  fConfiguration->TakeLoaded(pScan);
  if (pScan.fTopFiles) {
    auto list = MakeRef<TTopSizeFileList>(pScan.fTopFiles->size(), fPathDelimiter);
    list->Add(*pScan.fTopFiles);
    SetTopSizeList(std::move(list));
  }
  const TRef<IFolderData> top = GetTopFolder();
  fTotalFilesFound = top->GetFiles();
  fNumFolders = top->GetFolders();
  fBytesFound = top->GetSize();
  fExcludedObjects = pScan.fExcludedObjects;
  {
    TCriticalSectionLock lock(fLock);
    fStorage = pScan.fStorage;
    fErrors = pScan.fErrors;
  }
  fErrorCount = static_cast<int64_t>(pScan.fErrors.size());
  if (!pScan.fErrors.empty()) IncludeState(rsHasErrors);
  IncludeState(pScan.fWasCancelled ? rsFinished | rsCancelled : rsFinished);
}

// --- lists beside the tree -----------------------------------------------------------------------------------------

void TCustomRoot::RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial) {
  TScanError error;
  error.fObject = TRef<IHierarchicalObject>(&pFolder);
  error.fPath = pEnumerator.GetPath();
  error.fCode = pEnumerator.GetErrorCode();
  error.fKind = pEnumerator.GetError();
  error.fPartial = pPartial;
  AddError(error);
}

void TCustomRoot::AddError(const TScanError& pError) {
  IncludeState(rsHasErrors);
  {
    TCriticalSectionLock lock(fLock);
    fErrors.push_back(pError);
  }
  fErrorCount.fetch_add(1, std::memory_order_relaxed);
  fErrorObservers.Notify([&](IScanErrorObserver& pObserver) { pObserver.ErrorRecorded(pError); });
}

void TCustomRoot::CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes,
                               int64_t pExcluded) {
  fTotalFilesFound.fetch_add(pFiles, std::memory_order_relaxed);
  fNumFolders.fetch_add(pFolders, std::memory_order_relaxed);
  fBytesFound.fetch_add(pBytes, std::memory_order_relaxed);
  if (pExcluded != 0) fExcludedObjects.fetch_add(pExcluded, std::memory_order_relaxed);
  const int64_t now = TickCount64();
  int64_t last = fLastScannedFolderTick.load(std::memory_order_relaxed);
  if (now - last < kLastScannedFolderMilliseconds ||
      !fLastScannedFolderTick.compare_exchange_strong(last, now, std::memory_order_relaxed))
    return;
  std::u16string path = pFolder.GetFullPath();
  TCriticalSectionLock lock(fLock);
  fLastScannedFolder = std::move(path);
}

template <class TIsMeant>
void TCustomRoot::ForgetErrors(const TIsMeant& pIsMeant) {
  TCriticalSectionLock lock(fLock);
  std::erase_if(fErrors, [&](const TScanError& pError) { return pIsMeant(pError.fObject.get()); });
  fErrorCount = static_cast<int64_t>(fErrors.size());
  if (fErrors.empty()) ExcludeState(rsHasErrors);
}

void TCustomRoot::ForgetBranch(IFolderData& pFolder) {
  ForgetErrors([&](IHierarchicalObject* pObject) {
    return IsSameOrBelow(TRef<IHierarchicalElement>(dynamic_cast<IHierarchicalElement*>(pObject)), pFolder);
  });
  if (const TRef<ITopSizeList> list = GetTopSizeList(); list && list->RemoveBelow(pFolder)) fTopSizeListHasGaps = true;
}

void TCustomRoot::ForgetOwnEntries(IFolderData& pFolder) {
  ForgetErrors([&](IHierarchicalObject* pObject) { return pObject == &pFolder; });
  if (const TRef<ITopSizeList> list = GetTopSizeList(); list && list->RemoveFilesOf(pFolder))
    fTopSizeListHasGaps = true;
}

// What left the list makes room for the next largest files elsewhere, as after a fresh scan. Done once, when the tree
// has its new shape: files that were listed while the list was still full may be among them. A tree that keeps no files
// cannot tell which they are: the list then stays shorter until the next scan.
void TCustomRoot::RefillTopSizeList() {
  if (!fTopSizeListHasGaps.exchange(false) || !fConfiguration->GetKeepFiles()) return;
  const TRef<ITopSizeList> list = GetTopSizeList();
  list->Clear();
  std::vector<TRef<IFolderData>> stack;
  if (TRef<IFolderData> top = GetTopFolder()) stack.push_back(std::move(top));
  while (!stack.empty()) {
    TRef<IFolderData> folder = std::move(stack.back());
    stack.pop_back();
    if (folder->IsFileGroup()) continue;
    OfferFiles(*folder, *list);
    for (TRef<IFolderData>& child : folder->FindSubFolders()) stack.push_back(std::move(child));
  }
}

void TCustomRoot::OfferFiles(IFolderData& pFolder, ITopSizeList& pList) {
  TRef<const TFileTable> table = pFolder.GetFileTable();
  for (size_t i = 0; table && i < table->Count(); ++i) {
    const TFileRecord& file = (*table)[i];
    if (file.fSize >= pList.GetThreshold())
      pList.Add({file.fSize, file.fAllocated, file.fLastChangeDate, TRef<IHierarchicalElement>(&pFolder),
                 std::u16string(table->NameAt(i)), file.fLastAccessDate, file.fCreationDate, file.fAttributes});
  }
}

// --- end -----------------------------------------------------------------------------------------------------------

void TCustomRoot::GiveUpTree() {
  TRef<TCustomFolderData> tree;
  {
    TCriticalSectionLock lock(fLock);
    tree.swap(fFolderData);
  }
  if (!tree) return;
  TExclusiveLock structure(fSynchronizer);
  tree->Dispose();
}

void TCustomRoot::Dispose() {
  CancelScan();
  while (!WaitForScan(1000)) {
  }
  TRef<IScanEngine> engine;
  {
    TCriticalSectionLock lock(fLock);
    engine.swap(fScanEngine);
    fErrors.clear();
  }
  if (engine) engine->Dispose();
  SetComparison(nullptr);
  fDisposeToken->SetDisposed();
  IncludeState(rsDisposed);
  if (const TRef<ITopSizeList> list = GetTopSizeList()) list->Dispose();
  GiveUpTree();
  fObservers.Clear();
  fErrorObservers.Clear();
}

TFileSystemRoot::TFileSystemRoot(std::u16string pPath, std::u16string pPathWithWildcards, TRef<IScanServices> pServices,
                                 std::shared_ptr<const TGlobalOptions> pOptions, IScanRoots* pOwner)
    : TCustomFileSystemRoot(std::move(pPath), std::move(pPathWithWildcards), u'\\', std::move(pServices),
                            std::move(pOptions), pOwner) {}

TCustomUnixRoot::TCustomUnixRoot(std::u16string pPath, std::u16string pPathWithWildcards, TRef<IScanServices> pServices,
                                 std::shared_ptr<const TGlobalOptions> pOptions, IScanRoots* pOwner)
    : TCustomFileSystemRoot(std::move(pPath), std::move(pPathWithWildcards), u'/', std::move(pServices),
                            std::move(pOptions), pOwner) {}

}  // namespace Vantrel
