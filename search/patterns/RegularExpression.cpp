#include "search/patterns/RegularExpression.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

// How an expression is kept from holding up a scan.
//
// The match limit stops work that grows exponentially. But it starts anew at every character where a match might begin.
// It also does not count what a repeat of single characters takes in and gives back. So work that grows with the third
// power of the text's length never reaches it. For example, (?:a|b)*[ab]*[cd] takes 3 ms for a name of 255 characters
// and 10 seconds for a path of 4,000.
//
// Long texts are therefore matched with a second form of the expression. It calls back at every item, and the calls are
// counted. That costs much speed, so the many short texts use the first form.
//
// An expression cannot raise the limits: PCRE2 accepts (*LIMIT_MATCH=…) and similar items only to lower them.

namespace Vantrel::PatternMatching {

namespace {

constexpr uint32_t kMatchLimit = 100'000;
// For interpreted expressions, when the JIT is switched off or has no room for them.
constexpr uint32_t kDepthLimit = 100'000;
constexpr uint32_t kHeapLimitKiB = 32 * 1024;
// The compiled form has room for 64 K units, so no useful expression is longer.
constexpr size_t kLongestExpression = 65'536;
// A repeated group takes about 16 bytes for each repetition. Unused stack takes only address space.
constexpr size_t kFirstJitStack = 32 * 1024;
constexpr size_t kMostJitStack = 8 * 1024 * 1024;
constexpr size_t kLongText = 1000;

// Two calls are at most one walk over the text apart, hence the quotient. An ordinary expression may need the second
// term for its attempts to start at each character.
size_t MostCalls(size_t pTextLength) {
  return std::max(1'000'000'000 / (pTextLength + 1), 32 * pTextLength);
}

template <auto kFree>
struct TFreeWith {
  template <typename T>
  void operator()(T* pObject) const {
    kFree(pObject);
  }
};

using TCode = std::unique_ptr<pcre2_code, TFreeWith<pcre2_code_free>>;
using TCompileContext = std::unique_ptr<pcre2_compile_context, TFreeWith<pcre2_compile_context_free>>;
using TMatchContext = std::unique_ptr<pcre2_match_context, TFreeWith<pcre2_match_context_free>>;
using TMatchData = std::unique_ptr<pcre2_match_data, TFreeWith<pcre2_match_data_free>>;
using TJitStack = std::unique_ptr<pcre2_jit_stack, TFreeWith<pcre2_jit_stack_free>>;

// PCRE2 has its own type for a UTF-16 unit, and refuses a null pointer even for an empty text.
PCRE2_SPTR Units(std::u16string_view pText) {
  return reinterpret_cast<PCRE2_SPTR>(pText.empty() ? u"" : pText.data());
}

// Counted from 1. A surrogate pair is one character.
size_t CharacterAt(std::u16string_view pText, size_t pOffset) {
  size_t character = 1;
  for (size_t i = 0; i < std::min(pOffset, pText.size()); ++i) {
    const bool isSecondHalf = i > 0 && IsTrailSurrogate(pText[i]) && IsLeadSurrogate(pText[i - 1]);
    if (!isSecondHalf) ++character;
  }
  return character;
}

std::string DescribeError(int pError, std::u16string_view pExpression, size_t pOffset) {
  PCRE2_UCHAR buffer[256];  // PCRE2's manual says this holds all of its messages
  const int length = pcre2_get_error_message(pError, buffer, std::size(buffer));
  const std::u16string message(buffer, buffer + std::max(length, 0));
  return fmt::format("{} (at character {})", ToUtf8(message), CharacterAt(pExpression, pOffset));
}

// Returns null and sets the error text if the expression is not valid.
TCode Compile(std::u16string_view pExpression, uint32_t pOptions, std::string& pErrorText) {
  TCompileContext context(pcre2_compile_context_create(nullptr));
  if (!context) throw std::bad_alloc();
  if ((pOptions & PCRE2_MULTILINE) != 0) pcre2_set_newline(context.get(), PCRE2_NEWLINE_ANYCRLF);
  pcre2_set_max_pattern_length(context.get(), kLongestExpression);
  int error = 0;
  PCRE2_SIZE offset = 0;
  TCode code(pcre2_compile(Units(pExpression), pExpression.size(), pOptions, &error, &offset, context.get()));
  // If the JIT cannot compile an expression, the expression is interpreted.
  if (code)
    pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE);
  else
    pErrorText = DescribeError(error, pExpression, offset);
  return code;
}

int CountCall(pcre2_callout_block*, void* pCallsLeft) {
  size_t& left = *static_cast<size_t*>(pCallsLeft);
  if (left == 0) return PCRE2_ERROR_CALLOUT;
  --left;
  return 0;
}

}  // namespace

struct TRegularExpression::TCompiled {
  TCompiled(std::u16string_view pExpression, bool pCaseSensitive, TExpressionUse pUse);
  void PrepareMatching();
  // Both return what pcre2_match returns.
  int Match(std::u16string_view pText);
  int Match(const pcre2_code* pCode, std::u16string_view pText);
  // The expression for long texts, or nullptr if it would be too large.
  const pcre2_code* CountedCode();

