// `match_query`: reads entries and queries, and prints which entries each query finds.

#include <cstdio>
#include <deque>
#include <iostream>
#include <string>
#include <vector>

#include "model/tree/HierarchicalData.h"
#include "platform/text/Text.h"
#include "search/patterns/RegularExpression.h"
#include "search/query/AdaptedExpression.h"
#include "search/query/Parser.h"
#include "search/query/SearchItem.h"

// match_query NOW DELIMITER EXTENDED < LINES
//
// NOW is in seconds since 1970, EXTENDED is 1 or 0. The lines have fields with tab characters between them. "I", name,
// folder, level, size, allocated, dates of access, creation and change (seconds since 1970, empty for
// none), attributes (a number), owner, contents, keywords (joined with "; ") adds an entry. "Q" and a query prints a
// line: "=", the numbers of the entries found, a tab character, and the query as it was understood; or "!" and the
// error.

namespace {

using namespace Vantrel;
using namespace Vantrel::Search;

struct TEntry {
  std::u16string fFolder;
  int64_t fLevel = 0;
  std::u16string fOwner, fKeywords;
  std::string fContents;
  TRef<THierarchicalObject> fObject;
};

int64_t Number(const std::string& pText) {
  return pText.empty() ? 0 : std::stoll(pText);
}

TKivFileTime Time(const std::string& pText) {
  return pText.empty() ? TKivFileTime() : TKivFileTime::FromUnix(Number(pText), 0);
}

std::string Lower(std::string pText) {
  for (char& character : pText) character = static_cast<char>(FoldAscii(static_cast<unsigned char>(character)));
  return pText;
}

class TFacts : public IFileFacts {
 public:
  void Set(const TEntry& pEntry) { fEntry = &pEntry; }
  bool ContentsMatch(TSearchItem&, const TContentSearch& pSearch) override {
    if (!pSearch.fIsRegEx) return Lower(fEntry->fContents).find(Lower(ToUtf8(pSearch.fText))) != std::string::npos;
    return PatternMatching::TRegularExpression(pSearch.fText, true).Matches(FromUtf8(fEntry->fContents));
  }
  TMetaDataValue GetProperty(TSearchItem&, TFileProperty pProperty) override {
    if (pProperty != TFileProperty::fpKeywords || fEntry->fKeywords.empty()) return {};
    return fEntry->fKeywords;
  }
  bool IsInvalidShortcut(TSearchItem&) override { return false; }
  bool IsEmptyFolder(TSearchItem& pItem) override { return pItem.IsFolder(); }
  std::u16string GetOwner(TSearchItem&) override { return fEntry->fOwner; }

 private:
  const TEntry* fEntry = nullptr;
};

TEntry ReadEntry(const std::vector<std::string>& pFields, char16_t pDelimiter) {
  TEntry entry;
  const std::u16string name = FromNativeBytes(pFields.at(1));
  entry.fFolder = FromNativeBytes(pFields.at(2));
  entry.fLevel = Number(pFields.at(3));
  TEntryValues values;
  values.fSize = Number(pFields.at(4));
  values.fAllocated = Number(pFields.at(5));
  values.fLastAccessDate = Time(pFields.at(6));
  values.fCreationDate = Time(pFields.at(7));
  values.fLastChangeDate = Time(pFields.at(8));
  values.fAttributes = static_cast<TAttributes>(Number(pFields.at(9)));
  entry.fOwner = FromNativeBytes(pFields.at(10));
  entry.fContents = pFields.at(11);
  entry.fKeywords = FromNativeBytes(pFields.at(12));
  entry.fObject = MakeRef<THierarchicalObject>(JoinPath(entry.fFolder, name, pDelimiter), pDelimiter, values, 1);
  return entry;
}

std::string Answer(const std::string& pQuery, const TDSMExpressionParser& pParser, const std::deque<TEntry>& pEntries,
                   char16_t pDelimiter) {
  const std::u16string query = FromNativeBytes(pQuery);
  TExpressionRef tree;
  try {
    tree = pParser.Parse(query);
  } catch (const EQueryError& error) {
    std::string text = DescribeQueryError(query, error);
    for (char& character : text)
      if (character == '\n') character = '|';
    return "!" + text;
  }
  const TAdaptedExpression adapted = AdaptExpression(tree, kAllSearchAbilities);
  TFacts facts;
  TSearchItem item(pDelimiter, &facts);
  std::string answer = "=";
  for (size_t i = 0; i < pEntries.size(); ++i) {
    facts.Set(pEntries[i]);
    item.SetFolder(pEntries[i].fFolder, pEntries[i].fLevel);
    item.SetEntry(TEntryView(static_cast<const IHierarchicalObject&>(*pEntries[i].fObject)));
    if (adapted.Matches(item)) answer += (answer.size() > 1 ? " " : "") + std::to_string(i);
  }
  return answer + "\t" + ToNativeBytes(ExpressionToText(*tree));
}

}  // namespace

int main(int pCount, char** pArguments) {
  if (pCount != 4) return 2;
  TQuerySettings settings;
  settings.fNow = TKivFileTime::FromUnix(Number(pArguments[1]), 0);
  settings.fPathDelimiter = static_cast<unsigned char>(*pArguments[2]);
  settings.fExtendedProperties = Number(pArguments[3]) != 0;
  const TDSMExpressionParser parser(settings);
  std::deque<TEntry> entries;
  for (std::string line; std::getline(std::cin, line);) {
    std::vector<std::string> fields(1);
    for (const char character : line) {
      if (character == '\t')
        fields.emplace_back();
      else
        fields.back() += character;
    }
    if (fields[0] == "I")
      entries.push_back(ReadEntry(fields, settings.fPathDelimiter));
    else
      std::cout << Answer(fields.at(1), parser, entries, settings.fPathDelimiter) << '\n';
  }
  return 0;
}
