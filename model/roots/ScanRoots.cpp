#include "model/roots/ScanRoots.h"

#include <algorithm>

#include "model/roots/Root.h"
#include "model/roots/Storage.h"
#include "model/roots/VirtualRoot.h"
#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel {

namespace {

// A typed path in its parts. Wildcards in the last part are a mask for the files of the folder before it, unless an
// object with exactly that name exists.
struct TTypedPath {
  std::u16string fPath;
  std::u16string fWithWildcards;
};

TTypedPath SplitTypedPath(std::u16string_view pTyped, const IStorage& pStorage) {
  TTypedPath typed;
  typed.fPath = pStorage.AbsolutePath(pTyped);
  const char16_t delimiter = pStorage.GetPathDelimiter();
  const std::u16string_view last = FileNameOfPath(typed.fPath, delimiter);
  if (last.find_first_of(u"*?") == std::u16string_view::npos || pStorage.Exists(typed.fPath)) return typed;
  typed.fWithWildcards = typed.fPath;
  typed.fPath = FolderOfPath(typed.fWithWildcards, delimiter);
  return typed;
}

// A root and the path with which it was opened. Opening the same path again gives the same root.
struct TListedRoot {
  std::u16string fTypedPath;
  TRef<IHierarchicalRoot> fRoot;
};

}  // namespace

// The list of open roots.
class TDSMCustomRoots : public TInterfaced<IScanRoots> {
 public:
  TDSMCustomRoots(TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions)
      : fServices(std::move(pServices)), fOptions(std::move(pOptions)), fMaxCount(fOptions->MaximumRoots) {}

  TRef<IHierarchicalRoot> CreateRoot(std::u16string_view pPath) override {
    const TRef<IStorage> storage = fServices->FindStorage(pPath);
    const TTypedPath typed = SplitTypedPath(pPath, *storage);
    const char16_t delimiter = storage->GetPathDelimiter();
    const std::u16string& identity = typed.fWithWildcards.empty() ? typed.fPath : typed.fWithWildcards;
    TRef<IHierarchicalRoot> root;
    {
      TCriticalSectionLock lock(fLock);
      for (const TListedRoot& listed : fList)
        if (SamePath(listed.fTypedPath, identity, delimiter)) return listed.fRoot;
      CheckRoom();
      if (delimiter == u'/')
        root = MakeRef<TCustomUnixRoot>(typed.fPath, typed.fWithWildcards, fServices, fOptions, this);
      else
        root = MakeRef<TFileSystemRoot>(typed.fPath, typed.fWithWildcards, fServices, fOptions, this);
      fList.push_back({identity, root});
    }
    TellVirtualRoot(root);
    return root;
  }

  std::u16string AbsolutePath(std::u16string_view pPath) const override {
    return fServices->FindStorage(pPath)->AbsolutePath(pPath);
  }

  TRef<IHierarchicalRoot> CreateRootForLoading(std::u16string_view pPath, char16_t pDelimiter) override {
    const std::u16string path(pPath);
    if (pDelimiter == u'/') return MakeRef<TCustomUnixRoot>(path, u"", fServices, fOptions, this);
    return MakeRef<TFileSystemRoot>(path, u"", fServices, fOptions, this);
  }

  // Several scan files of one path may be open, since each file is another state of it.
  void AddLoaded(TRef<IHierarchicalRoot> pRoot) override {
    {
      TCriticalSectionLock lock(fLock);
      CheckRoom();
      fList.push_back({u"", pRoot});
    }
    TellVirtualRoot(pRoot);
  }

  TRef<IHierarchicalRoot> Scan(std::u16string_view pPath) override {
    TRef<IHierarchicalRoot> root = CreateRoot(pPath);
    root->Scan();
    return root;
  }

  std::vector<TRef<IHierarchicalRoot>> ScanAllDrives() override {
    std::vector<TRef<IHierarchicalRoot>> roots;
    for (const std::u16string& drive : ListLocalDrives()) roots.push_back(Scan(drive));
    return roots;
  }

  std::vector<std::u16string> GetScannedPaths() const override {
    std::vector<std::u16string> paths;
    for (const TRef<IHierarchicalRoot>& root : GetRoots()) paths.push_back(root->GetPath());
    return paths;
  }

