#include "search/query/SyntaxColorizing.h"

namespace Vantrel::Search {

// Each is readable on white, and the three that stand side by side in a condition differ in lightness too.
uint32_t TDSMSyntaxColorizing::ColorOf(TTokenType pType) {
  switch (pType) {
    case TTokenType::PropertyToken:
      return 0x1F5FA8;
    case TTokenType::OperatorToken:
      return 0x8A4B08;
    case TTokenType::ConjunctionToken:
      return 0x7A2A8C;
    case TTokenType::ValueToken:
      return 0x202020;
    case TTokenType::StartMarkerToken:
    case TTokenType::EndMarkerToken:
      return 0x606060;
    default:
      return 0xC00000;
  }
}

std::vector<TColoredToken> TDSMSyntaxColorizing::GetColorMapping(std::u16string_view pQuery) const {
  std::vector<TColoredToken> colors;
  TExpressionLexer lexer(pQuery, fGrammar);
  std::u16string property;
  for (TLexerToken token = lexer.NextToken(); token.fTokenType != TTokenType::EndOfFileToken;
       token = lexer.NextToken()) {
    const bool isValue = token.fTokenType == TTokenType::ValueToken;
    if (token.fTokenType == TTokenType::PropertyToken) property = token.fTokenString;
    if (isValue && property.empty()) property = fGrammar.DefaultProperty().fIdentifier;
    if (token.fLength > 0) {
      colors.push_back({token.fPosition, token.fLength, token.fTokenType, ColorOf(token.fTokenType),
                        isValue ? property : std::u16string()});
    }
    if (token.fTokenType != TTokenType::PropertyToken && token.fTokenType != TTokenType::OperatorToken)
      property.clear();
  }
  return colors;
}

}  // namespace Vantrel::Search
