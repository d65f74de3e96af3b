// What the switches do that say what reports and exports look like.

#include <algorithm>
#include <string>

#include "automation/commandline/GeneratedText.h"
#include "automation/commandline/SwitchEffects.h"
#include "platform/text/Text.h"
#include "search/patterns/SizeText.h"

namespace Vantrel::CommandLine {

using namespace Vantrel::Exporting;

namespace {

constexpr int64_t kSmallFolder = 10 << 20;

// Sets a value for every kind of output with rows and columns.
template <class TChange>
void ChangeTextExports(TCommandLineState& pState, const TChange& pChange) {
  for (const TMediaType media : {TMediaType::mtText, TMediaType::mtCSV}) pChange(pState.fOptions->Media(media));
}

// A size as other programs write it too: "100M" is "100MB". ESizeTextError.
int64_t SizeOf(std::u16string_view pText, bool pUnitRequired) {
  std::u16string size(pText);
  if (!size.empty() && std::u16string_view(u"kKmMgGtT").find(size.back()) != std::u16string_view::npos) size += u'B';
  return ParseSizeText(size, pUnitRequired);
}

}  // namespace

void Expand(TCommandLineState& pState, std::u16string_view pLevel) {
  int64_t level = TRecursionLevel::kUnlimited;
  const bool isLevel = TryParseInt64(ToUtf8(pLevel), level) && level >= -1 && level <= TRecursionLevel::kUnlimited;
  if (!isLevel && !pLevel.empty())
    pState.fWarnings.push_back("Unexpected value after /EXPAND: " + ToDisplay(pLevel) +
                               ". Doing a full expand instead.");
  // The user's choice is marked, even if it is all levels, so that no use of the settings replaces it with its own
  // default.
  if (!isLevel || level < 0) level = TRecursionLevel::kUnlimited;
  // An XML file without some folders is useless for a later comparison. So only its own option, XMLLevels, limits it.
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fRecursionLevel = {static_cast<int32_t>(level), false};
  });
}

void LimitDepth(TCommandLineState& pState, std::u16string_view pLevel) {
  int64_t level = 0;
  if (!TryParseInt64(ToUtf8(pLevel), level) || level < -1)
    throw EInvalidArgumentValue(ToQuotedDisplay(pLevel) +
                                " is not allowed; expected a number of levels, or -1 for all");
  Expand(pState, pLevel);
}

void SortBy(TCommandLineState& pState, std::u16string_view pColumn) {
  std::optional<TSortOrder> order;
  if (!TryParseSortOrder(pColumn, order))
    throw EInvalidArgumentValue(ToQuotedDisplay(pColumn) +
                                " names no order; expected a column, then \",ascending\" or \",descending\" if wanted. "
                                "Columns are " +
                                ColumnWords(", "));
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) { pSettings.fSortOrder = order; });
}

void UseColumns(TCommandLineState& pState, std::u16string_view pColumns) {
  std::vector<TColumn> columns;
  if (!TryParseColumns(pColumns, columns))
    throw EInvalidArgumentValue(ToQuotedDisplay(pColumns) +
                                " names no columns joined with \",\" or \";\". Columns are " + ColumnWords(", "));
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) { pSettings.fColumns = columns; });
}

void ShowFiles(TCommandLineState& pState, std::u16string_view pValue) {
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    if (IsOn(pValue))
      pSettings.fIncludedObjectTypes |= ioFiles;
    else
      pSettings.fIncludedObjectTypes &= ~TIncludedObjectTypes{ioFiles};
  });
}

void SetElements(TCommandLineState& pState, std::u16string_view pElements) {
  int64_t elements = 0;
  if (!TryParseInt64(ToUtf8(pElements), elements) || elements < 1 || elements > kAllObjectTypes)
    throw EInvalidArgumentValue(
        ToQuotedDisplay(pElements) +
        " is not allowed; expected the sum of 1 for folders, 2 for the files of a folder as one "
        "row and 4 for single files");
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fIncludedObjectTypes = static_cast<TIncludedObjectTypes>(elements);
  });
}

void LeaveOutSmall(TCommandLineState& pState, std::u16string_view pSmallest) {
  double share = 0;
  const bool isShare = TryParseShare(pSmallest, share);
  const int64_t size = isShare ? 0 : SizeOf(pSmallest, true);
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fSmallestFolder = size;
    pSettings.fSmallestShare = share;
  });
}

void LimitRows(TCommandLineState& pState, std::u16string_view pRows) {
  std::optional<int64_t> rows;
  if (pRows.empty() || !TryParseRows(pRows, rows))
    throw EInvalidArgumentValue(ToQuotedDisplay(pRows) + " is not allowed; expected 0..1000000, and 0 shows all");
  pState.fOptions->Media(TMediaType::mtText).fMostRows = rows;
}

// After all switches, whichever came first.
void Reverse(TCommandLineState& pState, std::u16string_view) {
  pState.fReverses = true;
}

void ReverseOrders(TGlobalOptions& pOptions) {
  TSortOrder usual;
  if (pOptions.UseAllocatedForShares) usual.fColumn = TColumn::mdAllocated;
  for (const TMediaType media : {TMediaType::mtText, TMediaType::mtCSV}) {
    std::optional<TSortOrder>& order = pOptions.Media(media).fSortOrder;
    order = order.value_or(usual);
    order->fDescending = !order->fDescending;
  }
}

void LeadWithSize(TCommandLineState& pState, std::u16string_view pValue) {
  pState.fOptions->UseAllocatedForShares = !IsOn(pValue);
}

void HideSmallFolders(TCommandLineState& pState, std::u16string_view pSize) {
  const int64_t size = pSize.empty() ? kSmallFolder : SizeOf(pSize, false);
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) { pSettings.fSmallestFolder = size; });
}

void SetTitle(TCommandLineState& pState, std::u16string_view pTitle) {
  const std::string title = ToUtf8(pTitle);
  if (title != ToNativeBytes(pTitle)) throw EInvalidArgumentValue(ToQuotedDisplay(pTitle) + " is no text");
  pState.fOptions->ExportTitle = title;
}

void SetSeparator(TCommandLineState& pState, std::u16string_view pSeparator) {
  std::u16string separator;
  if (!TryParseSeparator(pSeparator, separator))
    throw EInvalidArgumentValue(ToQuotedDisplay(pSeparator) +
                                " cannot stand between fields: it is empty or holds a quote or a line break");
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fSeparator = separator;
    pSettings.fUseAlternativeSeparator = false;
  });
}

void OmitHeaders(TCommandLineState& pState, std::u16string_view) {
  ChangeTextExports(pState, [](TMediaSettings& pSettings) { pSettings.fIncludeHeader = false; });
}

void SetColors(TCommandLineState& pState, std::u16string_view pUse) {
  if (!FindOption("Colors")->fSet(*pState.fOptions, ToUtf8(pUse)))
    throw EInvalidArgumentValue(ToQuotedDisplay(pUse) + " is not allowed; expected auto, always or never");
}

void OmitUnits(TCommandLineState& pState, std::u16string_view) {
  ChangeTextExports(pState, [](TMediaSettings& pSettings) { pSettings.fShowUnits = false; });
}

}  // namespace Vantrel::CommandLine
