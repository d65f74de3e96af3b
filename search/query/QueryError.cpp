#include "search/query/QueryError.h"

#include <algorithm>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::Search {

namespace {

// So much of the query is shown in front of the place and behind it.
constexpr size_t kShown = 60;

bool IsInsidePair(std::u16string_view pText, size_t pAt) {
  return pAt > 0 && pAt < pText.size() && IsTrailSurrogate(pText[pAt]) && IsLeadSurrogate(pText[pAt - 1]);
}

}  // namespace

std::string DescribeQueryError(std::u16string_view pQuery, const EQueryError& pError) {
  const size_t begin = std::min(pError.Begin(), pQuery.size());
  const size_t end = begin + std::min(pError.Length(), pQuery.size() - begin);
  size_t first = begin > kShown ? begin - kShown : 0;
  size_t last = std::min(end, begin + kShown) + kShown;
  if (IsInsidePair(pQuery, first)) ++first;
  last = std::min(last, pQuery.size());
  if (IsInsidePair(pQuery, last)) --last;

  const std::string before = (first > 0 ? "... " : "") + ToDisplay(pQuery.substr(first, begin - first));
  const std::string place = ToDisplay(pQuery.substr(begin, std::min(end, last) - begin));
  const std::string after = ToDisplay(pQuery.substr(std::min(end, last), last - std::min(end, last)));
  std::string text = before + place + after + (last < pQuery.size() ? " ..." : "") + "\n";
  text.append(static_cast<size_t>(DisplayWidth(before)), ' ');
  text.append(static_cast<size_t>(std::max(DisplayWidth(place), 1)), '^');
  text.append("\n").append(pError.what());
  if (!pError.Hint().empty()) text.append("\n").append(pError.Hint());
  return text;
}

}  // namespace Vantrel::Search
