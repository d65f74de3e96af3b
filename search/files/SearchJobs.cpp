#include "search/files/SearchJobs.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "model/tree/TreeWalk.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"
#include "search/files/SearchWorker.h"

namespace Vantrel::Search {

namespace {

// How often a long listing looks whether it is to stop.
constexpr int64_t kEntriesBetweenLooks = 1024;
// The files that are matched in one piece of work when contents are read.
constexpr size_t kSlice = 32;
// So many bytes of large files are one, too, so that several workers share a folder of few large files.
constexpr int64_t kBytesOfSlice = 16 << 20;
// So many rows of a tree are worth a job.
constexpr int64_t kRowsOfJob = 4096;

bool ReadsContents(const TSearchRun& pRun) {
  return (pRun.Settings().fExpression.Needs() & (saContents | saProperties)) != 0;
}

}  // namespace

// A path or a tree that is searched, with its idle workers. Any thread.
class TSearchTarget : public TInterfaced<IInterface> {
 public:
  // pConfiguration has the filter of a path with wildcards; nullptr for a tree.
  TSearchTarget(TSearchRun& pRun, TRef<IStorage> pStorage, char16_t pDelimiter, TRef<IScanConfiguration> pConfiguration)
      : fRun(pRun), fStorage(std::move(pStorage)), fDelimiter(pDelimiter), fConfiguration(std::move(pConfiguration)) {}

  std::unique_ptr<TSearchWorker> TakeWorker() {
    {
      TCriticalSectionLock lock(fLock);
      if (!fIdle.empty()) {
        std::unique_ptr<TSearchWorker> worker = std::move(fIdle.back());
        fIdle.pop_back();
        return worker;
      }
    }
    std::vector<std::unique_ptr<IEntryFilter>> filters;
    if (fRun.Settings().fFilter && fConfiguration) filters.push_back(fRun.Settings().fFilter->CreateEntryFilter());
    if (fConfiguration) filters.push_back(fConfiguration->CreateEntryFilter());
    std::erase(filters, nullptr);
    return std::make_unique<TSearchWorker>(fRun, fStorage, fDelimiter, std::move(filters));
  }

  void GiveWorker(std::unique_ptr<TSearchWorker> pWorker) {
    TCriticalSectionLock lock(fLock);
    fIdle.push_back(std::move(pWorker));
  }

  TSearchRun& fRun;
  const TRef<IStorage> fStorage;

 private:
  const char16_t fDelimiter;
  const TRef<IScanConfiguration> fConfiguration;
  TCriticalSection fLock;
  std::vector<std::unique_ptr<TSearchWorker>> fIdle GUARDED_BY(fLock);
};

namespace {

// What all jobs do around their work: a worker, a way to be interrupted, and an error for what goes wrong.
class TTargetJob : public ThreadPool::TBasicWorkItem {
 protected:
  explicit TTargetJob(TRef<TSearchTarget> pTarget)
      : TBasicWorkItem(TRef<ICancellationIndicator>(pTarget->fRun.Token().get())),
        fTarget(std::move(pTarget)),
        fRun(fTarget->fRun) {}

  virtual void Work() = 0;
  // For an error that ends the whole job.
  virtual std::u16string Place() const = 0;

  void Execute() final {
    TInterruptibleThread thread;
    std::optional<TCancellationWatch> watch;
    try {
      if (fRun.IsStopped()) return;
      watch.emplace(fCancellationToken, [&thread] { thread.Interrupt(); });
      fWorker = fTarget->TakeWorker();
      Work();
      fWorker->HandOver();
      fTarget->GiveWorker(std::move(fWorker));
    } catch (...) {
      Fail(Place(), CodeOfCaughtException("TTargetJob.Execute"), true);
    }
  }

  void Fail(const std::u16string& pPath, uint32_t pCode, bool pIsPartial, bool pIsTarget = false) {
    if (TInterruptibleThread::IsCurrentInterrupted()) return;  // what an interrupted call says is no fault
    const std::string text = fTarget->fStorage ? fTarget->fStorage->ErrorText(pCode) : OSErrorText(pCode);
    fRun.AddError({pPath, pCode, FromUtf8(text), pIsTarget, pIsPartial});
  }

