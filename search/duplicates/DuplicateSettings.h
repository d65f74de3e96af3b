#pragma once

// What a search for duplicates is told, and what it tells.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "scan/engine/ThreadPool.h"
#include "search/duplicates/ChecksumCache.h"
#include "search/duplicates/DuplicateModes.h"
#include "search/duplicates/DuplicatesGroupGenerator.h"
#include "search/duplicates/HashUtils.h"

namespace Vantrel::Search {

struct TDuplicateSearchSettings {
  TDuplicatesSearchMode fSearchMode = TDuplicatesSearchMode::DuplicateFiles;
  TDuplicatesCompareTypes fDuplicatesCompareTypes{TDuplicatesCompareType::ctFastChecksum};
  // How many bytes the first, small checksum reads at the beginning of a file. 0: there is no such pass.
  int64_t fSmallChecksumSize = 16 << 10;
  // Whether empty files, and folders without a file, have duplicates as well.
  bool fWithEmpty = false;
  // Compares the bytes of a group's files before the group is told.
  bool fVerify = false;
  // Checksums of earlier searches. nullptr: every file is read. Bytes are compared on the storage all the same.
  TRef<IChecksumCache> fCache{};
  // For folders: the paths that were searched, and the folders of which not everything was listed.
  std::vector<std::u16string> fTops{};
  std::vector<std::u16string> fIncompleteFolders{};
  int32_t fThreads = 1;
  // For a disk on which it is slow to read here and there: one file at a time, in the order of their places.
  bool fReadsInOrder = false;
  int32_t fPriority = 3;
  ThreadPool::TWorkerThreadPool::TSettings fPool{};  // for tests
  // Of files, or of folders if these are searched for; called on workers. It must return soon.
  TOnNewDuplicate fOnNewDuplicateAdded{};
};

// Why a file or folder is in no group, although its data may be equal to another's.
struct TDuplicateNote {
  std::u16string fPath;
  std::u16string fText;
  auto operator<=>(const TDuplicateNote&) const = default;
};

struct TDuplicateProgress {
  std::string_view fPhase;  // "Calculating small file checksums."
  int64_t fFiles = 0;       // done in this phase
  int64_t fAllFiles = 0;    // of this phase
  int64_t fBytes = 0;       // read in this phase
  int64_t fAllBytes = 0;    // at most, of this phase; 0: not known
  int64_t fDuplicates = 0;  // found so far
};

// One name of a file in a group, or one folder.
struct TDuplicateName {
  TRef<TDuplicateFile> fFile;
  // Another name of a file that stands before it in the group, so that it takes no space of its own.
  bool fIsLink = false;
};

// Two or more equal files, with all their names, or equal folders, in the order of their paths.
struct TDuplicateGroup {
  int64_t fSize = 0;  // of each
  // What would be free if only the first was kept.
  int64_t fWasted = 0;
  std::vector<TDuplicateName> fNames;
};

struct TDuplicateResult {
  // The most wasteful first, then by the paths of the first file.
  std::vector<TDuplicateGroup> fGroups;
  int64_t fWasted = 0;  // by all groups; what is inside of an equal folder counts once
  // For UniqueFiles: the files that are in no group, in no order.
  std::vector<TFoundItem> fUnique;
  std::vector<TDuplicateNote> fNotes;  // sorted
};

}  // namespace Vantrel::Search
