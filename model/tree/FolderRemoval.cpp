// The part of the folder nodes that subtracts totals: reset, removal, and a new listing of a folder's own files.

#include <algorithm>

#include "model/tree/CustomFolder.h"

namespace Vantrel {

TFolderContribution TCustomFolderData::OwnFilesContribution() const {
  TRef<TCustomFolderData> filesNode;
  {
    TSharedLock lock(fLock);
    if (fSubItems) filesNode = fSubItems->fFilesNode;
    if (fSubItems && !filesNode && !fSubItems->fList.empty()) return {};  // sub-folders only
  }
  TFolderContribution own = filesNode ? filesNode->Contribution() : Contribution();
  own.fStatistics = own.fStatistics.Clone();
  return own;
}

TRef<TCustomFolderData> TCustomFolderData::DetachFilesNode() {
  TRef<TCustomFolderData> filesNode;
  TExclusiveLock lock(fLock);
  if (fSubItems) filesNode.swap(fSubItems->fFilesNode);
  return filesNode;
}

TRef<TCustomFolderData> TCustomFolderData::RemoveOwnFiles() {
  const TFolderContribution own = OwnFilesContribution();
  TRef<TCustomFolderData> filesNode = DetachFilesNode();
  {
    TExclusiveLock lock(fLock);
    fFileTable = nullptr;
  }
  SubtractUpwards(this, own);
  TellChange(ncFiles);
  return filesNode;
}

void TCustomFolderData::ReplaceFiles(const TFileGroupContents& pContents) {
  if (IsGone()) return;
  const TRef<TCustomFolderData> before = RemoveOwnFiles();
  const bool hasFiles = pContents.fValues.fFiles > 0;
  if (GetSubFolderCount() > 0 && !before && hasFiles) LogFilesNode(true);
  if (before && !hasFiles) LogFilesNode(false);
  if (before) before->LeaveTree();
  AddFiles(pContents);
}

void TCustomFolderData::Subtract(const TFolderContribution& pValues) {
  if (const TFolderStatistics* own = fStatistics.load(std::memory_order_acquire)) own->Subtract(pValues.fStatistics);
  {
    TExclusiveLock lock(fLock);
    fSize -= pValues.fValues.fSize;
    fAllocated -= pValues.fValues.fAllocated;
    fFiles -= pValues.fValues.fFiles;
    fFolders -= pValues.fValues.fFolders;
  }
  RecomputeFromChildren();
}

void TCustomFolderData::SubtractUpwards(TCustomFolderData* pFirst, const TFolderContribution& pValues) {
  for (TCustomFolderData* node = pFirst; node; node = node->ParentFolder()) {
    node->Subtract(pValues);
    node->TellChange();
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
}

void TCustomFolderData::ClearTotals() {
  TakeStatistics();  // the folder collects anew; its former statistics are in the lost totals
  fLastAccessDate.Set(fOwnLastAccessDate.Get());
  fLastChangeDate.Set(fOwnLastChangeDate.Get());
  TExclusiveLock lock(fLock);
  fSize = fAllocated = fFiles = fFolders = 0;
  fCompression = 0;
}

void TCustomFolderData::Reset() {
  if (IsGone()) return;
  const bool wasFinished = (GetFolderState() & fsSubFolderScanningFinished) != 0;
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
  if (wasFinished) ReopenAncestors();
  SubtractUpwards(ParentFolder(), lost);
  if (subItems) {
    for (const TRef<TCustomFolderData>& child : subItems->fList) child->Dispose();
    if (subItems->fFilesNode) subItems->fFilesNode->Dispose();
  }
  TellChange(ncReset | ncFiles);
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
  // The last sub-folder is gone, so the folder shows its files directly again.
  TRef<const TFileTable> files = filesNode->GetFileTable();
  TExclusiveLock lock(fLock);
  fFileTable = std::move(files);
}

void TCustomFolderData::LeaveTree() {
  const TRef<IHierarchicalRoot> root = fRoot;
  Dispose();
  if (root) root->GetChangeQueues().Mark(*this, fChangeMarks, ncRemoved);
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
  SubtractUpwards(parent, lost);
  if (parent->GetSubFolderCount() == 0) {
    if (const TRef<TCustomFolderData> filesNode = parent->DetachFilesNode()) filesNode->LeaveTree();
    parent->TellChange(ncFiles);
  }
  // A folder that a cancelled scan left unfinished was an unfinished part of its parent.
  if ((GetFolderState() & fsSubFolderScanningFinished) == 0 && parent->fUnfinishedParts > 0) parent->FinishPart();
  LeaveTree();
}

void TFileGroupData::Remove() {
  TCustomFolderData* folder = ParentFolder();
  if (IsGone() || !folder) return;
  TRef<IFolderData> keepAlive(this);
  folder->LogFilesNode(false);
  IncludeFolderState(fsRemoving);
  fRoot->ForgetBranch(*this);
  folder->RemoveOwnFiles();
  LeaveTree();
}

}  // namespace Vantrel
