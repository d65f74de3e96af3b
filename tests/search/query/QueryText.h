#pragma once

// Queries read with fixed settings, and trees of conditions as text for comparison.

#include <string>
#include <string_view>

#include "platform/text/Text.h"
#include "search/query/Parser.h"

namespace Vantrel::Search {

// 2024-06-15 12:34:56 UTC: not midnight in any time zone.
inline const TKivFileTime kTestNow = TKivFileTime::FromUnix(1'718'454'896, 0);

inline TQuerySettings TestSettings(char16_t pDelimiter = u'/') {
  TQuerySettings settings;
  settings.fPathDelimiter = pDelimiter;
  settings.fNow = kTestNow;
  return settings;
}

inline TExpressionRef ParseQuery(std::u16string_view pQuery, const TQuerySettings& pSettings = TestSettings()) {
  return TDSMExpressionParser(pSettings).Parse(pQuery);
}

// "And(String[name:foo], Size[size:>1024B])": classes without "T" and "Expression", leaves as the language writes them.
// For shallow trees only.
inline std::string DumpTree(const IExpression& pNode) {
  std::string name = ToUtf8(pNode.ClassName()).substr(1);
  const size_t word = name.find("Expression");
  name.erase(word, std::string_view("Expression").size());
  if (dynamic_cast<const TExpressionList*>(&pNode) == nullptr)
    return name + "[" + ToUtf8(ExpressionToText(pNode)) + "]";
  std::string text = name + "(";
  for (const TExpressionRef& child : pNode.Children()) text += (text.ends_with('(') ? "" : ", ") + DumpTree(*child);
  return text + ")";
}

}  // namespace Vantrel::Search
