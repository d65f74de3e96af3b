#include "model/tree/EntryView.h"

#include <algorithm>
#include <utility>

#include "model/roots/EarlierFiles.h"
#include "model/tree/FileNames.h"
#include "platform/files/Paths.h"

namespace Vantrel {

namespace {

TMetaDataValue Text(std::u16string pText) {
  return pText.empty() ? TMetaDataValue() : TMetaDataValue(std::move(pText));
}

TMetaDataValue Date(TKivFileTime pDate) {
  return pDate.IsSet() ? TMetaDataValue(pDate) : TMetaDataValue();
}

}  // namespace

TEntryView::TEntryView(const IHierarchicalElement& pNode)
    : fEntry(&pNode),
      fFolder(const_cast<IHierarchicalElement&>(pNode).AsFolder()),
      fKind(fFolder ? TKind::ekFolder : TKind::ekNode) {}

// --- place -----------------------------------------------------------------------------------------------------------

TRef<IHierarchicalRoot> TEntryView::GetRoot() const {
  if (fKind == TKind::ekListed) return nullptr;
  if (fEntry) return Object().GetRoot();
  const IHierarchicalElement* folder = FolderOfFile();
  return folder ? folder->GetRoot() : nullptr;
}

TRef<IHierarchicalElement> TEntryView::GetParentFolder() const {
  if (fEntry) return IsNode() ? Node().GetParentFolder() : nullptr;
  const IHierarchicalElement* folder = FolderOfFile();
  if (fFolder && fFolder->IsFileGroup()) return folder->GetParentFolder();
  return TRef<IHierarchicalElement>(const_cast<IHierarchicalElement*>(folder));
}

std::u16string TEntryView::GetParentPath() const {
  if (fKind == TKind::ekListed) return Listed().GetPath();
  if (fKind == TKind::ekObject) return std::u16string(FolderOfPath(fEntry->GetFullPath(), NativePathDelimiter()));
  const TRef<IHierarchicalElement> parent = GetParentFolder();
  return parent ? parent->GetFullPath() : std::u16string();
}

std::u16string TEntryView::GetFullPath() const {
  if (fEntry) return fEntry->GetFullPath();
  const std::u16string folder = GetParentPath();
  if (folder.empty()) return std::u16string(GetObjectName());
  const TRef<IHierarchicalRoot> root = GetRoot();
  return JoinPath(folder, GetObjectName(), root ? root->GetPathDelimiter() : NativePathDelimiter());
}

// Whether the entry lies in a tree, or in a listing.
bool TEntryView::HasPlace() const {
  return fEntry ? fKind != TKind::ekObject : FolderOfFile() != nullptr;
}

int64_t TEntryView::GetDepth() const {
  if (fKind == TKind::ekListed) return static_cast<int64_t>(Listed().GetParentPathDepth() + 1);
  int64_t depth = 0;
  for (TRef<IHierarchicalElement> parent = GetParentFolder(); parent; parent = parent->GetParentFolder()) ++depth;
  return depth;
}

// --- the entry's own values ------------------------------------------------------------------------------------------

std::u16string_view TEntryView::GetExtension() const {
  return IsFolder() ? std::u16string_view() : ExtensionColumnOfName(GetObjectName());
}

std::u16string TEntryView::GetOwner() const {
  if (fKind == TKind::ekListed) return Listed().GetOwner();
  const TKeyId key = GetOwnerKey();
  return key == kNoKey ? std::u16string() : TextOfKey(key);
}

TFolderStates TEntryView::GetFolderState() const {
  return IsNode() ? Node().GetFolderState() : TFolderStates{0};
}

int64_t TEntryView::CountFiles() const {
  if (!fEntry) return 1;
  return fKind == TKind::ekListed ? int64_t{!fEntry->IsFolder()} : Object().GetFiles();
}

// A listed folder is one folder. A file has no value in the columns of folders.
TMetaDataValue TEntryView::SizeColumn(TColumn pColumn) const {
  if (fKind == TKind::ekFolder) return ValueOfSizes(fFolder->GetValues(), pColumn);
  const bool isListed = fKind == TKind::ekListed;
  switch (pColumn) {
    case TColumn::mdSize:
      return GetSize();
    case TColumn::mdAllocated:
      return GetAllocated();
    case TColumn::mdFiles:
      return CountFiles();
    case TColumn::mdFolders:
      return isListed ? TMetaDataValue(int64_t{fEntry->IsFolder()}) : TMetaDataValue();
    case TColumn::mdItems:
      return isListed ? int64_t{1} : CountFiles();
    default:
      return {};
  }
}

// --- shares and changes ----------------------------------------------------------------------------------------------

// The share of pWhole, in the size that its root's percentages refer to. nullptr for the top folder, which is 100 %.
// While a scan runs, a folder may lack for a moment what its sub-folder has already. A share is never above 100 %.
TMetaDataValue TEntryView::ShareOf(const IHierarchicalElement* pWhole) const {
  const TRef<IHierarchicalRoot> root = pWhole ? pWhole->GetRoot() : GetRoot();
  if (!root) return {};
  if (!pWhole) return 1.0;
  const bool isAllocated = root->GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated;
  return std::min(1.0, isAllocated ? ShareOfWhole(GetAllocated(), pWhole->GetAllocated())
                                   : ShareOfWhole(GetSize(), pWhole->GetSize()));
}

TMetaDataValue TEntryView::ShareOfTop() const {
  TRef<IHierarchicalElement> top = GetParentFolder();
  if (!top) return fKind == TKind::ekFolder ? ShareOf(fFolder) : TMetaDataValue();
  while (TRef<IHierarchicalElement> next = top->GetParentFolder()) top = std::move(next);
  return ShareOf(top.get());
}

// "No value" without a comparison.
TMetaDataValue TEntryView::ChangeColumn(TColumn pColumn) const {
  if (fKind == TKind::ekFile) {
    if (!fEarlier || !fFolder || !fEarlier->AreKnown()) return {};
    const TFileRecord* file = fEarlier->Find(*fFolder, GetObjectName());
    TChange change{.fNow = GetValues(), .fIsNew = file == nullptr};
    if (file) change.fThen = TEntryView(*fFiles, *file, nullptr).GetValues();
    return ValueOfChange(change, pColumn);
  }
  const TRef<IHierarchicalRoot> root = fKind == TKind::ekFolder ? GetRoot() : nullptr;
  const TRef<IComparison> comparison = root ? root->GetComparison() : nullptr;
  if (!comparison) return {};
  TChange change{.fIsGone = (GetFolderState() & fsIsDummyForComparison) != 0};
  if (pColumn == TColumn::mdChangeState) {
    change.fIsNew = !comparison->WasThere(*fFolder);
  } else {
    change.fNow = fFolder->GetValues();
    change.fThen = comparison->EarlierValues(*fFolder);
  }
  return ValueOfChange(change, pColumn);
}

// One switch over all columns, although it is long: so the compiler tells of a column that is missing here.
TMetaDataValue TEntryView::GetValue(TColumn pColumn) const {
  switch (pColumn) {
    case TColumn::mdName:
      return Text(std::u16string(GetObjectName()));
    case TColumn::mdFullPath:
      return Text(GetFullPath());
    case TColumn::mdParentPath:
      return Text(GetParentPath());
    case TColumn::mdExtension:
      return Text(std::u16string(GetExtension()));
    case TColumn::mdOwner:
      return Text(GetOwner());
    case TColumn::mdSize:
    case TColumn::mdAllocated:
    case TColumn::mdFiles:
    case TColumn::mdFolders:
    case TColumn::mdItems:
    case TColumn::mdCompression:
    case TColumn::mdAverageFileSize:
      return SizeColumn(pColumn);
    case TColumn::mdPercentOfParent:
      if (!HasPlace() || fKind == TKind::ekListed) return {};
      return ShareOf(GetParentFolder().get());
    case TColumn::mdPercentOfRoot:
      return ShareOfTop();
    case TColumn::mdLastAccess:
      return Date(GetLastAccessDate());
    case TColumn::mdLastChange:
      return Date(GetLastChangeDate());
    case TColumn::mdCreation:
      return Date(GetCreationDate());
    case TColumn::mdAttributes:
      return int64_t{GetAttributes()};
    case TColumn::mdPathLength:
      return static_cast<int64_t>(GetFullPath().size());
    case TColumn::mdDepth:
      return HasPlace() ? TMetaDataValue(GetDepth()) : TMetaDataValue();
    case TColumn::mdFolderState:
      return fKind == TKind::ekFolder ? TMetaDataValue(int64_t{GetFolderState()}) : TMetaDataValue();
    case TColumn::mdSizeChange:
    case TColumn::mdSizeChangePercent:
    case TColumn::mdFileChange:
    case TColumn::mdAllocatedChange:
    case TColumn::mdChangeState:
      return ChangeColumn(pColumn);
    case TColumn::mdError:
    case TColumn::mdCount:
      break;
  }
  return {};
}

}  // namespace Vantrel
