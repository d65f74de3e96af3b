#include "model/tree/CustomFolder.h"

#include <fmt/format.h>

#include <algorithm>

#include "model/tree/SingleFile.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

const std::u16string kCreatingFiles =
    u"TCustomFolderData.SetNewSize(): Creating [Files] in a folder with subfolders as there are now files in it: ";
const std::u16string kDisposingFiles =
    u"TCustomFolderData.SetNewSize(): Disposing [Files] node as there are no files in it: ";

void AddInto(const TFolderStatistics& pTarget, const TFolderStatistics& pValues) {
  if (pTarget.fUsers && pValues.fUsers) pTarget.fUsers->AddArray(*pValues.fUsers);
  if (pTarget.fExtensions && pValues.fExtensions) pTarget.fExtensions->AddArray(*pValues.fExtensions);
  if (pTarget.fAges && pValues.fAges) pTarget.fAges->AddDistribution(*pValues.fAges);
}

void AddInto(const TFolderStatistics& pTarget, const TFileGroupContents& pContents) {
  if (pTarget.fUsers) pTarget.fUsers->Add(pContents.fOwners);
  if (pTarget.fExtensions) pTarget.fExtensions->Add(pContents.fExtensions);
  if (pTarget.fAges) pTarget.fAges->Add(pContents.fAges);
}

void TakeOutOf(const TFolderStatistics& pTarget, const TFolderStatistics& pValues) {
  if (pTarget.fUsers && pValues.fUsers) pTarget.fUsers->SubtractArray(*pValues.fUsers);
  if (pTarget.fExtensions && pValues.fExtensions) pTarget.fExtensions->SubtractArray(*pValues.fExtensions);
  if (pTarget.fAges && pValues.fAges) pTarget.fAges->SubtractDistribution(*pValues.fAges);
}

TFolderStatistics CloneOf(const TFolderStatistics& pStatistics) {
  TFolderStatistics clone;
  if (pStatistics.fUsers) clone.fUsers = pStatistics.fUsers->Clone();
  if (pStatistics.fExtensions) clone.fExtensions = pStatistics.fExtensions->Clone();
  if (pStatistics.fAges) clone.fAges = pStatistics.fAges->Clone();
  return clone;
}

}  // namespace

std::vector<TRef<IFolderData>> SortedBySize(std::vector<TRef<IFolderData>> pChildren) {
  std::vector<std::pair<int64_t, TRef<IFolderData>>> keyed;
  keyed.reserve(pChildren.size());
  for (TRef<IFolderData>& child : pChildren) {
    const int64_t size = child->GetSize();
    keyed.emplace_back(size, std::move(child));
  }
  std::sort(keyed.begin(), keyed.end(), [](const auto& pA, const auto& pB) {
    return pA.first != pB.first ? pA.first > pB.first : pA.second->GetObjectName() < pB.second->GetObjectName();
  });
  std::transform(keyed.begin(), keyed.end(), pChildren.begin(), [](auto& pItem) { return std::move(pItem.second); });
  return pChildren;
}

TCustomFolderData::TCustomFolderData(TRef<IHierarchicalElement> pParent, TRef<IHierarchicalRoot> pRoot,
                                     std::u16string_view pName)
    : TContainerHierarchicalElement(std::move(pParent), std::move(pRoot), pName) {}

TCustomFolderData::~TCustomFolderData() {
  delete fStatistics.load(std::memory_order_acquire);
}

std::vector<TRef<TCustomFolderData>> TCustomFolderData::Children() const {
  TSharedLock lock(fLock);
  std::vector<TRef<TCustomFolderData>> children;
  if (fSubItems) {
    children.reserve(fSubItems->fList.size() + 1);
    children = fSubItems->fList;
    if (fSubItems->fFilesNode) children.push_back(fSubItems->fFilesNode);
  }
  return children;
}

std::vector<TRef<IFolderData>> TCustomFolderData::FindSubFolders() {
  std::vector<TRef<IFolderData>> children;
  {
    TSharedLock lock(fLock);
    if (!fSubItems) return children;
    children.reserve(fSubItems->fList.size() + 1);
    children.assign(fSubItems->fList.begin(), fSubItems->fList.end());
    if (fSubItems->fFilesNode) children.push_back(fSubItems->fFilesNode);
  }
  return SortedBySize(std::move(children));
}

