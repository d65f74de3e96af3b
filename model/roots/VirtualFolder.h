#pragma once

// A view of a root's folder as a part of all roots together.

#include <utility>

#include "model/tree/HierarchicalData.h"

namespace Vantrel {

// Shows a folder of a root at its place in the combined root. Parent, depth and share are those of that place.
// Everything else is the folder's own, and calls on the view act on the folder.
class TVirtualFolder : public TBaseVariantMetaDataProvider<IFolderData> {
 public:
  TVirtualFolder(TRef<IFolderData> pFolder, TRef<IHierarchicalElement> pParent)
      : fFolder(std::move(pFolder)), fParent(std::move(pParent)) {}

  TRef<IHierarchicalElement> GetParentFolder() const override { return fParent; }
  std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const override;
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  TRef<IFolderData> GetFilesNode() const override;

  std::u16string_view GetObjectName() const override { return fFolder->GetObjectName(); }
  int64_t GetSize() const override { return fFolder->GetSize(); }
  int64_t GetAllocated() const override { return fFolder->GetAllocated(); }
  int64_t GetFiles() const override { return fFolder->GetFiles(); }
  int64_t GetFolders() const override { return fFolder->GetFolders(); }
  TSizeValues GetValues() const override { return fFolder->GetValues(); }
  TKivFileTime GetLastAccessDate() const override { return fFolder->GetLastAccessDate(); }
  TKivFileTime GetLastChangeDate() const override { return fFolder->GetLastChangeDate(); }
  TKivFileTime GetCreationDate() const override { return fFolder->GetCreationDate(); }
  TAttributes GetAttributes() const override { return fFolder->GetAttributes(); }
  bool IsFolder() const override { return true; }
  bool IsFileGroup() const override { return fFolder->IsFileGroup(); }
  std::u16string GetFullPath() const override { return fFolder->GetFullPath(); }
  TRef<IHierarchicalRoot> GetRoot() const override { return fFolder->GetRoot(); }
  TKeyId GetOwnerKey() const override { return fFolder->GetOwnerKey(); }
  TFolderStates GetFolderState() const override { return fFolder->GetFolderState(); }
  void IncludeFolderState(TFolderStates pBits) override { fFolder->IncludeFolderState(pBits); }
  void ExcludeFolderState(TFolderStates pBits) override { fFolder->ExcludeFolderState(pBits); }
  IFolderData* AsFolder() override { return this; }
  TRef<IFolderData> CreateChild(std::u16string_view pName) override { return fFolder->CreateChild(pName); }
  TRef<ICustomAssocSizeArray> GetUserSizeArray() const override { return fFolder->GetUserSizeArray(); }
  TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const override { return fFolder->GetExtensionSizeArray(); }
  TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType pDateType) const override {
    return fFolder->GetFileAgeDistribution(pDateType);
  }
  void ReadStatistics(TStatisticsReading& pReading) const override { fFolder->ReadStatistics(pReading); }
  void AddChildValues(const IFolderData& pChild, bool pNotify) override { fFolder->AddChildValues(pChild, pNotify); }
  void SetNewerLastAccessDate(TKivFileTime pDate) override { fFolder->SetNewerLastAccessDate(pDate); }
  void SetNewerLastChangeDate(TKivFileTime pDate) override { fFolder->SetNewerLastChangeDate(pDate); }
  TRef<const TFileTable> GetFileTable() const override { return fFolder->GetFileTable(); }
  std::vector<TRef<IHierarchicalElement>> FindFiles() override { return fFolder->FindFiles(); }
  size_t GetSubFolderCount() const override { return fFolder->GetSubFolderCount(); }
  bool Refresh(bool pRecursive) override { return fFolder->Refresh(pRecursive); }
  void Reset() override { fFolder->Reset(); }
  void Remove() override { fFolder->Remove(); }
  void Dispose() override {}  // the folder belongs to its root

 private:
  const TRef<IFolderData> fFolder;
  const TRef<IHierarchicalElement> fParent;
};

}  // namespace Vantrel
