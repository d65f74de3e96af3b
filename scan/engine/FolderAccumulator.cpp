#include "scan/engine/FolderAccumulator.h"

#include <algorithm>

#include "model/statistics/FileAges.h"
#include "model/statistics/FileStatistics.h"
#include "model/statistics/TopSizeList.h"

namespace Vantrel::ScanEngine {

TFolderAccumulator::TFolderAccumulator(IScanConfiguration& pConfiguration)
    : fDoUsers(pConfiguration.GetDoUsersStatistics()),
      fDoExtensions(pConfiguration.GetDoExtensionsStatistics()),
      fKeepFiles(pConfiguration.GetKeepFiles()),
      fAgesDateType(pConfiguration.GetFileAgesDateType()),
      fLongPathLength(static_cast<size_t>(pConfiguration.GetLongPathLength())),
      fNow(pConfiguration.GetScanTimeStamp()),
      fFileAges(pConfiguration.GetFileAges()),
      fTopSizeList(pConfiguration.GetTopSizeList()),
      fEntryFilter(pConfiguration.CreateEntryFilter()) {}

void TFolderAccumulator::Begin() {
  fPathLength = 0;
  fFilesGivenUp = false;
  fValues = {};
  fLastAccessDate = {};
  fLastChangeDate = {};
  fLongPaths = false;
  fOwners.Clear();
  fExtensions.Clear();
  fAges.Clear();
  fFiles.Clear();
  fTopFiles.clear();
}

TKeyId TFolderAccumulator::OwnerKeyOf(const IHierarchicalEnumerator& pEntry) {
  if (!fDoUsers) return kNoKey;  // looking up the owner takes a system call on some systems
  const uint64_t owner = pEntry.GetOwnerId();
  if (owner != 0 && owner == fLastOwnerId) return fLastOwnerKey;
  auto known = owner != 0 ? fOwnerKeys.find(owner) : fOwnerKeys.end();
  const TKeyId key = known != fOwnerKeys.end() ? known->second : TUserSizeArray::KeyOf(pEntry.GetOwner());
  if (owner == 0) return key;
  if (known == fOwnerKeys.end()) fOwnerKeys.emplace(owner, key);
  fLastOwnerId = owner;
  fLastOwnerKey = key;
  return key;
}

void TFolderAccumulator::GiveUpFiles() {
  Begin();
  fFilesGivenUp = true;
}

void TFolderAccumulator::AddFile(const IHierarchicalEnumerator& pEntry) {
  try {
    CountFile(pEntry);
  } catch (...) {
    GiveUpFiles();
    throw;
  }
}

void TFolderAccumulator::CountFile(const IHierarchicalEnumerator& pEntry) {
  const TEntryValues values = pEntry.GetEntryValues();
  const std::u16string_view name = pEntry.GetObjectName();
  TBasicSizeValues sizes;
  sizes.fSize = values.fSize;
  sizes.fAllocated = values.fAllocated;
  sizes.fFiles = 1;
  fValues += sizes;
  fValues.fCompression |= (values.fAttributes & kAttributeCompressed) != 0 ? compr_yes : compr_no;
  TKeyId ownerKey = kNoKey;
  if (fDoUsers) fOwners.Add(ownerKey = OwnerKeyOf(pEntry), sizes);
  if (fDoExtensions) fExtensions.Add(fExtensionKeys.KeyOfName(name), sizes);
  if (fAgesDateType != TDateType::dtNone) {
    const TKivFileTime date =
        DateOfKind(fAgesDateType, values.fLastAccessDate, values.fLastChangeDate, values.fCreationDate);
    const int interval = fFileAges->GetIndexOfMatchingInterval(FileAgeInDays(fNow, date));
    if (interval >= 0) fAges.Add(static_cast<TKeyId>(interval), sizes);
  }
  const size_t pathLength = fPathLength + 1 + name.size();
  if (pathLength >= fLongPathLength) fLongPaths = true;
  fLastAccessDate = std::max(fLastAccessDate, values.fLastAccessDate);
  fLastChangeDate = std::max(fLastChangeDate, values.fLastChangeDate);
  if (fTopSizeList && fTopSizeList->IsWorthOffering(values.fSize, pathLength))
    fTopFiles.push_back({values, std::u16string(name), ownerKey});
  if (fKeepFiles) fFiles.Add(name, values, ownerKey);
}

TFileGroupContents TFolderAccumulator::Finish() {
  try {
    TFileGroupContents contents;
    contents.fValues = fValues;
    contents.fOwners = fOwners.Sorted();
    contents.fExtensions = fExtensions.Sorted();
    contents.fAges = fAges.Sorted();
    contents.fLastAccessDate = fLastAccessDate;
    contents.fLastChangeDate = fLastChangeDate;
    contents.fLongPaths = fLongPaths;
    if (!fFiles.IsEmpty()) contents.fFiles = fFiles.Build();
    return contents;
  } catch (...) {
    GiveUpFiles();
    throw;
  }
}

void TFolderAccumulator::OfferTopFiles(TCustomFolderData& pFolder) {
  if (fTopFiles.empty()) return;
  std::vector<TTopSizeEntry> entries;
  entries.reserve(fTopFiles.size());
  for (TTopFile& file : fTopFiles)
    entries.push_back({file.fValues.fSize, file.fValues.fAllocated, file.fValues.fLastChangeDate,
                       TRef<IHierarchicalElement>(&pFolder), std::move(file.fName), file.fValues.fLastAccessDate,
                       file.fValues.fCreationDate, file.fValues.fAttributes, file.fOwnerKey});
  fTopSizeList->Add(entries);
}

}  // namespace Vantrel::ScanEngine
