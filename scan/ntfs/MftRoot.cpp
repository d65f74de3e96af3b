#include "scan/ntfs/MftRoot.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "scan/files/LinkRules.h"

namespace Vantrel::Ntfs {

namespace {

constexpr uint32_t kBadClustersRecord = 8;
constexpr int64_t kEstimatedBytesPerRecord = 1000;
constexpr int64_t kMostMemory = int64_t{64} << 30;  // for one index, however much is free
constexpr int64_t kMostRecords = 0xFFFF'FFF0;       // NTFS allows 2^32 - 1 files
// Totals above overflow. No volume comes near, so files beyond have damaged sizes.
constexpr int64_t kMostTotal = int64_t{1} << 61;

uint32_t CheckedCount(int64_t pRecords) {
  if (pRecords < 0 || pRecords > kMostRecords)
    throw EInvalidArgumentValue("TBaseMftRoot.Create: too many records: " + std::to_string(pRecords));
  return static_cast<uint32_t>(std::max<int64_t>(pRecords, kFirstNamedRecord));
}

// The attributes as the program shows them. A folder with a reparse point that is no other name is an ordinary folder.
TAttributes ShownAttributes(const TMftItemData& pItem, bool pIsLink) {
  TAttributes attributes = pItem.fAttributes;
  if ((attributes & kAttributeRecallOnDataAccess) != 0) attributes |= kAttributeOffline;
  if ((attributes & kAttributeDirectory) != 0 && !pIsLink && pItem.fReparseTag != 0)
    attributes &= ~kAttributeReparsePoint;
  if ((attributes & ~kAttributeNormal) != 0) attributes &= ~kAttributeNormal;  // it stands alone
  return attributes != 0 ? attributes : kAttributeNormal;
}

}  // namespace

bool TBaseMftRoot::HasSufficientMemory(int64_t pRecords, int64_t pFreeBytes, std::string_view pClass) {
  const int64_t available = std::min(pFreeBytes, kMostMemory);
  if (pRecords <= available / kEstimatedBytesPerRecord) return true;
  LogDebug(
      FromUtf8(fmt::format("{}.HasSufficientMemory : Not sufficient memory to fill the MftRoot ({} MFT entries / {} "
                           "Bytes memory available).",
                           pClass, pRecords, available)));
  return false;
}

TBaseMftRoot::TBaseMftRoot(int64_t pRecords, const TSettings& pSettings)
    : fSettings(pSettings),
      fOrphans(CheckedCount(pRecords)),
      fEntries(size_t{fOrphans} + 1),
      fFolders(fEntries.size()),
      fSubFolders(fEntries.size()),
      fFiles(fEntries.size()) {
  fSummary.fRecords = pRecords;
}

std::u16string_view TBaseMftRoot::TextOf(const TName& pName) const {
  const size_t at = size_t{pName.fTextHigh} << 32 | pName.fText;
  return {fTexts[at / kUnitsPerChunk].get() + at % kUnitsPerChunk, pName.fLength};
}

// --- filling -------------------------------------------------------------------------------------------------------

void TBaseMftRoot::AddRecord(uint32_t pNumber, const TRecordHeader& pHeader, bool pIsExtension,
                             const TMftItemData& pItem) {
  if (pNumber >= fOrphans) return;
  if (pIsExtension) {
    const uint64_t base = RecordOfReference(pHeader.fBase);
    // Most extension records hold only further extents of a large file.
    const bool isNeeded = pItem.fNumberOfNames > 0 || pItem.HasType(kStandardInformation) || pItem.fAttributes != 0 ||
                          pItem.fSize != 0 || pItem.fAllocated != 0 || pItem.fADSSize != 0 || pItem.fReparseTag != 0;
    if (pHeader.fBase != 0 && isNeeded) fMultiItems[base].emplace_back(pItem, SequenceOfReference(pHeader.fBase));
    return;
  }
  TMftEntry& entry = fEntries[pNumber];
  entry.fIsUsed = true;
  entry.fSequence = pHeader.fSequence;
  StoreItem(entry, pItem);
  // The list of bad clusters is a stream as long as the volume, but only a hole where no cluster is bad.
  if (pNumber == kBadClustersRecord && !fSettings.fCompatible) entry.fADSSize = 0;
  AddNames(pNumber, entry, pItem);
}

void TBaseMftRoot::StoreItem(TMftEntry& pEntry, const TMftItemData& pItem) {
  pEntry.fCreationTime = pItem.fCreationTime;
  pEntry.fLastWriteTime = pItem.fLastWriteTime;
  pEntry.fLastAccessTime = pItem.fLastAccessTime;
  pEntry.fSize = pItem.fSize;
  pEntry.fAllocated = pItem.fAllocated;
  pEntry.fADSSize = pItem.fADSSize;
  // Stays when an extension record is merged, which need not hold the reparse point.
  pEntry.fIsLink |=
      (pItem.fAttributes & kAttributeReparsePoint) != 0 && Enumerators::IsNameSurrogate(pItem.fReparseTag);
  pEntry.fIsDamaged |= pItem.fIsDamaged;
  pEntry.fAttributes = ShownAttributes(pItem, pEntry.fIsLink);
}

void TBaseMftRoot::AddNames(uint32_t pNumber, TMftEntry& pEntry, const TMftItemData& pItem) {
  bool hasLong = false;
  for (uint32_t i = 0; i < pItem.fNumberOfNames; ++i) hasLong |= !pItem.Name(i).fIsDos;
  for (uint32_t i = 0; i < pItem.fNumberOfNames; ++i) {
    const TMftItemName& name = pItem.Name(i);
    if (name.fIsDos && hasLong) continue;
    AddName(pNumber, name.fParent, name.fIsDos, name.fText);
    if (name.fIsDos) continue;
    if (pEntry.fHasLongName) {
      TMftHardlinkData& links = fHardLinks[pNumber];
      links.fNumberOfLinks = std::max(links.fNumberOfLinks, 1u) + 1;
      pEntry.fHasHardLinks = true;
    }
    pEntry.fHasLongName = true;
  }
}

// Characters that cannot be part of a name, and would lead to another place, are replaced.
void TBaseMftRoot::AddName(uint32_t pNumber, uint64_t pFolder, bool pIsDos, TBytes pText) {
  const size_t length = pText.size() / 2;
  if (kUnitsPerChunk - fUnitsInChunk < length) {
    fTexts.push_back(std::make_unique_for_overwrite<char16_t[]>(kUnitsPerChunk));
    fUnitsInChunk = 0;
  }
  if (fTexts.empty()) return AddMadeName(pNumber, pFolder, {});
  const size_t at = (fTexts.size() - 1) * kUnitsPerChunk + fUnitsInChunk;
  char16_t* const text = fTexts.back().get() + fUnitsInChunk;
  if (length > 0) std::memcpy(text, pText.data(), 2 * length);
  const std::u16string_view view(text, length);
  if (view.empty() || view == u"." || view == u"..") {
    if (pNumber != kRootRecord) AddMadeName(pNumber, pFolder, {});
    return;
  }
  for (size_t i = 0; i < length; ++i)
    if (text[i] == 0 || text[i] == u'/' || text[i] == fSettings.fPathDelimiter) text[i] = u'\uFFFD';
  fUnitsInChunk += length;
  TName name;
  name.fFolder = static_cast<uint32_t>(std::min<uint64_t>(RecordOfReference(pFolder), ~uint32_t{0}));
  name.fFolderSequence = SequenceOfReference(pFolder);
  name.fItem = pNumber;
  name.fText = static_cast<uint32_t>(at);
  name.fTextHigh = static_cast<uint8_t>(at >> 32) & 0x7F;
  name.fIsDos = pIsDos;
  name.fLength = static_cast<uint8_t>(length);
  fNames.push_back(name);
}

// A name that the volume does not have. Without a text it tells the record's number.
void TBaseMftRoot::AddMadeName(uint32_t pNumber, uint64_t pFolder, std::u16string_view pText) {
  const std::u16string text = pText.empty() ? FromUtf8(fmt::format("<record {}>", pNumber)) : std::u16string(pText);
  AddName(pNumber, pFolder, false, std::as_bytes(std::span(text)));
}

// --- making the tree -----------------------------------------------------------------------------------------------

void TBaseMftRoot::Finish() {
  MergeExtensions();
  fEntries[kRootRecord].fIsUsed = true;
  fEntries[kRootRecord].fAttributes |= kAttributeDirectory;
  NameTheNameless();
  AddOrphansFolder();
  FindFolders();
  PlaceNames();
  fBranches = {};
  fIsSystemCounted = {};
}

void TBaseMftRoot::MergeExtensions() {
  for (auto& [number, parts] : fMultiItems) {
    if (number >= fOrphans || !fEntries[number].fIsUsed) continue;
    TMftEntry& entry = fEntries[number];
    TMftItemData item;
    item.fCreationTime = entry.fCreationTime;
    item.fLastWriteTime = entry.fLastWriteTime;
    item.fLastAccessTime = entry.fLastAccessTime;
    item.fSize = entry.fSize;
    item.fAllocated = entry.fAllocated;
    item.fADSSize = entry.fADSSize;
    item.fAttributes = entry.fAttributes;
    for (const TMultiMftItemData& part : parts) {
      // A part of a file that had this record before.
      if (!fSettings.fCompatible && part.Sequence() != entry.fSequence) continue;
      MergeItem(item, part.Item(), fSettings.fCompatible);
      AddNames(static_cast<uint32_t>(number), entry, part.Item());
    }
    StoreItem(entry, item);
  }
  fMultiItems.clear();
}

// Files without a name are shown by the number of their record, among the orphans.
void TBaseMftRoot::NameTheNameless() {
  std::vector<bool> isNamed(fOrphans);
  for (const TName& name : fNames) isNamed[name.fItem] = true;
  for (uint32_t number = kFirstNamedRecord; number < fOrphans; ++number)
    if (fEntries[number].fIsUsed && !isNamed[number]) AddMadeName(number, kNoReference, {});
}

void TBaseMftRoot::AddOrphansFolder() {
  TMftEntry& entry = fEntries[fOrphans];
  entry.fIsUsed = true;
  entry.fAttributes = kAttributeDirectory;
  AddMadeName(fOrphans, kRootRecord | uint64_t{fEntries[kRootRecord].fSequence} << 48, kOrphansName);
}

// Whether the name belongs into the tree. Sends it to the orphans when its folder does not exist.
bool TBaseMftRoot::IsPlaceable(TName& pName) const {
  if (pName.fItem == kRootRecord) return false;
  if (pName.fIsDos && fEntries[pName.fItem].fHasLongName) return false;
  const uint32_t folder = pName.fFolder;
  const bool exists = folder < fOrphans && folder != pName.fItem && fEntries[folder].fIsUsed &&
                      fEntries[folder].IsFolder() &&
                      (fSettings.fCompatible || pName.fFolderSequence == fEntries[folder].fSequence ||
                       (folder == kRootRecord && fEntries[folder].fSequence == 0));
  if (!exists) pName.fFolder = fOrphans;
  return true;
}

// Gives each folder its place, by the first of its names, and breaks circles.
void TBaseMftRoot::FindFolders() {
  for (uint32_t i = 0; i < fNames.size(); ++i) {
    TName& name = fNames[i];
    if (!IsPlaceable(name)) {
      name.fFolder = kNoName;
    } else if (fEntries[name.fItem].IsFolder()) {
      if (fFolders.PlaceOf(name.fItem) == kNoName)
        fFolders.SetPlace(name.fItem, i);
      else
        name.fFolder = kNoName;  // a folder has one name only, or the volume is damaged
    }
  }
  fBranches.assign(fEntries.size(), TBranch::brUnknown);
  fBranches[kRootRecord] = TBranch::brTree;
  for (uint32_t number = 0; number < fEntries.size(); ++number)
    if (fFolders.PlaceOf(number) != kNoName) FindBranchOf(number);
}

// Goes up from the folder until a folder is known, and notes the answer for all on the way.
void TBaseMftRoot::FindBranchOf(uint32_t pFolder) {
  if (fBranches[pFolder] != TBranch::brUnknown) return;
  std::vector<uint32_t> way;
  uint32_t folder = pFolder;
  while (fBranches[folder] == TBranch::brUnknown) {
    fBranches[folder] = TBranch::brOnWay;
    way.push_back(folder);
    if (!fSettings.fShowSystemFiles && IsSystemRecord(folder)) break;
    const uint32_t place = fFolders.PlaceOf(folder);
    folder = place == kNoName ? fOrphans : fNames[place].fFolder;
  }
  TBranch branch = fBranches[folder];
  if (branch == TBranch::brOnWay) {
    const bool isSystem = !fSettings.fShowSystemFiles && IsSystemRecord(folder);
    if (!isSystem) BreakCircle(way, folder);
    branch = isSystem ? TBranch::brSystem : TBranch::brTree;
  }
  for (const uint32_t on : way) fBranches[on] = branch;
}

// The folders from pFolder to the end of the way lie in each other. The one with the lowest number becomes an orphan.
void TBaseMftRoot::BreakCircle(const std::vector<uint32_t>& pWay, uint32_t pFolder) {
  const auto begin = std::find(pWay.begin(), pWay.end(), pFolder);
  const uint32_t lowest = *std::min_element(begin, pWay.end());
  fNames[fFolders.PlaceOf(lowest)].fFolder = fOrphans;
}

void TBaseMftRoot::PlaceNames() {
  fIsSystemCounted.resize(fEntries.size());
  for (TName& name : fNames) {
    if (name.fFolder == kNoName) continue;
    if (!Show(name)) {
      name.fFolder = kNoName;
      continue;
    }
    if (name.fFolder == fOrphans) ++fSummary.fOrphans;
    if (name.fItem == fOrphans) continue;
    BoundTotals(name);
    const bool isFolder = fEntries[name.fItem].IsFolder();
    (isFolder ? fSummary.fFolders : fSummary.fFiles) += 1;
    isFolder ? fSubFolders.Count(name.fFolder) : fFiles.Count(name.fFolder);
  }
  // The folder for orphans is there only when it holds something.
  TName& orphans = fNames[fFolders.PlaceOf(fOrphans)];
  if (fSummary.fOrphans == 0)
    orphans.fFolder = kNoName;
  else
    fSubFolders.Count(orphans.fFolder);
  fSubFolders.BeginPutting();
  fFiles.BeginPutting();
  for (uint32_t i = 0; i < fNames.size(); ++i) {
    const TName& name = fNames[i];
    if (name.fFolder == kNoName) continue;
    fEntries[name.fItem].IsFolder() ? fSubFolders.Put(name.fFolder, i) : fFiles.Put(name.fFolder, i);
  }
}

// False for the volume's own files where they are not shown. Their storage is summed up, each file once.
bool TBaseMftRoot::Show(const TName& pName) {
  if (fSettings.fShowSystemFiles) return true;
  if (!IsSystemRecord(pName.fItem) && fBranches[pName.fFolder] != TBranch::brSystem) return true;
  if (!fIsSystemCounted[pName.fItem]) {
    const TMftEntry& entry = fEntries[pName.fItem];
    fIsSystemCounted[pName.fItem] = true;
    fSummary.fSystemBytes = std::min(kMostTotal, fSummary.fSystemBytes + entry.fAllocated + entry.fADSSize);
  }
  return false;
}

// Each name of a file carries its whole size, so sizes are added for each name.
void TBaseMftRoot::BoundTotals(const TName& pName) {
  TMftEntry& entry = fEntries[pName.fItem];
  if (entry.fSize > kMostTotal - fTotalSize || entry.fAllocated + entry.fADSSize > kMostTotal - fTotalAllocated) {
    entry.fSize = entry.fAllocated = entry.fADSSize = 0;
    entry.fIsDamaged = true;
  }
  fTotalSize += entry.fSize;
  fTotalAllocated += entry.fAllocated + entry.fADSSize;
  if (!entry.fIsDamaged) return;
  ++fSummary.fDamaged;
  entry.fIsDamaged = false;  // counted once
}

// --- reading -------------------------------------------------------------------------------------------------------

uint32_t THierarchicalMftRoot::ParentOf(uint32_t pFolder) const {
  const uint32_t place = fFolders.PlaceOf(pFolder);
  return place == kNoName ? kRootRecord : fNames[place].fFolder;
}

std::u16string_view THierarchicalMftRoot::NameOfFolder(uint32_t pFolder) const {
  const uint32_t place = fFolders.PlaceOf(pFolder);
  return place == kNoName ? std::u16string_view() : TextOf(fNames[place]);
}

uint32_t THierarchicalMftRoot::LinksOf(uint32_t pNumber) const {
  if (!fEntries[pNumber].fHasHardLinks) return 1;
  const auto found = fHardLinks.find(pNumber);
  return found == fHardLinks.end() ? 1 : found->second.fNumberOfLinks;
}

}  // namespace Vantrel::Ntfs
