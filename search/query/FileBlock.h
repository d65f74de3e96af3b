#pragma once

// Files that stand beside each other in a folder's table, and sets of them, for conditions that test many files at
// once.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "model/tree/FileTable.h"

namespace Vantrel::Search {

// Some files of a block: bit i stands for the block's file i.
using TFileSet = uint64_t;

// At most kMost files of a table, and at least one. Valid as long as the table is held. Any thread.
class TFileBlock {
 public:
  static constexpr size_t kMost = 64;

  // The files from pBegin on, but none at or behind pEnd.
  TFileBlock(const TFileTable& pFiles, size_t pBegin, size_t pEnd)
      : fFiles(pFiles),
        fBegin(pBegin),
        fCount(std::min(kMost, pEnd - pBegin)),
        fNames(pFiles.NamesOf(pBegin, pBegin + fCount)),
        fNamesBegin(pBegin == 0 ? 0 : pFiles[pBegin].fNameOffset) {}

  size_t Count() const { return fCount; }
  TFileSet All() const { return ~TFileSet{0} >> (kMost - fCount); }
  const TFileTable& Files() const { return fFiles; }
  const TFileRecord& operator[](size_t pIndex) const { return fFiles[fBegin + pIndex]; }
  std::u16string_view NameOf(size_t pIndex) const {
    return fNames.substr(BeginOfName(pIndex), (*this)[pIndex].fNameLength);
  }
  // The names of all files, one behind the other.
  std::u16string_view Names() const { return fNames; }
  size_t EndOfName(size_t pIndex) const { return BeginOfName(pIndex) + (*this)[pIndex].fNameLength; }  // in Names
  // The file whose name holds this place of Names. Names are about equally long, so the first guess is mostly near. Few
  // records are read, since most of them are not in the processor's caches.
  size_t FileAt(size_t pPlace) const {
    size_t file = pPlace * fCount / Names().size();
    while (BeginOfName(file) > pPlace) --file;
    while (EndOfName(file) <= pPlace) ++file;
    return file;
  }

  // The files of the set for which pTest says yes; it gets their indices.
  template <class TTest>
  static TFileSet Select(TFileSet pFiles, const TTest& pTest) {
    TFileSet selected = 0;
    for (TFileSet left = pFiles; left != 0; left &= left - 1) {
      const int index = std::countr_zero(left);
      selected |= TFileSet{pTest(static_cast<size_t>(index))} << index;
    }
    return selected;
  }

 private:
  size_t BeginOfName(size_t pIndex) const { return (*this)[pIndex].fNameOffset - fNamesBegin; }

  const TFileTable& fFiles;
  const size_t fBegin;
  const size_t fCount;
  const std::u16string_view fNames;
  const size_t fNamesBegin;  // in the table's text
};

}  // namespace Vantrel::Search
