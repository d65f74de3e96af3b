#include "model/tree/FileTable.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

namespace Vantrel {

TRef<const TFileTable> TFileTable::Create(const std::vector<TFileRecord>& pRecords, std::u16string_view pNames) {
  static_assert(sizeof(TFileTable) % alignof(TFileRecord) == 0, "the records stand right behind the object");
  const size_t recordBytes = pRecords.size() * sizeof(TFileRecord);
  const size_t nameBytes = pNames.size() * sizeof(char16_t);
  TRef<TFileTable> table(new (recordBytes + nameBytes) TFileTable(static_cast<uint32_t>(pRecords.size())));
  std::byte* room = reinterpret_cast<std::byte*>(table.get() + 1);
  std::memcpy(room, pRecords.data(), recordBytes);
  std::memcpy(room + recordBytes, pNames.data(), nameBytes);
  return table;
}

std::vector<uint32_t> TFileTable::SortedIndices() const {
  std::vector<uint32_t> indices(fCount);
  std::iota(indices.begin(), indices.end(), 0u);
  std::sort(indices.begin(), indices.end(), [this](uint32_t pA, uint32_t pB) {
    const TFileRecord& a = (*this)[pA];
    const TFileRecord& b = (*this)[pB];
    return a.fSize != b.fSize ? a.fSize > b.fSize : NameOf(a) < NameOf(b);
  });
  return indices;
}

const TFileRecord* TFileTable::Find(std::u16string_view pName) const {
  const TFileRecord* end = Records() + fCount;
  const TFileRecord* found =
      std::find_if(Records(), end, [&](const TFileRecord& pRecord) { return NameOf(pRecord) == pName; });
  return found == end ? nullptr : found;
}

bool TFileTableBuilder::Add(std::u16string_view pName, const TEntryValues& pValues, TKeyId pOwnerKey) {
  if (fNames.size() + pName.size() > std::numeric_limits<uint32_t>::max() ||
      pName.size() > std::numeric_limits<uint16_t>::max())
    return false;
  fRecords.push_back({pValues.fSize, pValues.fAllocated, pValues.fLastAccessDate, pValues.fLastChangeDate,
                      pValues.fCreationDate, pValues.fAttributes, pOwnerKey, static_cast<uint32_t>(fNames.size()),
                      static_cast<uint16_t>(pName.size())});
  fNames.append(pName);
  return true;
}

void TFileTableBuilder::Clear() {
  // Otherwise a folder of a million files would keep its worker's memory for the rest of the scan.
  constexpr size_t kKeptRecords = 16 * 1024;
  if (fRecords.capacity() > kKeptRecords) {
    fRecords = {};
    fNames = {};
  }
  fRecords.clear();
  fNames.clear();
}

TRef<const TFileTable> TFileTableBuilder::Build() const {
  return TFileTable::Create(fRecords, fNames);
}

}  // namespace Vantrel