  std::vector<TRef<IHierarchicalRoot>> FindRootsHolding(std::u16string_view pPath) const override {
    std::vector<TRef<IHierarchicalRoot>> holding;
    for (const TRef<IHierarchicalRoot>& root : GetRoots())
      if (IsSameOrInside(pPath, root->GetPath(), root->GetPathDelimiter())) holding.push_back(root);
    return holding;
  }

  std::vector<TRef<IHierarchicalRoot>> GetRoots() const override {
    std::vector<TRef<IHierarchicalRoot>> roots;
    TCriticalSectionLock lock(fLock);
    for (const TListedRoot& listed : fList) roots.push_back(listed.fRoot);
    return roots;
  }

  int32_t CountActiveScans() const override {
    const std::vector<TRef<IHierarchicalRoot>> roots = GetRoots();
    return static_cast<int32_t>(std::count_if(roots.begin(), roots.end(),
                                              [](const auto& pRoot) { return (pRoot->GetState() & rsScanning) != 0; }));
  }

  TRef<IHierarchicalRoot> GetVirtualRoot() override {
    std::vector<TListedRoot> listed;
    TRef<TVirtualRoot> made;
    {
      TCriticalSectionLock lock(fLock);
      if (fVirtualRoot) return fVirtualRoot;
      made = fVirtualRoot = MakeRef<TVirtualRoot>(*this, fOptions, NativePathDelimiter());
      listed = fList;
    }
    for (const TListedRoot& each : listed) made->RootAdded(*each.fRoot);
    return made;
  }

  void RefreshRecycleBinFolders() override {
    for (const TRef<IHierarchicalRoot>& root : GetRoots()) {
      TRef<IFolderData> top = root->GetTopFolder();
      if (!top || (root->GetState() & rsFinished) == 0) continue;
      for (const TRef<IFolderData>& folder : top->FindSubFolders()) {
        const std::u16string_view name = folder->GetObjectName();
        if (!SameTextAscii(name, u"$Recycle.Bin") && !name.starts_with(u".Trash")) continue;
        folder->Refresh(true);
        break;  // a root runs one scan at a time
      }
    }
  }

  void Remove(IHierarchicalRoot& pRoot) override {
    TRef<IHierarchicalRoot> root(&pRoot);
    {
      TCriticalSectionLock lock(fLock);
      std::erase_if(fList, [&](const TListedRoot& pListed) { return pListed.fRoot == root; });
    }
    root->Dispose();
    TellVirtualRoot(nullptr);
  }

  void Dispose() override {
    std::vector<TRef<IHierarchicalRoot>> roots = GetRoots();
    {
      TCriticalSectionLock lock(fLock);
      fList.clear();
      if (fVirtualRoot) roots.push_back(std::move(fVirtualRoot));
    }
    for (const TRef<IHierarchicalRoot>& root : roots) root->Dispose();
  }

 private:
  void CheckRoom() const REQUIRES(fLock) {
    if (fList.size() >= static_cast<size_t>(fMaxCount))
      throw EInvalidOperation("TDSMCustomRoots.CreateRoot: more than " + std::to_string(fMaxCount) +
                              " paths cannot be open at once (option MaximumRoots)");
  }

  // A root was added, or removed if pAdded is nullptr. Called without the lock, since callbacks of subscribers run.
  void TellVirtualRoot(TRef<IHierarchicalRoot> pAdded) {
    TRef<TVirtualRoot> virtualRoot;
    {
      TCriticalSectionLock lock(fLock);
      virtualRoot = fVirtualRoot;
    }
    if (virtualRoot && pAdded) virtualRoot->RootAdded(*pAdded);
    if (virtualRoot && !pAdded) virtualRoot->RootRemoved();
  }

  const TRef<IScanServices> fServices;
  const std::shared_ptr<const TGlobalOptions> fOptions;
  const int32_t fMaxCount;
  mutable TCriticalSection fLock;
  std::vector<TListedRoot> fList GUARDED_BY(fLock);
  TRef<TVirtualRoot> fVirtualRoot GUARDED_BY(fLock);
};

}  // namespace Vantrel

namespace Vantrel {

TRef<IScanRoots> CreateScanRoots(TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions) {
  return MakeRef<Vantrel::TDSMCustomRoots>(std::move(pServices), std::move(pOptions));
}

}  // namespace Vantrel
