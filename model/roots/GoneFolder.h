#pragma once

// A row for a folder that an earlier scan had and that is gone now.

#include "model/tree/CustomFolder.h"

namespace Vantrel {

// Represents a folder, or the "[Files]" row of one, that an earlier scan had and that is gone now. It is made for the
// caller. It knows its parent, but its parent does not know it. So it is in no tree, and no totals include it. All its
// own values are 0; the columns of change tell what it held. Its sub-folders are the rows of the folders that were
// beneath it, as long as its root has a comparison.
class TGoneFolder : public TCustomFolderData {
 public:
  TGoneFolder(IFolderData& pParent, std::u16string_view pName, bool pIsFileGroup);

  bool IsFileGroup() const override { return fIsFileGroup; }
  std::u16string_view GetObjectName() const override;
  std::u16string GetFullPath() const override;
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  // There is nothing to scan, add or remove, so these calls do nothing.
  TRef<IFolderData> CreateChild(std::u16string_view) override { return nullptr; }
  bool Refresh(bool) override { return false; }
  void Reset() override {}
  void Remove() override {}

 private:
  const bool fIsFileGroup;
};

}  // namespace Vantrel
