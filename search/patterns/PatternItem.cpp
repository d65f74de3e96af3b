#include "search/patterns/PatternItem.h"

namespace Vantrel::PatternMatching {

void TPatternItem::SetFolder(std::u16string_view pPath) {
  fFolderPrefix = pPath;
  fFolderLength = pPath.size();
  if (!fFolderPrefix.empty() && fFolderPrefix.back() != fDelimiter) fFolderPrefix += fDelimiter;
  fPathHasPrefix = false;
}

void TPatternItem::SetEntry(const IHierarchicalEnumerator& pEntry) {
  SetObject(TEntryView(pEntry));
  fEntry = &pEntry;
}

void TPatternItem::SetObject(const TEntryView& pObject) {
  fObject = pObject;
  fEntry = nullptr;
  fIsFolder = pObject.IsFolder();
  fFilled.reset();
}

void TPatternItem::Fill(TColumn pColumn, TColumnText& pText) {
  fFilled.set(static_cast<size_t>(pColumn));
  switch (pColumn) {
    case TColumn::mdName:
      pText.fText.Set(fObject->GetObjectName());
      return;
    case TColumn::mdExtension:
      pText.fText.Set(fObject->GetExtension());
      return;
    case TColumn::mdFullPath:
      FillFullPath(pText);
      return;
    case TColumn::mdParentPath:
      if (fEntry != nullptr)
        pText.fBuffer.assign(fFolderPrefix, 0, fFolderLength);
      else
        pText.fBuffer = fObject->GetParentPath();
      break;
    case TColumn::mdOwner:
      FillOwner(pText);
      break;
    default: {
      TValueFormat format;
      format.fPlainByteValues = true;
      pText.fBuffer = fObject->GetFormattedValue(pColumn, format);
    }
  }
  pText.fText.Set(pText.fBuffer);
}

// In one folder only the end of the path differs from entry to entry.
void TPatternItem::FillFullPath(TColumnText& pText) {
  if (fEntry == nullptr) {
    pText.fBuffer = fObject->GetFullPath();
    pText.fText.Set(pText.fBuffer);
    fPathHasPrefix = false;
    return;
  }
  if (!fPathHasPrefix) {
    pText.fBuffer = fFolderPrefix;
    pText.fText.Set(pText.fBuffer);
    fPrefixUnits = pText.fText.Units();
    fPathHasPrefix = true;
  }
  pText.fBuffer.resize(fFolderPrefix.size());
  pText.fBuffer += fObject->GetObjectName();
  TMatchText& name = TextOf(TColumn::mdName);
  pText.fText.SetBehind(fFolderPrefix.size(), pText.fBuffer, name.Folded(), fPrefixUnits | name.Units());
}

void TPatternItem::FillOwner(TColumnText& pText) {
  const uint64_t id = fEntry ? fEntry->GetOwnerId() : 0;
  if (id != 0) {
    const auto known = fOwnerNames.find(id);
    pText.fBuffer = known != fOwnerNames.end() ? known->second : fOwnerNames[id] = fEntry->GetOwner();
  } else {
    pText.fBuffer = fObject->GetOwner();
  }
}

}  // namespace Vantrel::PatternMatching
