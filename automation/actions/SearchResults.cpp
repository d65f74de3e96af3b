#include "automation/actions/SearchResults.h"

#include <fmt/format.h>

#include <algorithm>

#include "export/json/JSONLists.h"
#include "export/text/ListExport.h"
#include "export/text/RootDescription.h"
#include "export/walk/MediaOptions.h"
#include "platform/text/Text.h"
#include "presentation/lists/FoundList.h"

namespace Vantrel::PostScanActions {

using namespace Exporting;
using Search::TFoundItem;

void SortResults(std::vector<TFoundItem>& pItems, TGlobalOptions& pOptions) {
  Search::SortFoundItems(pItems);
  const auto order = TMediaOptions(pOptions).Effective(TMediaType::mtText).fSortOrder;
  if (order) Presentation::SortFound(pItems, order->fColumn, order->fDescending);
}

std::string FoundSummary(std::span<const TFoundItem> pItems, const TValueFormat& pFormat) {
  int64_t files = 0;
  int64_t bytes = 0;
  for (const TFoundItem& item : pItems) {
    if (item.fIsFolder) continue;  // its files may be found as well
    ++files;
    bytes += item.fValues.fSize;
  }
  const int64_t folders = static_cast<int64_t>(pItems.size()) - files;
  std::string text = CountText(files, "file", "files", pFormat);
  if (folders > 0) text += " and " + CountText(folders, "folder", "folders", pFormat);
  text += " found";
  if (files > 0) text += ", " + ToUtf8(FormatValue(TColumn::mdSize, bytes, pFormat));
  return text;
}

namespace {

// The results as a list. Its rows take more memory than the items themselves, so a part of them is made at a time.
TListInParts PartsOf(const TSearchResults& pResults, std::vector<TColumn> pColumns, bool pForPrograms) {
  if (pColumns.empty()) pColumns = Presentation::UsualFoundColumns(pForPrograms);
  return [&pResults, columns = std::move(pColumns)](const TTakeListPart& pTake) {
    constexpr size_t kItemsInPart = 4096;
    const std::span<const TFoundItem> items = pResults.fItems;
    size_t begin = 0;
    do {
      const auto part = items.subspan(begin, std::min(kItemsInPart, items.size() - begin));
      if (!pTake(Presentation::FoundList(pResults.fTitle, part, columns))) return false;
      begin += kItemsInPart;
    } while (begin < items.size());
    return true;
  };
}

}  // namespace

bool WriteSearchResults(const TSearchResults& pResults, TExportFormat pFormat, TGlobalOptions& pOptions,
                        std::u16string_view pFile, ILineOutput& pOutput) {
  const bool isReport = pFormat == TExportFormat::efReport;
  const TMediaSettings settings =
      isReport ? TMediaOptions(pOptions).Effective(TMediaType::mtText) : RowSettings(pFormat, pOptions, pFile);
  const TListInParts parts = PartsOf(pResults, settings.fColumns, !isReport);
  if (!isReport) return WriteListAsDelimited(parts, settings, pOutput);
  if (pResults.fItems.empty()) return pOutput.WriteLine(pResults.fSummary);
  return WriteListAsText(parts, FormatOf(settings), pOutput) && pOutput.WriteLine("") &&
         pOutput.WriteLine(pResults.fSummary);
}

void ExportSearchResults(const TSearchResults& pResults, const CommandLine::TExportRequest& pRequest,
                         TGlobalOptions& pOptions, const TExportRun& pRun) {
  TExportFile file(pRequest.fFile, pRun.fIsCancelled);
  if (pRequest.fFormat == TExportFormat::efPathList) {
    file.SetLineEnd(EndOfPath(pRun.fPathsEndWithNul));
    for (const TFoundItem& item : pResults.fItems) {
      const std::u16string path = item.FullPath();
      file.WriteLine(pRun.fPathsEndWithNul ? ToNativeBytes(path) : ToDisplay(path));
    }
  } else if (IsJSON(pRequest.fFormat)) {
    const TMediaSettings settings = RowSettings(pRequest.fFormat, pOptions, pRequest.fFile);
    WriteListAsJSON(PartsOf(pResults, settings.fColumns, true), "search", nullptr, LayoutOf(pRequest.fFormat), file);
  } else {
    WriteSearchResults(pResults, pRequest.fFormat, pOptions, pRequest.fFile, file);
  }
  file.Commit();
}

}  // namespace Vantrel::PostScanActions
