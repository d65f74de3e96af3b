#include "automation/commandline/CommandLineParser.h"

#include <algorithm>

#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/patterns/SizeText.h"

namespace Vantrel {

namespace {

// Switches for runs that the program starts itself.
constexpr std::u16string_view kInternalPrefix = u"KIV_";

bool IsInteger(std::u16string_view pText) {
  int64_t value = 0;
  return TryParseInt64(ToUtf8(pText), value);
}

// "-5", "-5.5", ".5": always a value, even if a switch has that name.
bool IsNumber(std::u16string_view pText) {
  if (pText.starts_with(u'-') || pText.starts_with(u'+')) pText.remove_prefix(1);
  const bool digitsAndDots = std::all_of(
      pText.begin(), pText.end(), [](char16_t pUnit) { return (pUnit >= u'0' && pUnit <= u'9') || pUnit == u'.'; });
  return digitsAndDots && !pText.empty() && pText.back() != u'.' && std::count(pText.begin(), pText.end(), u'.') <= 1;
}

bool IsSize(std::u16string_view pText) {
  try {
    return ParseSizeText(pText) >= 0;
  } catch (const ESizeTextError&) {
    return false;
  }
}

// A path such as "/kiv_data/x" is not such a switch.
bool IsInternalSwitch(std::u16string_view pName) {
  return SameTextAscii(pName.substr(0, kInternalPrefix.size()), kInternalPrefix) && pName.find(u'/') == pName.npos;
}

bool IsBlank(char16_t pUnit) {
  return pUnit == u' ' || pUnit == u'\t' || pUnit == u'\r' || pUnit == u'\n';
}

// Sets the option from a token. Names of files keep their bytes. Other text that is not UTF-8 is refused, because it
// would change.
bool SetFromToken(const TOptionInfo& pOption, std::u16string_view pToken, TGlobalOptions& pOptions) {
  const bool namesFile = pOption.fName == "HistoryFile" || pOption.fName == "ChecksumCache";
  const std::string bytes = ToNativeBytes(pToken);
  return (namesFile || bytes == ToUtf8(pToken)) && pOption.fSet(pOptions, bytes);
}

// "-d2"
bool IsLetterWithNumber(std::u16string_view pToken) {
  return pToken.size() > 2 && pToken[0] == u'-' && FoldAscii(pToken[1]) >= u'a' && FoldAscii(pToken[1]) <= u'z' &&
         IsInteger(pToken.substr(2)) && pToken[2] != u'-' && pToken[2] != u'+';
}

}  // namespace

TSplitToken SplitSwitchValue(std::u16string_view pToken) {
  if (IsLetterWithNumber(pToken)) return {pToken.substr(0, 2), pToken.substr(2), true};
  const size_t equals = pToken.find(u'=');
  if (!pToken.starts_with(u"--") || equals == std::u16string_view::npos) return {pToken, {}, false};
  return {pToken.substr(0, equals), pToken.substr(equals + 1), true};
}

std::u16string_view WithoutJoinedValue(std::u16string_view pToken) {
  return pToken.substr(0, pToken.find_first_of(u"=:"));
}

TKivCommandLineParser::TKivCommandLineParser(bool pSlashBeginsPaths) : fSlashBeginsPaths(pSlashBeginsPaths) {}

TKivCommandLineParser& TKivCommandLineParser::GetInstance() {
  static TKivCommandLineParser parser(NativePathDelimiter() == u'/');
  return parser;
}

std::vector<std::u16string> TKivCommandLineParser::SplitCommandLine(std::u16string_view pCommandLine) {
  std::vector<std::u16string> tokens;
  std::u16string token;
  bool quoted = false;
  bool started = false;  // so that "" is a token
  bool opened = false;   // by a quote that is a character, within quotes
  auto at = [&](size_t pIndex) { return pIndex < pCommandLine.size() ? pCommandLine[pIndex] : u' '; };
  auto isEnd = [&](size_t pIndex) { return IsBlank(at(pIndex)) || at(pIndex) == u';'; };
  for (size_t i = 0; i < pCommandLine.size(); ++i) {
    const char16_t character = pCommandLine[i];
    if (character == u'\\' && at(i + 1) == u'"' && (!quoted || opened || !isEnd(i + 2))) {
      token += pCommandLine[++i];  // a quote that is a character
      started = true;
      opened = quoted && !opened;
    } else if (quoted && character == u'"' && at(i + 1) == u'"') {
      token += pCommandLine[++i];  // a doubled quote
    } else if (character == u'"') {
      quoted = !quoted;
      opened = false;
      started = true;
    } else if (!IsBlank(character) || quoted) {
      token += character;
      started = true;
    } else if (started) {
      tokens.push_back(std::move(token));
      token.clear();
      started = false;
    }
  }
  if (started) tokens.push_back(std::move(token));
  return tokens;
}

bool TKivCommandLineParser::StartsWithSwitchIndicator(std::u16string_view pToken) {
  return pToken.starts_with(u'/') || pToken.starts_with(u'-');
}

std::u16string_view TKivCommandLineParser::RemoveSwitchIndicator(std::u16string_view pToken) {
  if (pToken.starts_with(u"--")) return pToken.substr(2);
  return StartsWithSwitchIndicator(pToken) ? pToken.substr(1) : pToken;
}

const TCommandLineItem* TKivCommandLineParser::FindRegistered(std::u16string_view pToken) const {
  if (!StartsWithSwitchIndicator(pToken)) return nullptr;
  const std::u16string_view name = RemoveSwitchIndicator(SplitSwitchValue(pToken).fSwitch);
  const bool mayBePath = fSlashBeginsPaths && pToken.starts_with(u'/');
  const auto found = std::find_if(fItems.begin(), fItems.end(), [&](const TCommandLineItem& pItem) {
    return SameTextAscii(pItem.fName, name) && !(mayBePath && pItem.fDashOnly);
  });
  return found == fItems.end() ? nullptr : &*found;
}

bool TKivCommandLineParser::NamesOption(std::u16string_view pToken) {
  return FindOption(ToUtf8(RemoveSwitchIndicator(SplitSwitchValue(pToken).fSwitch))) != nullptr;
}

bool TKivCommandLineParser::NamesKnown(std::u16string_view pToken) const {
  return StartsWithSwitchIndicator(pToken) && (FindRegistered(pToken) != nullptr || NamesOption(pToken));
}

bool TKivCommandLineParser::IsSwitch(std::u16string_view pToken) const {
  if (!StartsWithSwitchIndicator(pToken) || pToken.size() < 2 || IsNumber(pToken)) return false;
  if (!fSlashBeginsPaths || !pToken.starts_with(u'/')) return true;
  // "/PASSWORD=secret" is a mistake to report. It is not a path to show.
  const std::u16string_view name = WithoutJoinedValue(pToken);
  return NamesKnown(name) || IsIgnored(name) || IsInternalSwitch(RemoveSwitchIndicator(name));
}

bool TKivCommandLineParser::IsValue(std::u16string_view pToken) const {
  return !IsSwitch(pToken);
}

bool TKivCommandLineParser::IsValueOfKind(std::u16string_view pToken, TValueKind pKind) const {
  switch (pKind) {
    case TValueKind::vkNone:
      return false;
    case TValueKind::vkTopic:
      return pToken != u"--";
    case TValueKind::vkOptionalBoolean:
      return pToken == u"0" || pToken == u"1" || SameTextAscii(pToken, u"true") || SameTextAscii(pToken, u"false");
    case TValueKind::vkOptionalMode:
      return SameTextAscii(pToken, u"files") || SameTextAscii(pToken, u"folders") || SameTextAscii(pToken, u"unique");
    case TValueKind::vkOptionalSize:
      return IsSize(pToken) || (IsValue(pToken) && !PathExists(std::u16string(pToken)));
    case TValueKind::vkSecret:
      return pToken != u"--" && !NamesKnown(pToken);
    case TValueKind::vkLevel:
      return IsValue(pToken) && (IsInteger(pToken) || !PathExists(std::u16string(pToken)));
    case TValueKind::vkFile:
      return true;
    case TValueKind::vkPattern:
      return !pToken.starts_with(u"--") && !NamesKnown(pToken);
    default:
      return IsValue(pToken);
  }
}

void TKivCommandLineParser::RegisterParametersToIgnore(std::span<const std::u16string_view> pNames) {
  fIgnored.insert(fIgnored.end(), pNames.begin(), pNames.end());
}

bool TKivCommandLineParser::IsIgnored(std::u16string_view pToken) const {
  if (!StartsWithSwitchIndicator(pToken)) return false;
  const std::u16string_view name = RemoveSwitchIndicator(SplitSwitchValue(pToken).fSwitch);
  return std::any_of(fIgnored.begin(), fIgnored.end(),
                     [&](const std::u16string& pIgnored) { return SameTextAscii(pIgnored, name); });
}

bool TKivCommandLineParser::FindSwitch(std::u16string_view pName, TTokens pTokens) const {
  const bool wholeToken = StartsWithSwitchIndicator(pName);
  return std::any_of(pTokens.begin(), pTokens.end(), [&](const std::u16string& pToken) {
    if (wholeToken) return SameTextAscii(pToken, pName);
    return StartsWithSwitchIndicator(pToken) && SameTextAscii(RemoveSwitchIndicator(pToken), pName);
  });
}

bool TKivCommandLineParser::FindSwitches(std::span<const std::u16string_view> pNames, TTokens pTokens) const {
  return std::any_of(pNames.begin(), pNames.end(), [&](auto pName) { return FindSwitch(pName, pTokens); });
}

bool TKivCommandLineParser::FindParameterAfterSwitch(std::u16string_view pName, TTokens pTokens, size_t pStart,
                                                     bool pValueOnly, std::u16string& pParameter) const {
  for (size_t i = pStart; i + 1 < pTokens.size(); ++i) {
    if (!FindSwitch(pName, pTokens.subspan(i, 1))) continue;
    if (pValueOnly && !IsValue(pTokens[i + 1])) return false;
    pParameter = pTokens[i + 1];
    return true;
  }
  return false;
}

std::u16string TKivCommandLineParser::FindPathAfterSwitch(std::u16string_view pName, TTokens pTokens) const {
  const std::vector<std::u16string> all = FindPathsAfterSwitch(pName, pTokens);
  return all.empty() ? std::u16string() : all.front();
}

std::vector<std::u16string> TKivCommandLineParser::FindPathsAfterSwitch(std::u16string_view pName,
                                                                        TTokens pTokens) const {
  std::vector<std::u16string> paths;
  for (size_t i = 0; i < pTokens.size() && pTokens[i] != u"--"; ++i) {
    const TSplitToken split = SplitSwitchValue(pTokens[i]);
    if (!StartsWithSwitchIndicator(split.fSwitch) || !SameTextAscii(RemoveSwitchIndicator(split.fSwitch), pName))
      continue;
    if (split.fHasValue)
      paths.emplace_back(split.fValue);
    else if (i + 1 < pTokens.size() && IsValue(pTokens[i + 1]))
      paths.push_back(pTokens[++i]);
  }
  return paths;
}

// A path after a switch that may stand alone is not its value.
TValueKind TKivCommandLineParser::KindOfOption(std::u16string_view pToken) {
  const TOptionInfo* option = FindOption(ToUtf8(RemoveSwitchIndicator(pToken)));
  return option != nullptr && option->fKind == TOptionKind::okBoolean ? TValueKind::vkOptionalBoolean
                                                                      : TValueKind::vkText;
}

std::vector<std::u16string> TKivCommandLineParser::GetFilteredCommandLineWithoutPaths(TTokens pTokens) const {
  std::vector<std::u16string> kept;
  for (size_t i = 0; i < pTokens.size() && pTokens[i] != u"--"; ++i) {
    if (!IsSwitch(pTokens[i])) continue;
    const TCommandLineItem* item = FindRegistered(pTokens[i]);
    const bool hasPaths = item != nullptr && item->fValueKind == TValueKind::vkPaths;
    if (!hasPaths) kept.push_back(pTokens[i]);
    if (SplitSwitchValue(pTokens[i]).fHasValue) continue;
    const TValueKind kind = item != nullptr ? item->fValueKind : KindOfOption(pTokens[i]);
    const bool takesAll = kind == TValueKind::vkPaths || kind == TValueKind::vkAnything;
    for (bool more = true; more && i + 1 < pTokens.size() && IsValueOfKind(pTokens[i + 1], kind); more = takesAll) {
      ++i;
      if (!hasPaths) kept.push_back(pTokens[i]);
    }
  }
  return kept;
}

bool TKivCommandLineParser::FindBooleanValueAfterSwitch(std::u16string_view pName, TTokens pTokens,
                                                        bool& pValue) const {
  std::u16string text;
  if (!FindParameterAfterSwitch(pName, pTokens, 0, true, text)) return false;
  const bool isTrue = SameTextAscii(text, u"true") || text == u"1";
  if (!isTrue && !SameTextAscii(text, u"false") && text != u"0") return false;
  pValue = isTrue;
  return true;
}

bool TKivCommandLineParser::FindIntegerValueAfterSwitch(std::u16string_view pName, TTokens pTokens,
                                                        int64_t& pValue) const {
  std::u16string text;
  return FindParameterAfterSwitch(pName, pTokens, 0, true, text) && TryParseInt64(ToUtf8(text), pValue);
}

size_t TKivCommandLineParser::TryApplyCommandLineOptionToGlobalOptions(TTokens pTokens, size_t pIndex,
                                                                       TGlobalOptions& pOptions,
                                                                       std::string& pError) const {
  if (!IsSwitch(pTokens[pIndex])) return 0;
  const TSplitToken split = SplitSwitchValue(pTokens[pIndex]);
  const std::u16string_view name = RemoveSwitchIndicator(split.fSwitch);
  const bool hasNext = !split.fHasValue && pIndex + 1 < pTokens.size() && IsValue(pTokens[pIndex + 1]);
  if (IsInternalSwitch(name)) return hasNext ? 2 : 1;
  const TOptionInfo* option = FindOption(ToUtf8(name));
  if (option == nullptr) {
    // The text after the "=" may be a password: messages show "/PASSWORD=secret" as "/PASSWORD=".
    const size_t shown = WithoutJoinedValue(split.fSwitch).size() + 1;
    pError = "Unknown Command line option: " + ToDisplay(split.fSwitch.substr(0, shown));
    return 0;
  }
  if (split.fHasValue) {
    if (SetFromToken(*option, split.fValue, pOptions)) return 1;
    pError = RefusedValueText(*option, ToDisplay(split.fValue));
    return 0;
  }
  if (hasNext && SetFromToken(*option, pTokens[pIndex + 1], pOptions)) return 2;
  const bool takesTrue = option->fKind == TOptionKind::okBoolean;
  if (takesTrue && option->fSet(pOptions, "True")) return 1;
  pError = hasNext
               ? RefusedValueText(*option, ToDisplay(pTokens[pIndex + 1]))
               : std::string(option->fName) + " needs a value: " + (option->fRange.empty() ? "text" : option->fRange);
  return 0;
}

}  // namespace Vantrel
