#pragma once

// The base classes of all enumerators: options, columns, and the name as shown.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel::Enumerators {

// Base of all enumerators.
class TBaseHierarchicalEnumerator : public TInterfaced<IHierarchicalEnumerator> {
 public:
  TMetaDataValue GetValue(TColumn pColumn) const override;
  THierarchicalEnumeratorOptions GetOptions() const { return fOptions; }
  std::u16string GetOwner() const override { return {}; }
  uint64_t GetOwnerId() const override { return 0; }
  bool CanDescend() const override { return IsFolder(); }
  // Computed on first use.
  uint64_t GetParentPathDepth() const override;

 protected:
  explicit TBaseHierarchicalEnumerator(THierarchicalEnumeratorOptions pOptions) : fOptions(pOptions) {}

  mutable std::optional<uint64_t> fParentPathDepth;
  THierarchicalEnumeratorOptions fOptions;
};

// Adds the values that a display needs of an entry.
class TBaseVisualHierarchicalEnumerator : public TBaseHierarchicalEnumerator {
 public:
  // The name as shown, with control characters and undecodable bytes as escapes.
  virtual std::u16string GetDisplayName() const;

 protected:
  using TBaseHierarchicalEnumerator::TBaseHierarchicalEnumerator;
};

}  // namespace Vantrel::Enumerators
