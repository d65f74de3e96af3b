#pragma once

// The enumerator of a mounted NTFS volume: its index, and the ordinary way for what the index cannot serve.

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "scan/ntfs/MftEnumerators.h"
#include "scan/storage/NestedEnumerators.h"

namespace Vantrel::Ntfs {

// What all enumerators of one scan share. Never changes.
struct TMixedScan {
  std::u16string fTopPath;
  char16_t fPathDelimiter = u'/';
  std::set<std::u16string> fMounts;  // paths where other volumes are mounted
  // Opens the scan's first folder the ordinary way.
  std::function<TRef<IHierarchicalEnumerator>()> fOpenOrdinary;
};

// Answers from the index. A link that may be followed and a folder where another volume is mounted are listed by the
// ordinary enumerator, whose rules decide whether they are entered.
class TMixedFileSystemEnumerator final : public Enumerators::TBaseNestedHierarchicalEnumerator {
 public:
  TMixedFileSystemEnumerator(TRef<IHierarchicalEnumerator> pIndexed, std::shared_ptr<const TMixedScan> pScan,
                             THierarchicalEnumeratorOptions pOptions);

  bool CanDescend() const override;
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> CreateChildEnumeratorById(uint64_t pId, std::u16string_view pName,
                                                          TAttributes pAttributes) override;
  size_t GetPathLength() const override { return fNestedEnumerator->GetPathLength(); }
  uint64_t GetParentPathDepth() const override { return fNestedEnumerator->GetParentPathDepth(); }

 protected:
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override;

 private:
  bool IsOrdinary(std::u16string_view pName, TAttributes pAttributes) const;
  TRef<IHierarchicalEnumerator> CreateOrdinary(std::u16string_view pName, TAttributes pAttributes) const;

  const std::shared_ptr<const TMixedScan> fScan;
};

}  // namespace Vantrel::Ntfs