std::vector<TRef<IHierarchicalElement>> TCustomFolderData::FindFiles() {
  std::vector<TRef<IHierarchicalElement>> files;
  TRef<const TFileTable> table = GetFileTable();
  if (!table) return files;
  files.reserve(table->Count());
  for (uint32_t index : table->SortedIndices()) files.push_back(MakeRef<TFileData>(*this, *table, (*table)[index]));
  return files;
}

TRef<const TFileTable> TCustomFolderData::GetFileTable() const {
  TRef<TCustomFolderData> filesNode;
  {
    TSharedLock lock(fLock);
    if (!fSubItems || !fSubItems->fFilesNode) return fFileTable;
    filesNode = fSubItems->fFilesNode;
  }
  return filesNode->GetFileTable();
}

TRef<IFolderData> TCustomFolderData::GetFilesNode() const {
  TSharedLock lock(fLock);
  return fSubItems ? fSubItems->fFilesNode : nullptr;
}

size_t TCustomFolderData::GetSubFolderCount() const {
  TSharedLock lock(fLock);
  return fSubItems ? fSubItems->fList.size() : 0;
}

TRef<ICustomAssocSizeArray> TCustomFolderData::GetUserSizeArray() const {
  return Statistics().fUsers;
}

TRef<ICustomAssocSizeArray> TCustomFolderData::GetExtensionSizeArray() const {
  return Statistics().fExtensions;
}

TRef<IFileAgeDistribution> TCustomFolderData::GetFileAgeDistribution(TDateType pDateType) const {
  TRef<IHierarchicalRoot> root = GetRoot();
  if (root && pDateType != root->GetScanConfiguration().GetFileAgesDateType())
    throw EInvalidArgumentValue("Folder data can only provide the file ages as configured during the scan");
  return Statistics().fAges;
}

TFolderStatistics TCustomFolderData::Statistics() const {
  const TRef<IHierarchicalRoot> root = GetRoot();
  if (!root) return {};
  const TStatisticsSource source = FindStatistics();
  return source.fOwn ? *source.fOwn : StatisticsOfFiles(source.fFiles.get(), root->GetScanConfiguration());
}

void TCustomFolderData::ReadStatistics(TStatisticsReading& pReading) const {
  const TRef<IHierarchicalRoot> root = GetRoot();
  if (!root) return pReading.Clear();
  const TStatisticsSource source = FindStatistics();
  if (source.fOwn)
    pReading.Read(*source.fOwn);
  else
    pReading.Read(source.fFiles.get(), root->GetScanConfiguration());
}

TCustomFolderData::TStatisticsSource TCustomFolderData::FindStatistics() const {
  TSharedLock lock(fLock);
  if (const TFolderStatistics* own = fStatistics.load(std::memory_order_relaxed)) return {*own, nullptr};
  return {std::nullopt, fFileTable};
}

TFolderStatistics& TCustomFolderData::EnsureStatistics() {
  if (TFolderStatistics* own = fStatistics.load(std::memory_order_acquire)) return *own;
  auto made = std::make_unique<TFolderStatistics>(Statistics());
  TExclusiveLock lock(fLock);
  TFolderStatistics* own = fStatistics.load(std::memory_order_relaxed);
  if (!own) fStatistics.store(own = made.release(), std::memory_order_release);
  return *own;
}

std::unique_ptr<TFolderStatistics> TCustomFolderData::TakeStatistics() {
  TExclusiveLock lock(fLock);
  return std::unique_ptr<TFolderStatistics>(fStatistics.exchange(nullptr, std::memory_order_acq_rel));
}

TMetaDataValue TCustomFolderData::GetValue(TColumn pColumn) const {
  switch (pColumn) {
    case TColumn::mdFolderState:
      return static_cast<int64_t>(GetFolderState());
    case TColumn::mdSizeChange:
    case TColumn::mdSizeChangePercent:
    case TColumn::mdFileChange:
      return ChangeSince(pColumn);
    default:
      return TContainerHierarchicalElement::GetValue(pColumn);
  }
}

