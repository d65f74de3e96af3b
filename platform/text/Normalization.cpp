#include "platform/text/Normalization.h"

#include "platform/text/Utf.h"

namespace Vantrel {

namespace {

// The position of the first lone surrogate at or behind pBegin; the text's length if there is none.
size_t FindLoneSurrogate(std::u16string_view pText, size_t pBegin) {
  for (size_t at = pBegin; at < pText.size(); ++at) {
    if (IsTrailSurrogate(pText[at])) return at;
    if (!IsLeadSurrogate(pText[at])) continue;
    if (at + 1 == pText.size() || !IsTrailSurrogate(pText[at + 1])) return at;
    ++at;
  }
  return pText.size();
}

}  // namespace

TNormalizationResult NormalizeToFormD(std::u16string_view pText, std::u16string& pResult) {
  pResult.clear();
  const size_t lone = FindLoneSurrogate(pText, 0);
  if (lone < pText.size()) return {.fError = TNormalizationError::neInvalidUnicode, .fPosition = lone};
  return pText.empty() ? TNormalizationResult() : NormalizeWellFormedToFormD(pText, pResult);
}

std::u16string NormalizedFormD(std::u16string_view pText) {
  std::u16string result, part;
  for (size_t begin = 0; begin < pText.size();) {
    const size_t end = FindLoneSurrogate(pText, begin);
    const std::u16string_view wellFormed = pText.substr(begin, end - begin);
    const bool isNormalized =
        !wellFormed.empty() && NormalizeWellFormedToFormD(wellFormed, part).fError == TNormalizationError::neNone;
    result += isNormalized ? std::u16string_view(part) : wellFormed;
    if (end < pText.size()) result += pText[end];
    begin = end + 1;
  }
  return result;
}

}  // namespace Vantrel
