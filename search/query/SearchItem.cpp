#include "search/query/SearchItem.h"

#include "platform/files/Paths.h"

namespace Vantrel::Search {

using PatternMatching::TMatchText;

void TSearchItem::SetFolder(std::u16string_view pPath, int64_t pLevel) {
  SetFolder(pLevel);
  fFolder.fBuffer = pPath;
  fHasFolderPath = true;
}

void TSearchItem::SetFolder(int64_t pLevel) {
  fLevel = pLevel;
  fHasFolderPath = fHasFolderText = fHasPathPrefix = false;
}

const std::u16string& TSearchItem::FolderPath() {
  if (!fHasFolderPath) {
    fFolder.fBuffer = fEntry->GetParentPath();
    fHasFolderPath = true;
  }
  return fFolder.fBuffer;
}

TMatchText& TSearchItem::FolderText() {
  if (!fHasFolderText) {
    fFolder.fText.Set(FolderPath());
    fFolderName.Set(FileNameOfPath(fFolder.fBuffer, fDelimiter));
    fHasFolderText = true;
  }
  return fFolder.fText;
}

TMatchText& TSearchItem::FolderNameText() {
  FolderText();
  return fFolderName;
}

TMatchText& TSearchItem::FillName() {
  fFilled |= kName;
  fName.fText.Set(fEntry->GetObjectName());
  return fName.fText;
}

// In one folder only the end of the path differs from entry to entry, so its beginning is folded once.
TMatchText& TSearchItem::FillFullPath() {
  fFilled |= kFullPath;
  std::u16string& path = fFullPath.fBuffer;
  if (FolderPath().empty()) {  // the top of a tree
    path = fEntry->GetFullPath();
    fFullPath.fText.Set(path);
    fHasPathPrefix = false;
    return fFullPath.fText;
  }
  if (!fHasPathPrefix) {
    path = fFolder.fBuffer;
    if (path.back() != fDelimiter) path += fDelimiter;
    fPrefixLength = path.size();
    fFullPath.fText.Set(path);
    fPrefixUnits = fFullPath.fText.Units();
    fHasPathPrefix = true;
  }
  path.resize(fPrefixLength);
  path += fEntry->GetObjectName();
  TMatchText& name = Name();
  fFullPath.fText.SetBehind(fPrefixLength, path, name.Folded(), fPrefixUnits | name.Units());
  return fFullPath.fText;
}

TMatchText& TSearchItem::FillOwner() {
  fFilled |= kOwner;
  std::u16string& owner = fOwner.fBuffer;
  const uint64_t id = fListed ? fListed->GetOwnerId() : 0;
  if (id != 0) {
    const auto known = fOwnerNames.find(id);
    owner = known != fOwnerNames.end() ? known->second : fOwnerNames[id] = fListed->GetOwner();
  } else {
    owner = fEntry->GetOwner();
  }
  if (owner.empty() && fFacts != nullptr) owner = fFacts->GetOwner(*this);
  fOwner.fText.Set(owner);
  return fOwner.fText;
}

}  // namespace Vantrel::Search