// "No value" without a comparison; nothing grows by percents.
TMetaDataValue TCustomFolderData::ChangeSince(TColumn pColumn) const {
  const TRef<IHierarchicalRoot> root = GetRoot();
  const TRef<IComparison> comparison = root ? root->GetComparison() : nullptr;
  if (!comparison) return {};
  const TSizeValues now = GetValues();
  const TSizeValues then = comparison->EarlierValues(*this);
  if (pColumn == TColumn::mdFileChange) return now.fFiles - then.fFiles;
  if (pColumn == TColumn::mdSizeChange) return now.fSize - then.fSize;
  if (then.fSize == 0) return {};
  return static_cast<double>(now.fSize - then.fSize) / static_cast<double>(then.fSize);
}

std::u16string TCustomFolderData::GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
  if (pColumn >= TColumn::mdCount)
    throw EInvalidArgumentValue(
        fmt::format("TCustomFolderData.GetFormattedValue: Unexpected View Type {}", static_cast<int>(pColumn)));
  return TContainerHierarchicalElement::GetFormattedValue(pColumn, pFormat);
}

// --- filling -------------------------------------------------------------------------------------------------------

TRef<TCustomFolderData> TCustomFolderData::NewChild(std::u16string_view pName) {
  return MakeRef<TFolderData>(*this, fRoot, pName);
}

TRef<IFolderData> TCustomFolderData::CreateChild(std::u16string_view pName) {
  if (IsGone()) return nullptr;
  TRef<TCustomFolderData> child = NewChild(pName);
  AppendChildren({child});
  return child;
}

TRef<TCustomFolderData> TCustomFolderData::MakeChild(std::u16string_view pName, const TEntryValues& pValues,
                                                     TKeyId pOwnerKey, bool pRaiseDates) {
  TRef<TCustomFolderData> child = NewChild(pName);
  child->SetEntryValues(pValues, pOwnerKey, pRaiseDates);
  return child;
}

void TCustomFolderData::SetEntryValues(const TEntryValues& pValues, TKeyId pOwnerKey, bool pRaiseDates) {
  fAttributes = pValues.fAttributes;
  fOwnerKey = pOwnerKey;
  fCreationDate = pValues.fCreationDate;
  if (!pRaiseDates) return;
  fOwnLastAccessDate.Set(pValues.fLastAccessDate);
  fOwnLastChangeDate.Set(pValues.fLastChangeDate);
  SetNewerLastChangeDate(pValues.fLastChangeDate);
  SetNewerLastAccessDate(pValues.fLastAccessDate);
}

void TCustomFolderData::AppendChildren(std::vector<TRef<TCustomFolderData>> pChildren) {
  if (pChildren.empty() || IsGone()) return;
  const auto count = static_cast<int64_t>(pChildren.size());
  EnsureStatistics();  // before anybody can reach a child and bring its values up here
  bool becomesParent;
  {
    TExclusiveLock lock(fLock);
    if (!fSubItems) fSubItems = std::make_unique<TSubFolderList>();
    becomesParent = fSubItems->fList.empty();
    if (becomesParent) {
      pChildren.shrink_to_fit();
      fSubItems->fList = std::move(pChildren);
    } else {
      fSubItems->fList.insert(fSubItems->fList.end(), pChildren.begin(), pChildren.end());
    }
  }
  if (becomesParent) MoveOwnFilesIntoNode();
  for (TCustomFolderData* node = this; node; node = node->ParentFolder()) {
    TExclusiveLock lock(node->fLock);
    node->fFolders += count;
    node->ClearMetaDataCache();
  }
}

TCustomFolderData::TAncestry TCustomFolderData::Ancestry() {
  TAncestry nodes;
  for (TCustomFolderData* node = this; node; node = node->ParentFolder()) nodes.push_back(node);
  return nodes;
}

TFolderContribution TCustomFolderData::Contribution() const {
  TFolderContribution values;
  values.fValues = GetValues();
  values.fLastAccessDate = GetLastAccessDate();
  values.fLastChangeDate = GetLastChangeDate();
  values.fLongPaths = (GetFolderState() & fsContainsLongPaths) != 0;
  values.fStatistics = Statistics();
  return values;
}

void TCustomFolderData::AddChildValues(const IFolderData& pChild, bool pNotify) {
  if (IsGone()) return;
  AddToAncestry(this, static_cast<const TCustomFolderData&>(pChild).Contribution(), pNotify);
}

