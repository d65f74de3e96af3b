#include "presentation/lists/DriveList.h"

#include <algorithm>
#include <utility>

#include "model/columns/SizeData.h"
#include "platform/files/Paths.h"

namespace Vantrel::Presentation {

namespace {

std::vector<TListColumn> Columns() {
  // On systems whose paths begin with a slash, drives are identified by their devices.
  const std::u16string label = NativePathDelimiter() == u'/' ? u"Device" : u"Label";
  return {{u"Drive", TColumn::mdFullPath},      {label, TColumn::mdName},   {u"File System", TColumn::mdName},
          {u"Total", TColumn::mdSize},          {u"Used", TColumn::mdSize}, {u"Free", TColumn::mdSize},
          {u"% Used", TColumn::mdPercentOfRoot}};
}

TListRow RowOf(const TVolumeInformation& pDrive) {
  TListRow row{{pDrive.fMountPoint, pDrive.fLabel, pDrive.fFileSystem}, pDrive.fMountPoint};
  if (pDrive.fTotalBytes <= 0) return row;
  row.fValues.emplace_back(pDrive.fTotalBytes);
  row.fValues.emplace_back(pDrive.fUsedBytes);
  row.fValues.emplace_back(pDrive.fFreeBytes);
  // The base is the space that the user can have. Space reserved for the system is never free, so a full drive shows
  // 100 %.
  const int64_t usable = std::max<int64_t>(pDrive.fUsedBytes + pDrive.fFreeBytes, 1);
  row.fValues.emplace_back(ShareOfWhole(pDrive.fUsedBytes, usable));
  return row;
}

}  // namespace

TList DriveList() {
  return DriveList(ListDrives());
}

TList DriveList(std::span<const TVolumeInformation> pDrives) {
  TList list{u"Drives", Columns(), {}};
  for (const TVolumeInformation& drive : pDrives) {
    list.fRows.push_back(RowOf(drive));
    list.fRows.back().fValues.resize(list.fColumns.size());
  }
  return list;
}

}  // namespace Vantrel::Presentation
