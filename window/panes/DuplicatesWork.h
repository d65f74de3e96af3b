#pragma once

// A search for duplicates that runs beside the window, and what it has found.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "automation/actions/DuplicateResults.h"
#include "search/duplicates/DuplicateSearch.h"
#include "window/models/DuplicatesModel.h"
#include "window/panes/FoundWork.h"
#include "window/panes/Pane.h"

namespace Vantrel::Window {

// What is searched for, and where.
struct TDuplicatesWish {
  CommandLine::TDuplicatesRequest fRequest;
  std::u16string fQuery;  // only among what it finds; not for folders
  // The folders are listed again on their storages, as the filters of their roots say.
  std::vector<TPlace> fPlaces;
  std::shared_ptr<const TGlobalOptions> fOptions;
  std::function<TRef<IScanRoots>(std::shared_ptr<const TGlobalOptions>)> fCreateRoots;
};

struct TDuplicatesNews : TFoundNews {
  std::shared_ptr<const TDuplicateRows> fRows;  // nullptr when they are still the same
  QString fEmptyText;                           // what a list without rows says
  // Of the present phase, from 0 to 1; below 0: not known.
  double fDone = -1;
};

// First the folders are listed, then their files are compared. Groups of files can be seen while others are compared,
// unless their bytes are compared as well at the end. Its own order is by waste.
class TDuplicatesWork final : public TFoundWork {
 public:
  explicit TDuplicatesWork(TDuplicatesWish pWish);
  ~TDuplicatesWork() override;

  void Start() override;
  std::unique_ptr<TFoundNews> Look(const TFoundOrder& pOrder) override;
  void Export(const CommandLine::TExportRequest& pRequest, TGlobalOptions pOptions,
              const PostScanActions::TExportRun& pRun) override;
  void Cancel() override;
  // Nothing more is computed until the search goes on or is cancelled. Any thread; returns at once.
  void SetPaused(bool pPaused);

 private:
  struct TListing {
    TRef<IScanFilter> fFilter;
    std::shared_ptr<Search::TFileSearch> fSearch;
  };
  struct TArrivals;

  bool AreUnique() const { return fWish.fRequest.fMode == Search::TDuplicatesSearchMode::UniqueFiles; }
  bool AreFolders() const { return fWish.fRequest.fMode == Search::TDuplicatesSearchMode::DuplicateFolders; }
  void StartListing(const TPlace& pPlace, const Search::TAdaptedExpression& pExpression);
  void Publish(std::shared_ptr<Search::TDuplicateSearch> pSearch);
  // Each takes the work one step on, if it can go on.
  void TakeListed();
  void Compare();
  void TakeArrivals();
  void TakeResult();
  void SetResult(Search::TDuplicateResult pResult);
  int64_t CountUnread() const;
  QString Status() const;
  QString EmptyText() const;
  QString ProgressText(const Search::TDuplicateProgress& pProgress) const;
  QStringList Problems() const;

  const TDuplicatesWish fWish;
  std::atomic<bool> fCancelled{false};
  std::atomic<bool> fPaused{false};
  std::mutex fSearchLock;  // the references to searches, not the searches themselves
  std::vector<TListing> fListings;
  std::shared_ptr<Search::TDuplicateSearch> fSearch;

  std::mutex fLock;  // what follows
  TRef<IScanRoots> fRoots;
  PostScanActions::TSearchedFiles fSearched;
  TRef<History::TChecksumDatabase> fCache;
  const std::shared_ptr<TArrivals> fArrivals;
  std::shared_ptr<const Search::TDuplicateResult> fResult;  // so far, or in the end
  TFoundOrder fOrder;
  bool fIsListed = false;  // all folders are
  bool fHasEnded = false;
  bool fIsShown = false;  // fResult, in fOrder
  bool fHasFoundEnough = false;
};

}  // namespace Vantrel::Window