// The top-most folder first. pFirst may be nullptr.
template <class TValues>
void TCustomFolderData::AddToAncestry(TCustomFolderData* pFirst, const TValues& pValues, bool pNotify) {
  if (!pFirst) return;
  const TAncestry nodes = pFirst->Ancestry();
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
    (*node)->TakeIn(pValues);
    if (pNotify) pFirst->fRoot->NotifyObservers(**node, TChangeKind::ckChanged);
  }
}

void TCustomFolderData::TakeIn(const TFolderContribution& pValues) {
  AddInto(EnsureStatistics(), pValues.fStatistics);
  TakeInTotals(pValues);
}

void TCustomFolderData::TakeIn(const TFileGroupContents& pContents) {
  AddInto(EnsureStatistics(), pContents);
  TakeInTotals(pContents);
}

void TCustomFolderData::TakeInTotals(const TFolderTotals& pTotals) {
  fLastAccessDate.Raise(pTotals.fLastAccessDate);
  fLastChangeDate.Raise(pTotals.fLastChangeDate);
  if (pTotals.fLongPaths) IncludeFolderState(fsContainsLongPaths);
  TExclusiveLock lock(fLock);
  fSize += pTotals.fValues.fSize;
  fAllocated += pTotals.fValues.fAllocated;
  fFiles += pTotals.fValues.fFiles;
  fFolders += pTotals.fValues.fFolders;
  fCompression |= pTotals.fValues.fCompression;
  ClearMetaDataCache();
}

void TCustomFolderData::SetNewerLastAccessDate(TKivFileTime pDate) {
  if (IsGone()) return;
  for (TCustomFolderData* node = this; node && node->fLastAccessDate.Raise(pDate); node = node->ParentFolder()) {
  }
}

void TCustomFolderData::SetNewerLastChangeDate(TKivFileTime pDate) {
  if (IsGone()) return;
  for (TCustomFolderData* node = this; node && node->fLastChangeDate.Raise(pDate); node = node->ParentFolder()) {
  }
}

void TCustomFolderData::AddFiles(const TFileGroupContents& pContents, bool pNotify) {
  if (IsGone() || pContents.fValues.fFiles == 0) return;
  if (GetSubFolderCount() > 0) {
    auto group = MakeRef<TFileGroupData>(*this, fRoot);
    group->Fill(pContents);
    AddToAncestry(this, pContents, pNotify);
    AttachFilesNode(std::move(group));
    if (pNotify) fRoot->NotifyObservers(*this, TChangeKind::ckAdded);
    return;
  }
  // Without sub-folders the folder is its files: no node is made for them.
  AddToAncestry(ParentFolder(), pContents, pNotify);
  FillWith(pContents);
  if (pNotify) fRoot->NotifyObservers(*this, TChangeKind::ckChanged);
}

void TCustomFolderData::FillWith(const TFileGroupContents& pContents) {
  if (fStatistics.load(std::memory_order_acquire) || !pContents.KeepsAllFiles()) AddInto(EnsureStatistics(), pContents);
  TakeInTotals(pContents);
  TExclusiveLock lock(fLock);
  fFileTable = pContents.fFiles;
}

TFolderContribution TCustomFolderData::OwnFilesContribution() const {
  const TRef<IFolderData> filesNode = GetFilesNode();
  if (!filesNode && GetSubFolderCount() > 0) return {};  // sub-folders only
  TFolderContribution own = filesNode ? static_cast<TCustomFolderData&>(*filesNode).Contribution() : Contribution();
  own.fStatistics = CloneOf(own.fStatistics);
  return own;
}

void TCustomFolderData::ReplaceFiles(const TFileGroupContents& pContents) {
  if (IsGone()) return;
  const bool hasSubFolders = GetSubFolderCount() > 0;
  const TFolderContribution before = OwnFilesContribution();
  if (hasSubFolders && before.fValues.fFiles == 0 && pContents.fValues.fFiles > 0)
    LogDebug(kCreatingFiles + GetFullPath());
  if (hasSubFolders && before.fValues.fFiles > 0 && pContents.fValues.fFiles == 0)
    LogDebug(kDisposingFiles + GetFullPath());
  DetachFilesNode();
  {
    TExclusiveLock lock(fLock);
    fFileTable = nullptr;
  }
  GiveBackUpwards(this, before);
  AddFiles(pContents, true);
}

