#pragma once

// A file's node, made on request.

#include "model/tree/FileTable.h"
#include "model/tree/HierarchicalData.h"

namespace Vantrel {

// A file node, made on request from a file of a folder's table. It keeps the values that the table had at that moment.
class TCustomFileData : public TBaseHierarchicalElement<IHierarchicalElement> {
 public:
  int64_t GetSize() const override;
  int64_t GetAllocated() const override;
  int64_t GetFiles() const override { return 1; }
  bool IsFolder() const override { return false; }
  IFolderData* AsFolder() override { return nullptr; }
  // A file has no sub-folders and no children: EInvalidOperation.
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  TRef<IFolderData> CreateChild(std::u16string_view pName) override;

 protected:
  TCustomFileData(IHierarchicalElement& pFolder, std::u16string_view pName, const TFileRecord& pRecord);
};

class TFileData : public TCustomFileData {
 public:
  TFileData(IHierarchicalElement& pFolder, const TFileTable& pTable, const TFileRecord& pRecord)
      : TCustomFileData(pFolder, pTable.NameOf(pRecord), pRecord) {}
};

}  // namespace Vantrel
