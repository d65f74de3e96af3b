#include "export/text/ListExport.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "export/text/PaddedTable.h"
#include "platform/text/Text.h"

namespace Vantrel::Exporting {

using Presentation::TList;
using Presentation::TListColumn;
using Presentation::TListRow;

namespace {

std::vector<std::string> Captions(const TList& pList, const TValueFormat& pFormat) {
  std::vector<std::string> captions;
  for (const TListColumn& column : pList.fColumns)
    captions.push_back(CaptionWithUnit(column.fCaption, column.fColumn, pFormat));
  return captions;
}

std::vector<std::string> RowTexts(const TList& pList, const TListRow& pRow, const TValueFormat& pFormat) {
  std::vector<std::string> texts;
  for (size_t i = 0; i < pRow.fValues.size(); ++i)
    texts.push_back(ToDisplay(FormatValue(pList.fColumns[i].fColumn, pRow.fValues[i], pFormat)));
  return texts;
}

// The row's value in the column that may have bars.
std::optional<double> ShareOf(const TList& pList, const TListRow& pRow, std::optional<TColumn> pColumn) {
  const std::optional<size_t> column = pColumn ? Presentation::FindListColumn(pList, *pColumn) : std::nullopt;
  const double* share = column && *column < pRow.fValues.size() ? std::get_if<double>(&pRow.fValues[*column]) : nullptr;
  return share ? std::optional(*share) : std::nullopt;
}

// The last column often holds long paths. Padding them would make every other row as long.
std::string WithoutTrailingBlanks(std::string pLine) {
  pLine.resize(pLine.find_last_not_of(' ') + 1);
  return pLine;
}

std::string DelimitedRow(const TList& pList, const TListRow& pRow, const TValueFormat& pFormat,
                         const TDelimitedFormat& pDelimited) {
  std::string line;
  for (size_t i = 0; i < pRow.fValues.size(); ++i) {
    if (i > 0) line += pDelimited.fSeparator;
    const TColumn column = pList.fColumns[i].fColumn;
    const std::u16string text = FormatValue(column, pRow.fValues[i], pFormat);
    if (ColumnInfo(column).fKind == TColumnKind::ckText)
      AppendTextField(line, text, pDelimited);
    else
      AppendOwnField(line, ToUtf8(text), pDelimited);
  }
  return line;
}

}  // namespace

bool WriteListAsText(const TList& pList, const TValueFormat& pFormat, ILineOutput& pOutput) {
  return WriteListAsText([&](const TTakeListPart& pTake) { return pTake(pList); }, pFormat, pOutput);
}

bool WriteListAsText(const TListInParts& pParts, const TValueFormat& pFormat, ILineOutput& pOutput) {
  std::optional<TPaddedTable> padded;
  pParts([&](const TList& pPart) {
    if (!padded) {
      std::vector<TColumn> columns;
      for (const TListColumn& column : pPart.fColumns) columns.push_back(column.fColumn);
      padded.emplace(std::move(columns), "  ");
      padded->MeasureCaptions(Captions(pPart, pFormat));
    }
    for (const TListRow& row : pPart.fRows)
      padded->Measure(RowTexts(pPart, row, pFormat), ShareOf(pPart, row, padded->ShareColumn()));
    return true;
  });
  padded->Fit(pOutput.LineWidth(), pOutput.LineLook(), true);
  const auto write = [&](const std::string& pLine) { return pOutput.WriteLine(WithoutTrailingBlanks(pLine)); };
  bool isFirst = true;
  return pParts([&](const TList& pPart) {
    if (std::exchange(isFirst, false)) {
      if (pOutput.LineCount() > 0 && !pOutput.WriteLine("")) return false;
      if (!pOutput.WriteLine(Painted(ToDisplay(pPart.fTitle), TInk::ikTitle, pOutput.LineLook())) ||
          !pOutput.WriteLine(""))
        return false;
      if (!write(padded->Captions(Captions(pPart, pFormat))) || !pOutput.WriteLine(padded->Underline())) return false;
    }
    return std::all_of(pPart.fRows.begin(), pPart.fRows.end(), [&](const TListRow& pRow) {
      return write(
          padded->Row(RowTexts(pPart, pRow, pFormat), {.fShare = ShareOf(pPart, pRow, padded->ShareColumn())}));
    });
  });
}

bool WriteListAsDelimited(const TList& pList, const TValueFormat& pFormat, const TDelimitedFormat& pDelimited,
                          bool pWithHeader, ILineOutput& pOutput) {
  const auto write = [&](const std::string& pLine) {
    const bool marks = pDelimited.fByteOrderMark && pOutput.LineCount() == 0;
    return pOutput.WriteLine(marks ? std::string(kByteOrderMark) + pLine : pLine);
  };
  if (pWithHeader) {
    std::string line;
    for (const std::string& caption : Captions(pList, pFormat)) {
      if (!line.empty()) line += pDelimited.fSeparator;
      AppendOwnField(line, caption, pDelimited);
    }
    if (!write(line)) return false;
  }
  const TValueFormat format = WithoutMisleadingGroups(pFormat, pDelimited);
  for (const TListRow& row : pList.fRows)
    if (!write(DelimitedRow(pList, row, format, pDelimited))) return false;
  return true;
}

bool WriteListAsDelimited(const TList& pList, const TMediaSettings& pSettings, ILineOutput& pOutput) {
  return WriteListAsDelimited([&](const TTakeListPart& pTake) { return pTake(pList); }, pSettings, pOutput);
}

bool WriteListAsDelimited(const TListInParts& pParts, const TMediaSettings& pSettings, ILineOutput& pOutput) {
  const TDelimitedFormat fields{ToUtf8(pSettings.Separator()), pSettings.fNeutralizeFormulas, pSettings.fByteOrderMark};
  bool withHeader = pSettings.fIncludeHeader;
  return pParts([&](const TList& pPart) {
    return WriteListAsDelimited(pPart, FormatOf(pSettings), fields, std::exchange(withHeader, false), pOutput);
  });
}

}  // namespace Vantrel::Exporting
