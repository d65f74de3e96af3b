#pragma once

// The colours of a query while it is typed.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "search/query/Lexer.h"

namespace Vantrel::Search {

// A stretch of the query in one colour.
struct TColoredToken {
  size_t fPosition;  // in UTF-16 units
  size_t fLength;
  TTokenType fTokenType;
  uint32_t fColor;  // 0xRRGGBB
  // Of a value: the keyword that it belongs to, typed or not. "10MB" alone is a "size:".
  std::u16string fProperty;
};

// Colours queries by their tokens, with the parser's own lexer. Incomplete and wrong queries too.
class TDSMSyntaxColorizing {
 public:
  // The grammar must live as long as this object.
  explicit TDSMSyntaxColorizing(const TLexerGrammar& pGrammar) : fGrammar(pGrammar) {}

  // The stretches in the order of the text, without the blanks between them.
  std::vector<TColoredToken> GetColorMapping(std::u16string_view pQuery) const;
  static uint32_t ColorOf(TTokenType pType);

 private:
  const TLexerGrammar& fGrammar;
};

}  // namespace Vantrel::Search
