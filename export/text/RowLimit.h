#pragma once

// Limits the rows of what lies in one folder, and sums up the others.

#include <cstdint>
#include <functional>
#include <vector>

#include "model/columns/SizeData.h"
#include "model/tree/TreeWalk.h"

namespace Vantrel::Exporting {

// What a limit leaves out of one folder's direct contents, in one row.
struct TRestOfFolder {
  int32_t fLevel = 0;  // of the row
  int64_t fRows = 0;
  TSizeValues fValues;    // all beneath them included
  TSizeValues fOfParent;  // those of the folder, which the share refers to

  // The row's value in a column; none for a column without a sum. Shares are of the leading size, mdSize or
  // mdAllocated.
  TMetaDataValue GetValue(TColumn pColumn, TColumn pLeadingSize) const;
};

// Takes the rows of a walk in their order, and tells which of them to show: the first ones of each folder, and what is
// beneath those.
class TRowLimit {
 public:
  using TWriteRest = std::function<bool(const TRestOfFolder&)>;
  enum class TVerdict : uint8_t { rvShow, rvLeaveOut, rvStop };

  // pMost is the number of rows of a folder, 0 for any number. pWriteRest is called after the last row of a folder that
  // has more. It stops the walk by returning false.
  TRowLimit(int64_t pMost, TWriteRest pWriteRest) : fMost(pMost), fWriteRest(std::move(pWriteRest)) {}

  TVerdict Take(const TTreeRow& pRow);
  // After the last row. False when a rest could not be written.
  bool Finish() { return CloseFrom(0); }

 private:
  // The folders on the way to the current row, by the level of what lies in them.
  struct TLevel {
    int64_t fRows = 0;
    TRestOfFolder fRest;
  };
  bool CloseFrom(size_t pLevel);

  const int64_t fMost;
  const TWriteRest fWriteRest;
  std::vector<TLevel> fLevels;
  int32_t fLeftOut = -1;  // the level of the row that is left out with all beneath it; -1: none is
};

}  // namespace Vantrel::Exporting
