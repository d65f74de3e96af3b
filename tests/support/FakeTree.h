#pragma once

// Trees, roots and outputs whose values are simply set.

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/roots/ScanConfiguration.h"
#include "model/roots/Storage.h"
#include "model/statistics/FileStatistics.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::Testing {

// Trees and roots whose values are simply set, for tests of what stands above the model. What no such test asks for is
// refused, so that nothing is tested against a made-up answer.
[[noreturn]] inline void NotFaked() {
  throw ENotImplemented("not part of the fake");
}

class TFakeFolder : public TBaseVariantMetaDataProvider<IFolderData> {
 public:
  TFakeFolder(std::u16string pName, TSizeValues pValues, TKivFileTime pLastChange = {}, bool pFileGroup = false)
      : fName(std::move(pName)), fValues(pValues), fLastChange(pLastChange), fFileGroup(pFileGroup) {}

  TRef<TFakeFolder> Add(TRef<TFakeFolder> pChild) {
    fChildren.push_back(pChild);
    pChild->fParent = this;
    return pChild;
  }

  std::u16string_view GetObjectName() const override { return fName; }
  int64_t GetSize() const override { return fValues.fSize; }
  int64_t GetAllocated() const override { return fValues.fAllocated; }
  int64_t GetFiles() const override { return fValues.fFiles; }
  int64_t GetFolders() const override { return fValues.fFolders; }
  TKivFileTime GetLastAccessDate() const override { return {}; }
  TKivFileTime GetLastChangeDate() const override { return fLastChange; }
  TKivFileTime GetCreationDate() const override { return {}; }
  TAttributes GetAttributes() const override { return kAttributeDirectory; }
  TKeyId GetOwnerKey() const override { return kNoKey; }
  bool IsFolder() const override { return true; }
  bool IsFileGroup() const override { return fFileGroup; }
  TSizeValues GetValues() const override { return fValues; }
  // In the order in which they were added: the order of the tree is the tree's business.
  std::vector<TRef<IFolderData>> FindSubFolders() override { return {fChildren.begin(), fChildren.end()}; }
  size_t GetSubFolderCount() const override { return fChildren.size(); }
  IFolderData* AsFolder() override { return this; }
  TFolderStates GetFolderState() const override { return 0; }
  TRef<IHierarchicalElement> GetParentFolder() const override { return fParent; }
  TRef<IHierarchicalRoot> GetRoot() const override;  // one that shares can be asked of, not the folder's own
  void Dispose() override { fChildren.clear(); }

  std::u16string GetFullPath() const override { return fParent ? fParent->GetFullPath() + u'/' + fName : fName; }
  void IncludeFolderState(TFolderStates) override { NotFaked(); }
  void ExcludeFolderState(TFolderStates) override { NotFaked(); }
  TRef<IFolderData> CreateChild(std::u16string_view) override { NotFaked(); }
  TRef<ICustomAssocSizeArray> GetUserSizeArray() const override { NotFaked(); }
  TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const override { NotFaked(); }
  TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType) const override { NotFaked(); }
  void ReadStatistics(TStatisticsReading&) const override { NotFaked(); }
  void AddChildValues(const IFolderData&, bool) override { NotFaked(); }
  void SetNewerLastAccessDate(TKivFileTime) override { NotFaked(); }
  void SetNewerLastChangeDate(TKivFileTime) override { NotFaked(); }
  TRef<IFolderData> GetFilesNode() const override { NotFaked(); }
  TRef<const TFileTable> GetFileTable() const override { NotFaked(); }
  std::vector<TRef<IHierarchicalElement>> FindFiles() override { NotFaked(); }
  bool Refresh(bool) override { NotFaked(); }
  void Reset() override { NotFaked(); }
  void Remove() override { NotFaked(); }

 private:
  const std::u16string fName;
  const TSizeValues fValues;
  const TKivFileTime fLastChange;
  const bool fFileGroup;
  TFakeFolder* fParent = nullptr;
  std::vector<TRef<TFakeFolder>> fChildren;
};

// A root whose "scan" ends as its fields say.
class TFakeRoot : public TInterfaced<IHierarchicalRoot> {
 public:
  explicit TFakeRoot(std::u16string pPath) : fPath(std::move(pPath)) {}

  std::u16string fPath;
  TRootStates fState = rsFinished;
  TRef<TFakeFolder> fTop;
  std::vector<TScanError> fErrors;
  std::vector<TExclusion> fExclusions;
  TRef<IScanFilter> fFilter;
  TScanProgress fProgress;
  int64_t fDuration = 0;
  int fScans = 0;
  bool fCancelled = false;
  bool fDisposed = false;
  std::function<bool()> fOnWait;  // what WaitForScan answers; true without it

  void AddError(std::u16string pErrorPath, uint32_t pCode, bool pPartial = false) {
    TScanError error;
    error.fPath = std::move(pErrorPath);
    error.fCode = pCode;
    error.fText = FromUtf8(OSErrorText(pCode));
    error.fPartial = pPartial;
    fErrors.push_back(error);
    fState |= rsHasErrors;
  }