  std::u16string fExpression;
  uint32_t fOptions;
  std::string fErrorText;
  TCode fCode;
  TCode fCountedCode;  // made for the first long text; null if the callbacks make it too large
  bool fIsCountedCodeMade = false;
  bool fIsJitCompiled = false;  // whether the JIT compiled fCode
  TMatchData fMatchData;
  TJitStack fJitStack;
  TMatchContext fMatchContext;
  size_t fCallsLeft = 0;
  int64_t fGivenUp = 0;
};

TRegularExpression::TCompiled::TCompiled(std::u16string_view pExpression, bool pCaseSensitive, TExpressionUse pUse)
    : fExpression(pExpression),
      // \C would split a surrogate pair.
      fOptions(PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C | (pCaseSensitive ? 0 : PCRE2_CASELESS) |
               (pUse == TExpressionUse::euLines ? PCRE2_MULTILINE : 0)),
      fCode(Compile(fExpression, fOptions, fErrorText)) {
  if (fCode) PrepareMatching();
}

void TRegularExpression::TCompiled::PrepareMatching() {
  fMatchData.reset(pcre2_match_data_create(1, nullptr));  // the position of the match is not needed
  fMatchContext.reset(pcre2_match_context_create(nullptr));
  if (!fMatchData || !fMatchContext) throw std::bad_alloc();
  size_t jitSize = 0;
  fIsJitCompiled = pcre2_pattern_info(fCode.get(), PCRE2_INFO_JITSIZE, &jitSize) == 0 && jitSize > 0;
  pcre2_set_match_limit(fMatchContext.get(), kMatchLimit);
  pcre2_set_depth_limit(fMatchContext.get(), kDepthLimit);
  pcre2_set_heap_limit(fMatchContext.get(), kHeapLimitKiB);
  pcre2_set_callout(fMatchContext.get(), CountCall, &fCallsLeft);
  fJitStack.reset(pcre2_jit_stack_create(kFirstJitStack, kMostJitStack, nullptr));
  if (fJitStack) pcre2_jit_stack_assign(fMatchContext.get(), nullptr, fJitStack.get());
}

int TRegularExpression::TCompiled::Match(std::u16string_view pText) {
  const pcre2_code* counted = pText.size() > kLongText ? CountedCode() : nullptr;
  fCallsLeft = counted ? MostCalls(pText.size()) : kMatchLimit;
  return Match(counted ? counted : fCode.get(), pText);
}

int TRegularExpression::TCompiled::Match(const pcre2_code* pCode, std::u16string_view pText) {
  // The direct call of the compiled form skips checks of the arguments, which take as long as most matches. Ill-formed
  // UTF-16 is safe there too, because the expression was compiled for it.
  const auto match = pCode == fCode.get() && fIsJitCompiled ? pcre2_jit_match : pcre2_match;
  return match(pCode, Units(pText), pText.size(), 0, 0, fMatchData.get(), fMatchContext.get());
}

const pcre2_code* TRegularExpression::TCompiled::CountedCode() {
  if (!fIsCountedCodeMade) {
    fIsCountedCodeMade = true;
    std::string error;
    fCountedCode = Compile(fExpression, fOptions | PCRE2_AUTO_CALLOUT, error);
  }
  return fCountedCode.get();
}

TRegularExpression::TRegularExpression(std::u16string_view pExpression, bool pCaseSensitive, TExpressionUse pUse)
    : fCompiled(std::make_unique<TCompiled>(pExpression, pCaseSensitive, pUse)) {}

TRegularExpression::~TRegularExpression() = default;

const std::string& TRegularExpression::ErrorText() const {
  return fCompiled->fErrorText;
}

bool TRegularExpression::Matches(std::u16string_view pText) {
  TCompiled& compiled = *fCompiled;
  if (!compiled.fCode || compiled.fGivenUp >= kMostGivenUp) return false;
  const int result = compiled.Match(pText);
  // Any other error means that a limit was reached.
  if (result < 0 && result != PCRE2_ERROR_NOMATCH) ++compiled.fGivenUp;
  return result >= 0;
}

std::optional<bool> TRegularExpression::TryFindInLines(std::u16string_view pLines) {
  TCompiled& compiled = *fCompiled;
  if (!compiled.fCode || compiled.fGivenUp >= kMostGivenUp) return false;
  compiled.fCallsLeft = kMatchLimit;
  const int result = compiled.Match(compiled.fCode.get(), pLines);
  if (result < 0 && result != PCRE2_ERROR_NOMATCH) return std::nullopt;
  return result >= 0;
}

int64_t TRegularExpression::GivenUp() const {
  return fCompiled->fGivenUp;
}

}  // namespace Vantrel::PatternMatching
