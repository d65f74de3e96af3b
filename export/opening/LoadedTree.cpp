#include "export/opening/LoadedTree.h"

#include <algorithm>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::Opening {

// Takes an unfinished tree apart. Otherwise its memory would never be freed.
TLoadedTree::~TLoadedTree() {
  if (!fRoot) return;
  fOpen.clear();
  fRoot->Dispose();
}

namespace {

void RaiseDates(TEntryValues& pTarget, const TEntryValues& pValues) {
  pTarget.fLastAccessDate = std::max(pTarget.fLastAccessDate, pValues.fLastAccessDate);
  pTarget.fLastChangeDate = std::max(pTarget.fLastChangeDate, pValues.fLastChangeDate);
}

}  // namespace

void TLoadedTree::BeginTop(std::u16string_view pPath, char16_t pDelimiter, const TLoadedEntry& pEntry,
                           const TStatedTotals& pTotals) {
  if (fRoot) throw EFileError("There is a second tree");
  if (pPath.empty()) throw EFileError("The scan has no path");
  if (pDelimiter != 0 && pDelimiter != u'/' && pDelimiter != u'\\')
    throw EFileError("The delimiter is neither / nor \\");
  fDelimiter = pDelimiter;
  if (fDelimiter == 0) fDelimiter = pPath.find(u'\\') < pPath.find(u'/') ? u'\\' : u'/';
  fPath = WithoutTrailingDelimiter(pPath, fDelimiter);
  const TRef<IHierarchicalRoot> root = fTarget.CreateRootForLoading(fPath, fDelimiter);
  fRoot = TRef<TCustomRoot>(dynamic_cast<TCustomRoot*>(root.get()));
  fLongPathLength = static_cast<size_t>(fRoot->GetScanConfiguration()->GetLongPathLength());
  Open(fRoot->BeginLoading(), pEntry, pTotals);
}

void TLoadedTree::CheckName(std::u16string_view pName) const {
  constexpr size_t kLongestName = 32767;
  if (pName.empty() || pName.find(fDelimiter) != std::u16string_view::npos ||
      pName.find(u'\0') != std::u16string_view::npos)
    throw EFileError(ToQuotedDisplay(pName.substr(0, 100)) + " is no name of a file or folder");
  if (pName.size() > kLongestName) throw EFileError("A name is too long");
}

void TLoadedTree::BeginFolder(const TLoadedEntry& pEntry, const TStatedTotals& pTotals) {
  CheckName(pEntry.fName);
  TOpenFolder& parent = fOpen.back();
  const TRef<TCustomFolderData> node = parent.fNode->AddLoadedChild(pEntry.fName, false);
  parent.fNodes.push_back(node);
  if (!fPath.ends_with(fDelimiter)) fPath += fDelimiter;
  fPath += pEntry.fName;
  ++fFolders;
  Open(node, pEntry, pTotals);
}

void TLoadedTree::Open(TRef<TCustomFolderData> pNode, const TLoadedEntry& pEntry, const TStatedTotals& pTotals) {
  TOpenFolder folder;
  folder.fNode = std::move(pNode);
  folder.fValues.fEntry = pEntry.fValues;
  folder.fValues.fOwnerKey = pEntry.fOwnerKey;
  folder.fHasTotals = pTotals.has_value();
  if (pTotals) folder.fValues.fValues = *pTotals;
  folder.fPathLength = fPath.size();
  fHasOwners = fHasOwners || pEntry.fOwnerKey != kNoKey;
  fOpen.push_back(std::move(folder));
  if (fTables.size() < fOpen.size()) fTables.emplace_back();
}

void TLoadedTree::SetFiles(const TLoadedEntry& pEntry, const TSizeValues& pTotals) {
  TOpenFolder& folder = fOpen.back();
  if (folder.fFiles) throw EFileError("The files of " + ToQuotedDisplay(fPath) + " are there twice");
  folder.fFiles.emplace();
  folder.fFiles->fEntry = pEntry.fValues;
  folder.fFiles->fOwnerKey = pEntry.fOwnerKey;
  folder.fFiles->fValues = pTotals;
}

void TLoadedTree::Count(const TBasicSizeValues& pValues) {
  fCounted += pValues;
  if (std::max(fCounted.fSize, fCounted.fAllocated) > kMostOfAnything)
    throw EFileError("The sizes add up to more than any storage holds");
}

