#include "model/statistics/PackedSizeTable.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

#include "platform/system/MemoryReserve.h"

namespace Vantrel {

// Records are moved with realloc and memmove.
static_assert(std::is_trivially_copyable_v<TKeyedSizeValues> && sizeof(TKeyedSizeValues) == 32);

namespace {

// Block sizes: exact for small tables, which most folders have, then steps of about a third. So growth costs little and
// wastes little.
constexpr std::array<uint8_t, 8> kCapacities = {1, 2, 3, 4, 6, 8, 12, TPackedSizeTable::kMaxPacked};

}  // namespace

TPackedSizeTable::TPackedSizeTable(const TPackedSizeTable& pOther) {
  if (!pOther.IsPacked()) {
    fMap = new TMap(*pOther.fMap);
    fCapacity = kIsMap;
  } else if (pOther.fCount > 0) {
    Reserve(pOther.fCount);
    std::memcpy(fRecords, pOther.fRecords, pOther.fCount * sizeof(TKeyedSizeValues));
    fCount = pOther.fCount;
  }
}

void TPackedSizeTable::Clear() {
  if (IsPacked()) {
    std::free(fRecords);
  } else {
    delete fMap;
  }
  fRecords = nullptr;
  fCount = 0;
  fCapacity = 0;
}

const TBasicSizeValues* TPackedSizeTable::Find(TKeyId pKey) const {
  if (!IsPacked()) {
    auto found = fMap->find(pKey);
    return found == fMap->end() ? nullptr : &found->second;
  }
  for (const TKeyedSizeValues& record : Packed()) {
    if (record.fKey >= pKey) return record.fKey == pKey ? &record.fValues : nullptr;
  }
  return nullptr;
}

TBasicSizeValues& TPackedSizeTable::FindOrCreate(TKeyId pKey) {
  if (IsPacked()) {
    unsigned position = 0;
    while (position < fCount && fRecords[position].fKey < pKey) ++position;
    if (position < fCount && fRecords[position].fKey == pKey) return fRecords[position].fValues;
    if (fCount < kMaxPacked) {
      Reserve(fCount + 1u);
      std::memmove(fRecords + position + 1, fRecords + position, (fCount - position) * sizeof(TKeyedSizeValues));
      fRecords[position] = {pKey, {}};
      ++fCount;
      return fRecords[position].fValues;
    }
    BecomeMap(fCount + 1u);
  }
  return (*fMap)[pKey];
}

void TPackedSizeTable::AddSorted(std::span<const TKeyedSizeValues> pEntries) {
  assert(std::is_sorted(pEntries.begin(), pEntries.end(),
                        [](const TKeyedSizeValues& pA, const TKeyedSizeValues& pB) { return pA.fKey < pB.fKey; }));
  if (IsPacked()) {
    unsigned missing = AddPresent(pEntries);
    if (missing == 0) return;
    if (fCount + missing <= kMaxPacked) {
      InsertMissing(pEntries, missing);
      return;
    }
    // The existing keys have been added. The others are added one by one below.
    std::array<TKeyId, kMaxPacked> before;
    unsigned count = fCount;
    for (unsigned i = 0; i < count; ++i) before[i] = fRecords[i].fKey;
    BecomeMap(count + missing);
    for (const TKeyedSizeValues& entry : pEntries) {
      if (!std::binary_search(before.begin(), before.begin() + count, entry.fKey)) Add(entry.fKey, entry.fValues);
    }
    return;
  }
  for (const TKeyedSizeValues& entry : pEntries) (*fMap)[entry.fKey] += entry.fValues;
}

// Adds the entries whose keys have a record. Returns the number of the others.
unsigned TPackedSizeTable::AddPresent(std::span<const TKeyedSizeValues> pEntries) {
  unsigned missing = 0;
  TKeyedSizeValues* record = fRecords;
  TKeyedSizeValues* end = fRecords + fCount;
  for (const TKeyedSizeValues& entry : pEntries) {
    while (record != end && record->fKey < entry.fKey) ++record;
    if (record != end && record->fKey == entry.fKey) {
      record->fValues += entry.fValues;
    } else {
      ++missing;
    }
  }
  return missing;
}

// Inserts the entries without a record from the back, so that every record moves once.
void TPackedSizeTable::InsertMissing(std::span<const TKeyedSizeValues> pEntries, unsigned pMissing) {
  Reserve(fCount + pMissing);
  TKeyedSizeValues* from = fRecords + fCount;
  TKeyedSizeValues* to = from + pMissing;
  fCount = static_cast<uint8_t>(fCount + pMissing);
  for (size_t i = pEntries.size(); i-- > 0 && to != from;) {
    const TKeyedSizeValues& entry = pEntries[i];
    while (from != fRecords && from[-1].fKey > entry.fKey) *--to = *--from;
    if (from == fRecords || from[-1].fKey != entry.fKey) *--to = entry;
  }
}

void TPackedSizeTable::AddTable(const TPackedSizeTable& pOther) {
  if (pOther.IsPacked()) {
    AddSorted(pOther.Packed());
    return;
  }
  if (IsPacked()) BecomeMap(pOther.fMap->size());
  for (const auto& [key, values] : *pOther.fMap) (*fMap)[key] += values;
}

void TPackedSizeTable::SubtractTable(const TPackedSizeTable& pOther) {
  pOther.ForEach([this](TKeyId pKey, const TBasicSizeValues& pValues) { FindOrCreate(pKey) -= pValues; });
}

// Makes room for pCount records while packed.
void TPackedSizeTable::Reserve(unsigned pCount) {
  if (pCount <= fCapacity) return;
  uint8_t capacity = *std::lower_bound(kCapacities.begin(), kCapacities.end(), pCount);
  void* block;
  while (!(block = std::realloc(static_cast<void*>(fRecords), capacity * sizeof(TKeyedSizeValues)))) MakeRoomOrThrow();
  fRecords = static_cast<TKeyedSizeValues*>(block);
  fCapacity = capacity;
}

void TPackedSizeTable::BecomeMap(size_t pExpected) {
  auto map = std::make_unique<TMap>();
  map->reserve(std::max<size_t>(pExpected, fCount + 1u));
  for (const TKeyedSizeValues& record : Packed()) map->emplace(record.fKey, record.fValues);
  std::free(fRecords);
  fMap = map.release();
  fCount = 0;
  fCapacity = kIsMap;
}

}  // namespace Vantrel
