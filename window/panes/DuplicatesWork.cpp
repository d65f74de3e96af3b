#include "window/panes/DuplicatesWork.h"

#include <QCoreApplication>
#include <algorithm>
#include <iterator>
#include <utility>

#include "automation/actions/SearchResults.h"
#include "model/roots/ScanConfiguration.h"
#include "search/duplicates/DuplicateGroups.h"
#include "search/files/FileFactsReader.h"
#include "search/patterns/PatternFilter.h"
#include "search/query/Parser.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

using Search::TDuplicateFile;
using Search::TDuplicateGroup;
using Search::TDuplicateProgress;
using Search::TDuplicateResult;
using Search::TDuplicateSearch;
using Search::TDuplicatesGroup;
using Search::TFileSearch;

namespace {

// For the translation alone; the engine has the same texts.
[[maybe_unused]] constexpr const char* kPhases[] = {
    QT_TRANSLATE_NOOP("TDuplicatesWork", "Calculating small file checksums."),
    QT_TRANSLATE_NOOP("TDuplicatesWork", "Calculating big file checksums."),
    QT_TRANSLATE_NOOP("TDuplicatesWork", "Calculating folder checksums."),
    QT_TRANSLATE_NOOP("TDuplicatesWork", "Identifying duplicates.")};

QString Text(const char* pText) {
  return QCoreApplication::translate("TDuplicatesWork", pText);
}

// Without further names of files, which are known at the end alone.
TDuplicateGroup GroupSoFar(const TDuplicatesGroup& pGroup) {
  std::vector<TRef<IHierarchicalObject>> files = pGroup.Files();
  std::sort(files.begin(), files.end(),
            [](const auto& pA, const auto& pB) { return pA->GetFullPath() < pB->GetFullPath(); });
  TDuplicateGroup group;
  group.fSize = pGroup.GetSize();
  group.fWasted = group.fSize * (static_cast<int64_t>(files.size()) - 1);
  for (const TRef<IHierarchicalObject>& file : files)
    group.fNames.push_back({TRef<TDuplicateFile>(static_cast<TDuplicateFile*>(file.get()))});
  return group;
}

}  // namespace

// The groups that workers told of since the last look. It outlives the search.
struct TDuplicatesWork::TArrivals {
  std::mutex fLock;
  bool fHasNew = false;
  std::vector<TRef<TDuplicatesGroup>> fGroups;
};

TDuplicatesWork::TDuplicatesWork(TDuplicatesWish pWish)
    : fWish(std::move(pWish)),
      fArrivals(std::make_shared<TArrivals>()),
      fResult(std::make_shared<TDuplicateResult>()) {}

TDuplicatesWork::~TDuplicatesWork() {
  fSearch = nullptr;
  fListings.clear();
  if (fRoots) fRoots->Dispose();
}

// --- start and stop --------------------------------------------------------------------------------------------------

void TDuplicatesWork::Start() {
  const std::lock_guard lock(fLock);
  Search::TQuerySettings query;
  query.fNormalizesUnicode = fWish.fOptions->NormalizeUnicode;
  const Search::TAdaptedExpression expression =
      AdaptExpression(Search::TDSMExpressionParser(query).Parse(AreFolders() ? std::u16string() : fWish.fQuery),
                      Search::TFileFactsReader::kOfStorage);
  fRoots = fWish.fCreateRoots(fWish.fOptions);
  for (const TPlace& place : fWish.fPlaces) StartListing(place, expression);
}

