#include <unicode/unorm2.h>

#include "platform/text/Normalization.h"

namespace Vantrel {

TNormalizationResult NormalizeWellFormedToFormD(std::u16string_view pText, std::u16string& pResult) {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const form = unorm2_getNFDInstance(&error);
  pResult.resize(pText.size() * 3);
  // A second call handles the rare text that grows more.
  for (int attempt = 0; U_SUCCESS(error) && attempt < 2; ++attempt) {
    const int32_t length = unorm2_normalize(form, pText.data(), static_cast<int32_t>(pText.size()), pResult.data(),
                                            static_cast<int32_t>(pResult.size()), &error);
    const bool isTooShort = error == U_BUFFER_OVERFLOW_ERROR;
    if (isTooShort) error = U_ZERO_ERROR;
    if (U_SUCCESS(error)) pResult.resize(static_cast<size_t>(length));
    if (!isTooShort) break;
  }
  if (U_SUCCESS(error)) return {};
  pResult.clear();
  switch (error) {
    case U_BUFFER_OVERFLOW_ERROR:
      return {.fError = TNormalizationError::neBufferTooSmall};
    case U_ILLEGAL_ARGUMENT_ERROR:
      return {.fError = TNormalizationError::neInvalidParameter};
    default:
      return {.fError = TNormalizationError::neOther, .fCode = static_cast<uint32_t>(error)};
  }
}

}  // namespace Vantrel
