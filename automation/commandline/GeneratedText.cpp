#include "automation/commandline/GeneratedText.h"

#include "model/columns/MetaData.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

std::string LowerText(std::string pText) {
  for (char& c : pText)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return pText;
}

std::string SwitchName(const TSwitch& pSwitch) {
  return "--" + LowerText(Vantrel::ToUtf8(pSwitch.fItem.fName));
}

std::string TypedName(const TSwitch& pSwitch) {
  const std::string name = SwitchName(pSwitch);
  return pSwitch.fItem.fName.size() == 1 ? name.substr(1) : name;
}

std::string DetailsOf(const TSwitch& pSwitch) {
  const std::string details(pSwitch.fDetails);
  if (!pSwitch.fValueText.starts_with("COLUMN")) return details;
  return details + (details.empty() ? "" : " ") + "Columns are " + ColumnWords(", ") + ".";
}

std::string ColumnWords(std::string_view pBetween) {
  std::string words;
  for (int column = 0; column < static_cast<int>(TColumn::mdCount); ++column)
    words.append(words.empty() ? "" : pBetween).append(ToUtf8(ColumnInfo(static_cast<TColumn>(column)).fName));
  return LowerText(words);
}

std::vector<std::string> AsOneText(const std::vector<std::string>& pLines, std::string_view pCommentSign) {
  std::string text;
  for (const std::string& line : pLines) text.append(line).append("\n");
  text.append(pCommentSign).append(" end");
  return {text};
}

}  // namespace Vantrel::CommandLine