  const TRef<TSearchTarget> fTarget;
  TSearchRun& fRun;
  std::unique_ptr<TSearchWorker> fWorker;
};

// Matches some files of a folder, which was listed before.
class TFilesJob : public TTargetJob {
 public:
  struct TSlice {
    TRef<const TFileTable> fFiles;
    TRef<const TFoundFolder> fFolder;
    int64_t fLevel = 0;
    size_t fBegin = 0;
    size_t fEnd = 0;
  };
  TFilesJob(TRef<TSearchTarget> pTarget, TSlice pSlice) : TTargetJob(std::move(pTarget)), fSlice(std::move(pSlice)) {}

 protected:
  void Work() override {
    fWorker->MatchFiles(*fSlice.fFiles, fSlice.fBegin, fSlice.fEnd, fSlice.fFolder, fSlice.fLevel);
  }
  std::u16string Place() const override { return fSlice.fFolder->fPath; }

 private:
  const TSlice fSlice;
};

// Searches a folder of a storage, and those folders beneath it that it does not give to other workers.
class TFoldersJob : public TTargetJob {
 public:
  TFoldersJob(TRef<TSearchTarget> pTarget, TRef<IHierarchicalEnumerator> pListing, int64_t pLevel)
      : TTargetJob(std::move(pTarget)), fFirst{std::move(pListing), pLevel} {}
  TFoldersJob(TRef<TSearchTarget> pTarget, std::u16string pPath)
      : TTargetJob(std::move(pTarget)), fPath(std::move(pPath)) {}

 protected:
  void Work() override {
    if (!fFirst.fListing && !Open()) return;
    SearchFolder(std::exchange(fFirst, {}));
    while (fFirstWaiting < fWaiting.size() && !fRun.IsStopped()) {
      // The folder nearest to the top probably has the most beneath it.
      if (fRun.ShouldShare(fWaiting.size() - fFirstWaiting) && Give(fWaiting[fFirstWaiting])) {
        ++fFirstWaiting;
        continue;
      }
      TFolder next = std::move(fWaiting.back());
      fWaiting.pop_back();
      SearchFolder(std::move(next));
    }
  }

  std::u16string Place() const override { return fFirst.fListing ? fFirst.fListing->GetPath() : fPath; }

 private:
  // A folder to be listed, and the level of its entries.
  struct TFolder {
    TRef<IHierarchicalEnumerator> fListing;
    int64_t fLevel = 1;
  };

  bool Open() {
    const THierarchicalEnumeratorOptions options = fRun.Settings().fEnumeratorOptions | heoValuesOnDemand;
    fFirst = {fTarget->fStorage->CreateEnumerator(fPath, {fCancellationToken, options}), 1};
    if (const uint32_t code = fFirst.fListing->GetErrorCode(); code != 0) {
      Fail(fPath, code, false, true);
      return false;
    }
    return true;
  }

  bool Give(TFolder& pFolder) {
    if (!fRun.Queue(MakeRef<TFoldersJob>(fTarget, pFolder.fListing, pFolder.fLevel))) return false;
    pFolder = {};
    return true;
  }

  void SearchFolder(TFolder pFolder) {
    IHierarchicalEnumerator& listing = *pFolder.fListing;
    fRun.ShowFolder([&listing] { return listing.GetPath(); });
    if (fFirstWaiting == fWaiting.size()) {
      fWaiting.clear();
      fFirstWaiting = 0;
    }
    const size_t waiting = fWaiting.size();
    TFilesJob::TSlice files;
    uint32_t failure = 0;
    try {
      fWorker->BeginListing(listing, pFolder.fLevel);
      List(listing, pFolder.fLevel);
      files = {fWorker->TakeFiles(), nullptr, pFolder.fLevel};
      if (files.fFiles) files.fFolder = fWorker->ListedFolder();
    } catch (...) {
      failure = CodeOfCaughtException("TFoldersJob.SearchFolder");
    }
    fWorker->EndListing();
    if (listing.GetErrorCode() != 0) failure = listing.GetErrorCode();
    if (failure != 0) Fail(listing.GetPath(), failure, fEntries > 0);
    // Waiting folders are taken from the back; so the first listed one is searched first.
    std::reverse(fWaiting.begin() + static_cast<ptrdiff_t>(waiting), fWaiting.end());
    if (files.fFiles) MatchFiles(files);
    fWorker->HandOver();
  }

