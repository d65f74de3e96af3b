#pragma once

// The NTFS partitions of a disk, listed as folders.

#include <functional>
#include <string>
#include <vector>

#include "scan/ntfs/MftLocation.h"
#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Ntfs {

struct TNtfsPartition {
  int32_t fNumber = 0;
  TVolumePart fPart;
  std::u16string Name() const;  // "Partition 2"
};

// Whether a table of partitions is at the start. EOSError.
bool IsPartitioned(IVolumeReader& pReader);

struct TDiskPartitions {
  std::vector<TNtfsPartition> fNtfs;
  std::vector<std::string> fOthers;  // what a user is told of those without NTFS: "1 (FAT)"
};

// The partitions of a disk. EOSError.
TDiskPartitions FindPartitions(IVolumeReader& pReader);

// Lists the partitions.
class TPartitionEnumerator final : public Enumerators::TBaseVisualHierarchicalEnumerator {
 public:
  using TOpen = std::function<TRef<IHierarchicalEnumerator>(const TNtfsPartition& pPartition)>;
  TPartitionEnumerator(std::u16string pPath, char16_t pDelimiter, std::vector<TNtfsPartition> pPartitions, TOpen pOpen,
                       THierarchicalEnumeratorOptions pOptions);

  bool Next() override;
  void Reset() override { fNext = 0; }
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> Clone() const override;

  std::u16string_view GetObjectName() const override;
  int64_t GetSize() const override { return 0; }
  int64_t GetAllocated() const override { return 0; }
  TKivFileTime GetLastAccessDate() const override { return {}; }
  TKivFileTime GetLastChangeDate() const override { return {}; }
  TKivFileTime GetCreationDate() const override { return {}; }
  TAttributes GetAttributes() const override { return kAttributeDirectory; }
  bool IsFolder() const override { return true; }
  std::u16string GetFullPath() const override;
  std::u16string GetPath() const override { return fPath; }
  uint32_t GetErrorCode() const override { return 0; }
  TEnumeratorError GetError() const override { return TEnumeratorError::eeOk; }

 private:
  const std::u16string fPath;
  const char16_t fDelimiter;
  const std::vector<TNtfsPartition> fPartitions;
  const TOpen fOpen;
  size_t fNext = 0;  // 0 before the first
  std::u16string fName;
};

}  // namespace Vantrel::Ntfs
