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
      : fFiles(pFiles), fBegin(pBegin), fCount(std::min(kMost, pEnd - pBegin)) {}

  size_t Count() const { return fCount; }
  TFileSet All() const { return ~TFileSet{0} >> (kMost - fCount); }
  const TFileTable& Files() const { return fFiles; }
  const TFileRecord& operator[](size_t pIndex) const { return fFiles[fBegin + pIndex]; }
  std::u16string_view NameOf(size_t pIndex) const { return fFiles.NameAt(fBegin + pIndex); }
  // The names of all files, one behind the other.
  std::u16string_view Names() const { return fFiles.NamesOf(fBegin, fBegin + fCount); }
  size_t EndOfName(size_t pIndex) const { return BeginOfName(pIndex) + (*this)[pIndex].fNameLength; }  // in Names
  // The file whose name holds this place of Names.
  size_t FileAt(size_t pPlace) const {
    size_t first = 0;
    for (size_t last = fCount - 1; first < last;) {
      const size_t middle = (first + last + 1) / 2;
      if (BeginOfName(middle) <= pPlace)
        first = middle;
      else
        last = middle - 1;
    }
    return first;
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
  size_t BeginOfName(size_t pIndex) const { return (*this)[pIndex].fNameOffset - (*this)[0].fNameOffset; }

  const TFileTable& fFiles;
  const size_t fBegin;
  const size_t fCount;
};

}  // namespace Vantrel::Search