  void List(IHierarchicalEnumerator& pListing, int64_t pLevel) {
    const TAdaptedExpression& expression = fRun.Settings().fExpression;
    const bool readsContents = ReadsContents(fRun);
    const bool goesDeeper = pLevel < expression.DeepestLevel();
    int64_t folders = 0;
    for (fEntries = 0; pListing.Next(); ++fEntries) {
      if (fEntries % kEntriesBetweenLooks == 0 && fRun.IsStopped()) break;
      const bool isFolder = pListing.IsFolder();
      if (!fWorker->IsIncluded(isFolder)) continue;
      if (readsContents && !isFolder) {
        if (pListing.ReadValues()) fWorker->KeepFile();
        continue;
      }
      fWorker->MatchListed();
      if (!isFolder) continue;
      ++folders;
      if (goesDeeper && pListing.CanDescend())
        fWaiting.push_back({pListing.GetChildHierarchicalEnumerator(), pLevel + 1});
    }
    fRun.Count(fEntries - folders, folders);
  }

  static size_t EndOfSlice(const TFileTable& pFiles, size_t pBegin) {
    const size_t most = std::min(pBegin + kSlice, pFiles.Count());
    size_t end = pBegin;
    for (int64_t bytes = 0; end < most && bytes < kBytesOfSlice; ++end) bytes += pFiles[end].fSize;
    return end;
  }

  // Gives slices away as long as other workers need work.
  void MatchFiles(TFilesJob::TSlice& pFiles) {
    const size_t count = pFiles.fFiles->Count();
    for (size_t begin = 0; begin < count && !fRun.IsStopped(); begin = pFiles.fEnd) {
      pFiles.fBegin = begin;
      pFiles.fEnd = EndOfSlice(*pFiles.fFiles, begin);
      const size_t slices = pFiles.fEnd < count ? 2 : 1;  // or more
      const bool isGiven = fRun.ShouldShare(slices) && fRun.Queue(MakeRef<TFilesJob>(fTarget, pFiles));
      if (isGiven) continue;
      fWorker->MatchFiles(*pFiles.fFiles, pFiles.fBegin, pFiles.fEnd, pFiles.fFolder, pFiles.fLevel);
      fWorker->HandOver();
    }
  }

  TFolder fFirst;
  const std::u16string fPath;     // of a target that is still to be opened
  std::vector<TFolder> fWaiting;  // taken from the back to search, depth first; given away from the front
  size_t fFirstWaiting = 0;
  int64_t fEntries = 0;  // of the folder that is being listed
};

// A branch of a tree, or some files of one folder.
struct TTreePart {
  TRef<IFolderData> fTop;
  int32_t fLevel = 0;  // of the folder
  // The files from fBegin to before fEnd; nullptr for the whole branch.
  TRef<const TFileTable> fFiles{};
  size_t fBegin = 0;
  size_t fEnd = 0;
};

// Searches parts of a tree. While other workers need work, it gives branches away, small ones in bundles, and slices of
// long lists of files. What is left in an unfinished bundle at the end, it searches itself.
class TTreeJob : public TTargetJob, private ITreeVisitor {
 public:
  TTreeJob(TRef<TSearchTarget> pTarget, std::vector<TTreePart> pParts)
      : TTargetJob(std::move(pTarget)), fParts(std::move(pParts)), fWalk(Settings(fRun)), fRowsOfJob(RowsOfJob(fRun)) {}

 protected:
  void Work() override {
    bool goesOn = true;
    while (goesOn && !fParts.empty()) {
      for (fAt = 0; goesOn && fAt < fParts.size(); ++fAt) {
        const TTreePart& part = fParts[fAt];
        goesOn = part.fFiles ? MatchSlice(part) : fWalk.Run(*part.fTop, *this, part.fLevel);
      }
      fParts = std::exchange(fBundle, {});
      fRowsInBundle = 0;
    }
    fRun.Count(fFiles, fFolders);
  }
  std::u16string Place() const override { return fAt < fParts.size() ? fParts[fAt].fTop->GetFullPath() : u""; }

