#include "model/roots/VirtualRoot.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "model/roots/ScanConfiguration.h"
#include "model/roots/VirtualFolder.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"

namespace Vantrel {

namespace {

constexpr std::u16string_view kTitle = u"All scanned paths";

}  // namespace

TVirtualRootFolder::TVirtualRootFolder(TRef<IHierarchicalRoot> pRoot, const IScanRoots& pRoots,
                                       std::u16string_view pName)
    : TCustomFolderData(nullptr, std::move(pRoot), pName), fRoots(pRoots) {
  fFolderState = fsIsRoot;
}

std::vector<TRef<IFolderData>> TVirtualRootFolder::Tops() const {
  std::vector<TRef<IFolderData>> tops;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots())
    if (TRef<IFolderData> top = root->GetTopFolder()) tops.push_back(std::move(top));
  return tops;
}

std::vector<TRef<IFolderData>> TVirtualRootFolder::FindSubFolders() {
  std::vector<TRef<IFolderData>> children = Tops();
  for (TRef<IFolderData>& child : children)
    child = MakeRef<TVirtualFolder>(std::move(child), TRef<IHierarchicalElement>(this));
  return SortedBySize(std::move(children));
}

TSizeValues TVirtualRootFolder::GetValues() const {
  TSizeValues sum;
  for (const TRef<IFolderData>& top : Tops()) {
    sum += top->GetValues();
    ++sum.fFolders;
  }
  return sum;
}

TKivFileTime TVirtualRootFolder::GetLastAccessDate() const {
  TKivFileTime newest;
  for (const TRef<IFolderData>& top : Tops()) newest = std::max(newest, top->GetLastAccessDate());
  return newest;
}

TKivFileTime TVirtualRootFolder::GetLastChangeDate() const {
  TKivFileTime newest;
  for (const TRef<IFolderData>& top : Tops()) newest = std::max(newest, top->GetLastChangeDate());
  return newest;
}

void TVirtualRootFolder::ReadStatistics(TStatisticsReading& pReading) const {
  const TRef<IHierarchicalRoot> root = GetRoot();
  if (!root) return pReading.Clear();
  pReading.Read({GetUserSizeArray(), GetExtensionSizeArray(),
                 GetFileAgeDistribution(root->GetScanConfiguration()->GetFileAgesDateType())});
}

namespace {

// The sum of pGet over all folders. nullptr when pGet returns nullptr for one of them.
template <class TSum, class TGet>
TRef<ICustomAssocSizeArray> SumOf(const std::vector<TRef<IFolderData>>& pFolders, const TGet& pGet) {
  TRef<ICustomAssocSizeArray> sum;
  for (const TRef<IFolderData>& folder : pFolders) {
    const TRef<ICustomAssocSizeArray> array = pGet(*folder);
    if (!array) return nullptr;
    if (!sum) sum = MakeRef<TSum>();
    sum->AddArray(*array);
  }
  return sum;
}

// Roots may have different interval lists. A record can only be assigned to an interval that contains all of the
// record's own interval, so only bounds in all lists are kept. The last interval of each list is open-ended, whatever
// its bound.
TRef<IFileAges> CommonIntervals(const std::vector<TRef<IFileAgeDistribution>>& pAges) {
  std::vector<int64_t> common;
  int64_t last = 0;
  for (size_t i = 0; i < pAges.size(); ++i) {
    const TRef<IFileAges> intervals = pAges[i]->GetFileAges();
    std::vector<int64_t> bounds;
    for (int k = 0; k + 1 < intervals->GetCount(); ++k) bounds.push_back(intervals->GetItem(k));
    last = std::max(last, intervals->GetItem(intervals->GetCount() - 1));
    if (i == 0) common = bounds;
    std::erase_if(common, [&](int64_t pBound) { return !std::binary_search(bounds.begin(), bounds.end(), pBound); });
  }
  auto ages = MakeRef<TFileAges>();
  for (const int64_t bound : common) ages->Add(bound);
  ages->Add(last);
  return ages;
}

}  // namespace

TRef<ICustomAssocSizeArray> TVirtualRootFolder::GetUserSizeArray() const {
  return SumOf<TUserSizeArray>(Tops(), [](const IFolderData& pTop) { return pTop.GetUserSizeArray(); });
}

TRef<ICustomAssocSizeArray> TVirtualRootFolder::GetExtensionSizeArray() const {
  return SumOf<TExtensionSizeArray>(Tops(), [](const IFolderData& pTop) { return pTop.GetExtensionSizeArray(); });
}

