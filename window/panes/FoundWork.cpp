#include "window/panes/FoundWork.h"

#include "window/models/ShownText.h"

namespace Vantrel::Window {

void AddProblem(QStringList& pLines, std::u16string_view pPath, std::u16string_view pText) {
  constexpr qsizetype kMostLines = 20;
  if (pLines.size() < kMostLines) pLines << Shown(pPath) + QStringLiteral(": ") + Shown(pText);
}

void AddProblems(QStringList& pLines, const Search::TFileSearch& pSearch, bool pHasEnded) {
  for (const Search::TSearchError& error : pSearch.GetErrors()) AddProblem(pLines, error.fPath, error.fText);
  if (!pHasEnded) return;
  for (const std::u16string& warning : pSearch.GetWarnings()) pLines << Shown(warning);
}

}  // namespace Vantrel::Window