void TLoadedTree::AddFile(const TLoadedEntry& pEntry) {
  CheckName(pEntry.fName);
  TOpenFolder& folder = fOpen.back();
  TSizeValues values;
  values.fSize = pEntry.fValues.fSize;
  values.fAllocated = pEntry.fValues.fAllocated;
  values.fFiles = 1;
  values.fCompression = (pEntry.fValues.fAttributes & kAttributeCompressed) != 0 ? compr_yes : compr_no;
  Count(values);
  folder.fOwnFiles.fValues += values;
  RaiseDates(folder.fOwnFiles.fEntry, pEntry.fValues);
  folder.fHasLongPaths = folder.fHasLongPaths || fPath.size() + 1 + pEntry.fName.size() >= fLongPathLength;
  fHasOwners = fHasOwners || pEntry.fOwnerKey != kNoKey;
  if (fTables[fOpen.size() - 1].Add(pEntry.fName, pEntry.fValues, pEntry.fOwnerKey)) ++fFilesInTables;
}

void TLoadedTree::AddError(std::u16string pText, bool pPartial) {
  TScanError error;
  error.fObject = fOpen.back().fNode;
  error.fPath = fPath;
  error.fKind = TEnumeratorError::eeOther;
  error.fPartial = pPartial;
  error.fText = std::move(pText);
  fErrors.push_back(std::move(error));
}

void TLoadedTree::CheckNames(const TOpenFolder& pFolder) const {
  if (pFolder.fNodes.size() < 2) return;
  std::vector<std::u16string_view> names;
  for (const TRef<TCustomFolderData>& child : pFolder.fNodes) names.push_back(child->GetObjectName());
  std::sort(names.begin(), names.end());
  const auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice != names.end()) throw EFileError(ToQuotedDisplay(JoinPath(fPath, *twice, fDelimiter)) + " is there twice");
}

// A folder with sub-folders holds its files as a node of their own.
void TLoadedTree::PlaceFiles(TOpenFolder& pFolder) {
  TFileTableBuilder& table = fTables[fOpen.size() - 1];
  TRef<const TFileTable> files;
  if (!table.IsEmpty()) files = table.Build();
  table.Clear();
  const bool hasNode = pFolder.fFiles || (!pFolder.fNodes.empty() && files);
  if (!hasNode) {
    pFolder.fValues.fFiles = std::move(files);
    return;
  }
  TLoadedFolder group = pFolder.fFiles.value_or(pFolder.fOwnFiles);
  group.fFiles = std::move(files);
  group.fState = fsSubFolderScanningFinished | fsIsXMLImport;
  pFolder.fNode->AddLoadedChild({}, true)->SetLoaded(group);
}

void TLoadedTree::EndFolder() {
  TOpenFolder& folder = fOpen.back();
  CheckNames(folder);
  // Stated totals are taken as they are, and are not added up: their sums could be too large.
  if (folder.fHasTotals) {
    folder.fValues.fValues.fCompression = folder.fChildren.fCompression | folder.fOwnFiles.fValues.fCompression;
  } else {
    folder.fValues.fValues = folder.fChildren;
    folder.fValues.fValues += folder.fOwnFiles.fValues;
    RaiseDates(folder.fValues.fEntry, folder.fOwnFiles.fEntry);
  }
  folder.fValues.fState =
      fsSubFolderScanningFinished | fsIsXMLImport | (folder.fHasLongPaths ? fsContainsLongPaths : 0);
  PlaceFiles(folder);
  folder.fNode->SetLoaded(folder.fValues);
  const TLoadedFolder values = std::move(folder.fValues);
  const bool hasLongPaths = folder.fHasLongPaths;
  fOpen.pop_back();
  if (fOpen.empty()) {
    fTopEnded = true;
    return;
  }
  TOpenFolder& parent = fOpen.back();
  parent.fChildren.fCompression |= values.fValues.fCompression;
  parent.fHasLongPaths = parent.fHasLongPaths || hasLongPaths;
  if (!parent.fHasTotals) {
    parent.fChildren += values.fValues;
    ++parent.fChildren.fFolders;
    RaiseDates(parent.fValues.fEntry, values.fEntry);
  }
  fPath.resize(parent.fPathLength);
}

TRef<IHierarchicalRoot> TLoadedTree::Finish(TLoadedScan pScan) {
  if (!fTopEnded) throw EFileError("The file ends too early");
  pScan.fErrors = std::move(fErrors);
  pScan.fKeepsFiles = fFilesInTables == fRoot->GetTopFolder()->GetFiles();
  pScan.fHasUsers = fHasOwners;
  fRoot->EndLoading(pScan);
  TRef<TCustomRoot> root;
  root.swap(fRoot);
  return root;
}

}  // namespace Vantrel::Opening
