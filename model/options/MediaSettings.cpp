#include "model/options/MediaSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "platform/text/Text.h"

namespace Vantrel::Exporting {

namespace {

constexpr std::u16string_view kAscending = u"ascending";
constexpr std::u16string_view kDescending = u"descending";

// Removes the text up to the delimiter from the front and returns it.
std::u16string_view TakePart(std::u16string_view& pText, char16_t pDelimiter) {
  const size_t end = std::min(pText.find(pDelimiter), pText.size());
  const std::u16string_view part = pText.substr(0, end);
  pText.remove_prefix(std::min(end + 1, pText.size()));
  return part;
}

bool StartsWithLargest(TColumn pColumn) {
  const TColumnKind kind = ColumnInfo(pColumn).fKind;
  return kind != TColumnKind::ckText && kind != TColumnKind::ckAttributes;
}

}  // namespace

TMediaSettings DefaultMediaSettings(TMediaType pMedia) {
  TMediaSettings settings;
  settings.fNeutralizeFormulas = true;
  if (pMedia != TMediaType::mtCSV) return settings;
  settings.fSeparator = u",";
  settings.fAlternativeSeparator = u";";
  settings.fUsePlainByteValues = true;
  settings.fByteOrderMark = true;
  return settings;
}

bool TryParseSortOrder(std::u16string_view pText, std::optional<TSortOrder>& pOrder) {
  if (pText.empty()) {
    pOrder.reset();
    return true;
  }
  const TColumnInfo* column = FindColumn(TakePart(pText, u','));
  if (column == nullptr) return false;
  bool descending = StartsWithLargest(column->fColumn);
  if (SameTextAscii(pText, kAscending)) {
    descending = false;
  } else if (SameTextAscii(pText, kDescending)) {
    descending = true;
  } else if (!pText.empty()) {
    return false;
  }
  pOrder = {column->fColumn, descending};
  return true;
}

std::u16string SortOrderText(const std::optional<TSortOrder>& pOrder) {
  if (!pOrder) return {};
  std::u16string text(ColumnInfo(pOrder->fColumn).fName);
  if (pOrder->fDescending != StartsWithLargest(pOrder->fColumn))
    text.append(u",").append(pOrder->fDescending ? kDescending : kAscending);
  return text;
}

bool TryParseColumns(std::u16string_view pText, std::vector<TColumn>& pColumns) {
  std::vector<TColumn> columns;
  while (!pText.empty()) {
    const TColumnInfo* column = FindColumn(TakePart(pText, pText.find(u';') == pText.npos ? u',' : u';'));
    if (column == nullptr) return false;
    columns.push_back(column->fColumn);
  }
  pColumns = std::move(columns);
  return true;
}

std::u16string ColumnsText(const std::vector<TColumn>& pColumns) {
  std::u16string text;
  for (const TColumn column : pColumns) text.append(text.empty() ? u"" : u";").append(ColumnInfo(column).fName);
  return text;
}

bool TryParseShare(std::u16string_view pText, double& pShare) {
  constexpr std::u16string_view kNumber = u"0123456789.";
  const size_t end = std::min(pText.find_first_not_of(kNumber), pText.size());
  const std::string number = ToUtf8(pText.substr(0, end));
  pText.remove_prefix(end);
  if (pText.starts_with(u' ')) pText.remove_prefix(1);
  double percent = 0;
  const auto [last, error] = std::from_chars(number.data(), number.data() + number.size(), percent);
  if (error != std::errc() || last != number.data() + number.size() || pText != u"%" || percent > 100) return false;
  pShare = percent / 100;
  return true;
}

std::u16string ShareText(const double& pShare) {
  return FromUtf8(fmt::format("{}%", pShare * 100));
}

bool TryParseRows(std::u16string_view pText, std::optional<int64_t>& pRows) {
  constexpr int64_t kMostRows = 1'000'000;
  int64_t rows = 0;
  if (!pText.empty() && (!TryParseInt64(ToUtf8(pText), rows) || rows < 0 || rows > kMostRows)) return false;
  pRows = pText.empty() ? std::nullopt : std::optional(rows);
  return true;
}

std::u16string RowsText(const std::optional<int64_t>& pRows) {
  return pRows ? FromUtf8(std::to_string(*pRows)) : std::u16string();
}

bool TryParseSeparator(std::u16string_view pText, std::u16string& pSeparator) {
  if (pText.empty() || pText.find_first_of(u"\"\r\n") != std::u16string_view::npos) return false;
  pSeparator = SameTextAscii(pText, u"TAB") ? u"\t" : pText;
  return true;
}

std::u16string SeparatorText(std::u16string_view pSeparator) {
  return std::u16string(pSeparator == u"\t" ? u"TAB" : pSeparator);
}

}  // namespace Vantrel::Exporting
