#include "export/text/TextChart.h"

#include <algorithm>
#include <cmath>

#include "export/text/PaddedTable.h"
#include "platform/text/Text.h"
#include "presentation/charts/ChartSources.h"

namespace Vantrel::Exporting {

using namespace Charts;

namespace {

constexpr int kUsualWidth = 80;
constexpr int kLeastWidth = 40;

std::string PaddedLeft(const std::string& pText, int pWidth) {
  return std::string(static_cast<size_t>(std::max(0, pWidth - DisplayWidth(pText))), ' ') + pText;
}

std::string PaddedRight(const std::string& pText, int pWidth) {
  return pText + std::string(static_cast<size_t>(std::max(0, pWidth - DisplayWidth(pText))), ' ');
}

struct TRow {
  std::string fLabel;
  std::string fNumbers;
  int64_t fValue;
};

// The numbers of all rows have one width.
std::vector<TRow> RowsOf(const std::vector<TChartItem>& pItems, TColumn pColumn, const TValueFormat& pFormat) {
  const auto total = static_cast<double>(std::max<int64_t>(TotalOf(pItems), 1));
  std::vector<std::string> values;
  std::vector<std::string> shares;
  int valueWidth = 0;
  int shareWidth = 0;
  for (const TChartItem& item : pItems) {
    const double share = static_cast<double>(item.fValue) / total;
    values.push_back(ToUtf8(FormatValue(pColumn, item.fValue, pFormat)));
    shares.push_back(ToUtf8(FormatValue(TColumn::mdPercentOfRoot, share, pFormat)));
    valueWidth = std::max(valueWidth, DisplayWidth(values.back()));
    shareWidth = std::max(shareWidth, DisplayWidth(shares.back()));
  }
  std::vector<TRow> rows;
  for (size_t i = 0; i < pItems.size(); ++i)
    rows.push_back({ToDisplay(pItems[i].fLabel),
                    PaddedLeft(values[i], valueWidth) + "  " + PaddedLeft(shares[i], shareWidth), pItems[i].fValue});
  return rows;
}

}  // namespace

bool WriteTextChart(const TChartData& pData, size_t pMostItems, const TValueFormat& pFormat, ILineOutput& pOutput) {
  const std::vector<TChartItem> items = LargestAndRest(pData.fItems, pMostItems, pData.fIsOrdered);
  if (pOutput.LineCount() > 0 && !pOutput.WriteLine("")) return false;
  if (!pOutput.WriteLine(ToDisplay(pData.fTitle)) || !pOutput.WriteLine("")) return false;
  const std::vector<TRow> rows = RowsOf(items, pData.fColumn, pFormat);
  const int width =
      pOutput.LineWidth().fColumns > 0 ? std::max(pOutput.LineWidth().fColumns, kLeastWidth) : kUsualWidth;
  int labelWidth = 0;
  int64_t largest = 1;
  for (const TRow& row : rows) {
    labelWidth = std::max(labelWidth, DisplayWidth(row.fLabel));
    largest = std::max(largest, row.fValue);
  }
  labelWidth = std::min(labelWidth, width / 3);
  const int numbersWidth = rows.empty() ? 0 : DisplayWidth(rows[0].fNumbers);
  const int most = std::max(width - labelWidth - numbersWidth - 4, 1);
  for (const TRow& row : rows) {
    const double share = static_cast<double>(row.fValue) / static_cast<double>(largest);
    const auto bar = static_cast<size_t>(std::lround(share * most));
    const std::string line = PaddedRight(ShortenedToWidth(row.fLabel, labelWidth), labelWidth) + "  " + row.fNumbers;
    if (!pOutput.WriteLine(bar == 0 ? line : line + "  " + std::string(bar, '#'))) return false;
  }
  return true;
}

bool WriteChosenCharts(IHierarchicalRoot& pRoot, const TGlobalOptions& pOptions, const TValueFormat& pFormat,
                       ILineOutput& pOutput) {
  const auto most = static_cast<size_t>(pOptions.ChartItems);
  auto write = [&](bool pIsChosen, const auto& pMake) {
    return !pIsChosen || WriteTextChart(pMake(), most, pFormat, pOutput);
  };
  return write(pOptions.ChartFolders, [&] { return FoldersData(pRoot, 1); }) &&
         write(pOptions.ChartExtensions, [&] { return ExtensionsData(pRoot); }) &&
         write(pOptions.ChartFileTypes, [&] { return FileTypesData(pRoot); }) &&
         write(pOptions.ChartUsers, [&] { return OwnersData(pRoot); }) &&
         write(pOptions.ChartFileAges, [&] { return FileAgesData(pRoot); });
}

}  // namespace Vantrel::Exporting
