#pragma once

// The files of a folder in one packed table, and the builder of such tables.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/statistics/InternedKeys.h"
#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel {

// One file of a folder, without its name's text. A scan keeps millions of these, 56 bytes each.
struct TFileRecord {
  int64_t fSize;
  int64_t fAllocated;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  TKivFileTime fCreationDate;
  TAttributes fAttributes;
  TKeyId fOwnerKey;
  uint32_t fNameOffset;  // into the table's text, in UTF-16 units
  uint16_t fNameLength;
  uint16_t fReserved = 0;
};
static_assert(sizeof(TFileRecord) == 56);

// The files of one folder, packed. A scan keeps millions of files and makes a node of a file only on request. The table
// is immutable, so a reader that holds a reference needs no lock.
//
// Identity: a file is known by its folder's node and its name, as long as it exists. A refresh replaces the table, and
// the "[Files]" node comes and goes, but the folder's node stays (TEntryView::GetParentFolder gives it). An index or a
// record stands for a file only within its table; Find leads from the name to the record in another one.
class TFileTable : public TInterfaced<IInterface> {
 public:
  // The names in pNames stand in the order of the records, without gaps.
  static TRef<const TFileTable> Create(const std::vector<TFileRecord>& pRecords, std::u16string_view pNames);
  static void operator delete(void* pTable) { ::operator delete(pTable); }

  size_t Count() const { return fCount; }
  const TFileRecord& operator[](size_t pIndex) const { return Records()[pIndex]; }
  std::u16string_view NameOf(const TFileRecord& pRecord) const {
    return {Names() + pRecord.fNameOffset, pRecord.fNameLength};
  }
  std::u16string_view NameAt(size_t pIndex) const { return NameOf((*this)[pIndex]); }
  // The names of the files from pBegin to before pEnd, one behind the other: they stand in the order of the records.
  // There must be at least one such file.
  std::u16string_view NamesOf(size_t pBegin, size_t pEnd) const {
    const size_t begin = pBegin == 0 ? 0 : (*this)[pBegin].fNameOffset;
    const TFileRecord& last = (*this)[pEnd - 1];
    return {Names() + begin, last.fNameOffset + last.fNameLength - begin};
  }
  // The file of this name, letter by letter; nullptr when there is none. Looks at all files.
  const TFileRecord* Find(std::u16string_view pName) const;
  // Indices by size, largest first, then by name in code-unit order.
  std::vector<uint32_t> SortedIndices() const;

 private:
  explicit TFileTable(uint32_t pCount) : fCount(pCount) {}
  // Allocates the object with room behind it for the records and the text of all names, in one block of exactly that
  // size.
  static void* operator new(size_t pBytes, size_t pRoom) { return ::operator new(pBytes + pRoom); }
  static void operator delete(void* pTable, size_t) { ::operator delete(pTable); }

  const TFileRecord* Records() const { return reinterpret_cast<const TFileRecord*>(this + 1); }
  const char16_t* Names() const { return reinterpret_cast<const char16_t*>(Records() + fCount); }

  const uint32_t fCount;
};

// Collects the files of a folder during its listing. A worker reuses it for the next folder. Once it has grown, listing
// allocates nothing per file.
class TFileTableBuilder {
 public:
  // False when the folder's names are too long in sum for one table (4 Gi UTF-16 units). The file is then not kept.
  bool Add(std::u16string_view pName, const TEntryValues& pValues, TKeyId pOwnerKey);
  bool IsEmpty() const { return fRecords.empty(); }
  void Clear();
  TRef<const TFileTable> Build() const;

 private:
  std::vector<TFileRecord> fRecords;
  std::u16string fNames;
};

}  // namespace Vantrel