  std::u16string GetPath() const override { return fPath; }
  std::u16string GetTitle() const override { return fPath; }
  char16_t GetPathDelimiter() const override { return u'/'; }
  TRootStates GetState() const override { return fState; }
  TRef<IFolderData> GetTopFolder() const override { return fTop; }
  std::vector<TScanError> GetErrors() const override { return fErrors; }
  TScanProgress GetProgress() const override { return fProgress; }
  void SetScanFilter(TRef<IScanFilter> pFilter) override { fFilter = std::move(pFilter); }
  TRef<IScanFilter> GetScanFilter() const override { return fFilter; }
  std::vector<TExclusion> GetExclusions() const override { return fExclusions; }
  TRef<IComparison> GetComparison() const override { return nullptr; }
  void SetComparison(TRef<IComparison>) override { NotFaked(); }
  TStorageInformation fStorage;
  TStorageInformation GetStorageInformation() const override { return fStorage; }
  int64_t GetScanDuration() const override { return fDuration; }
  int64_t GetLastScanNumberOfFiles() const override { return 0; }
  void Scan() override { ++fScans; }
  void PauseScan(bool) override { NotFaked(); }
  void CancelScan() override {
    fCancelled = true;
    fState |= rsCancelled;
  }
  bool WaitForScan(int64_t) override { return fOnWait ? fOnWait() : true; }
  void Dispose() override { fDisposed = true; }
  TMetaDataValue GetValue(TColumn) const override { return {}; }

  TRef<IScanEngine> GetScanEngine() const override { NotFaked(); }
  TKivFileTime fScanTimeStamp;
  TKivFileTime GetScanTimeStamp() const override { return fScanTimeStamp; }
  TRef<IDisposeToken> GetDisposeToken() const override { NotFaked(); }
  TRef<IScanConfiguration> GetScanConfiguration() const override {
    return MakeRef<TScanConfiguration>(nullptr, TGlobalOptions());
  }
  TRef<ITreeSubscription> Subscribe(std::function<void()>) override { NotFaked(); }
  TChangeQueues& GetChangeQueues() override { NotFaked(); }
  TRef<IStorage> GetStorage() const override { NotFaked(); }
  void ForgetBranch(IFolderData&) override { NotFaked(); }
  void ForgetOwnEntries(IFolderData&) override { NotFaked(); }
  bool RefreshFolder(IFolderData&, bool) override { NotFaked(); }
  bool RemoveFolder(IFolderData&) override { NotFaked(); }
  TRef<ITopSizeList> GetTopSizeList() const override { NotFaked(); }
  void SubscribeErrorObserver(TRef<IScanErrorObserver>) override { NotFaked(); }
};

inline TRef<IHierarchicalRoot> TFakeFolder::GetRoot() const {
  static const TRef<TFakeRoot> root = MakeRef<TFakeRoot>(u"");
  return root;
}

// Roots by the path that asks for them.
class TFakeRoots : public TInterfaced<IScanRoots> {
 public:
  std::map<std::u16string, TRef<TFakeRoot>> fKnown;
  std::vector<std::u16string> fRemoved;
  int fActiveScans = 0;
  bool fDisposed = false;

  TRef<IHierarchicalRoot> CreateRoot(std::u16string_view pPath) override {
    const auto found = fKnown.find(std::u16string(pPath));
    if (found == fKnown.end()) throw EInvalidOperation("TFakeRoots.CreateRoot: unexpected path");
    return found->second;
  }
  int32_t CountActiveScans() const override { return fActiveScans; }
  void Remove(IHierarchicalRoot& pRoot) override { fRemoved.push_back(pRoot.GetPath()); }
  void Dispose() override { fDisposed = true; }

  TRef<IHierarchicalRoot> Scan(std::u16string_view) override { NotFaked(); }
  std::u16string AbsolutePath(std::u16string_view pPath) const override { return Vantrel::AbsolutePath(pPath); }
  TRef<IHierarchicalRoot> CreateRootForLoading(std::u16string_view, char16_t) override { NotFaked(); }
  void AddLoaded(TRef<IHierarchicalRoot>) override { NotFaked(); }
  std::vector<TRef<IHierarchicalRoot>> ScanAllDrives() override { NotFaked(); }
  std::vector<std::u16string> GetScannedPaths() const override { NotFaked(); }
  std::vector<TRef<IHierarchicalRoot>> FindRootsHolding(std::u16string_view) const override { NotFaked(); }
  std::vector<TRef<IHierarchicalRoot>> GetRoots() const override { NotFaked(); }
  TRef<IHierarchicalRoot> GetVirtualRoot() override { NotFaked(); }
  void RefreshRecycleBinFolders() override { NotFaked(); }
};

}  // namespace Vantrel::Testing