void TDuplicatesWork::StartListing(const TPlace& pPlace, const Search::TAdaptedExpression& pExpression) {
  const TRef<IHierarchicalRoot> root = fRoots->CreateRoot(pPlace.fFolder->GetFullPath());
  if (std::find(fSearched.fTops.begin(), fSearched.fTops.end(), root->GetPath()) != fSearched.fTops.end()) return;
  fSearched.fTops.push_back(root->GetPath());
  Search::TFileSearchSettings settings;
  settings.fExpression = pExpression;
  settings.fMostFound = fWish.fOptions->SearchLimit;
  settings.fThreads = fWish.fOptions->MaximumThreads;
  settings.fPriority = fWish.fOptions->ThreadPriority;
  settings.fEnumeratorOptions = EnumeratorOptionsOf(*fWish.fOptions);
  // A filter counts for one search. What the scan leaves out is no duplicate either.
  if (const auto* filter = dynamic_cast<TPatternFilter*>(pPlace.fRoot->GetScanFilter().get()))
    settings.fFilter = MakeRef<TPatternFilter>(filter->GetPatterns());
  TListing listing{settings.fFilter, std::make_shared<TFileSearch>(std::move(settings))};
  listing.fSearch->AddPath(*root);
  const std::lock_guard lock(fSearchLock);
  if (fCancelled) return;
  listing.fSearch->SetPaused(fPaused);
  listing.fSearch->Start();
  fListings.push_back(std::move(listing));
}

void TDuplicatesWork::Publish(std::shared_ptr<TDuplicateSearch> pSearch) {
  const std::lock_guard lock(fSearchLock);
  fSearch = std::move(pSearch);
  if (fCancelled)
    fSearch->Cancel();
  else
    fSearch->SetPaused(fPaused);
}

void TDuplicatesWork::Cancel() {
  fCancelled = true;
  const std::lock_guard lock(fSearchLock);
  for (const TListing& listing : fListings) listing.fSearch->Cancel();
  if (fSearch) fSearch->Cancel();
}

void TDuplicatesWork::SetPaused(bool pPaused) {
  fPaused = pPaused;
  const std::lock_guard lock(fSearchLock);
  if (fCancelled) return;
  for (const TListing& listing : fListings) listing.fSearch->SetPaused(pPaused);
  if (fSearch) fSearch->SetPaused(pPaused);
}

// --- the steps -------------------------------------------------------------------------------------------------------

void TDuplicatesWork::TakeListed() {
  bool hasEnded = true;
  for (const TListing& listing : fListings) {
    hasEnded &= listing.fSearch->WaitForEnd(0);
    std::vector<Search::TFoundItem> found = listing.fSearch->TakeFound();
    std::move(found.begin(), found.end(), std::back_inserter(fSearched.fFound));
  }
  if (!hasEnded) return;
  fIsListed = true;
  for (const TListing& listing : fListings) {
    for (const Search::TSearchError& error : listing.fSearch->GetErrors())
      fSearched.fIncompleteFolders.push_back(error.fPath);
    fSearched.fFiles += listing.fSearch->GetProgress().fFiles;
    fHasFoundEnough |= listing.fSearch->HasFoundEnough();
  }
}

// A pause between listing and comparing holds as well.
void TDuplicatesWork::Compare() {
  if (fCancelled) {
    fSearched.fFound.clear();
    fHasEnded = true;
    return;
  }
  if (fPaused) return;
  Search::TDuplicateSearchSettings settings =
      PostScanActions::DuplicateSettingsOf(fWish.fRequest, *fWish.fOptions, fSearched);
  fCache = PostScanActions::ChecksumCacheOf(fWish.fRequest, *fWish.fOptions);
  settings.fCache = fCache;
  if (!AreUnique() && !AreFolders() && !settings.fVerify)
    settings.fOnNewDuplicateAdded = [arrivals = fArrivals](const TRef<IHierarchicalObject>& pNew) {
      auto* group = dynamic_cast<TDuplicatesGroup*>(pNew.get());
      const std::lock_guard lock(arrivals->fLock);
      arrivals->fHasNew = true;
      if (group) arrivals->fGroups.emplace_back(group);
    };
  Publish(std::make_shared<TDuplicateSearch>(std::move(settings), std::move(fSearched.fFound)));
}

