#pragma once

// The records of one statistic of one folder, packed and sorted by key.

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <span>
#include <vector>

#include "model/columns/SizeData.h"
#include "model/statistics/InternedKeys.h"

namespace Vantrel {

// One key of a size table with its numbers. The key is an interned extension or owner, or an age interval's index.
struct TKeyedSizeValues {
  TKeyId fKey = 0;
  TBasicSizeValues fValues;
};

// The records of one statistic of one folder. A scan of millions of folders has several tables per folder, most with
// one to five keys. So nothing is allocated before the first record. Few records lie packed in one heap block, sorted
// by key. Merging a child's keys is then a walk over two short runs of memory. Beyond kMaxPacked keys the table becomes
// a hash map.
//
// A table has no lock; its owner guards it. It is 16 bytes. The owner may use the last 6 of them (see no_unique_address
// at the owners).
class TPackedSizeTable {
 public:
  static constexpr unsigned kMaxPacked = 16;

  TPackedSizeTable() = default;
  TPackedSizeTable(const TPackedSizeTable& pOther);
  TPackedSizeTable& operator=(const TPackedSizeTable&) = delete;
  ~TPackedSizeTable() { Clear(); }

  // Adds to the key's record. Creates the record if it is missing.
  void Add(TKeyId pKey, const TBasicSizeValues& pValues) { FindOrCreate(pKey) += pValues; }
  // The same for many keys, which must be sorted, each key once. Allocates nothing when all keys are present.
  void AddSorted(std::span<const TKeyedSizeValues> pEntries);
  // Adds or subtracts every record of the other table. A record that is missing here is created first.
  void AddTable(const TPackedSizeTable& pOther);
  void SubtractTable(const TPackedSizeTable& pOther);
  void Set(TKeyId pKey, const TBasicSizeValues& pValues) { FindOrCreate(pKey) = pValues; }
  // nullptr when the key has no record. Valid until the next change.
  const TBasicSizeValues* Find(TKeyId pKey) const;
  void Clear();

  // Calls pVisit(key, values) for every record, including those at zero.
  template <class TVisitor>
  void ForEach(TVisitor&& pVisit) const {
    if (IsPacked()) {
      for (const TKeyedSizeValues& record : Packed()) pVisit(record.fKey, record.fValues);
    } else {
      for (const auto& [key, values] : *fMap) pVisit(key, values);
    }
  }

  // The number of records including those at zero, and the bytes on the heap, for measuring.
  size_t RecordCount() const { return IsPacked() ? fCount : fMap->size(); }

 private:
  using TMap = boost::unordered_flat_map<TKeyId, TBasicSizeValues>;
  static constexpr uint8_t kIsMap = 0xFF;  // in fCapacity

  bool IsPacked() const { return fCapacity != kIsMap; }
  std::span<const TKeyedSizeValues> Packed() const { return {fRecords, fCount}; }
  TBasicSizeValues& FindOrCreate(TKeyId pKey);
  unsigned AddPresent(std::span<const TKeyedSizeValues> pEntries);
  void InsertMissing(std::span<const TKeyedSizeValues> pEntries, unsigned pMissing);
  void Reserve(unsigned pCount);
  void BecomeMap(size_t pExpected);

  union {
    TKeyedSizeValues* fRecords = nullptr;
    TMap* fMap;
  };
  uint8_t fCount = 0;     // records in use while packed
  uint8_t fCapacity = 0;  // records allocated, or kIsMap
};

}  // namespace Vantrel
