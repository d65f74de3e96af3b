#pragma once

// Turns the text of a query into a tree of conditions.

#include <memory>
#include <string_view>

#include "search/query/QueryError.h"
#include "search/query/Syntax.h"

namespace Vantrel::Search {

// Reads queries of one grammar. AND binds tighter than OR, and a blank stands for AND. Nothing here calls itself, so
// parentheses may be nested as deep as a text is long. Any thread.
class TExpressionParser {
 public:
  explicit TExpressionParser(std::unique_ptr<const TLexerGrammar> pGrammar) : fGrammar(std::move(pGrammar)) {}

  // The root of the tree. An empty query gives an AND without conditions, which takes everything. EQueryError if the
  // query is not valid.
  TExpressionRef Parse(std::u16string_view pQuery) const;
  const TLexerGrammar& Grammar() const { return *fGrammar; }

 private:
  class TRun;

  const std::unique_ptr<const TLexerGrammar> fGrammar;
};

// Reads queries of this program's query language.
class TDSMExpressionParser final : public TExpressionParser {
 public:
  explicit TDSMExpressionParser(const TQuerySettings& pSettings = {})
      : TExpressionParser(std::make_unique<TDSMLexerGrammar>(pSettings)) {}
};

}  // namespace Vantrel::Search
