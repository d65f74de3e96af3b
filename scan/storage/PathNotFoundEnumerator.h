#pragma once

// The enumerator for a path that could not be opened.

#include <cstdint>
#include <string>

#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Enumerators {

// Stands for a path that could not be opened. It lists nothing and reports the error.
class TPathNotFoundEnumerator : public TBaseVisualHierarchicalEnumerator {
 public:
  TPathNotFoundEnumerator(std::u16string pPath, uint32_t pErrorCode, THierarchicalEnumeratorOptions pOptions);

  bool Next() override { return false; }
  void Reset() override {}
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override { return Clone(); }
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
  bool CanDescend() const override { return false; }
  std::u16string GetFullPath() const override { return fEnumeratedPath; }
  std::u16string GetPath() const override { return fEnumeratedPath; }
  uint32_t GetErrorCode() const override { return fErrorCode; }
  TEnumeratorError GetError() const override;

 private:
  std::u16string fEnumeratedPath;
  uint32_t fErrorCode;
};

}  // namespace Vantrel::Enumerators
