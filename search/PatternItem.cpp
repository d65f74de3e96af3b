#include "search/PatternItem.h"

#include "model/FileNames.h"
#include "platform/Paths.h"

namespace Kiv::PatternMatching {

void TPatternItem::SetFolder(std::u16string_view pPath) {
  fFolderPrefix = pPath;
  fFolderLength = pPath.size();
  if (!fFolderPrefix.empty() && fFolderPrefix.back() != fDelimiter) fFolderPrefix += fDelimiter;
  fFoldedPrefix = TMatchText(fFolderPrefix).Folded();
}

void TPatternItem::SetEntry(const IHierarchicalEnumerator& pEntry) {
  fObject = &pEntry;
  fEntry = &pEntry;
  fIsFolder = pEntry.IsFolder();
  fFilled.reset();
}

void TPatternItem::SetObject(const IHierarchicalBase& pObject) {
  fObject = &pObject;
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
      pText.fText.Set(fIsFolder ? std::u16string_view() : ExtensionColumnOfName(fObject->GetObjectName()));
      return;
    case TColumn::mdFullPath:
      FillFullPath(pText);
      return;
    case TColumn::mdParentPath:
      if (fEntry != nullptr)
        pText.fBuffer.assign(fFolderPrefix, 0, fFolderLength);
      else
        pText.fBuffer = FolderOfPath(fObject->GetFullPath(), fDelimiter);
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

void TPatternItem::FillFullPath(TColumnText& pText) {
  if (fEntry == nullptr) {
    pText.fBuffer = fObject->GetFullPath();
    pText.fText.Set(pText.fBuffer);
    return;
  }
  (pText.fBuffer = fFolderPrefix) += fObject->GetObjectName();
  pText.fText.Set(pText.fBuffer, fFoldedPrefix, TextOf(TColumn::mdName).Folded());
}

void TPatternItem::FillOwner(TColumnText& pText) {
  const uint64_t id = fEntry ? fEntry->GetOwnerId() : 0;
  if (id != 0) {
    const auto known = fOwnerNames.find(id);
    pText.fBuffer = known != fOwnerNames.end() ? known->second : fOwnerNames[id] = fEntry->GetOwner();
  } else {
    const TMetaDataValue value = fObject->GetValue(TColumn::mdOwner);
    const auto* name = std::get_if<std::u16string>(&value);
    pText.fBuffer = name ? *name : std::u16string();
  }
}

}  // namespace Kiv::PatternMatching