void TCustomFolderData::AttachFilesNode(TRef<TFileGroupData> pGroup) {
  TExclusiveLock lock(fLock);
  if (!fSubItems) fSubItems = std::make_unique<TSubFolderList>();
  fSubItems->fFilesNode = std::move(pGroup);
}

void TCustomFolderData::DetachFilesNode() {
  TRef<TCustomFolderData> filesNode;
  {
    TExclusiveLock lock(fLock);
    if (fSubItems) filesNode.swap(fSubItems->fFilesNode);
  }
  if (filesNode) filesNode->Dispose();
}

void TCustomFolderData::MoveOwnFilesIntoNode() {
  // Called with the first sub-folder in the list already and nothing of it counted yet: the totals are the own files'.
  TFolderContribution own = Contribution();
  if (own.fValues.fFiles == 0) return;
  LogDebug(kCreatingFiles + GetFullPath());
  TRef<const TFileTable> files;
  {
    TExclusiveLock lock(fLock);
    files.swap(fFileTable);
  }
  // Not so the dates: those of the folder's and the new sub-folder's own entries are among them.
  if (files) own.fLastAccessDate = own.fLastChangeDate = {};
  for (size_t i = 0; files && i < files->Count(); ++i) {
    own.fLastAccessDate = std::max(own.fLastAccessDate, (*files)[i].fLastAccessDate);
    own.fLastChangeDate = std::max(own.fLastChangeDate, (*files)[i].fLastChangeDate);
  }
  auto group = MakeRef<TFileGroupData>(*this, fRoot);
  group->Fill(own, std::move(files));
  AttachFilesNode(std::move(group));
}

// --- loading -------------------------------------------------------------------------------------------------------

TRef<TCustomFolderData> TCustomFolderData::AddLoadedChild(std::u16string_view pName, bool pIsFilesNode) {
  if (pIsFilesNode) {
    auto files = MakeRef<TFileGroupData>(*this, fRoot);
    AttachFilesNode(files);
    return files;
  }
  TRef<TCustomFolderData> child = NewChild(pName);
  TExclusiveLock lock(fLock);
  if (!fSubItems) fSubItems = std::make_unique<TSubFolderList>();
  fSubItems->fList.push_back(child);
  return child;
}

void TCustomFolderData::SetLoaded(const TLoadedFolder& pValues) {
  fAttributes = pValues.fEntry.fAttributes;
  fOwnerKey = pValues.fOwnerKey;
  fCreationDate = pValues.fEntry.fCreationDate;
  // Which of the dates are the folder's own is not in the file.
  fOwnLastAccessDate.Set(pValues.fEntry.fLastAccessDate);
  fOwnLastChangeDate.Set(pValues.fEntry.fLastChangeDate);
  fLastAccessDate.Set(pValues.fEntry.fLastAccessDate);
  fLastChangeDate.Set(pValues.fEntry.fLastChangeDate);
  IncludeFolderState(pValues.fState);
  TExclusiveLock lock(fLock);
  fSize = pValues.fValues.fSize;
  fAllocated = pValues.fValues.fAllocated;
  fFiles = pValues.fValues.fFiles;
  fFolders = pValues.fValues.fFolders;
  fCompression = pValues.fValues.fCompression;
  if (fSubItems) fSubItems->fList.shrink_to_fit();
  const TFolderStatistics& statistics = pValues.fStatistics;
  if (statistics.fUsers || statistics.fExtensions || statistics.fAges)
    delete fStatistics.exchange(new TFolderStatistics(statistics), std::memory_order_acq_rel);
}

// --- taking out ----------------------------------------------------------------------------------------------------

void TCustomFolderData::GiveBack(const TFolderContribution& pValues) {
  if (const TFolderStatistics* own = fStatistics.load(std::memory_order_acquire)) TakeOutOf(*own, pValues.fStatistics);
  {
    TExclusiveLock lock(fLock);
    fSize -= pValues.fValues.fSize;
    fAllocated -= pValues.fValues.fAllocated;
    fFiles -= pValues.fValues.fFiles;
    fFolders -= pValues.fValues.fFolders;
  }
  RecomputeFromChildren();
}

