#pragma once

// A row for what was in an earlier scan and is not there any more.

#include "model/tree/CustomFolder.h"

namespace Vantrel {

// Stands for a folder, or for the "[Files]" row of one, that was in an earlier scan and is not there now. It is made
// for the caller and knows its parent, but its parent does not know it: it is in no tree, and nothing counts it. All
// its own values are 0, and the columns of change tell what it held. Its sub-folders are the rows of what was beneath
// it, as long as its root is compared.
class TGoneFolder : public TCustomFolderData {
 public:
  TGoneFolder(IFolderData& pParent, std::u16string_view pName, bool pIsFileGroup);

  bool IsFileGroup() const override { return fIsFileGroup; }
  std::u16string_view GetObjectName() const override;
  std::u16string GetFullPath() const override;
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  // There is nothing to scan, to add to or to take out. The calls do nothing.
  TRef<IFolderData> CreateChild(std::u16string_view) override { return nullptr; }
  bool Refresh(bool) override { return false; }
  void Reset() override {}
  void Remove() override {}

 private:
  const bool fIsFileGroup;
};

}  // namespace Vantrel
