#pragma once

// What a file record says of its file: dates, attributes, sizes and names; and how parts of one file are merged.

#include <bitset>
#include <cstdint>
#include <string>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "scan/ntfs/MftRecord.h"

namespace Vantrel::Ntfs {

constexpr uint64_t kNoReference = ~uint64_t{0};
constexpr TAttributes kAttributesUnknown = 0x8000'0000;  // the record's attributes were all ones
// The item has alternate data streams. File systems use the bit for integrity streams, which NTFS does not have.
constexpr TAttributes kAttributeHasStreams = kAttributeIntegrityStream;

// A name of a file. Its text lies in the file's record.
struct TMftItemName {
  uint64_t fParent = kNoReference;  // reference to the folder's record
  bool fIsDos = false;              // a short name beside a long one
  TBytes fText;                     // UTF-16, at any address
};

// One file, or that part of it that one record holds.
struct TMftItemData {
  int64_t fCreationTime = 0;  // file times, as the record has them
  int64_t fLastWriteTime = 0;
  int64_t fLastAccessTime = 0;
  TAttributes fAttributes = 0;
  int64_t fSize = 0;  // sizes in bytes
  int64_t fAllocated = 0;
  int64_t fADSSize = 0;  // on storage, of the alternate data streams
  uint32_t fReparseTag = 0;
  bool fIsDamaged = false;  // a size could not be believed and counts as 0
  static constexpr uint32_t kFirstType = 16;
  std::bitset<232> fTypes;  // the types of attributes met, from kFirstType
  uint32_t fNumberOfNames = 0;

  bool HasType(uint32_t pType) const { return fTypes.test(pType - kFirstType); }
  void AddName(const TMftItemName& pName);
  const TMftItemName& Name(size_t pIndex) const { return fNames[pIndex]; }
  void Clear();
  // Copies the names' texts to the bytes, and keeps only as many names as there are.
  void MoveNamesTo(std::vector<std::byte>& pTexts);

 private:
  // Not emptied by Clear, so that one item can serve for all records without new memory.
  std::vector<TMftItemName> fNames;
};

struct TParseSettings {
  bool fCompatible = false;    // see docs/ntfs.md
  bool fSkipDosNames = false;  // leave out short names, even where a file has no other
};

// Fills the item from a record that was fixed up.
void ParseItem(TBytes pRecord, const TRecordHeader& pHeader, const TParseSettings& pSettings, TMftItemData& pItem);

// Adds an extension record's part of a file to that of the base record. The names' texts are not copied.
void MergeItem(TMftItemData& pBase, const TMftItemData& pExtension, bool pCompatible);

// A part of a file from an extension record, kept until the base record is known. It owns its names' texts.
class TMultiMftItemData {
 public:
  // pSequence is that of the base record when the part was written.
  TMultiMftItemData(const TMftItemData& pItem, uint16_t pSequence);
  TMultiMftItemData(TMultiMftItemData&&) = default;
  TMultiMftItemData& operator=(TMultiMftItemData&&) = default;

  const TMftItemData& Item() const { return fItem; }
  uint16_t Sequence() const { return fSequence; }

 private:
  TMftItemData fItem;
  std::vector<std::byte> fTexts;
  uint16_t fSequence;
};

// A file with more than one name.
struct TMftHardlinkData {
  uint32_t fNumberOfLinks = 0;  // short names not counted
};

}  // namespace Vantrel::Ntfs
