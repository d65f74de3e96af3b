#include "automation/actions/RecordHistoryAction.h"

#include "export/history/HistoryDatabase.h"

namespace Vantrel::PostScanActions {

using Vantrel::History::THistoryDatabaseReaderWriter;

void TRecordHistoryPostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top || (pRoot.GetState() & rsCancelled) != 0 || (top->GetFolderState() & fsIsXMLImport) != 0) return;
  // The title of what was scanned is its path with the wildcards: another history than that of the whole folder.
  THistoryDatabaseReaderWriter(fVersion).WriteRootHistoryData(fDatabase, pRoot.GetTitle(), pRoot);
}

}  // namespace Vantrel::PostScanActions
