#pragma once

// Says which of the found files may have duplicates, before any is read.

#include <vector>

#include "search/duplicates/DuplicateSettings.h"

namespace Vantrel::Search {

struct TCandidates {
  // The files that share with others what is compared without reading. In the order in which they were found, since
  // neighbours lie near each other on the disk.
  std::vector<TRef<TDuplicateFile>> fFiles;
  // Files that share it with no other. Only if files without duplicates are searched for.
  std::vector<TFoundItem> fAlone;
};

// A file that was found by two paths is one file.
TCandidates FindCandidates(std::vector<TFoundItem> pItems, const TDuplicateSearchSettings& pSettings);

// Sorts for reading on a rotating disk.
void SortByPlaceOnDisk(std::vector<TRef<TDuplicateFile>>& pFiles);

}  // namespace Vantrel::Search