void TCustomFolderData::GiveBackUpwards(TCustomFolderData* pFirst, const TFolderContribution& pValues) {
  for (TCustomFolderData* node = pFirst; node; node = node->ParentFolder()) {
    node->GiveBack(pValues);
    node->fRoot->NotifyObservers(*node, TChangeKind::ckChanged);
  }
}

void TCustomFolderData::RecomputeFromChildren() {
  TCompressionStates compression = 0;
  bool longPaths = false;
  TKivFileTime access = fOwnLastAccessDate.Get();
  TKivFileTime change = fOwnLastChangeDate.Get();
  for (const TRef<TCustomFolderData>& child : Children()) {
    compression |= child->GetValues().fCompression;
    longPaths |= (child->GetFolderState() & fsContainsLongPaths) != 0;
    access = std::max(access, child->GetLastAccessDate());
    change = std::max(change, child->GetLastChangeDate());
  }
  SetDerived(compression, longPaths, access, change);
}

void TCustomFolderData::SetDerived(TCompressionStates pCompression, bool pLongPaths, TKivFileTime pAccess,
                                   TKivFileTime pChange) {
  if (pLongPaths)
    IncludeFolderState(fsContainsLongPaths);
  else
    ExcludeFolderState(fsContainsLongPaths);
  fLastAccessDate.Set(pAccess);
  fLastChangeDate.Set(pChange);
  TExclusiveLock lock(fLock);
  fCompression = pCompression;
  ClearMetaDataCache();
}

void TCustomFolderData::ClearTotals() {
  TakeStatistics();  // the folder collects anew; what it had goes on in what is lost
  fLastAccessDate.Set(fOwnLastAccessDate.Get());
  fLastChangeDate.Set(fOwnLastChangeDate.Get());
  TExclusiveLock lock(fLock);
  fSize = fAllocated = fFiles = fFolders = 0;
  fCompression = 0;
  ClearMetaDataCache();
}

bool TCustomFolderData::Refresh(bool pRecursive) {
  TRef<IHierarchicalRoot> root = GetRoot();
  return root && !IsGone() && root->RefreshFolder(*this, pRecursive);
}

void TCustomFolderData::Reset() {
  if (IsGone()) return;
  IncludeFolderState(fsRemoving);
  fRoot->ForgetBranch(*this);
  const TFolderContribution lost = Contribution();
  std::unique_ptr<TSubFolderList> subItems;
  TRef<const TFileTable> files;
  {
    TExclusiveLock lock(fLock);
    subItems.swap(fSubItems);
    files.swap(fFileTable);
  }
  ClearTotals();
  ExcludeFolderState(fsSubFolderScanningFinished | fsContainsLongPaths | fsDummySubFoldersAdded);
  GiveBackUpwards(ParentFolder(), lost);
  if (subItems) {
    for (const TRef<TCustomFolderData>& child : subItems->fList) child->Dispose();
    if (subItems->fFilesNode) subItems->fFilesNode->Dispose();
  }
  ExcludeFolderState(fsRemoving);
}

void TCustomFolderData::RemoveChild(const TCustomFolderData& pChild) {
  TRef<TCustomFolderData> filesNode;
  {
    TExclusiveLock lock(fLock);
    if (!fSubItems) return;
    std::erase_if(fSubItems->fList, [&](const TRef<TCustomFolderData>& pItem) { return pItem.get() == &pChild; });
    if (!fSubItems->fList.empty()) return;
    filesNode = fSubItems->fFilesNode;
  }
  if (!filesNode) return;
  // The last sub-folder is gone: the folder shows its files directly again.
  TRef<const TFileTable> files = filesNode->GetFileTable();
  TExclusiveLock lock(fLock);
  fFileTable = std::move(files);
}

void TCustomFolderData::Remove() {
  TCustomFolderData* parent = ParentFolder();
  if (IsGone() || !parent) return;
  TRef<IFolderData> keepAlive(this);
  IncludeFolderState(fsRemoving);
  fRoot->ForgetBranch(*this);
  TFolderContribution lost = Contribution();
  lost.fValues.fFolders += 1;
  parent->RemoveChild(*this);
  GiveBackUpwards(parent, lost);
  if (parent->GetSubFolderCount() == 0) parent->DetachFilesNode();
  fRoot->NotifyObservers(*this, TChangeKind::ckRemoved);
  Dispose();
}

