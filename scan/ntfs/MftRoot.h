#pragma once

// The index of a volume in memory: an item for each record, its names, and the tree that follows from them.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/threads/Interface.h"
#include "scan/ntfs/MftDictionaries.h"
#include "scan/ntfs/MftItemData.h"

namespace Vantrel::Ntfs {

// A file table holds files in the order of their making, and each name of a file knows its folder's record number. The
// index keeps one item of fixed size for each record, and one small entry for each name; texts are in large chunks. A
// folder's names are found by counting, without any search. On a volume with names of 16 characters it takes about 130
// bytes a record.
//
// A tree must come out of any bytes. So each folder has one place only; a name whose folder does not exist, and a
// circle of folders, are put into a folder of their own, for orphans. The index is filled by one thread. After Finish
// it never changes, and any thread reads it.

constexpr uint32_t kRootRecord = 5;
constexpr uint32_t kFirstOwnRecord = 16;    // records below, except the root's, are the volume's own files
constexpr uint32_t kFirstNamedRecord = 24;  // records below may have no name
constexpr std::u16string_view kOrphansName = u"<orphans>";

// A file or folder in the index.
struct TMftEntry {
  int64_t fCreationTime = 0;
  int64_t fLastWriteTime = 0;
  int64_t fLastAccessTime = 0;
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  int64_t fADSSize = 0;
  TAttributes fAttributes = 0;  // as shown
  uint16_t fSequence = 0;
  bool fIsUsed : 1 = false;
  bool fHasLongName : 1 = false;
  bool fHasHardLinks : 1 = false;  // the number is in a dictionary
  bool fIsLink : 1 = false;        // stands for another name: a symbolic link, a junction
  bool fIsDamaged : 1 = false;

  bool IsFolder() const { return (fAttributes & kAttributeDirectory) != 0; }
};

// What building the index found.
struct TMftSummary {
  int64_t fRecords = 0;  // of the table, free ones included
  int64_t fFiles = 0;    // names of files in the tree
  int64_t fFolders = 0;
  int64_t fOrphans = 0;      // names whose folder does not exist
  int64_t fTornRecords = 0;  // written in part only
  int64_t fDamaged = 0;      // files with an impossible size, which counts as 0
  int64_t fSystemBytes = 0;  // on storage, of the volume's own files, where they are not shown
  int64_t fUnreadBytes = 0;  // of the table
  int64_t fMilliseconds = 0;
};

// The index while it is filled.
class TBaseMftRoot : public TInterfaced<IInterface> {
 public:
  struct TSettings {
    bool fCompatible = false;
    bool fShowSystemFiles = false;
    char16_t fPathDelimiter = u'/';
  };

  // Whether an index of so many records fits. If not, a line says so in the debug log.
  static bool HasSufficientMemory(int64_t pRecords, int64_t pFreeBytes, std::string_view pClass);

  // Takes one record's item. Names' texts are copied.
  void AddRecord(uint32_t pNumber, const TRecordHeader& pHeader, bool pIsExtension, const TMftItemData& pItem);
  // Merges what extension records hold, and makes the tree.
  void Finish();

  TMftSummary& Summary() { return fSummary; }
  const TMftSummary& Summary() const { return fSummary; }

 protected:
  // EInvalidArgumentValue for more records than NTFS allows.
  TBaseMftRoot(int64_t pRecords, const TSettings& pSettings);

  struct TName {
    uint32_t fFolder = 0;  // record number; after Finish that of the folder in which it is shown
    uint32_t fItem = 0;
    uint32_t fText = 0;  // in units, from the pool's start
    uint16_t fFolderSequence = 0;
    uint8_t fTextHigh : 7 = 0;
    bool fIsDos : 1 = false;
    uint8_t fLength = 0;
  };

  std::u16string_view TextOf(const TName& pName) const;

  const TSettings fSettings;
  const uint32_t fOrphans;  // the number of the folder for orphans, behind all records
  std::vector<TMftEntry> fEntries;
  std::vector<TName> fNames;
  std::unordered_map<uint64_t, TMftHardlinkData> fHardLinks;
  TFolderDictionary fFolders;
  TSubFolderDictionary fSubFolders;
  TFileDictionary fFiles;

 private:
  enum class TBranch : uint8_t { brUnknown, brOnWay, brTree, brSystem };

  void StoreItem(TMftEntry& pEntry, const TMftItemData& pItem);
  void AddNames(uint32_t pNumber, TMftEntry& pEntry, const TMftItemData& pItem);
  void AddName(uint32_t pNumber, uint64_t pFolder, bool pIsDos, TBytes pText);
  void AddMadeName(uint32_t pNumber, uint64_t pFolder, std::u16string_view pText);
  void MergeExtensions();
  void NameTheNameless();
  void AddOrphansFolder();
  bool IsPlaceable(TName& pName) const;
  void FindFolders();
  void FindBranchOf(uint32_t pFolder);
  void BreakCircle(const std::vector<uint32_t>& pWay, uint32_t pFolder);
  bool IsSystemRecord(uint32_t pNumber) const { return pNumber < kFirstOwnRecord && pNumber != kRootRecord; }
  void PlaceNames();
  bool Show(const TName& pName);
  void BoundTotals(const TName& pName);

  static constexpr size_t kUnitsPerChunk = size_t{1} << 19;
  std::vector<std::unique_ptr<char16_t[]>> fTexts;
  size_t fUnitsInChunk = kUnitsPerChunk;
  std::unordered_map<uint64_t, std::vector<TMultiMftItemData>> fMultiItems;  // by base record; until Finish
  std::vector<TBranch> fBranches;                                            // during Finish
  std::vector<bool> fIsSystemCounted;                                        // during Finish
  int64_t fTotalSize = 0;
  int64_t fTotalAllocated = 0;
  TMftSummary fSummary;
};

// The finished index, as enumerators read it.
class THierarchicalMftRoot final : public TBaseMftRoot {
 public:
  static constexpr std::string_view kClassName = "THierarchicalMftRoot";
  THierarchicalMftRoot(int64_t pRecords, const TSettings& pSettings) : TBaseMftRoot(pRecords, pSettings) {}

  const TMftEntry& Entry(uint32_t pNumber) const { return fEntries[pNumber]; }
  bool HasEntry(uint64_t pNumber) const { return pNumber < fEntries.size() && fEntries[pNumber].fIsUsed; }
  std::span<const uint32_t> SubFoldersOf(uint32_t pFolder) const { return fSubFolders.Of(pFolder); }
  std::span<const uint32_t> FilesOf(uint32_t pFolder) const { return fFiles.Of(pFolder); }
  std::u16string_view NameText(uint32_t pName) const { return TextOf(fNames[pName]); }
  uint32_t RecordOfName(uint32_t pName) const { return fNames[pName].fItem; }
  // The folder that a folder is in; the root's is the root.
  uint32_t ParentOf(uint32_t pFolder) const;
  // The folder's own name; empty for the root.
  std::u16string_view NameOfFolder(uint32_t pFolder) const;
  // 1 when the record has one name.
  uint32_t LinksOf(uint32_t pNumber) const;
};

}  // namespace Vantrel::Ntfs