TRef<IFileAgeDistribution> TVirtualRootFolder::GetFileAgeDistribution(TDateType pDateType) const {
  std::vector<TRef<IFileAgeDistribution>> all;
  for (const TRef<IFolderData>& top : Tops()) {
    const TRef<IHierarchicalRoot> root = top->GetRoot();
    if (!root || root->GetScanConfiguration()->GetFileAgesDateType() == TDateType::dtNone) return nullptr;
    TRef<IFileAgeDistribution> ages = top->GetFileAgeDistribution(pDateType);
    if (!ages) return nullptr;
    all.push_back(std::move(ages));
  }
  if (all.empty()) return nullptr;
  const TRef<IFileAges> intervals = CommonIntervals(all);
  TRef<IFileAgeDistribution> sum = MakeRef<TFileAgeDistribution>(intervals, pDateType);
  for (const TRef<IFileAgeDistribution>& ages : all) {
    const TRef<IFileAges> own = ages->GetFileAges();
    for (const TKeyedSizeValues& entry : ages->GetEntries()) {
      const int interval = static_cast<int>(entry.fKey);
      const bool isLast = interval + 1 >= own->GetCount();
      sum->Add(isLast ? intervals->GetCount() - 1 : intervals->GetIndexOfMatchingInterval(own->GetItem(interval)),
               entry.fValues);
    }
  }
  return sum;
}

TRef<IFolderData> TVirtualRootFolder::CreateChild(std::u16string_view) {
  throw EInvalidOperation("TVirtualRootFolder.CreateChild: the children of a combined root belong to other roots");
}

namespace {

// The settings of all roots together. The questions of a running scan are never put to it.
class TCombinedConfiguration : public TScanConfiguration {
 public:
  TCombinedConfiguration(const std::vector<TRef<IHierarchicalRoot>>& pRoots, const TGlobalOptions& pOptions)
      : TScanConfiguration(nullptr, pOptions) {
    for (const TRef<IHierarchicalRoot>& root : pRoots) {
      const TRef<IScanConfiguration> own = root->GetScanConfiguration();
      fUsers &= own->GetDoUsersStatistics();
      fExtensions &= own->GetDoExtensionsStatistics();
      const TDateType type = own->GetFileAgesDateType();
      fAges = &root == &pRoots.front() || fAges == type ? type : TDateType::dtNone;
    }
  }
  bool GetDoUsersStatistics() const override { return fUsers; }
  bool GetDoExtensionsStatistics() const override { return fExtensions; }
  TDateType GetFileAgesDateType() const override { return fAges; }

 private:
  bool fUsers = true;
  bool fExtensions = true;
  TDateType fAges = TDateType::dtNone;  // if the roots differ
};

}  // namespace

// Merges the changes of all roots. The next Take includes roots that were added or removed meanwhile.
class TVirtualRoot::TSubscription : public TInterfaced<ITreeSubscription> {
 public:
  TSubscription(TVirtualRoot& pRoot, std::function<void()> pOnFirstChange)
      : fRoot(&pRoot), fOnFirstChange(std::move(pOnFirstChange)), fOwn(pRoot.fObservers->Subscribe(fOnFirstChange)) {}

  TTreeChanges Take() override {
    TCriticalSectionLock lock(fLock);
    TTreeChanges changes = fOwn->Take();
    if (fEnded) return {};
    std::map<TRef<IHierarchicalRoot>, TRef<ITreeSubscription>> current;
    for (const TRef<IHierarchicalRoot>& root : fRoot->fRoots.GetRoots()) {
      const auto known = fOfRoots.find(root);
      TRef<ITreeSubscription>& subscription = current[root];
      subscription = known != fOfRoots.end() ? known->second : root->Subscribe(fOnFirstChange);
      TTreeChanges of = subscription->Take();
      changes.fRoot |= of.fRoot;
      std::move(of.fNodes.begin(), of.fNodes.end(), std::back_inserter(changes.fNodes));
    }
    if (current.size() != fOfRoots.size()) changes.fRoot |= rcTreeReplaced;
    fOfRoots.swap(current);
    // The virtual root's totals are the sum of the top folders' totals.
    if (const TRef<IFolderData> top = fRoot->GetTopFolder(); top && !changes.fNodes.empty())
      changes.fNodes.insert(changes.fNodes.begin(), {top, ncChanged});
    return changes;
  }

  void End() override {
    TCriticalSectionLock lock(fLock);
    fEnded = true;
    fOwn->End();
    fOfRoots.clear();
  }

 private:
  const TRef<TVirtualRoot> fRoot;
  const std::function<void()> fOnFirstChange;
  const TRef<ITreeSubscription> fOwn;
  TCriticalSection fLock;
  bool fEnded GUARDED_BY(fLock) = false;
  std::map<TRef<IHierarchicalRoot>, TRef<ITreeSubscription>> fOfRoots GUARDED_BY(fLock);
};

TRef<ITreeSubscription> TVirtualRoot::Subscribe(std::function<void()> pOnFirstChange) {
  return MakeRef<TSubscription>(*this, std::move(pOnFirstChange));
}

class TVirtualRoot::TErrorForwarder : public TInterfaced<IScanErrorObserver> {
 public:
  explicit TErrorForwarder(TVirtualRoot& pTarget) : fTarget(&pTarget) {}
  void ErrorRecorded(const TScanError& pError) override {
    fTarget->fErrorObservers.Notify([&](IScanErrorObserver& pObserver) { pObserver.ErrorRecorded(pError); });
  }

 private:
  const TRef<TVirtualRoot> fTarget;
};