 private:
  static TTreeWalkSettings Settings(const TSearchRun& pRun) {
    TTreeWalkSettings settings;
    const int64_t deepest = pRun.Settings().fExpression.DeepestLevel();
    settings.fDeepestLevel = static_cast<int32_t>(std::min<int64_t>(deepest, TTreeWalkSettings::kUnlimited));
    settings.fShowsFileGroups = false;
    settings.fShowsFiles = true;
    settings.fOrder = TSiblingOrder::soAny;
    return settings;
  }

  static int64_t RowsOfJob(const TSearchRun& pRun) {
    return ReadsContents(pRun) ? static_cast<int64_t>(kSlice) : kRowsOfJob;
  }

  bool BeginNode(const TTreeRow& pRow, bool) override {
    if (!pRow.fIsShown) return true;
    if (++fFolders % 64 == 0 && !GoesOn()) return false;
    if (pRow.fLevel > 0) fWorker->MatchFolder(pRow);
    return true;
  }
  bool EndNode(const TTreeRow&) override { return true; }

  bool VisitFiles(IFolderData& pFolder, int32_t pLevel, const TFileTable& pFiles) override {
    TTreePart slice{TRef<IFolderData>(&pFolder), pLevel - 1, TRef<const TFileTable>(&pFiles)};
    const size_t count = pFiles.Count();
    for (; slice.fEnd < count; slice.fBegin = slice.fEnd) {
      slice.fEnd = std::min(slice.fBegin + static_cast<size_t>(fRowsOfJob), count);
      const bool isGiven = slice.fEnd < count && fRun.IsQueueShort() && Give({slice});
      if (!isGiven && !MatchSlice(slice)) return false;
    }
    return true;
  }

  bool MatchSlice(const TTreePart& pSlice) {
    fFiles += static_cast<int64_t>(pSlice.fEnd - pSlice.fBegin);
    fWorker->MatchFilesOf(*pSlice.fTop, pSlice.fLevel + 1, *pSlice.fFiles, pSlice.fBegin, pSlice.fEnd);
    return !fRun.IsStopped();
  }

  // What was found is handed over now and then, so that a rare result need not wait for the end of the branch.
  bool GoesOn() {
    fWorker->HandOver();
    return !fRun.IsStopped();
  }

  bool TakesBranch(const TTreeRow& pRow) override {
    if (&pRow.fFolder == fParts[fAt].fTop.get() || !fRun.IsQueueShort()) return false;
    TTreePart branch{TRef<IFolderData>(&pRow.fFolder), pRow.fLevel};
    const int64_t rows = fWalk.RowsOf(pRow.fFolder);
    if (rows >= fRowsOfJob) return Give({std::move(branch)});
    fBundle.push_back(std::move(branch));
    fRowsInBundle += rows;
    if (fRowsInBundle >= fRowsOfJob && Give(fBundle)) {
      fBundle.clear();
      fRowsInBundle = 0;
    }
    return true;
  }

  bool Give(std::vector<TTreePart> pParts) { return fRun.Queue(MakeRef<TTreeJob>(fTarget, std::move(pParts))); }

  std::vector<TTreePart> fParts;
  size_t fAt = 0;                  // the part that is being searched
  std::vector<TTreePart> fBundle;  // small branches that are to become a job
  int64_t fRowsInBundle = 0;
  const TTreeWalk fWalk;
  const int64_t fRowsOfJob;
  int64_t fFiles = 0;
  int64_t fFolders = 0;
};

}  // namespace

TRef<ThreadPool::IWorkItem> CreatePathJob(TSearchRun& pRun, const IHierarchicalRoot& pRoot) {
  auto target =
      MakeRef<TSearchTarget>(pRun, pRoot.GetStorage(), pRoot.GetPathDelimiter(), pRoot.GetScanConfiguration());
  return MakeRef<TFoldersJob>(std::move(target), pRoot.GetPath());
}

TRef<ThreadPool::IWorkItem> CreateTreeJob(TSearchRun& pRun, TRef<IHierarchicalRoot> pRoot, TRef<IStorage> pStorage) {
  TRef<IFolderData> top = pRoot->GetTopFolder();
  if (!top) return nullptr;
  auto target = MakeRef<TSearchTarget>(pRun, std::move(pStorage), pRoot->GetPathDelimiter(), nullptr);
  return MakeRef<TTreeJob>(std::move(target), std::vector<TTreePart>{{std::move(top)}});
}

}  // namespace Vantrel::Search
