#pragma once

// Unicode normalization form D, in which an accented letter is a letter and an accent.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// Why a text could not be normalized.
enum class TNormalizationError : uint8_t { neNone, neInvalidUnicode, neBufferTooSmall, neInvalidParameter, neOther };

struct TNormalizationResult {
  TNormalizationError fError = TNormalizationError::neNone;
  size_t fPosition = 0;  // of the first invalid unit, counted from 0; for neInvalidUnicode
  uint32_t fCode = 0;    // the system's or the library's error code; for neOther
};

// Brings a text to form D. On an error the result is empty.
TNormalizationResult NormalizeToFormD(std::u16string_view pText, std::u16string& pResult);

// The same for names, which may hold anything: lone surrogates stay as they are, and so does what cannot be normalized.
std::u16string NormalizedFormD(std::u16string_view pText);

// The system's part, for well-formed text that is not empty.
TNormalizationResult NormalizeWellFormedToFormD(std::u16string_view pText, std::u16string& pResult);

}  // namespace Vantrel
