#pragma once

// The words of the query language, and the conditions that they build.

#include <string>
#include <string_view>
#include <vector>

#include "platform/files/Paths.h"
#include "platform/system/FileTime.h"
#include "search/query/Lexer.h"

namespace Vantrel::Search {

// How queries are read.
struct TQuerySettings {
  // Whether there are sizes, dates, owners and the properties inside files, beyond names, types, contents and
  // attributes.
  bool fExtendedProperties = true;
  // Whether names are compared in Unicode form D, so that an accented letter equals a letter and an accent.
  bool fNormalizesUnicode = false;
  char16_t fPathDelimiter = NativePathDelimiter();  // of the paths that are searched
  TKivFileTime fNow;                                // for "today" and "3 days"; not set: when the query is read
};
inline TKivFileTime NowOf(const TQuerySettings& pSettings) {
  return pSettings.fNow.IsSet() ? pSettings.fNow : TKivFileTime::Now();
}

// Registers the words of this program's query language, each with the function that builds its condition.
class TDSMParserSyntax {
 public:
  explicit TDSMParserSyntax(const TQuerySettings& pSettings) : fSettings(pSettings) {}

  void RegisterAll(TLexerGrammar& pGrammar) const;

 private:
  void RegisterProperties(TLexerGrammar& pGrammar) const;
  void RegisterExtendedProperties(TLexerGrammar& pGrammar) const;
  void RegisterMetaData(TLexerGrammar& pGrammar) const;

  const TQuerySettings fSettings;
};

// The grammar of this program's query language.
class TDSMLexerGrammar final : public TLexerGrammar {
 public:
  explicit TDSMLexerGrammar(const TQuerySettings& pSettings);

  std::u16string_view ClassifyValue(std::u16string_view pValue) const override;
  bool IsNumber(std::u16string_view pText) const override;
  bool IsUnit(std::u16string_view pWord) const override;

 private:
  bool IsGroupList(std::u16string_view pValue) const;

  const TQuerySettings fSettings;
  std::vector<std::u16string> fGroups;  // the captions of the file-type groups
};

}  // namespace Vantrel::Search
