#pragma once

#include "model/AssocSizeArray.h"
#include "model/FileAges.h"
#include "model/FileTable.h"
#include "model/KeyTotals.h"
#include "model/RootInterfaces.h"

namespace Kiv {

// The statistics of a folder's own files, worked out from the table of the files. A folder without sub-folders, and the
// "[Files]" node of one with them, need none of their own as long as the scan keeps the files: that is most of all
// folders, of whose statistics few are ever looked at. Any thread.
// What working them out needs, for one thread: whoever asks for folder after folder keeps one, and spares most look-ups.
struct TFileStatisticsWork {
  TExtensionKeys fExtensionKeys;
  TKeyTotals fTotals;
};
TRef<ICustomAssocSizeArray> OwnersOfFiles(const TFileTable* pFiles, TFileStatisticsWork& pWork);
TRef<ICustomAssocSizeArray> ExtensionsOfFiles(const TFileTable* pFiles, TFileStatisticsWork& pWork);
// By the intervals, date kind and moment of the root's scan.
TRef<IFileAgeDistribution> AgesOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration,
                                       TFileStatisticsWork& pWork);

// The date of a file that its age is counted from.
TKivFileTime DateOfKind(TDateType pType, TKivFileTime pLastAccess, TKivFileTime pLastChange, TKivFileTime pCreation);

// The three together, as a folder holds them; nullptr for what its root does not collect.
struct TFolderStatistics {
  TRef<ICustomAssocSizeArray> fUsers;
  TRef<ICustomAssocSizeArray> fExtensions;
  TRef<IFileAgeDistribution> fAges;
};
TFolderStatistics StatisticsOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration,
                                    TFileStatisticsWork& pWork);

}  // namespace Kiv
