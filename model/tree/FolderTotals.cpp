// The part of the folder nodes that adds children and files, and carries their totals up to the top folder.

#include <algorithm>

#include "model/tree/CustomFolder.h"

namespace Vantrel {

TRef<IFolderData> TCustomFolderData::CreateChild(std::u16string_view pName) {
  if (IsGone()) return nullptr;
  TRef<TCustomFolderData> child = MakeRef<TFolderData>(*this, fRoot, pName);
  AppendChildren({child});
  return child;
}

TRef<TCustomFolderData> TCustomFolderData::MakeChild(std::u16string_view pName, const TEntryValues& pValues,
                                                     TKeyId pOwnerKey, bool pRaiseDates) {
  TRef<TCustomFolderData> child = MakeRef<TFolderData>(*this, fRoot, pName);
  child->SetEntryValues(pValues, pOwnerKey, pRaiseDates);
  return child;
}

void TCustomFolderData::SetEntryValues(const TEntryValues& pValues, TKeyId pOwnerKey, bool pRaiseDates) {
  fAttributes = pValues.fAttributes;
  fOwnerKey = pOwnerKey;
  fCreationDate = pValues.fCreationDate;
  if (!pRaiseDates) return;
  SetOwnDates(pValues);
  fLastAccessDate.Raise(pValues.fLastAccessDate);
  fLastChangeDate.Raise(pValues.fLastChangeDate);
}

void TCustomFolderData::SetOwnDates(const TEntryValues& pValues) {
  fOwnLastAccessDate.Set(pValues.fLastAccessDate);
  fOwnLastChangeDate.Set(pValues.fLastChangeDate);
}

void TCustomFolderData::AppendChildren(std::vector<TRef<TCustomFolderData>> pChildren) {
  if (pChildren.empty() || IsGone()) return;
  const size_t count = pChildren.size();
  AddUpwards(this, EnterChildren(std::move(pChildren)), true);
  TellAddedChildren(count);
}

void TCustomFolderData::TakeInListing(std::vector<TRef<TCustomFolderData>> pChildren,
                                      const TFileGroupContents& pContents) {
  if (IsGone()) return;
  const size_t count = pChildren.size();
  if (count > 0) AddTotals(EnterChildren(std::move(pChildren)));
  if (pContents.fValues.fFiles > 0) HoldOwnFiles(pContents);
  if (count > 0) {
    TellChange();
    TellAddedChildren(count);
  }
}

TFolderTotals TCustomFolderData::EnterChildren(std::vector<TRef<TCustomFolderData>> pChildren) {
  TFolderTotals added;
  added.fValues.fFolders = static_cast<int64_t>(pChildren.size());
  for (const TRef<TCustomFolderData>& child : pChildren) {
    child->BeInTree();
    added.fLastAccessDate = std::max(added.fLastAccessDate, child->GetLastAccessDate());
    added.fLastChangeDate = std::max(added.fLastChangeDate, child->GetLastChangeDate());
  }
  EnsureStatistics();  // before any thread can reach a child and add its values here
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
  if (becomesParent && GetFiles() > 0) MoveOwnFilesIntoNode();
  return added;
}

// Tells of the last children of the list. Only this listing adds to it. A subscriber that comes meanwhile reads the
// list itself: before the children were put there under its lock, and then it is seen here, or after that.
void TCustomFolderData::TellAddedChildren(size_t pCount) {
  if (!fRoot->GetChangeQueues().HasSubscribers()) return;
  std::vector<TRef<TCustomFolderData>> children;
  {
    TSharedLock lock(fLock);
    children.assign(fSubItems->fList.end() - static_cast<ptrdiff_t>(pCount), fSubItems->fList.end());
  }
  for (const TRef<TCustomFolderData>& child : children) child->TellChange(ncAdded);
}

TCustomFolderData::TAncestry TCustomFolderData::Ancestry() {
  TAncestry nodes;
  for (TCustomFolderData* node = this; node; node = node->ParentFolder()) nodes.push_back(node);
  return nodes;
}

TFolderTotals TCustomFolderData::Totals() const {
  TFolderTotals totals;
  totals.fValues = GetValues();
  totals.fLastAccessDate = GetLastAccessDate();
  totals.fLastChangeDate = GetLastChangeDate();
  totals.fLongPaths = (GetFolderState() & fsContainsLongPaths) != 0;
  return totals;
}

TFolderContribution TCustomFolderData::Contribution() const {
  const TFolderStatistics* const own = fStatistics.load(std::memory_order_acquire);
  return {Totals(), own ? *own : Statistics()};
}

TFolderContribution TCustomFolderData::Snapshot() const {
  TFolderContribution values = Contribution();
  values.fStatistics = values.fStatistics.Clone();
  return values;
}

TFolderContribution TFolderContribution::Since(const TFolderContribution& pEarlier) const {
  TFolderContribution news = *this;
  static_cast<TBasicSizeValues&>(news.fValues) -= pEarlier.fValues;
  news.fValues.fFolders -= pEarlier.fValues.fFolders;
  news.fStatistics = fStatistics.Clone();
  news.fStatistics.Subtract(pEarlier.fStatistics);
  return news;
}

void TCustomFolderData::PassUp(const TFileGroupContents& pContents, bool pToAll, bool pNotify) {
  PassValuesUp(pContents, pToAll, pNotify);
}

void TCustomFolderData::PassUp(const TFolderContribution& pValues, bool pToAll, bool pNotify) {
  PassValuesUp(pValues, pToAll, pNotify);
}

template <class TValues>
void TCustomFolderData::PassValuesUp(const TValues& pValues, bool pToAll, bool pNotify) {
  TCustomFolderData* const parent = ParentFolder();
  if (!parent || IsGone()) return;
  if (pToAll) return AddUpwards(parent, pValues, pNotify);
  parent->Add(pValues);
  if (pNotify) parent->TellChange();
}

void TCustomFolderData::TellChangeUpwards() {
  if (!fRoot || !fRoot->GetChangeQueues().HasSubscribers()) return;
  const TAncestry nodes = Ancestry();
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) (*node)->TellChange();
}

