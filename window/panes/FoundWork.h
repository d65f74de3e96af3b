#pragma once

// What a pane asks of a search that runs beside the window.

#include <QString>
#include <QStringList>
#include <memory>
#include <utility>

#include "automation/actions/FileExportAction.h"
#include "model/options/GlobalOptions.h"
#include "search/files/FileSearch.h"
#include "window/models/Background.h"

namespace Vantrel::Window {

// By one of the list's columns; -1: as the search itself orders it.
struct TFoundOrder {
  int fColumn = -1;
  bool fDescending = true;
  bool operator==(const TFoundOrder&) const = default;
};

// What a look at the search has brought. Each kind of search adds its list.
struct TFoundNews {
  virtual ~TFoundNews() = default;
  QString fStatus;    // one line
  QString fProblems;  // what could not be read, a line each
  bool fHasEnded = false;
};

// All calls but Cancel take time and are for other threads than the window's.
class TFoundWork {
 public:
  virtual ~TFoundWork() = default;
  // EQueryError when the query cannot be read, other exceptions when the target cannot be searched.
  virtual void Start() = 0;
  virtual std::unique_ptr<TFoundNews> Look(const TFoundOrder& pOrder) = 0;
  // Writes what was found so far, in the order of the list.
  virtual void Export(const CommandLine::TExportRequest& pRequest, TGlobalOptions pOptions,
                      const PostScanActions::TExportRun& pRun) = 0;
  // Any thread. Returns at once.
  virtual void Cancel() = 0;
};

// A search that is given up ends on another thread, since that takes time when a storage hangs.
template <class TWork, class TWish>
std::shared_ptr<TWork> CreateWork(TWish pWish) {
  return {new TWork(std::move(pWish)), [](TWork* pWork) {
            pWork->Cancel();
            LongWork().start([pWork] { delete pWork; });
          }};
}

// Adds lines of what a search could not read, as far as lines have room, and its warnings when it has ended.
void AddProblems(QStringList& pLines, const Search::TFileSearch& pSearch, bool pHasEnded);
void AddProblem(QStringList& pLines, std::u16string_view pPath, std::u16string_view pText);

// The parts of a status line, with dots between them.
inline QString JoinStatus(const QStringList& pParts) {
  return pParts.join(QStringLiteral("   ·   "));
}

}  // namespace Vantrel::Window
