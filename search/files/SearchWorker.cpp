#include "search/files/SearchWorker.h"

#include <algorithm>
#include <bit>

#include "model/statistics/AssocSizeArray.h"
#include "platform/files/Paths.h"

namespace Vantrel::Search {

TSearchWorker::TSearchWorker(TSearchRun& pRun, const TRef<IStorage>& pStorage, char16_t pDelimiter,
                             std::vector<std::unique_ptr<IEntryFilter>> pFilters)
    : fRun(pRun),
      fStorage(pStorage),
      fDelimiter(pDelimiter),
      fFacts(pStorage, {TRef<ICancellationIndicator>(pRun.Token().get()), pRun.Settings().fEnumeratorOptions}, pRun),
      fItem(pDelimiter, &fFacts),
      fFilters(std::move(pFilters)) {}

TSearchWorker::~TSearchWorker() {
  fRun.CountGivenUp(fFacts.GivenUp());
}

// --- listings --------------------------------------------------------------------------------------------------------

void TSearchWorker::BeginListing(IHierarchicalEnumerator& pListing, int64_t pLevel) {
  fListing = &pListing;
  fListedFolder = nullptr;
  fFacts.SetListing(&pListing);
  fItem.SetFolder(pLevel);
  fFiles.Clear();
  for (const auto& filter : fFilters) filter->BeginFolder(pListing);
}

bool TSearchWorker::IsIncluded(bool pIsFolder) {
  return std::all_of(fFilters.begin(), fFilters.end(), [&](const auto& pFilter) {
    return pIsFolder ? pFilter->IsFolderIncluded(*fListing) : pFilter->IsFileIncluded(*fListing);
  });
}

TRef<const TFoundFolder> TSearchWorker::ListedFolder() {
  if (!fListedFolder) fListedFolder = MakeRef<const TFoundFolder>(fListing->GetPath(), fDelimiter, fStorage);
  return fListedFolder;
}

void TSearchWorker::MatchListed() {
  if (!Matches(TEntryView(*fListing)) || !fListing->ReadValues()) return;
  const bool isFolder = fListing->IsFolder();
  fFound.push_back({ListedFolder(), std::u16string(fListing->GetObjectName()), fListing->GetEntryValues(), isFolder,
                    !isFolder, nullptr, isFolder && fListing->CanDescend()});
}

void TSearchWorker::KeepFile() {
  fFiles.Add(fListing->GetObjectName(), fListing->GetEntryValues(), OwnerKeyOf(*fListing));
}

// The owners of neighbours are mostly the same.
TKeyId TSearchWorker::OwnerKeyOf(const IHierarchicalEnumerator& pEntry) {
  const uint64_t owner = pEntry.GetOwnerId();
  if (owner == 0 || owner != fLastOwner.first) fLastOwner = {owner, TUserSizeArray::KeyOf(pEntry.GetOwner())};
  return fLastOwner.second;
}

TRef<const TFileTable> TSearchWorker::TakeFiles() {
  TRef<const TFileTable> files = fFiles.IsEmpty() ? nullptr : fFiles.Build();
  fFiles.Clear();
  return files;
}

void TSearchWorker::EndListing() {
  for (const auto& filter : fFilters) filter->EndFolder();
  fFacts.SetListing(nullptr);
  fListing = nullptr;
}

void TSearchWorker::MatchFiles(const TFileTable& pFiles, size_t pBegin, size_t pEnd,
                               const TRef<const TFoundFolder>& pFolder, int64_t pLevel) {
  fItem.SetFolder(pFolder->fPath, pLevel);
  for (size_t i = pBegin; i < pEnd && !fRun.IsStopped(); ++i) {
    const TFileRecord& file = pFiles[i];
    const TEntryView view(pFiles, file, nullptr);
    // A file that was left in the middle would match a condition that it does not hold a text.
    if (!Matches(view) || fRun.IsStopped()) continue;
    const TEntryValues values{file.fSize,           file.fAllocated,    file.fLastAccessDate,
                              file.fLastChangeDate, file.fCreationDate, file.fAttributes};
    fFound.push_back({pFolder, std::u16string(view.GetObjectName()), values});
  }
}

// --- trees -----------------------------------------------------------------------------------------------------------

void TSearchWorker::MatchFolder(const TTreeRow& pRow) {
  fItem.SetFolder(pRow.fLevel);
  fIsFolderOfRows = false;
  if (Matches(pRow.View())) TakeRow(pRow);
}

void TSearchWorker::MatchFilesOf(IFolderData& pFolder, int32_t pLevel, const TFileTable& pFiles, size_t pBegin,
                                 size_t pEnd) {
  fItem.SetFolder(pLevel);
  fIsFolderOfRows = false;
  for (size_t begin = pBegin; begin < pEnd; begin += TFileBlock::kMost) {
    const TFileBlock block(pFiles, begin, pEnd);
    TFileSet found = fRun.Settings().fExpression.MatchesOf(block, pFolder, fItem, fRoom);
    // A file that was left in the middle would match a condition that it does not hold a text.
    if (fRun.IsStopped()) return;
    for (; found != 0; found &= found - 1)
      TakeRow({pFolder, pLevel, &pFiles, &block[static_cast<size_t>(std::countr_zero(found))]});
  }
}

// Folders that follow each other mostly lie in the same one, whose path is kept.
std::u16string TSearchWorker::PathOfFolder(const IFolderData& pFolder) {
  TRef<IHierarchicalElement> parent = pFolder.GetParentFolder();
  if (!parent || pFolder.IsFileGroup()) return pFolder.GetFullPath();
  if (parent != fOuterFolder) {
    fOuterPath = parent->GetFullPath();
    fOuterFolder = std::move(parent);
  }
  return JoinPath(fOuterPath, pFolder.GetObjectName(), fDelimiter);
}

void TSearchWorker::TakeRow(const TTreeRow& pRow) {
  const TEntryView view = pRow.View();
  if (!fIsFolderOfRows) {
    std::u16string path = pRow.IsFile() ? PathOfFolder(pRow.fFolder) : view.GetParentPath();
    // Found folders that follow each other mostly lie in the same one.
    if (!fFolderOfRows || fFolderOfRows->fPath != path)
      fFolderOfRows = MakeRef<const TFoundFolder>(std::move(path), fDelimiter, fStorage);
    fIsFolderOfRows = true;
  }
  const TEntryValues values{view.GetSize(),           view.GetAllocated(),    view.GetLastAccessDate(),
                            view.GetLastChangeDate(), view.GetCreationDate(), view.GetAttributes()};
  fFound.push_back({fFolderOfRows, std::u16string(view.GetObjectName()), values, !pRow.IsFile(), true,
                    TRef<IHierarchicalElement>(&pRow.fFolder),
                    !pRow.IsFile() && (view.GetAttributes() & kAttributeReparsePoint) == 0});
  // The first result is shown at once.
  constexpr size_t kMostKept = 64;
  if (fFound.size() >= kMostKept || !fRun.HasFound()) HandOver();
}

}  // namespace Vantrel::Search
