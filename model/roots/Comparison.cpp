#include "model/roots/Comparison.h"

#include <algorithm>

#include "model/roots/GoneFolder.h"
#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

// A folder without sub-folders has no "[Files]" node, so its own values are those of its files.
TSizeValues OwnFilesOf(const IFolderData& pFolder) {
  if (const TRef<IFolderData> files = pFolder.GetFilesNode()) return files->GetValues();
  if (pFolder.GetSubFolderCount() > 0) return {};
  TSizeValues own = pFolder.GetValues();
  own.fFolders = 0;
  return own;
}

bool IsGoneRow(const IFolderData& pFolder) {
  return (pFolder.GetFolderState() & fsIsDummyForComparison) != 0;
}

}  // namespace

TComparison::TComparison(IHierarchicalRoot& pCurrent, IHierarchicalRoot& pEarlier)
    : fScanTimeStamp(pEarlier.GetScanTimeStamp()), fLetterCaseCounts(pCurrent.GetPathDelimiter() == u'/') {
  std::vector<TRef<IFolderData>> folders{pEarlier.GetTopFolder()};  // the folders of the records that are not done yet
  AddRecord({}, *folders[0]);
  for (size_t i = 0; i < folders.size(); ++i) {
    const TRef<IFolderData> folder = std::move(folders[i]);
    AddChildren(i, *folder, folders);
  }
  fRecords.shrink_to_fit();
}

void TComparison::AddRecord(std::u16string_view pName, const IFolderData& pFolder) {
  fRecords.push_back({std::u16string(pName), pFolder.GetValues(), OwnFilesOf(pFolder), pFolder.GetFileTable()});
  fKnowsFiles = fKnowsFiles || fRecords.back().fFiles;
}

void TComparison::AddChildren(size_t pRecord, IFolderData& pFolder, std::vector<TRef<IFolderData>>& pFolders) {
  std::vector<TRef<IFolderData>> children = pFolder.FindSubFolders();
  std::erase_if(children, [](const TRef<IFolderData>& pChild) { return pChild->IsFileGroup(); });
  std::sort(children.begin(), children.end(), [this](const auto& pA, const auto& pB) {
    return CompareNames(pA->GetObjectName(), pB->GetObjectName()) < 0;
  });
  fRecords[pRecord].fFirstChild = static_cast<uint32_t>(fRecords.size());
  fRecords[pRecord].fChildren = static_cast<uint32_t>(children.size());
  for (TRef<IFolderData>& child : children) {
    AddRecord(child->GetObjectName(), *child);
    pFolders.push_back(std::move(child));
  }
}

int TComparison::CompareNames(std::u16string_view pA, std::u16string_view pB) const {
  if (fLetterCaseCounts) return pA.compare(pB);
  const auto [a, b] = std::mismatch(pA.begin(), pA.end(), pB.begin(), pB.end(), [](char16_t pFirst, char16_t pSecond) {
    return UpcaseUnit(pFirst) == UpcaseUnit(pSecond);
  });
  if (a == pA.end() || b == pB.end()) return (a != pA.end()) - (b != pB.end());
  return UpcaseUnit(*a) < UpcaseUnit(*b) ? -1 : 1;
}

const TComparison::TRecord* TComparison::FindChild(const TRecord& pRecord, std::u16string_view pName) const {
  const auto begin = fRecords.begin() + pRecord.fFirstChild;
  const auto end = begin + pRecord.fChildren;
  const auto found =
      std::partition_point(begin, end, [&](const TRecord& pChild) { return CompareNames(pChild.fName, pName) < 0; });
  return found != end && CompareNames(found->fName, pName) == 0 ? &*found : nullptr;
}

const TComparison::TRecord* TComparison::FindRecord(const IFolderData& pFolder) const {
  std::vector<TRef<const IHierarchicalElement>> way;  // the folder first; the top folder is left out
  TRef<const IHierarchicalElement> node(&pFolder);
  if (pFolder.IsFileGroup()) node = pFolder.GetParentFolder();
  // The top folder ends the way. Seen through a combined root, it has a parent too.
  while (node && (node->GetFolderState() & fsIsRoot) == 0) {
    TRef<const IHierarchicalElement> parent = node->GetParentFolder();
    way.push_back(std::move(node));
    node = std::move(parent);
  }
  const TRecord* record = &fRecords[0];
  for (auto step = way.rbegin(); step != way.rend() && record; ++step)
    record = FindChild(*record, (*step)->GetObjectName());
  return record;
}

bool TComparison::WasThere(const IFolderData& pFolder) const {
  const TRecord* record = FindRecord(pFolder);
  return record && (!pFolder.IsFileGroup() || record->fOwnFiles.fFiles > 0);
}

TSizeValues TComparison::EarlierValues(const IFolderData& pFolder) const {
  const TRecord* record = FindRecord(pFolder);
  if (!record) return {};
  return pFolder.IsFileGroup() ? record->fOwnFiles : record->fValues;
}

TRef<const TFileTable> TComparison::EarlierFiles(const IFolderData& pFolder) const {
  const TRecord* record = FindRecord(pFolder);
  return record ? record->fFiles : nullptr;
}

// Whether the lost files get a "[Files]" row. Two folders without sub-folders need none, since their own rows show the
// change. If the folder has files but no sub-folders now, there is no row to compare with the earlier one.
bool TComparison::HaveFilesGone(const TRecord& pRecord, IFolderData& pFolder) const {
  if (pRecord.fOwnFiles.fFiles == 0) return false;
  if (IsGoneRow(pFolder)) return pRecord.fChildren > 0;
  if (pFolder.GetFilesNode()) return false;
  return pFolder.GetSubFolderCount() > 0 || (pRecord.fChildren > 0 && pFolder.GetFiles() == 0);
}

std::vector<TRef<IFolderData>> TComparison::FindGone(IFolderData& pFolder) const {
  std::vector<TRef<IFolderData>> gone;
  const TRecord* record = pFolder.IsFileGroup() ? nullptr : FindRecord(pFolder);
  if (!record) return gone;
  std::vector<TRef<IFolderData>> current;
  if (!IsGoneRow(pFolder)) current = pFolder.FindSubFolders();
  std::vector<bool> isThere(record->fChildren);
  for (const TRef<IFolderData>& child : current) {
    const TRecord* earlier = child->IsFileGroup() ? nullptr : FindChild(*record, child->GetObjectName());
    if (earlier) isThere[static_cast<size_t>(earlier - &fRecords[record->fFirstChild])] = true;
  }
  for (uint32_t i = 0; i < record->fChildren; ++i)
    if (!isThere[i]) gone.push_back(MakeRef<TGoneFolder>(pFolder, fRecords[record->fFirstChild + i].fName, false));
  if (HaveFilesGone(*record, pFolder)) gone.push_back(MakeRef<TGoneFolder>(pFolder, std::u16string_view(), true));
  return gone;
}

}  // namespace Vantrel