void TCustomFolderData::AddChildValues(const IFolderData& pChild, bool pNotify) {
  if (IsGone()) return;
  AddUpwards(this, static_cast<const TCustomFolderData&>(pChild).Contribution(), pNotify);
}

// Adds to the top folder first. pFirst may be nullptr.
template <class TValues>
void TCustomFolderData::AddUpwards(TCustomFolderData* pFirst, const TValues& pValues, bool pNotify) {
  if (!pFirst) return;
  const TAncestry nodes = pFirst->Ancestry();
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
    (*node)->Add(pValues);
    if (pNotify) (*node)->TellChange();
  }
}

void TCustomFolderData::Add(const TFolderTotals& pTotals) {
  AddTotals(pTotals);
}

void TCustomFolderData::Add(const TFolderContribution& pValues) {
  EnsureStatistics().Add(pValues.fStatistics);
  AddTotals(pValues);
}

void TCustomFolderData::Add(const TFileGroupContents& pContents) {
  EnsureStatistics().Add(pContents);
  AddTotals(pContents);
}

void TCustomFolderData::AddTotals(const TFolderTotals& pTotals) {
  fLastAccessDate.Raise(pTotals.fLastAccessDate);
  fLastChangeDate.Raise(pTotals.fLastChangeDate);
  if (pTotals.fLongPaths) IncludeFolderState(fsContainsLongPaths);
  TExclusiveLock lock(fLock);
  fSize += pTotals.fValues.fSize;
  fAllocated += pTotals.fValues.fAllocated;
  fFiles += pTotals.fValues.fFiles;
  fFolders += pTotals.fValues.fFolders;
  fCompression |= pTotals.fValues.fCompression;
}

void TCustomFolderData::SetNewerLastAccessDate(TKivFileTime pDate) {
  if (IsGone()) return;
  for (TCustomFolderData* node = this; node && node->fLastAccessDate.Raise(pDate); node = node->ParentFolder())
    node->TellChange();
}

void TCustomFolderData::SetNewerLastChangeDate(TKivFileTime pDate) {
  if (IsGone()) return;
  for (TCustomFolderData* node = this; node && node->fLastChangeDate.Raise(pDate); node = node->ParentFolder())
    node->TellChange();
}

void TCustomFolderData::AddFiles(const TFileGroupContents& pContents) {
  if (IsGone() || pContents.fValues.fFiles == 0) return;
  AddUpwards(ParentFolder(), pContents, true);
  HoldOwnFiles(pContents);
}

void TCustomFolderData::HoldOwnFiles(const TFileGroupContents& pContents) {
  if (GetSubFolderCount() > 0) {
    auto group = MakeRef<TFileGroupData>(*this, fRoot);
    group->Fill(pContents);
    Add(pContents);
    AttachFilesNode(std::move(group));
  } else {  // the folder shows its files directly, so they get no node
    HoldFiles(pContents);
  }
  TellChange(ncChanged | ncFiles);
}

void TCustomFolderData::HoldFiles(const TFileGroupContents& pContents) {
  if (fStatistics.load(std::memory_order_acquire) || !pContents.KeepsAllFiles()) EnsureStatistics().Add(pContents);
  AddTotals(pContents);
  TExclusiveLock lock(fLock);
  fFileTable = pContents.fFiles;
}

void TCustomFolderData::AttachFilesNode(TRef<TFileGroupData> pGroup) {
  const TRef<TFileGroupData> group = pGroup;
  {
    TExclusiveLock lock(fLock);
    if (!fSubItems) fSubItems = std::make_unique<TSubFolderList>();
    fSubItems->fFilesNode = std::move(pGroup);
  }
  group->EnterTree();
  TellChange(ncFiles);
}

void TCustomFolderData::MoveOwnFilesIntoNode() {
  // The first sub-folder is already in the list, but nothing of it is counted yet. So the totals are those of the own
  // files.
  TFolderContribution own = Contribution();
  if (own.fValues.fFiles == 0) return;
  LogFilesNode(true);
  TRef<const TFileTable> files;
  {
    TExclusiveLock lock(fLock);
    files.swap(fFileTable);
  }
  // The dates differ: they include those of the folder's and the new sub-folder's own entries.
  if (files) own.fLastAccessDate = own.fLastChangeDate = {};
  for (size_t i = 0; files && i < files->Count(); ++i) {
    own.fLastAccessDate = std::max(own.fLastAccessDate, (*files)[i].fLastAccessDate);
    own.fLastChangeDate = std::max(own.fLastChangeDate, (*files)[i].fLastChangeDate);
  }
  auto group = MakeRef<TFileGroupData>(*this, fRoot);
  group->Fill(own, std::move(files));
  AttachFilesNode(std::move(group));
}

void TFileGroupData::Fill(const TFolderContribution& pValues, TRef<const TFileTable> pFiles) {
  if (pValues.AreAllIn(pFiles.get()))
    AddTotals(pValues);
  else
    Add(pValues);
  TExclusiveLock lock(fLock);
  fFileTable = std::move(pFiles);
}

}  // namespace Vantrel
