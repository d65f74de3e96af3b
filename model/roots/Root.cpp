#include "model/roots/Root.h"

#include "model/roots/ScanConfiguration.h"
#include "model/roots/Storage.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/system/MemoryReserve.h"
#include "platform/system/System.h"

namespace Vantrel {

namespace {

constexpr int64_t kMillisecondsBetweenCancels = 100;

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

TRef<IScanConfiguration> TCustomRoot::GetScanConfiguration() const {
  return Configuration();
}

TRef<TScanConfiguration> TCustomRoot::Configuration() const {
  TSharedLock lock(fConfigurationLock);
  return fConfiguration;
}

TRef<IFolderData> TCustomRoot::GetTopFolder() const {
  TCriticalSectionLock lock(fLock);
  return fFolderData;
}

TRef<IScanEngine> TCustomRoot::GetScanEngine() const {
  TCriticalSectionLock lock(fLock);
  return fScanEngine;
}

void TCustomRoot::SetScanFilter(TRef<IScanFilter> pFilter) {
  TCriticalSectionLock lock(fLock);
  fScanFilter.swap(pFilter);  // the previous filter is released outside the lock
}

TRef<IScanFilter> TCustomRoot::GetScanFilter() const {
  TCriticalSectionLock lock(fLock);
  return fScanFilter;
}

// --- scanning ------------------------------------------------------------------------------------------------------

bool TCustomRoot::BeginScanning(bool pWholeTree) {
  auto token = MakeRef<TCancellationToken>();  // before anything is changed: it may find no memory
  TRef<IScanEngine> earlier;
  {
    TCriticalSectionLock lock(fLock);
    if (fScanRunning || fDisposeToken->IsDisposed()) return false;
    fScanRunning = true;
    fScanStarted = TickCount64();
    fPausedSince.reset();
    fPausedTime = 0;
    fCancellationToken = std::move(token);
    earlier.swap(fScanEngine);
    if (pWholeTree) {
      fErrors.clear();
      fErrorCount = 0;
    }
    fCountsExclusions = pWholeTree;
  }
  try {
    if (earlier) earlier->Dispose();
    PrepareScan(pWholeTree);
  } catch (...) {
    SetScanEnded();
    throw;
  }
  IncludeState(rsScanning);
  return true;
}

void TCustomRoot::PrepareScan(bool pWholeTree) {
  if (pWholeTree) {
    fLastScanNumberOfFiles = fTotalFilesFound.exchange(0);
    fNumFolders = 0;
    fBytesFound = 0;
    fExcludedObjects = 0;
    fPrepared = fToPrepare = 0;
    fTopSizeListHasGaps = false;
    fScanTimeStamp = TKivFileTime::Now().fTicks;
    fRootExclusions.Clear();
    SetComparison(nullptr);
    ExcludeState(rsFinished | rsCancelled | rsPathNotFound | rsHasErrors | rsIsXMLImport | rsIsPartialImport);
  }
  TRef<TScanConfiguration> configuration = ConfigurationOfNextScan(pWholeTree);
  TExclusiveLock lock(fConfigurationLock);
  fConfiguration.swap(configuration);  // the previous configuration is released outside the lock
}

TRef<TScanConfiguration> TCustomRoot::ConfigurationOfNextScan(bool pWholeTree) {
  TScanRun scan;
  {
    TCriticalSectionLock lock(fLock);
    scan.fToken = fCancellationToken;
    scan.fFilter = fScanFilter;
  }
  if (!pWholeTree) return Configuration()->ForRefresh(scan.fToken);
  if (fOptions->NumberOfTopFiles > 0)
    scan.fTopSizeList = MakeRef<TTopSizeFileList>(static_cast<size_t>(fOptions->NumberOfTopFiles), fPathDelimiter);
  scan.fTimeStamp = GetScanTimeStamp();
  if (scan.fFilter) scan.fFilter->BeginScan();
  TRef<ITopSizeList> list = scan.fTopSizeList;
  {
    TCriticalSectionLock lock(fLock);
    fTopSizeList.swap(list);
  }
  return MakeRef<TScanConfiguration>(this, *fOptions, std::move(scan));
}

void TCustomRoot::StartEngine() {
  const int32_t activeScans = fOwner ? fOwner->CountActiveScans() : 1;
  TRef<TScanConfiguration> configuration = Configuration();
  const bool wholeTree = configuration->IsOfWholeTree();
  TRef<TCustomRoot> self(this);  // the callback may come after the last outside reference is released
  TRef<IScanEngine> engine =
      fServices->CreateScanEngine(fOptions->MaximumThreads - activeScans + 1, std::move(configuration),
                                  fOptions->ThreadPriority, [self, wholeTree] { self->EndScanning(wholeTree); });
  TCriticalSectionLock lock(fLock);
  fScanEngine = std::move(engine);
}

void TCustomRoot::Scan() {
  if (fDisposeToken->IsDisposed()) return;
  if (!BeginScanning(true)) throw EInvalidOperation("TCustomRoot.Scan: a scan of this root is running already");
  try {
    GiveUpTree();
    fObservers->MarkRoot(rcTreeReplaced | rcScanStarted);
    StartEngine();
    TRef<TCustomRoot> self(this);
    GetScanEngine()->AddScanJob([self] { return self->OpenTree(); });
  } catch (...) {
    FailOpening(CodeOfCaughtException("TCustomRoot.Scan"));
    EndScanning(true);
  }
}

TScanStart TCustomRoot::OpenTree() noexcept {
  try {
    return BeginTree();
  } catch (...) {
    FailOpening(CodeOfCaughtException("TCustomRoot.OpenTree"));
    return {};
  }
}

bool TCustomRoot::IsCancelled() const {
  TCriticalSectionLock lock(fLock);
  return fCancellationToken && fCancellationToken->IsCancelled();
}

TScanStart TCustomRoot::BeginTree() {
  const TRef<TScanConfiguration> configuration = Configuration();
  TRef<IHierarchicalEnumerator> enumerator = OpenPath(*configuration);
  const bool reached = enumerator->GetErrorCode() == 0;
  // A single file is scanned as the only entry of its folder, so that its path is right.
  const bool isFile = reached && !enumerator->IsFolder();
  auto top = MakeRef<TFolderData>(TRef<IHierarchicalRoot>(this),
                                  isFile ? FolderOfPath(fPath, fPathDelimiter) : std::u16string_view(fPath));
  if (reached && !isFile) {
    const TKeyId owner = configuration->GetDoUsersStatistics() ? TUserSizeArray::KeyOf(enumerator->GetOwner()) : kNoKey;
    top->SetEntryValues(enumerator->GetEntryValues(), owner, !configuration->GetFolderDateBasedOnFilesOnly());
  }
  if (reached) top->IncludeFolderState(fsScanning);
  {
    TCriticalSectionLock lock(fLock);
    fFolderData = top;  // other threads see it from here on
    fPathReached = reached;
  }
  fObservers->MarkRoot(rcTreeReplaced);
  top->EnterTree();
  if (reached) return {top, std::move(enumerator)};
  if (!IsCancelled()) {  // what an interrupted call says is no fault of the path
    RecordError(*top, *enumerator, false);
    IncludeState(rsPathNotFound);
  }
  return {};
}

// A scan that fails to begin, by an exception, ends like one whose path cannot be opened.
void TCustomRoot::FailOpening(uint32_t pCode) noexcept {
  TReserveUse reserve;
  TRef<TCustomFolderData> top;
  {
    TCriticalSectionLock lock(fLock);
    if (!fFolderData) fFolderData = MakeRef<TFolderData>(TRef<IHierarchicalRoot>(this), fPath);
    fPathReached = false;
    top = fFolderData;
  }
  top->ExcludeFolderState(fsScanning | fsUpdatePending);
  if (IsCancelled()) return;
  AddError({top, top->GetFullPath(), pCode, TEnumeratorError::eeOther, false});
  IncludeState(rsPathNotFound);
}

TStorageInformation TCustomRoot::AskStorage() const {
  {
    TCriticalSectionLock lock(fLock);
    if (!fPathReached) return {};  // asking may hang as opening did
  }
  try {
    return GetStorage()->GetInformation(fPath);
  } catch (...) {  // the tree is complete without it
    CodeOfCaughtException("TCustomRoot.AskStorage");
  }
  return {};
}

// noexcept, since an exception here would leave a thread in WaitForScan waiting for ever.
void TCustomRoot::EndScanning(bool pWholeTree) noexcept {
  TReserveUse reserve;
  RefillTopSizeList();
  if (!pWholeTree) CountTree();
  TStorageInformation storage = AskStorage();
  std::vector<TExclusion> exclusions = pWholeTree ? CurrentExclusions() : std::vector<TExclusion>();
  TRef<TCustomFolderData> top;
  {
    TCriticalSectionLock lock(fLock);
    top = fFolderData;
    fStorage = std::move(storage);
    if (pWholeTree) fExclusions.swap(exclusions);
    fCountsExclusions = false;
    fScanDuration = Elapsed();
    fPausedSince.reset();
    SetEndState(pWholeTree, fCancellationToken->IsCancelled(), *top);
  }
  SetScanEnded();
  // Reported last, so that a subscriber finds the scan ended.
  fObservers->MarkRoot(rcScanEnded);
}

void TCustomRoot::SetScanEnded() {
  TCriticalSectionLock lock(fLock);
  fScanRunning = false;
  fScanEnded.notify_all();
}

void TCustomRoot::SetEndState(bool pWholeTree, bool pCancelled, IFolderData& pTop) {
  if (!pWholeTree) {
    // A branch that a cancelled scan left out keeps the top folder unfinished, until that branch is scanned.
    if ((pTop.GetFolderState() & fsSubFolderScanningFinished) != 0)
      ExcludeState(rsCancelled);
    else if (pCancelled)
      IncludeState(rsCancelled);
  } else if (pCancelled) {
    IncludeState(rsCancelled);
  } else if ((GetState() & rsPathNotFound) == 0) {
    IncludeState(rsFinished);
  }
  ExcludeState(rsScanning | rsPaused);
}

void TCustomRoot::CancelScan() {
  TCriticalSectionLock lock(fLock);
  if (fCancellationToken) fCancellationToken->Cancel();
  SetPaused(false);
}

void TCustomRoot::PauseScan(bool pPaused) {
  TCriticalSectionLock lock(fLock);
  if (!fScanRunning || (GetState() & rsScanning) == 0 || fCancellationToken->IsCancelled()) return;
  SetPaused(pPaused);
}

void TCustomRoot::SetPaused(bool pPaused) {
  if (pPaused == fPausedSince.has_value() || !fScanEngine || !fScanEngine->SetPaused(pPaused)) return;
  if (pPaused) {
    fPausedSince = TickCount64();
    IncludeState(rsPaused);
  } else {
    fPausedTime += TickCount64() - *fPausedSince;
    fPausedSince.reset();
    ExcludeState(rsPaused);
  }
}

int64_t TCustomRoot::Elapsed() const {
  return fPausedSince.value_or(TickCount64()) - fScanStarted - fPausedTime;
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

TRef<IStorage> TCustomRoot::GetStorage() const {
  if ((GetState() & rsIsXMLImport) != 0) return fServices->GetLoadedScanStorage(fPathDelimiter);
  return fServices->FindStorage(fPath);
}

TRef<IHierarchicalEnumerator> TCustomRoot::OpenPath(const TScanConfiguration& pConfiguration) const {
  TScanContext context{pConfiguration.GetCancellationToken(), pConfiguration.GetEnumeratorOptions(),
                       pConfiguration.IsOfWholeTree()};
  context.fOnPrepare = [this](int64_t pDone, int64_t pAll) {
    fToPrepare.store(pAll, std::memory_order_relaxed);
    fPrepared.store(pDone, std::memory_order_relaxed);
  };
  return GetStorage()->CreateEnumerator(fPath, context);
}

TStorageInformation TCustomRoot::GetStorageInformation() const {
  TCriticalSectionLock lock(fLock);
  return fStorage;
}

TRef<IComparison> TCustomRoot::GetComparison() const {
  TCriticalSectionLock lock(fLock);
  return fCompareData;
}

void TCustomRoot::SetComparison(TRef<IComparison> pComparison) {
  {
    TCriticalSectionLock lock(fLock);
    fCompareData.swap(pComparison);  // the previous comparison is released outside the lock
    if (!fCompareData && !pComparison) return;
  }
  fObservers->MarkRoot(rcComparisonChanged);
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
  TRef<IScanEngine> engine;
  TRef<ITopSizeList> topSizeList;
  {
    TCriticalSectionLock lock(fLock);
    while (fScanRunning) {
      fCancellationToken->Cancel();  // again: what has begun to hang meanwhile is interrupted, too
      lock.WaitFor(fScanEnded, kMillisecondsBetweenCancels);
    }
    fDisposeToken->SetDisposed();
    engine.swap(fScanEngine);
    fErrors.clear();
    topSizeList = fTopSizeList;
  }
  IncludeState(rsDisposed);
  if (engine) engine->Dispose();
  SetComparison(nullptr);
  if (topSizeList) topSizeList->Dispose();
  GiveUpTree();
  fObservers->MarkRoot(rcTreeReplaced);
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
