// The part of the roots that refreshes or removes a branch of the tree.

#include <optional>

#include "model/roots/Root.h"
#include "model/roots/ScanConfiguration.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/system/MemoryReserve.h"

namespace Vantrel {

// What the storage says about a folder that is refreshed.
struct TCustomRoot::TFoundFolder {
  TRef<IHierarchicalEnumerator> fListing;  // nullptr for a folder that is gone or is not entered
  std::optional<TEntryValues> fEntry;      // set when its parent's listing contains it
  uint32_t fRaisedError = 0;               // the path to it failed with this error
  bool fIsGone = false;
};

namespace {

bool IsNotFound(uint32_t pErrorCode) {
  return pErrorCode != 0 && ClassifyOSError(pErrorCode) == TErrorKind::ekNotFound;
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
  if ((pFolder.GetFolderState() & (fsIsDummyForComparison | fsDisposed)) != 0) return false;
  if (pFolder.IsFileGroup()) {  // it has no path of its own
    const TRef<IHierarchicalElement> folder = pFolder.GetParentFolder();
    return folder && RefreshFolder(*folder->AsFolder(), false);
  }
  // refreshing a view refreshes its folder
  const TRef<TCustomFolderData> folder(dynamic_cast<TCustomFolderData*>(&pFolder));
  if (!folder || !BeginScanning(false)) return false;
  folder->IncludeFolderState(fsUpdatePending);
  fObservers->MarkRoot(rcScanStarted);
  try {
    StartEngine();
    TRef<TCustomRoot> self(this);
    GetScanEngine()->AddRefreshJob(folder, pRecursive,
                                   [self, folder, pRecursive] { return self->BeginRefresh(*folder, pRecursive); });
  } catch (...) {
    FailRefresh(*folder, CodeOfCaughtException("TCustomRoot.RefreshFolder"));
  }
  return true;
}

// The folder stays unchanged and gets an error.
void TCustomRoot::FailRefresh(TCustomFolderData& pFolder, uint32_t pCode) noexcept {
  TReserveUse reserve;
  pFolder.ExcludeFolderState(fsScanning | fsUpdatePending);
  AddError({TRef<IHierarchicalObject>(&pFolder), pFolder.GetFullPath(), pCode, TEnumeratorError::eeOther, false});
  EndScanning(false);
}

// Opens the folder from the root down, through the nodes above it, so that followed links are followed again.
TCustomRoot::TFoundFolder TCustomRoot::FindInStorage(TCustomFolderData& pFolder) {
  TFoundFolder found;
  std::vector<TCustomFolderData*> way;  // the folder first; without the top folder
  for (TCustomFolderData* node = &pFolder; node->ParentFolder(); node = node->ParentFolder()) way.push_back(node);
  try {
    TRef<IHierarchicalEnumerator> enumerator = OpenPath(*Configuration());
    for (size_t i = way.size(); i > 1; --i)
      enumerator = enumerator->CreateChildEnumerator(way[i - 1]->GetObjectName(), way[i - 1]->GetAttributes());
    if (!way.empty()) {
      FindInListing(found, pFolder, *enumerator);
      return found;
    }
    if (enumerator->GetErrorCode() == 0 && enumerator->IsFolder()) found.fEntry = enumerator->GetEntryValues();
    found.fListing = std::move(enumerator);
  } catch (const EOSError& error) {
    found.fRaisedError = error.Code();
    found.fIsGone = !way.empty() && IsNotFound(error.Code());
  }
  return found;
}

// Looks for the folder in its parent's listing, since only the listing tells whether a scan enters it. For example, a
// mount may have come or gone. A listing that breaks off earlier tells nothing; the folder is then opened as it is
// known.
void TCustomRoot::FindInListing(TFoundFolder& pFound, TCustomFolderData& pFolder, IHierarchicalEnumerator& pParent) {
  const std::u16string_view name = pFolder.GetObjectName();
  const TRef<IScanConfiguration> configuration = GetScanConfiguration();
  const TRef<ICancellationToken> token = configuration->GetCancellationToken();
  while (!token->IsCancelled() && pParent.Next()) {
    if (pParent.GetObjectName() != name) continue;
    pFound.fIsGone = !pParent.IsFolder();
    if (pFound.fIsGone) return;
    pFound.fEntry = pParent.GetEntryValues();
    if (pParent.CanDescend()) {
      pFound.fListing = pParent.CreateChildEnumeratorById(pParent.GetEntryId(), name, pParent.GetAttributes());
    }
    return;
  }
  if (pParent.GetErrorCode() == 0 || IsNotFound(pParent.GetErrorCode())) {
    pFound.fIsGone = !token->IsCancelled();
    return;
  }
  pFound.fListing = pParent.CreateChildEnumerator(name, pFolder.GetAttributes());
}

TRef<IHierarchicalEnumerator> TCustomRoot::BeginRefresh(TCustomFolderData& pFolder, bool pRecursive) {
  TFoundFolder found = FindInStorage(pFolder);
  const TRef<IScanConfiguration> configuration = GetScanConfiguration();
  if (configuration->GetCancellationToken()->IsCancelled()) return nullptr;
  TExclusiveLock structure(fSynchronizer);
  if (found.fIsGone) {
    pFolder.Remove();
    return nullptr;
  }
  if (found.fEntry && !configuration->GetFolderDateBasedOnFilesOnly()) pFolder.SetOwnDates(*found.fEntry);
  if (pRecursive || !found.fListing) {
    pFolder.Reset();
    CountTree();
    if (found.fListing) return found.fListing;
    // The contents of the folder no longer belong to the tree, or cannot be reached.
    if (found.fRaisedError != 0) {
      TScanError error;
      error.fObject = TRef<IHierarchicalObject>(&pFolder);
      error.fPath = pFolder.GetFullPath();
      error.fCode = found.fRaisedError;
      if (ClassifyOSError(error.fCode) == TErrorKind::ekAccessDenied) error.fKind = TEnumeratorError::eeAccessDenied;
      AddError(error);
    }
    pFolder.BeginScan(1);
    pFolder.FinishPart();
    return nullptr;
  }
  if ((pFolder.GetFolderState() & fsSubFolderScanningFinished) != 0) {
    pFolder.ExcludeFolderState(fsSubFolderScanningFinished);
    pFolder.ReopenAncestors();
  }
  pFolder.AnnounceParts(1);  // keeps the folder unfinished while gone folders are removed
  return found.fListing;
}

bool TCustomRoot::RemoveFolder(IFolderData& pFolder) {
  if ((pFolder.GetFolderState() & (fsIsDummyForComparison | fsDisposed)) != 0 || !pFolder.GetParentFolder())
    return false;
  {
    TCriticalSectionLock lock(fLock);
    if (fScanRunning || fDisposeToken->IsDisposed()) return false;
    fScanRunning = true;  // prevents a scan from starting meanwhile
  }
  try {
    TExclusiveLock structure(fSynchronizer);
    pFolder.Remove();
    RefillTopSizeList();
    CountTree();
  } catch (...) {
    SetScanEnded();
    throw;
  }
  if ((GetTopFolder()->GetFolderState() & fsSubFolderScanningFinished) != 0) ExcludeState(rsCancelled);
  SetScanEnded();
  return true;
}

}  // namespace Vantrel
