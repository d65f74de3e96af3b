#pragma once

// A search that runs beside the window, and what it has found.

#include <QString>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "automation/actions/SearchResults.h"
#include "model/options/GlobalOptions.h"
#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"
#include "search/files/FileSearch.h"
#include "window/panes/Pane.h"

namespace Vantrel::Window {

// What is searched, and how.
struct TSearchWish {
  std::u16string fQuery;
  TPlace fPlace;
  bool fOnDisk = false;  // the place's folder on its storage; else the whole tree of its root
  std::shared_ptr<const TGlobalOptions> fOptions;
  // Makes a list of roots for a search of the storage.
  std::function<TRef<IScanRoots>(std::shared_ptr<const TGlobalOptions>)> fCreateRoots;
};

// The order of the list. Without a column: by size, the largest first.
struct TSearchOrder {
  std::optional<TColumn> fColumn;
  bool fDescending = true;
  bool operator==(const TSearchOrder&) const = default;
};

// What a look at the search has brought.
struct TSearchNews {
  std::optional<Presentation::TList> fList;  // none when the list is still the same
  QString fStatus;                           // one line
  QString fProblems;                         // what could not be read, a line each
  bool fHasEnded = false;
};

// All calls but Cancel take time and are for other threads than the window's.
class TSearchWork {
 public:
  // More rows are counted but not listed. Exports have all of them.
  static constexpr size_t kMostRows = 5000;

  // A search that is given up ends on another thread, since that takes time when a storage hangs.
  static std::shared_ptr<TSearchWork> Create(TSearchWish pWish);

  // EQueryError when the query cannot be read, ENotSupportedException when the target cannot answer it.
  void Start();
  TSearchNews Look(const TSearchOrder& pOrder);
  // Writes what was found so far, in the order of the list.
  void Export(const CommandLine::TExportRequest& pRequest, TGlobalOptions pOptions,
              const PostScanActions::TExportRun& pRun);
  // Window thread.
  void Cancel();
  const TSearchWish& Wish() const { return fWish; }

 private:
  explicit TSearchWork(TSearchWish pWish) : fWish(std::move(pWish)) {}
  ~TSearchWork();
  QString Status(const Search::TSearchProgress& pProgress, bool pHasEnded) const;

  const TSearchWish fWish;
  std::mutex fSearchLock;  // the reference, not the search itself
  std::shared_ptr<Search::TFileSearch> fSearch;
  std::atomic<bool> fCancelled{false};
  TRef<IScanRoots> fRoots;  // of a search of the storage

  std::mutex fLock;  // what follows
  std::vector<Search::TFoundItem> fFound;
  TSearchOrder fOrder;
  bool fIsListed = false;
  QString fNote;  // about what is searched
};

}  // namespace Vantrel::Window