void TDuplicatesWork::TakeArrivals() {
  std::vector<TRef<TDuplicatesGroup>> groups;
  {
    const std::lock_guard lock(fArrivals->fLock);
    if (!std::exchange(fArrivals->fHasNew, false)) return;
    groups = fArrivals->fGroups;
  }
  TDuplicateResult result;
  for (const TRef<TDuplicatesGroup>& group : groups) result.fGroups.push_back(GroupSoFar(*group));
  Search::SortGroups(result.fGroups);
  SetResult(std::move(result));
}

void TDuplicatesWork::TakeResult() {
  fHasEnded = true;
  if (fCache) fCache->Flush();
  {
    const std::lock_guard lock(fArrivals->fLock);
    fArrivals->fGroups.clear();
  }
  TDuplicateResult result = fSearch->TakeResult();
  Search::SortFoundItems(result.fUnique);
  SetResult(std::move(result));
}

void TDuplicatesWork::SetResult(TDuplicateResult pResult) {
  if (!AreFolders()) {  // equal folders may lie in each other
    pResult.fWasted = 0;
    for (const TDuplicateGroup& group : pResult.fGroups) pResult.fWasted += group.fWasted;
  }
  fResult = std::make_shared<TDuplicateResult>(std::move(pResult));
  fIsShown = false;
}

std::unique_ptr<TFoundNews> TDuplicatesWork::Look(const TFoundOrder& pOrder) {
  const std::lock_guard lock(fLock);
  if (!fIsListed) TakeListed();
  if (fIsListed && !fSearch && !fHasEnded) Compare();
  if (fSearch && !fHasEnded) {
    if (fSearch->WaitForEnd(0))
      TakeResult();
    else
      TakeArrivals();
  }
  auto news = std::make_unique<TDuplicatesNews>();
  news->fHasEnded = fHasEnded;
  if (!fIsShown || !(pOrder == fOrder)) {
    fIsShown = true;
    fOrder = pOrder;
    news->fRows = MakeDuplicateRows(fResult, AreUnique(), pOrder.fColumn, pOrder.fDescending);
  }
  if (fSearch && !fHasEnded) {
    const TDuplicateProgress progress = fSearch->GetProgress();
    if (progress.fAllBytes > 0)
      news->fDone = static_cast<double>(progress.fBytes) / static_cast<double>(progress.fAllBytes);
    else if (progress.fAllFiles > 0)
      news->fDone = static_cast<double>(progress.fFiles) / static_cast<double>(progress.fAllFiles);
  }
  news->fStatus = Status();
  news->fEmptyText = EmptyText();
  news->fProblems = Problems().join(u'\n');
  return news;
}

// --- what is told ----------------------------------------------------------------------------------------------------

QString TDuplicatesWork::ProgressText(const TDuplicateProgress& pProgress) const {
  const TValueFormat format = WindowFormat(fWish.fOptions->SizeUnit);
  QStringList parts{Text(std::string(pProgress.fPhase).c_str())};
  if (pProgress.fAllFiles > 0)
    parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "%1 of %2"))
                 .arg(ShownCount(pProgress.fFiles, format), ShownCount(pProgress.fAllFiles, format));
  if (pProgress.fAllBytes > 0)
    parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "%1 of %2"))
                 .arg(ShownSize(pProgress.fBytes, format), ShownSize(pProgress.fAllBytes, format));
  parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "%1 duplicates")).arg(ShownCount(pProgress.fDuplicates, format));
  return JoinStatus(parts);
}

// Files and folders, so far.
int64_t TDuplicatesWork::CountUnread() const {
  return static_cast<int64_t>(fSearched.fIncompleteFolders.size() + fResult->fNotes.size());
}

