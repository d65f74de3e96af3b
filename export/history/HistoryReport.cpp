#include "export/history/HistoryReport.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/text/Text.h"

namespace Vantrel::Exporting {

using Presentation::THistoryEntry;

namespace {

constexpr char kIncompleteMark = '?';
constexpr int kRows = 8;
constexpr int kLeastColumns = 10;

// The sizes that one column of the chart shows.
struct TSpan {
  int64_t fLeast = 0;
  int64_t fMost = 0;
  int64_t fLast = 0;
  bool fIncomplete = false;
};

class THistoryChart {
 public:
  THistoryChart(const std::vector<THistoryEntry>& pEntries, int pWidth, bool pDecimalUnits)
      : fDecimalUnits(pDecimalUnits) {
    constexpr int kUsualWidth = 80;
    if (pWidth <= 0) pWidth = kUsualWidth;
    const auto [least, most] =
        std::minmax_element(pEntries.begin(), pEntries.end(),
                            [](const THistoryEntry& pA, const THistoryEntry& pB) { return pA.fSize < pB.fSize; });
    fLeast = least->fSize;
    fMost = most->fSize;
    fRows = fLeast == fMost ? 1 : kRows;
    MakeLabels();
    fSpans.resize(static_cast<size_t>(std::max(kLeastColumns, pWidth - static_cast<int>(fLabels[0].size()) - 2)));
    Place(pEntries);
    fFirst = FormatIsoLocal(pEntries.front().fDate);
    fLast = pEntries.size() > 1 ? FormatIsoLocal(pEntries.back().fDate) : std::string();
  }

  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (int row = 0; row < fRows; ++row) lines.push_back(Line(row));
    const size_t margin = fLabels[0].size() + 1;
    lines.push_back(std::string(margin, ' ') + '+' + std::string(fSpans.size(), '-'));
    lines.push_back(std::string(margin + 1, ' ') + Dates());
    return lines;
  }

 private:
  // Labels have as many digits as needed to tell the ends of the scale apart.
  void MakeLabels() {
    TValueFormat format;
    format.fDecimalUnits = fDecimalUnits;
    auto text = [&](int pRow) { return ToUtf8(FormatValue(TColumn::mdSize, SizeOfRow(pRow), format)); };
    constexpr int kMostDecimals = 3;
    while (fRows > 1 && text(0) == text(fRows - 1) && format.fDecimals < kMostDecimals) ++format.fDecimals;
    if (fRows > 1 && text(0) == text(fRows - 1)) format.fSizeUnit = TSizeUnit::suBytes;
    size_t width = 0;
    for (int row = 0; row < fRows; ++row) {
      const bool labelled = row == 0 || row == fRows - 1 || row == fRows / 2;
      fLabels.push_back(labelled ? text(row) : std::string());
      width = std::max(width, fLabels.back().size());
    }
    for (std::string& label : fLabels) label.insert(0, width - label.size(), ' ');
  }

  // The difference may exceed the range of integers.
  double Extent() const { return static_cast<double>(fMost) - static_cast<double>(fLeast); }

  int64_t SizeOfRow(int pRow) const {
    if (pRow == 0) return fMost;
    if (pRow == fRows - 1) return fLeast;
    return fMost - static_cast<int64_t>(Extent() * pRow / (fRows - 1));
  }

  int RowOfSize(int64_t pSize) const {
    if (fRows == 1) return 0;
    const double share = (static_cast<double>(fMost) - static_cast<double>(pSize)) / Extent();
    return std::clamp(static_cast<int>(share * (fRows - 1) + 0.5), 0, fRows - 1);
  }

  void Place(const std::vector<THistoryEntry>& pEntries) {
    const int64_t begin = pEntries.front().fDate.fTicks;
    const double duration = static_cast<double>(pEntries.back().fDate.fTicks - begin);
    for (const THistoryEntry& entry : pEntries) {
      const double share = duration > 0 ? static_cast<double>(entry.fDate.fTicks - begin) / duration : 0;
      const auto last = static_cast<double>(fSpans.size() - 1);
      std::optional<TSpan>& span = fSpans[static_cast<size_t>(std::clamp(share * last + 0.5, 0.0, last))];
      if (!span) span = TSpan{entry.fSize, entry.fSize, entry.fSize, false};
      *span = {std::min(span->fLeast, entry.fSize), std::max(span->fMost, entry.fSize), entry.fSize,
               span->fIncomplete || entry.fUnreadFolders > 0};
    }
  }

  std::string Line(int pRow) const {
    std::string line = fLabels[static_cast<size_t>(pRow)] + " |";
    int lastRow = -1;
    const size_t end = LastColumn();
    for (size_t i = 0; i <= end; ++i) {
      const std::optional<TSpan>& span = fSpans[i];
      const bool marked = span && pRow >= RowOfSize(span->fMost) && pRow <= RowOfSize(span->fLeast);
      if (marked)
        line += span->fIncomplete ? kIncompleteMark : '*';
      else
        line += !span && pRow == lastRow ? '.' : ' ';
      if (span) lastRow = RowOfSize(span->fLast);
    }
    line.resize(line.find_last_not_of(' ') + 1);
    return line;
  }

  // No size is known after the last scan.
  size_t LastColumn() const {
    size_t last = fSpans.size() - 1;
    while (!fSpans[last]) --last;
    return last;
  }

  // The last date stands under the end of the line if there is room.
  std::string Dates() const {
    constexpr size_t kDayLength = 10;
    const bool wide = fFirst.size() + fLast.size() + 1 <= fSpans.size();
    const std::string first = wide ? fFirst : fFirst.substr(0, kDayLength);
    const std::string last = wide ? fLast : fLast.substr(0, kDayLength);
    if (last.empty() || first.size() + last.size() + 1 > fSpans.size()) return first;
    return first + std::string(fSpans.size() - first.size() - last.size(), ' ') + last;
  }

  const bool fDecimalUnits;
  int64_t fLeast = 0;
  int64_t fMost = 0;
  int fRows = 1;
  std::vector<std::string> fLabels;  // one for each row, all of one width
  std::vector<std::optional<TSpan>> fSpans;
  std::string fFirst;
  std::string fLast;
};

}  // namespace

std::vector<std::string> HistoryChart(const std::vector<THistoryEntry>& pEntries, int pWidth, bool pDecimalUnits) {
  return pEntries.empty() ? std::vector<std::string>() : THistoryChart(pEntries, pWidth, pDecimalUnits).Lines();
}

}  // namespace Vantrel::Exporting