// --- lifecycle -----------------------------------------------------------------------------------------------------

void TCustomFolderData::FinishPart() {
  for (TCustomFolderData* node = this; node; node = node->ParentFolder()) {
    if (node->fUnfinishedParts.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    node->IncludeFolderState(fsSubFolderScanningFinished);
  }
}

void TCustomFolderData::ReopenAncestors() {
  for (TCustomFolderData* node = ParentFolder(); node; node = node->ParentFolder()) {
    if (node->fUnfinishedParts.fetch_add(1, std::memory_order_acq_rel) != 0) return;
    node->ExcludeFolderState(fsSubFolderScanningFinished);
  }
}

void TCustomFolderData::Dispose() {
  std::vector<TRef<TCustomFolderData>> nodes{TRef<TCustomFolderData>(this)};
  while (!nodes.empty()) {
    TRef<TCustomFolderData> node = std::move(nodes.back());
    nodes.pop_back();
    node->DisposeNode(nodes);
  }
}

void TCustomFolderData::DisposeNode(std::vector<TRef<TCustomFolderData>>& pChildren) {
  IncludeFolderState(fsDisposed);
  // Whatever a reference keeps alive is released after the lock: the last reference to a root or a parent may be among
  // them.
  std::unique_ptr<TSubFolderList> subItems;
  TRef<const TFileTable> files;
  TRef<IHierarchicalElement> parent;
  TRef<IHierarchicalRoot> root;
  {
    TExclusiveLock lock(fLock);
    subItems.swap(fSubItems);
    files.swap(fFileTable);
    parent.swap(fParentFolder);
    root.swap(fRoot);
  }
  if (!subItems) return;
  pChildren.insert(pChildren.end(), std::make_move_iterator(subItems->fList.begin()),
                   std::make_move_iterator(subItems->fList.end()));
  if (subItems->fFilesNode) pChildren.push_back(std::move(subItems->fFilesNode));
}

void TCustomFolderData::Test() const {
#ifdef NDEBUG
  throw EInvalidOperation("TFolderData.Test() should not be called in non Debug versions");
#else
  const std::vector<TRef<TCustomFolderData>> children = Children();
  if (children.empty()) return;
  TSizeValues sum;
  for (const TRef<TCustomFolderData>& child : children) {
    const TSizeValues values = child->GetValues();
    sum += values;
    sum.fFolders += values.fFolders + (child->IsFileGroup() ? 0 : 1);
    sum.fCompression |= values.fCompression;
  }
  if (!(sum == GetValues()))
    throw EInvalidOperation("TFolderData.Test: the totals are not the sum of the children: " + ToUtf8(GetFullPath()));
#endif
}

// --- the kinds of folders ------------------------------------------------------------------------------------------

TFolderData::TFolderData(TRef<IHierarchicalRoot> pRoot, std::u16string_view pPath)
    : TCustomFolderData(nullptr, std::move(pRoot), pPath) {
  fFolderState = fsIsRoot;
}

TFolderData::TFolderData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName)
    : TCustomFolderData(TRef<IHierarchicalElement>(&pParent), std::move(pRoot), pName) {}

TFileGroupData::TFileGroupData(TCustomFolderData& pParent, TRef<IHierarchicalRoot> pRoot)
    : TCustomFolderData(TRef<IHierarchicalElement>(&pParent), std::move(pRoot), {}) {}

void TFileGroupData::Fill(const TFolderContribution& pValues, TRef<const TFileTable> pFiles) {
  if (pValues.AreAllIn(pFiles.get()))
    TakeInTotals(pValues);
  else
    TakeIn(pValues);
  TExclusiveLock lock(fLock);
  fFileTable = std::move(pFiles);
}

std::u16string TFileGroupData::GetFullPath() const {
  TRef<IHierarchicalElement> folder = GetParentFolder();
  return folder ? folder->GetFullPath() : std::u16string(kName);
}

}  // namespace Vantrel
