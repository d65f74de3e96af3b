#pragma once

// The children of one folder for a view: listed, sorted and cut to length on another thread.

#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// Which children a view shows, and in which order.
struct TChildListSettings {
  static constexpr size_t kAllRows = std::numeric_limits<size_t>::max();

  bool fShowsFiles = true;
  // Whether a "[Files]" node is a row of its own. If not, its files stand beside the sub-folders.
  bool fShowsFileGroup = true;
  TColumn fSortColumn = TColumn::mdSize;  // equal ones: the largest first, then by name
  bool fDescending = true;
  size_t fMostRows = kAllRows;  // the first ones in this order
  std::u16string fWanted{};     // the name of an entry that is listed whatever its rank
};

// A child of the listed folder: a sub-folder, or a file of the table.
struct TChildRow {
  static constexpr uint32_t kNone = std::numeric_limits<uint32_t>::max();

  TRef<IFolderData> fFolder;  // nullptr for a file
  uint32_t fFile = kNone;     // the file's index in the table
};

// The children of a folder at one moment.
struct TChildList {
  std::vector<TChildRow> fRows;
  TRef<const TFileTable> fFiles;  // of the rows that are files
  int64_t fMoreRows = 0;          // children that the settings leave out
  TSizeValues fMore;              // and their sums
};

// Lists the children. With a comparison of the root, folders that have gone are rows too. Any thread, also during a
// scan. Returns an empty list soon after pIsCancelled returns true.
TChildList ListChildren(IFolderData& pFolder, const IHierarchicalRoot& pRoot, const TChildListSettings& pSettings,
                        const std::function<bool()>& pIsCancelled = {});

// A list of children in the making. A folder may have millions, so a view asks for the list and goes on.
class TFillChildrenFuture : public TInterfaced<IInterface> {
 public:
  using TCompletion = std::function<void(TFillChildrenFuture&, TChildList)>;

  // pCompletion is called on the thread that runs the future, unless it was cancelled.
  TFillChildrenFuture(TRef<IFolderData> pFolder, TRef<IHierarchicalRoot> pRoot, TChildListSettings pSettings,
                      TCompletion pCompletion)
      : fFolder(std::move(pFolder)),
        fRoot(std::move(pRoot)),
        fSettings(std::move(pSettings)),
        fCompletion(std::move(pCompletion)) {}

  // Makes the list on the calling thread. Called once, by whatever pool the view uses.
  void Run();
  // The list is no longer wanted. Any thread.
  void Cancel() noexcept { fCancelled.store(true, std::memory_order_relaxed); }
  bool IsCancelled() const noexcept { return fCancelled.load(std::memory_order_relaxed); }

 private:
  const TRef<IFolderData> fFolder;
  const TRef<IHierarchicalRoot> fRoot;
  const TChildListSettings fSettings;
  const TCompletion fCompletion;
  std::atomic<bool> fCancelled{false};
};

}  // namespace Vantrel
