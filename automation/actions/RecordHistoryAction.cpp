#include "automation/actions/RecordHistoryAction.h"

#include "export/history/HistoryDatabase.h"

namespace Vantrel::PostScanActions {

using Vantrel::History::THistoryDatabaseReaderWriter;

void TRecordHistoryPostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top || (pRoot.GetState() & rsCancelled) != 0 || (top->GetFolderState() & fsIsXMLImport) != 0) return;
  // The title is the path with its wildcards, so its history differs from that of the whole folder.
  THistoryDatabaseReaderWriter(fVersion).WriteRootHistoryData(fDatabase, pRoot.GetTitle(), pRoot);
}

}  // namespace Vantrel::PostScanActions
