#include "search/files/TextNeedle.h"

#include <algorithm>
#include <bit>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::Search {

namespace {

// The letters of texts and programs, the most frequent first. What is not here is rarer than all of them.
constexpr std::string_view kFrequent = " etaoinsrldcupmfhg_yb,v.w0k1(x)2-;*/=\"3\n45:6z8q79j><{}#'+[]&|!\\";

// How often a byte is met, roughly: a higher number is more often.
int FrequencyOf(uint8_t pByte) {
  // Zeros fill binary files, and they are every second byte of UTF-16.
  if (pByte == 0) return 200;
  if (pByte >= 0x80) return 15;
  const char lower = static_cast<char>(pByte >= 'A' && pByte <= 'Z' ? pByte + 32 : pByte);
  const size_t place = kFrequent.find(lower);
  if (place == std::string_view::npos) return 10;
  const int frequency = 150 - 2 * static_cast<int>(place);
  return pByte == static_cast<uint8_t>(lower) ? frequency : frequency / 2;
}

std::string Encoded(std::u16string_view pCharacter, TTextEncoding pEncoding) {
  if (pEncoding == TTextEncoding::teUtf8) return ToNativeBytes(pCharacter);
  std::string bytes;
  for (const char16_t unit : pCharacter) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    const bool isLowFirst = pEncoding == TTextEncoding::teUtf16LittleEndian;
    bytes += isLowFirst ? low : high;
    bytes += isLowFirst ? high : low;
  }
  return bytes;
}

// The other units that compare equal without regard to case. An ASCII letter has only its ASCII twin.
std::u16string OtherCases(char16_t pUnit) {
  std::u16string others;
  if (pUnit < 0x80) {
    const char16_t folded = pUnit | 0x20;
    if (folded >= u'a' && folded <= u'z') others += static_cast<char16_t>(pUnit ^ 0x20);
    return others;
  }
  const char16_t upper = UpcaseUnit(pUnit);
  for (uint32_t unit = 0x80; unit < 0x10000; ++unit)
    if (unit != pUnit && UpcaseUnit(static_cast<char16_t>(unit)) == upper) others += static_cast<char16_t>(unit);
  return others;
}

}  // namespace

TTextNeedle::TTextNeedle(std::u16string_view pText, TTextEncoding pEncoding, bool pCaseSensitive) {
  for (size_t i = 0; i < pText.size();) {
    const bool isPair = IsLeadSurrogate(pText[i]) && i + 1 < pText.size() && IsTrailSurrogate(pText[i + 1]);
    const size_t length = isPair ? 2 : 1;
    AddCharacter(pText.substr(i, length), pEncoding, pCaseSensitive);
    i += length;
  }
  const bool isSingle =
      std::all_of(fCharacters.begin(), fCharacters.end(), [](const TForms& pForms) { return pForms.size() == 1; });
  if (isSingle)
    for (const TForms& forms : fCharacters) fOnlyForm += forms.front();
  ChooseAnchors();
}

void TTextNeedle::AddCharacter(std::u16string_view pCharacter, TTextEncoding pEncoding, bool pCaseSensitive) {
  TForms forms{Encoded(pCharacter, pEncoding)};
  if (!pCaseSensitive && pCharacter.size() == 1)
    for (const char16_t& unit : OtherCases(pCharacter.front())) forms.push_back(Encoded({&unit, 1}, pEncoding));
  size_t longest = 0;
  for (const std::string& form : forms) longest = std::max(longest, form.size());
  fLongest += longest;
  fCharacters.push_back(std::move(forms));
}

TTextNeedle::TAnchor TTextNeedle::AnchorAt(const TForms& pForms, size_t pByte) {
  TAnchor anchor;
  const auto first = static_cast<uint8_t>(pForms.front()[pByte]);
  for (const std::string& form : pForms) {
    const auto byte = static_cast<uint8_t>(form[pByte]);
    anchor.fBytes.fMask |= static_cast<uint8_t>(byte ^ first);
    anchor.fFrequency = std::max(anchor.fFrequency, FrequencyOf(byte));
  }
  anchor.fBytes.fValue = first | anchor.fBytes.fMask;
  anchor.fFrequency += 20 * std::max(0, std::popcount(anchor.fBytes.fMask) - 1);
  return anchor;
}

// Behind a character whose forms differ in length, no byte has a fixed place. The first byte always has one.
void TTextNeedle::ChooseAnchors() {
  constexpr size_t kFarthest = 256;  // more bytes to choose from would gain nothing
  size_t offset = 0;
  for (size_t character = 0; character < fCharacters.size() && offset <= kFarthest; ++character) {
    const TForms& forms = fCharacters[character];
    const auto [shortest, longest] = std::minmax_element(
        forms.begin(), forms.end(), [](const std::string& pA, const std::string& pB) { return pA.size() < pB.size(); });
    for (size_t i = 0; i < shortest->size(); ++i) {
      fAnchors.push_back(AnchorAt(forms, i));
      fAnchors.back().fCharacter = character;
      fAnchors.back().fOffset = offset + i;
    }
    if (shortest->size() != longest->size()) break;
    offset += shortest->size();
  }
  std::stable_sort(fAnchors.begin(), fAnchors.end(),
                   [](const TAnchor& pA, const TAnchor& pB) { return pA.fFrequency < pB.fFrequency; });
  const TAnchor& second = fAnchors[fAnchors.size() > 1 ? 1 : 0];
  const auto distance = static_cast<ptrdiff_t>(second.fOffset) - static_cast<ptrdiff_t>(fAnchors[0].fOffset);
  fPair = {fAnchors[0].fBytes, second.fBytes, distance, distance};
}

bool TTextNeedle::IsAt(std::string_view pBytes, size_t pPosition) const {
  if (!fOnlyForm.empty()) return pBytes.substr(pPosition).starts_with(fOnlyForm);
  for (const TForms& forms : fCharacters) {
    const std::string_view rest = pBytes.substr(pPosition);
    const auto form =
        std::find_if(forms.begin(), forms.end(), [&](const std::string& pForm) { return rest.starts_with(pForm); });
    if (form == forms.end()) return false;
    pPosition += form->size();
  }
  return true;
}

size_t TTextNeedle::FindIn(std::string_view pBytes, size_t pFrom) const {
  const size_t offset = fAnchors.front().fOffset;
  const size_t place =
      FindWhere(fPair, pBytes, pFrom + offset, [&](size_t pPlace) { return IsAt(pBytes, pPlace - offset); });
  return place == std::string_view::npos ? place : place - offset;
}

}  // namespace Vantrel::Search
