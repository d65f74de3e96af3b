#include "window/panes/SearchWork.h"

#include <QCoreApplication>
#include <algorithm>
#include <iterator>
#include <span>

#include "automation/actions/SearchResults.h"
#include "model/roots/ScanConfiguration.h"
#include "model/roots/Storage.h"
#include "model/tree/TreeWalk.h"
#include "presentation/lists/FoundList.h"
#include "search/files/FileFactsReader.h"
#include "search/query/Parser.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

namespace {

constexpr TColumn kColumns[] = {TColumn::mdName,       TColumn::mdSize,      TColumn::mdLastChange,
                                TColumn::mdParentPath, TColumn::mdAllocated, TColumn::mdExtension,
                                TColumn::mdLastAccess, TColumn::mdCreation};

QString Text(const char* pText) {
  return QCoreApplication::translate("TSearchWork", pText);
}

bool HoldsFiles(IFolderData& pTop) {
  TTreeWalkSettings settings;
  settings.fShowsFiles = true;
  settings.fOrder = TSiblingOrder::soAny;
  return !TTreeWalk(settings).ForEach(pTop, [](const TTreeRow& pRow) { return !pRow.IsFile(); });
}

}  // namespace

TSearchWork::~TSearchWork() {
  fSearch = nullptr;
  if (fRoots) fRoots->Dispose();
}

void TSearchWork::Start() {
  using Search::TFileFactsReader;
  IHierarchicalRoot& root = *fWish.fPlace.fRoot;
  const bool isLoaded = (root.GetState() & rsIsXMLImport) != 0;
  Search::TFileSearchSettings settings;
  settings.fMostFound = fWish.fOptions->SearchLimit;
  Search::TQuerySettings query;
  query.fNormalizesUnicode = fWish.fOptions->NormalizeUnicode;
  settings.fExpression =
      AdaptExpression(Search::TDSMExpressionParser(query).Parse(fWish.fQuery),
                      isLoaded && !fWish.fOnDisk ? TFileFactsReader::kOfTree : TFileFactsReader::kOfStorage);
  settings.fThreads = fWish.fOptions->MaximumThreads;
  settings.fPriority = fWish.fOptions->ThreadPriority;
  settings.fEnumeratorOptions = EnumeratorOptionsOf(*fWish.fOptions);
  const auto search = std::make_shared<Search::TFileSearch>(std::move(settings));
  if (fWish.fOnDisk) {
    fRoots = fWish.fCreateRoots(fWish.fOptions);
    search->AddPath(*fRoots->CreateRoot(fWish.fPlace.fFolder->GetFullPath()));
  } else {
    const TRef<IFolderData> top = root.GetTopFolder();
    if (top && top->GetFiles() > 0 && !HoldsFiles(*top))
      fNote = Text(QT_TRANSLATE_NOOP("TSearchWork", "The tree holds no single files, so only folders are searched."));
    search->AddTree(fWish.fPlace.fRoot, isLoaded ? nullptr : root.GetStorage());
  }
  search->Start();
  const std::lock_guard lock(fSearchLock);
  fSearch = search;
  if (fCancelled) search->Cancel();
}

void TSearchWork::Cancel() {
  fCancelled = true;
  const std::lock_guard lock(fSearchLock);
  if (fSearch) fSearch->Cancel();
}

std::unique_ptr<TFoundNews> TSearchWork::Look(const TFoundOrder& pOrder) {
  const std::lock_guard lock(fLock);
  auto news = std::make_unique<TSearchNews>();
  news->fHasEnded = fSearch->WaitForEnd(0);
  std::vector<Search::TFoundItem> found = fSearch->TakeFound();
  if (!found.empty() || !(pOrder == fOrder) || !fIsListed) {
    std::move(found.begin(), found.end(), std::back_inserter(fFound));
    Search::SortFoundItems(fFound);
    if (pOrder.fColumn >= 0)
      Presentation::SortFound(fFound, kColumns[static_cast<size_t>(pOrder.fColumn)], pOrder.fDescending);
    fOrder = pOrder;
    fIsListed = true;
    const std::span<const Search::TFoundItem> shown(fFound.data(), std::min(fFound.size(), kMostRows));
    news->fList = Presentation::FoundList(u"Found by " + fWish.fQuery, shown, kColumns);
  }
  news->fStatus = Status(fSearch->GetProgress(), news->fHasEnded);
  QStringList problems;
  AddProblems(problems, *fSearch, news->fHasEnded);
  news->fProblems = problems.join(u'\n');
  return news;
}

QString TSearchWork::Status(const Search::TSearchProgress& pProgress, bool pHasEnded) const {
  const TValueFormat format = WindowFormat(fWish.fOptions->SizeUnit);
  QStringList parts;
  if (!pHasEnded) parts << Text(QT_TRANSLATE_NOOP("TSearchWork", "Searching…"));
  parts << FromUtf8Text(PostScanActions::FoundSummary(fFound, format));
  if (fFound.size() > kMostRows)
    parts << Text(QT_TRANSLATE_NOOP("TSearchWork", "the first %1 are shown")).arg(ShownCount(kMostRows, format));
  parts << Text(QT_TRANSLATE_NOOP("TSearchWork", "among %1 files and %2 folders"))
               .arg(ShownCount(pProgress.fFiles, format), ShownCount(pProgress.fFolders, format));
  if (pHasEnded && fSearch->WasCancelled()) parts << Text(QT_TRANSLATE_NOOP("TSearchWork", "stopped"));
  if (pHasEnded && fSearch->HasFoundEnough())
    parts << Text(QT_TRANSLATE_NOOP("TSearchWork", "ended at the limit of the option SearchLimit"));
  if (pProgress.fErrors > 0)
    parts << Text(QT_TRANSLATE_NOOP("TSearchWork", "incomplete: %1 could not be read"))
                 .arg(ShownCount(pProgress.fErrors, format));
  QString text = JoinStatus(parts);
  if (!fNote.isEmpty()) text += QStringLiteral("   ·   ") + fNote;
  if (!pHasEnded && !pProgress.fLastFolder.empty()) text += QStringLiteral("   ") + Shown(pProgress.fLastFolder);
  return text;
}

void TSearchWork::Export(const CommandLine::TExportRequest& pRequest, TGlobalOptions pOptions,
                         const PostScanActions::TExportRun& pRun) {
  PostScanActions::TSearchResults results;
  results.fTitle = u"Found by " + fWish.fQuery;
  {
    const std::lock_guard lock(fLock);
    results.fItems = fFound;
  }
  results.fSummary = PostScanActions::FoundSummary(results.fItems, WindowFormat(pOptions.SizeUnit));
  PostScanActions::ExportSearchResults(results, pRequest, pOptions, pRun);
}

}  // namespace Vantrel::Window
