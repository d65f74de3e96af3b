#pragma once

// A search that runs beside the window, and what it has found.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"
#include "window/panes/FoundWork.h"
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

struct TSearchNews : TFoundNews {
  std::optional<Presentation::TList> fList;  // none when the list is still the same
};

// Its own order is by size, the largest first.
class TSearchWork final : public TFoundWork {
 public:
  // More rows are counted but not listed. Exports have all of them.
  static constexpr size_t kMostRows = 5000;

  explicit TSearchWork(TSearchWish pWish) : fWish(std::move(pWish)) {}
  ~TSearchWork() override;

  void Start() override;
  std::unique_ptr<TFoundNews> Look(const TFoundOrder& pOrder) override;
  void Export(const CommandLine::TExportRequest& pRequest, TGlobalOptions pOptions,
              const PostScanActions::TExportRun& pRun) override;
  void Cancel() override;

 private:
  QString Status(const Search::TSearchProgress& pProgress, bool pHasEnded) const;

  const TSearchWish fWish;
  std::mutex fSearchLock;  // the reference, not the search itself
  std::shared_ptr<Search::TFileSearch> fSearch;
  std::atomic<bool> fCancelled{false};
  TRef<IScanRoots> fRoots;  // of a search of the storage

  std::mutex fLock;  // what follows
  std::vector<Search::TFoundItem> fFound;
  TFoundOrder fOrder;
  bool fIsListed = false;
  QString fNote;  // about what is searched
};

}  // namespace Vantrel::Window
