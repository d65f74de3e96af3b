#pragma once

// The dictionaries of an index: which folder a record number stands for, and what is in it.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Vantrel::Ntfs {

constexpr uint32_t kNoName = ~uint32_t{0};

// Lists of names by the record number of their folder. Made in two passes, so that all lists lie in one array: each
// name is counted, then each is put.
class TRecordDictionary {
 public:
  explicit TRecordDictionary(size_t pRecords) : fEnds(pRecords) {}
  void Count(uint32_t pFolder) { ++fEnds[pFolder]; }
  // After the last Count.
  void BeginPutting() {
    uint32_t begin = 0;
    for (uint32_t& end : fEnds) {
      const uint32_t count = end;
      end = begin;  // moves to the list's end with each name
      begin += count;
    }
    fNames.resize(begin);
  }
  void Put(uint32_t pFolder, uint32_t pName) { fNames[fEnds[pFolder]++] = pName; }
  // The names in a folder, in the order in which they were put.
  std::span<const uint32_t> Of(uint32_t pFolder) const {
    const uint32_t begin = pFolder == 0 ? 0 : fEnds[pFolder - 1];
    return std::span(fNames).subspan(begin, fEnds[pFolder] - begin);
  }

 private:
  std::vector<uint32_t> fEnds;
  std::vector<uint32_t> fNames;
};

class TSubFolderDictionary : public TRecordDictionary {
  using TRecordDictionary::TRecordDictionary;
};
class TFileDictionary : public TRecordDictionary {
  using TRecordDictionary::TRecordDictionary;
};

// The one place of each folder: the name by which it is in the tree.
class TFolderDictionary {
 public:
  explicit TFolderDictionary(size_t pRecords) : fPlaces(pRecords, kNoName) {}
  uint32_t PlaceOf(uint32_t pFolder) const { return fPlaces[pFolder]; }
  void SetPlace(uint32_t pFolder, uint32_t pName) { fPlaces[pFolder] = pName; }

 private:
  std::vector<uint32_t> fPlaces;
};

}  // namespace Vantrel::Ntfs