QString TDuplicatesWork::Status() const {
  const TValueFormat format = WindowFormat(fWish.fOptions->SizeUnit);
  QStringList parts;
  if (!fHasEnded && fPaused) parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Paused"));
  if (!fIsListed) {
    int64_t files = 0;
    for (const TListing& listing : fListings) files += listing.fSearch->GetProgress().fFiles;
    parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Looking for files: %1")).arg(ShownCount(files, format));
    return JoinStatus(parts);
  }
  if (!fHasEnded) {
    if (fSearch) parts << ProgressText(fSearch->GetProgress());
    return JoinStatus(parts);
  }
  parts << FromUtf8Text(AreUnique() ? PostScanActions::FoundSummary(fResult->fUnique, format)
                                    : PostScanActions::DuplicatesSummary(*fResult, AreFolders(), format));
  parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "among %1 files")).arg(ShownCount(fSearched.fFiles, format));
  if (fCancelled) parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "stopped"));
  if (fHasFoundEnough)
    parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "ended at the limit of the option SearchLimit"));
  if (const int64_t unread = CountUnread(); unread > 0)
    parts << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "incomplete: %1 could not be read"))
                 .arg(ShownCount(unread, format));
  return JoinStatus(parts);
}

QString TDuplicatesWork::EmptyText() const {
  if (!fHasEnded) return Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Nothing found yet."));
  if (fCancelled) return Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Stopped before anything was found."));
  if (const int64_t unread = CountUnread(); unread > 0)
    return Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Nothing found, but %1 could not be read."))
        .arg(ShownCount(unread, WindowFormat(fWish.fOptions->SizeUnit)));
  if (AreUnique()) return Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Every file is there more than once."));
  if (AreFolders()) return Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "No two folders are equal."));
  return Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "No file is there twice."));
}

QStringList TDuplicatesWork::Problems() const {
  QStringList problems;
  for (const TListing& listing : fListings) {
    AddProblems(problems, *listing.fSearch, fIsListed);
    if (fIsListed && listing.fFilter)
      for (const std::u16string& warning : listing.fFilter->GetWarnings()) problems << Shown(warning);
  }
  for (const Search::TDuplicateNote& note : fResult->fNotes) AddProblem(problems, note.fPath, note.fText);
  if (fHasEnded && fCache && !fCache->Problem().empty())
    problems << Text(QT_TRANSLATE_NOOP("TDuplicatesWork", "Checksums are computed anew, or not kept. %1"))
                    .arg(FromUtf8Text(fCache->Problem()));
  return problems;
}

void TDuplicatesWork::Export(const CommandLine::TExportRequest& pRequest, TGlobalOptions pOptions,
                             const PostScanActions::TExportRun& pRun) {
  std::shared_ptr<const TDuplicateRows> rows;
  {
    const std::lock_guard lock(fLock);
    rows = MakeDuplicateRows(fResult, AreUnique(), fOrder.fColumn, fOrder.fDescending);
  }
  const TValueFormat format = WindowFormat(pOptions.SizeUnit);
  const std::string stopped = fCancelled ? " - cancelled" : "";
  if (AreUnique()) {
    PostScanActions::TSearchResults results;
    results.fTitle = u"Files without a duplicate";
    for (size_t i = 0; i < rows->Count(); ++i) results.fItems.push_back(rows->File(i));
    results.fSummary = PostScanActions::FoundSummary(results.fItems, format) + stopped;
    return PostScanActions::ExportSearchResults(results, pRequest, pOptions, pRun);
  }
  PostScanActions::TDuplicateResults results;
  results.fTitle = AreFolders() ? u"Equal folders" : u"Duplicate files";
  for (size_t i = 0; i < rows->Count(); ++i) results.fFound.fGroups.push_back(rows->Group(i));
  results.fFound.fWasted = rows->fResult->fWasted;
  results.fSummary = PostScanActions::DuplicatesSummary(results.fFound, AreFolders(), format) + stopped;
  PostScanActions::ExportDuplicates(results, pRequest, pOptions, pRun);
}

}  // namespace Vantrel::Window
