#pragma once

// Finds a text or a regular expression in the contents of a file.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/ByteStreams.h"
#include "search/files/AnyEncodingNeedle.h"
#include "search/files/ExpressionFacts.h"
#include "search/files/TextNeedle.h"
#include "search/patterns/RegularExpression.h"
#include "search/query/FileFacts.h"

namespace Vantrel::Search {

// Looks for one text in the contents of files, one after the other. The buffers are kept from file to file. For one
// thread at a time.
//
// A plain text is found in UTF-8 and in UTF-16 of either byte order, with or without a byte order mark, and at any
// place of a binary file. A file is read until the first match.
//
// A regular expression is matched with each line. Lines end with LF, CR LF or a byte 0; "^" and "$" match at their
// ends. The file is taken for UTF-8, unless it begins with a mark of UTF-16 or looks like UTF-16. A line of more than
// kLongestLine bytes is cut into pieces of that length.
class TContentMatcher {
 public:
  static constexpr size_t kLongestLine = size_t{1} << 18;

  // EInvalidArgumentValue with a text for users when the text is empty or no valid expression.
  explicit TContentMatcher(const TContentSearch& pSearch);

  // Whether the text stands in what the source gives. What the source throws passes through. pIsStopped is asked now
  // and then; when it returns true, the answer is false.
  bool IsFoundIn(IByteSource& pSource, const std::function<bool()>& pIsStopped);
  // The number of lines on which the expression gave up.
  int64_t GivenUp() const { return fExpression ? fExpression->GivenUp() : 0; }

 private:
  enum class TTextKind : uint8_t { tkUtf8, tkUtf16LittleEndian, tkUtf16BigEndian };

  bool FindText(IByteSource& pSource, const std::function<bool()>& pIsStopped);
  bool FindExpression(IByteSource& pSource, const std::function<bool()>& pIsStopped);
  static TTextKind KindOf(std::string_view pStart);
  static size_t EndOfLines(std::string_view pBytes, TTextKind pKind);
  bool IsExpressionIn(std::string_view pLines, TTextKind pKind);
  bool IsInLinesWithNeedle(std::string_view pLines);
  void Decode(std::string_view pBytes, TTextKind pKind);
  bool IsInDecodedLines();

  std::vector<char> fBuffer;
  std::optional<TAnyEncodingNeedle> fText;  // that is looked for
  std::optional<PatternMatching::TRegularExpression> fExpression;
  TExpressionFacts fFacts;
  std::optional<TTextNeedle> fHeldText;  // that each match of the expression holds
  std::u16string fDecoded;
};

}  // namespace Vantrel::Search
