#include "export/history/HistoryKeys.h"

#include <algorithm>
#include <optional>

#include "export/history/HistoryDatabase.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "search/patterns/PatternFilter.h"

namespace Vantrel::History {

namespace {

std::string PathCondition(const std::u16string& pPath) {
  return "PATH = " + TKIVSQLiteDatabase::GetSQLString(pPath);
}

std::string PatternCondition(std::u16string_view pPattern) {
  return "PATTERN = " + TKIVSQLiteDatabase::GetSQLString(pPattern);
}

std::optional<int64_t> FindId(TKIVSQLiteDatabase& pDatabase, std::string_view pTable, const std::string& pCondition) {
  std::optional<int64_t> id;
  if (pDatabase.OpenOrExecuteQuery(TKIVSQLiteDatabase::GetSimpleSelectSQL("ID", pTable, pCondition)))
    id = pDatabase.GetInteger(0);
  pDatabase.CloseQuery();
  return id;
}

bool LetterCaseTellsFoldersApart() {
  return NativePathDelimiter() == u'/';
}

}  // namespace

// The roots that hold a path's history. There are several if letter case does not count and the path was recorded in
// several spellings. The index finds only the exact path. The search through the whole table reads one row per folder
// ever scanned, not one per scan.
std::vector<int64_t> FindRoots(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPath) {
  const std::string condition = PathCondition(pPath);
  if (LetterCaseTellsFoldersApart()) {
    if (const std::optional<int64_t> exact = FindId(pDatabase, "ROOTS", condition)) return {*exact};
    // The folder exists under this exact name but has no history yet. The history of another folder must not be used
    // for it.
    if (PathExists(pPath)) return {};
  }
  std::vector<int64_t> ids;
  pDatabase.OpenQuery(TKIVSQLiteDatabase::GetSimpleSelectSQL("ID", "ROOTS", condition + " COLLATE NOCASE ORDER BY ID"));
  for (; pDatabase.HasRow() && (ids.empty() || !LetterCaseTellsFoldersApart()); pDatabase.NextRow())
    ids.push_back(pDatabase.GetInteger(0));
  pDatabase.CloseQuery();
  return ids;
}

std::u16string PatternInOrder(std::u16string_view pPattern) {
  std::vector<std::u16string_view> patterns = PatternsOfText(pPattern);
  std::sort(patterns.begin(), patterns.end());
  patterns.erase(std::unique(patterns.begin(), patterns.end()), patterns.end());
  std::u16string text;
  for (const std::u16string_view pattern : patterns) (text += text.empty() ? u"" : u"\t") += pattern;
  return text;
}

// The rows of a filter, with the exact text first. Earlier versions recorded patterns in the order given.
std::vector<int64_t> FindPatterns(TKIVSQLiteDatabase& pDatabase, std::u16string_view pPattern) {
  std::vector<int64_t> ids;
  if (const std::optional<int64_t> exact = FindId(pDatabase, "PATTERNS", PatternCondition(pPattern)))
    ids.push_back(*exact);
  pDatabase.OpenQuery(TKIVSQLiteDatabase::GetSimpleSelectSQL("ID, PATTERN", "PATTERNS") + " ORDER BY ID");
  for (; pDatabase.HasRow(); pDatabase.NextRow()) {
    const std::u16string text = pDatabase.GetText(1);
    if (text != pPattern && PatternInOrder(text) == pPattern) ids.push_back(pDatabase.GetInteger(0));
  }
  pDatabase.CloseQuery();
  return ids;
}

int64_t RootIdOf(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPath) {
  if (!LetterCaseTellsFoldersApart())
    if (const std::vector<int64_t> ids = FindRoots(pDatabase, pPath); !ids.empty()) return ids.front();
  return pDatabase.InsertIfDoesNotExists("ROOTS", "PATH", TKIVSQLiteDatabase::GetSQLString(pPath),
                                         PathCondition(pPath));
}

int64_t PatternIdOf(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPattern) {
  if (const std::vector<int64_t> ids = FindPatterns(pDatabase, pPattern); !ids.empty()) return ids.front();
  return pDatabase.InsertIfDoesNotExists("PATTERNS", "PATTERN", TKIVSQLiteDatabase::GetSQLString(pPattern),
                                         PatternCondition(pPattern));
}

std::u16string HistoryPattern(const IHierarchicalRoot& pRoot) {
  return PatternInOrder(FilterText(pRoot));
}

std::u16string HistoryPattern(const PatternMatching::IPatterns& pPatterns) {
  return PatternInOrder(ActivePatternsText(pPatterns));
}

}  // namespace Vantrel::History
