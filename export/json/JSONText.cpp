#include "export/json/JSONText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "platform/text/Numbers.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::JSON {

namespace {

bool IsPlain(char16_t pUnit) {
  return pUnit >= u' ' && pUnit < 0x80 && pUnit != u'"' && pUnit != u'\\';
}

void AppendEscape(std::string& pTarget, char16_t pUnit) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  pTarget += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) pTarget += kDigits[(pUnit >> shift) & 0xF];
}

void AppendSpecial(std::string& pTarget, char16_t pUnit) {
  switch (pUnit) {
    case u'"':
    case u'\\':
      pTarget += '\\';
      pTarget += static_cast<char>(pUnit);
      return;
    case u'\n':
      pTarget += "\\n";
      return;
    case u'\t':
      pTarget += "\\t";
      return;
    default:
      AppendEscape(pTarget, pUnit);
  }
}

}  // namespace

void AppendText(std::string& pTarget, std::u16string_view pText) {
  while (!pText.empty()) {
    // Most names are plain ASCII to their end.
    const auto plain = static_cast<size_t>(std::find_if_not(pText.begin(), pText.end(), IsPlain) - pText.begin());
    pTarget.append(pText.begin(), pText.begin() + static_cast<ptrdiff_t>(plain));
    pText.remove_prefix(plain);
    if (pText.empty()) return;
    const char16_t unit = pText.front();
    const bool isPair = IsLeadSurrogate(unit) && pText.size() > 1 && IsTrailSurrogate(pText[1]);
    const bool isLone = !isPair && (IsLeadSurrogate(unit) || IsTrailSurrogate(unit));
    if (unit < 0x80 || isLone)
      AppendSpecial(pTarget, unit);
    else
      pTarget += ToUtf8(pText.substr(0, isPair ? 2 : 1));
    pText.remove_prefix(isPair ? 2 : 1);
  }
}

std::string KeyOf(TColumn pColumn) {
  return pColumn == TColumn::mdFullPath ? "path" : KeyOfCaption(ColumnInfo(pColumn).fName);
}

std::string KeyOfCaption(std::u16string_view pCaption) {
  std::string key;
  for (const char16_t unit : pCaption) {
    const char16_t letter = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
    if ((letter >= u'a' && letter <= u'z') || (letter >= u'0' && letter <= u'9')) key += static_cast<char>(letter);
    if (letter == u'%') key += "percent";
  }
  return key;
}

void TMembers::Key(std::string_view pKey) {
  fTarget += std::exchange(fIsFirst, false) ? "\"" : ",\"";
  fTarget += pKey;
  fTarget += "\":";
}

void TMembers::BeginText(std::string_view pKey) {
  Key(pKey);
  fTarget += '"';
}

void TMembers::Add(std::string_view pKey, std::u16string_view pText) {
  if (pText.empty()) return;
  BeginText(pKey);
  AppendText(fTarget, pText);
  EndText();
}

void TMembers::AddOwn(std::string_view pKey, std::string_view pText) {
  BeginText(pKey);
  fTarget += pText;
  EndText();
}

void TMembers::AddNumber(std::string_view pKey, int64_t pNumber) {
  Key(pKey);
  AppendInteger(fTarget, pNumber);
}

void TMembers::AddBoolean(std::string_view pKey, bool pValue) {
  Key(pKey);
  fTarget += pValue ? "true" : "false";
}

void TMembers::AddDate(std::string_view pKey, TKivFileTime pDate) {
  if (!pDate.IsSet() || pDate.fTicks < 0) return;
  BeginText(pKey);
  AppendIsoUtc(fTarget, pDate);
  EndText();
}

// In per cent, with up to three decimals. JSON has no form for what is no finite number.
void TMembers::AddPercent(std::string_view pKey, double pShare) {
  constexpr double kMost = 1e12;
  if (!std::isfinite(pShare) || std::abs(pShare) > kMost) return;
  Key(pKey);
  const int64_t thousandths = std::llround(pShare * 100 * 1000);
  if (thousandths < 0) fTarget += '-';
  AppendInteger(fTarget, std::abs(thousandths) / 1000);
  const int64_t rest = std::abs(thousandths) % 1000;
  if (rest == 0) return;
  const std::array<char, 4> decimals{'.', static_cast<char>('0' + rest / 100), static_cast<char>('0' + rest / 10 % 10),
                                     static_cast<char>('0' + rest % 10)};
  fTarget.append(decimals.begin(), decimals.end());
  while (fTarget.back() == '0') fTarget.pop_back();
}

void TMembers::AddValue(std::string_view pKey, const TMetaDataValue& pValue) {
  if (const auto* number = std::get_if<int64_t>(&pValue)) return AddNumber(pKey, *number);
  if (const auto* share = std::get_if<double>(&pValue)) return AddPercent(pKey, *share);
  if (const auto* date = std::get_if<TKivFileTime>(&pValue)) return AddDate(pKey, *date);
  if (const auto* text = std::get_if<std::u16string>(&pValue)) return Add(pKey, *text);
}

// --- documents -------------------------------------------------------------------------------------------------------

TMembers BeginHead(std::string& pTarget, std::string_view pKind) {
  TMembers head(pTarget);
  head.AddOwn("format", kFormatName);
  head.AddNumber("version", kFormatVersion);
  head.AddOwn("kind", pKind);
  return head;
}

TDocument::TDocument(IByteSink& pSink, TLayout pLayout, std::string pHead) : fSink(pSink), fLayout(pLayout) {
  if (fLayout == TLayout::loObject) {
    pHead.pop_back();
    pHead += ",\n\"rows\":[";
  }
  fSink.Write(pHead);
}

void TDocument::WriteRows(std::string_view pRows) {
  if (pRows.empty()) return;
  // No comma stands before the first row.
  if (std::exchange(fIsFirst, false) && fLayout == TLayout::loObject) pRows.remove_prefix(1);
  fSink.Write(pRows);
}

void TDocument::End() {
  fSink.Write(fLayout == TLayout::loObject ? "\n]}\n" : "\n");
}

}  // namespace Vantrel::JSON
