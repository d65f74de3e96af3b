#include "model/roots/VirtualRoot.h"

#include <algorithm>

#include "model/roots/ScanConfiguration.h"
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
  return SortedBySize(Tops());
}

TSizeValues TVirtualRootFolder::GetValues() const {
  TSizeValues sum;
  for (const TRef<IFolderData>& top : Tops()) {
    const TSizeValues values = top->GetValues();
    sum += values;
    sum.fFolders += values.fFolders + 1;
    sum.fCompression |= values.fCompression;
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

// Without ages: each root may collect those of another date.
void TVirtualRootFolder::ReadStatistics(TStatisticsReading& pReading) const {
  pReading.Read({GetUserSizeArray(), GetExtensionSizeArray(), nullptr});
}

TRef<ICustomAssocSizeArray> TVirtualRootFolder::GetUserSizeArray() const {
  TRef<ICustomAssocSizeArray> sum = MakeRef<TUserSizeArray>();
  for (const TRef<IFolderData>& top : Tops())
    if (TRef<ICustomAssocSizeArray> users = top->GetUserSizeArray()) sum->AddArray(*users);
  return sum;
}

TRef<ICustomAssocSizeArray> TVirtualRootFolder::GetExtensionSizeArray() const {
  TRef<ICustomAssocSizeArray> sum = MakeRef<TExtensionSizeArray>();
  for (const TRef<IFolderData>& top : Tops())
    if (TRef<ICustomAssocSizeArray> extensions = top->GetExtensionSizeArray()) sum->AddArray(*extensions);
  return sum;
}

TRef<IFileAgeDistribution> TVirtualRootFolder::GetFileAgeDistribution(TDateType pDateType) const {
  TRef<IFileAgeDistribution> sum;
  for (const TRef<IFolderData>& top : Tops()) {
    TRef<IFileAgeDistribution> ages = top->GetFileAgeDistribution(pDateType);
    if (!ages) continue;
    if (!sum) sum = ages->CloneEmpty();
    sum->AddDistribution(*ages);
  }
  return sum;
}

TRef<IFolderData> TVirtualRootFolder::CreateChild(std::u16string_view) {
  throw EInvalidOperation("TVirtualRootFolder.CreateChild: the children of a combined root belong to other roots");
}

TVirtualRoot::TVirtualRoot(const IScanRoots& pRoots, std::shared_ptr<const TGlobalOptions> pOptions,
                           char16_t pDelimiter)
    : TBaseRoot(std::u16string(kTitle), pDelimiter), fRoots(pRoots) {
  fConfiguration = MakeRef<TScanConfiguration>(nullptr, *pOptions);
}

TVirtualRoot::~TVirtualRoot() = default;

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
    if ((root->GetState() & rsScanning) != 0) sum.fLastScannedFolder = progress.fLastScannedFolder;
  }
  return sum;
}

void TVirtualRoot::Scan() {
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots())
    if ((root->GetState() & rsScanning) == 0) root->Scan();
}

bool TVirtualRoot::RefreshFolder(IFolderData&, bool) {
  Scan();
  return true;
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
  for (const TRef<IHierarchicalRoot>& root : fRoots.GetRoots()) root->SubscribeErrorObserver(pObserver);
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
  fObservers.Clear();
}

}  // namespace Vantrel
