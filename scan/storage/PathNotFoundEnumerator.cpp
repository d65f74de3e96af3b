#include "scan/storage/PathNotFoundEnumerator.h"

#include <utility>

#include "platform/files/Paths.h"
#include "scan/files/LinkRules.h"

namespace Vantrel::Enumerators {

TPathNotFoundEnumerator::TPathNotFoundEnumerator(std::u16string pPath, uint32_t pErrorCode,
                                                 THierarchicalEnumeratorOptions pOptions)
    : TBaseVisualHierarchicalEnumerator(pOptions), fEnumeratedPath(std::move(pPath)), fErrorCode(pErrorCode) {}

TRef<IHierarchicalEnumerator> TPathNotFoundEnumerator::CreateChildEnumerator(std::u16string_view pName, TAttributes) {
  return MakeRef<TPathNotFoundEnumerator>(JoinPath(fEnumeratedPath, pName, NativePathDelimiter()), fErrorCode,
                                          fOptions);
}

TRef<IHierarchicalEnumerator> TPathNotFoundEnumerator::Clone() const {
  return MakeRef<TPathNotFoundEnumerator>(*this);
}

std::u16string_view TPathNotFoundEnumerator::GetObjectName() const {
  return FileNameOfPath(fEnumeratedPath, NativePathDelimiter());
}

TEnumeratorError TPathNotFoundEnumerator::GetError() const {
  return ClassifyEnumeratorError(fErrorCode, {});
}

}  // namespace Vantrel::Enumerators
