#include "export/text/RowLimit.h"

namespace Vantrel::Exporting {

TMetaDataValue TRestOfFolder::GetValue(TColumn pColumn, TColumn pLeadingSize) const {
  switch (pColumn) {
    case TColumn::mdPercentOfParent:
      return ShareOfWhole(LeadingSizeOf(fValues, pLeadingSize), LeadingSizeOf(fOfParent, pLeadingSize));
    case TColumn::mdCompression:
    case TColumn::mdAverageFileSize:
      return {};  // no sums
    default:
      return ValueOfSizes(fValues, pColumn);
  }
}

TRowLimit::TVerdict TRowLimit::Take(const TTreeRow& pRow) {
  const auto level = static_cast<size_t>(pRow.fLevel);
  if (fMost <= 0) return TVerdict::rvShow;
  if (fLeftOut >= 0 && pRow.fLevel > fLeftOut) return TVerdict::rvLeaveOut;
  fLeftOut = -1;
  if (!CloseFrom(level + 1)) return TVerdict::rvStop;
  const TEntryView view = pRow.View();
  const bool isFolder = !pRow.IsFile() && !pRow.fFolder.IsFileGroup();
  TSizeValues values = view.GetValues();
  fLevels.resize(level + 2);
  fLevels[level + 1].fRest.fLevel = pRow.fLevel + 1;
  fLevels[level + 1].fRest.fOfParent = values;
  TLevel& here = fLevels[level];
  if (level == 0 || ++here.fRows <= fMost) return TVerdict::rvShow;
  // A folder counts itself, too.
  if (isFolder) ++values.fFolders;
  here.fRest.fLevel = pRow.fLevel;
  ++here.fRest.fRows;
  here.fRest.fValues += values;
  fLeftOut = pRow.fLevel;
  return TVerdict::rvLeaveOut;
}

// The innermost folder ends first.
bool TRowLimit::CloseFrom(size_t pLevel) {
  while (fLevels.size() > pLevel) {
    const TRestOfFolder rest = fLevels.back().fRest;
    fLevels.pop_back();
    if (rest.fRows > 0 && !fWriteRest(rest)) return false;
  }
  return true;
}

}  // namespace Vantrel::Exporting