TVirtualRoot::TVirtualRoot(const IScanRoots& pRoots, std::shared_ptr<const TGlobalOptions> pOptions,
                           char16_t pDelimiter)
    : TBaseRoot(std::u16string(kTitle), pDelimiter), fRoots(pRoots), fOptions(std::move(pOptions)) {}

TVirtualRoot::~TVirtualRoot() = default;

void TVirtualRoot::RootAdded(IHierarchicalRoot& pRoot) {
  pRoot.SubscribeErrorObserver(MakeRef<TErrorForwarder>(*this));
  fObservers->MarkRoot(rcTreeReplaced);
}

void TVirtualRoot::RootRemoved() {
  fObservers->MarkRoot(rcTreeReplaced);
}

TRef<IScanConfiguration> TVirtualRoot::GetScanConfiguration() const {
  return MakeRef<TCombinedConfiguration>(fRoots.GetRoots(), *fOptions);
}

TRootStates TVirtualRoot::GetState() const {
  TRootStates any = 0, all = rsFinished;
  const std::vector<TRef<IHierarchicalRoot>> roots = fRoots.GetRoots();
  for (const TRef<IHierarchicalRoot>& root : roots) {
    const TRootStates state = root->GetState();
    any |= state & (rsScanning | rsCancelled | rsHasErrors | rsPathNotFound);
    all &= state;
  }
  return TBaseRoot::GetState() | any | (roots.empty() ? 0u : all);
}

TRef<IFolderData> TVirtualRoot::GetTopFolder() const {
  if (fDisposeToken->IsDisposed()) return nullptr;
  TRef<IHierarchicalRoot> self(const_cast<TVirtualRoot*>(this));
  TCriticalSectionLock lock(fLock);
  if (!fTop) fTop = MakeRef<TVirtualRootFolder>(self, fRoots, kTitle);
  return fTop;
}

void TVirtualRoot::SetScanFilter(TRef<IScanFilter>) {
  throw EInvalidOperation("TVirtualRoot.SetScanFilter: the roots that it shows have filters of their own");
}

std::vector<TExclusion> TVirtualRoot::GetExclusions() const {
  std::vector<TExclusion> exclusions;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) {
    const std::vector<TExclusion> more = root->GetExclusions();
    exclusions.insert(exclusions.end(), more.begin(), more.end());
  }
  return exclusions;
}

std::vector<TScanError> TVirtualRoot::GetErrors() const {
  std::vector<TScanError> all;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) {
    std::vector<TScanError> errors = root->GetErrors();
    all.insert(all.end(), errors.begin(), errors.end());
  }
  return all;
}

TScanProgress TVirtualRoot::GetProgress() const {
  TScanProgress sum;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) {
    TScanProgress progress = root->GetProgress();
    sum.fFiles += progress.fFiles;
    sum.fFolders += progress.fFolders;
    sum.fBytes += progress.fBytes;
    sum.fExcludedObjects += progress.fExcludedObjects;
    sum.fErrors += progress.fErrors;
    sum.fElapsed = std::max(sum.fElapsed, progress.fElapsed);
    if (!progress.fLongestListed.empty() && progress.fLongestListedElapsed >= sum.fLongestListedElapsed) {
      sum.fLongestListed = progress.fLongestListed;
      sum.fLongestListedElapsed = progress.fLongestListedElapsed;
    }
    if ((root->GetState() & rsScanning) != 0) sum.fLastScannedFolder = progress.fLastScannedFolder;
  }
  return sum;
}

void TVirtualRoot::Scan() {
  if (fDisposeToken->IsDisposed()) return;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots())
    if ((root->GetState() & rsScanning) == 0) root->Scan();
}

bool TVirtualRoot::RefreshFolder(IFolderData&, bool) {
  if (fDisposeToken->IsDisposed()) return false;
  Scan();
  return true;
}

void TVirtualRoot::PauseScan(bool pPaused) {
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) root->PauseScan(pPaused);
}

void TVirtualRoot::CancelScan() {
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) root->CancelScan();
}

bool TVirtualRoot::WaitForScan(int64_t pMilliseconds) {
  const int64_t end = TickCount64() + pMilliseconds;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots())
    if (!root->WaitForScan(std::max<int64_t>(0, end - TickCount64()))) return false;
  return true;
}

int64_t TVirtualRoot::GetScanDuration() const {
  int64_t longest = 0;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) longest = std::max(longest, root->GetScanDuration());
  return longest;
}

int64_t TVirtualRoot::GetLastScanNumberOfFiles() const {
  int64_t files = 0;
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) files += root->GetLastScanNumberOfFiles();
  return files;
}

void TVirtualRoot::SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) {
  fErrorObservers.Subscribe(std::move(pObserver));
}

void TVirtualRoot::Dispose() {
  fDisposeToken->SetDisposed();
  IncludeState(rsDisposed);
  TRef<TVirtualRootFolder> top;
  {
    TCriticalSectionLock lock(fLock);
    top.swap(fTop);
  }
  if (top) top->Dispose();
  fObservers->MarkRoot(rcTreeReplaced);
  fErrorObservers.Clear();
}

}  // namespace Vantrel
