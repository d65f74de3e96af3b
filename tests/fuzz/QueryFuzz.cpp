// Reads whatever a fuzzer makes up of `query_seeds/` as queries; what is read must print and read again.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "model/statistics/TopSizeList.h"
#include "platform/text/Text.h"
#include "search/query/AdaptedExpression.h"
#include "search/query/Parser.h"
#include "search/query/SearchItem.h"
#include "search/query/SyntaxColorizing.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Search;

void Require(bool pHolds) {
  if (!pHolds) std::abort();
}

// Stretches lie in the text, in its order, and do not overlap; the raw texts of all tokens are the text.
void CheckTokens(std::u16string_view pQuery, const TLexerGrammar& pGrammar) {
  size_t end = 0;
  for (const TColoredToken& token : TDSMSyntaxColorizing(pGrammar).GetColorMapping(pQuery)) {
    Require(token.fPosition >= end && token.fLength > 0 && token.fPosition + token.fLength <= pQuery.size());
    end = token.fPosition + token.fLength;
  }
  TExpressionLexer lexer(pQuery, pGrammar);
  std::u16string raw;
  TLexerToken token;
  do {
    token = lexer.NextToken();
    raw += token.fTokenRawString;
  } while (token.fTokenType != TTokenType::EndOfFileToken);
  Require(raw == pQuery);
}

void CheckTree(const TExpressionRef& pTree, const TDSMExpressionParser& pParser) {
  const std::u16string text = ExpressionToText(*pTree);
  const TExpressionRef second = pParser.Parse(text);
  Require(ExpressionToText(*second) == text);
  TTopSizeEntry file;
  file.fName = u"report 2024.tar.gz";
  file.fSize = 5'000'000;
  const TAdaptedExpression first = AdaptExpression(pTree, kAllSearchAbilities);
  const TAdaptedExpression again = AdaptExpression(second, kAllSearchAbilities);
  TSearchItem item(u'/');
  item.SetFolder(u"/data/old", 2);
  item.SetEntry(TEntryView(file));
  Require(first.Matches(item) == again.Matches(item));
}

// The parsers of all settings. Making one takes longer than reading most queries.
const TDSMExpressionParser& ParserOf(uint8_t pSettings) {
  static std::unique_ptr<const TDSMExpressionParser> parsers[8];
  std::unique_ptr<const TDSMExpressionParser>& parser = parsers[pSettings & 7];
  if (!parser) {
    TQuerySettings settings;
    settings.fExtendedProperties = (pSettings & 1) == 0;
    settings.fNormalizesUnicode = (pSettings & 2) != 0;
    settings.fPathDelimiter = (pSettings & 4) != 0 ? u'\\' : u'/';
    settings.fNow = TKivFileTime::FromUnix(1'718'454'896, 0);
    parser = std::make_unique<TDSMExpressionParser>(settings);
  }
  return *parser;
}

}  // namespace

// The first byte holds the settings.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize) {
  if (pSize == 0) return 0;
  const TDSMExpressionParser& parser = ParserOf(pData[0]);
  const std::u16string query = FromNativeBytes({reinterpret_cast<const char*>(pData) + 1, pSize - 1});
  CheckTokens(query, parser.Grammar());
  TExpressionRef tree;
  try {
    tree = parser.Parse(query);
  } catch (const EQueryError& error) {
    Require(error.Begin() + error.Length() <= query.size() && !DescribeQueryError(query, error).empty());
    return 0;
  }
  CheckTree(tree, parser);
  return 0;
}
