#pragma once

// Splits a command line into switches, values and paths, and sets options by name.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/system/Errors.h"

namespace Vantrel {

// An error that keeps the command line from being used. Holds the program's exit code.
class ECommandLineParserCriticalException : public EException {
 public:
  ECommandLineParserCriticalException(const std::string& pMessage, int pExitCode)
      : EException(pMessage), fExitCode(pExitCode) {}
  int ExitCode() const { return fExitCode; }

 private:
  int fExitCode;
};

// The kind of value after a switch. An optional value other than text must have the right form, so that a path after
// the switch stays a path.
enum class TValueKind : uint8_t {
  vkNone,
  vkTopic,  // a topic of help: none, a text, or a switch
  vkText,
  vkInteger,
  vkOptionalBoolean,  // true, false, 1 or 0
  vkOptionalMode,     // files, folders or unique
  vkOptionalSize,     // "10MB", or any other token that is not an existing path
  vkLevel,            // a number, or any other token that is not an existing path
  vkPaths,            // all tokens up to the next switch
  vkPath,             // an existing file
  vkFile,             // a file to write; takes every token, switches are refused
  vkOptionalFile,     // the same, but may be missing, and a switch is not taken
  vkSecret,           // any token but a known switch, so that no part of a password is ever shown
  vkPattern,          // may begin like a switch, "/^a/i" or "-old", but not with "--" or as a known switch
  vkAnything,         // all tokens up to the next switch, unchecked
};

// The stages of a run at which switches take effect.
enum class TTimeMoment : uint8_t { tmStartUp, tmAfterScan, tmBeforeEnd };

// A registered switch, as far as the parser needs it.
struct TCommandLineItem {
  std::u16string_view fName;  // without indicator
  TValueKind fValueKind = TValueKind::vkNone;
  bool fRepeatable = true;
  TTimeMoment fMoment = TTimeMoment::tmStartUp;
  bool fDashOnly = false;  // no switch with "/" in front where that begins paths
};

// Splits command lines, tells switches from values and paths, and sets options by name. One thread.
//
// A switch is a token that begins with "/" or "-"; "--name" and "--name=value" are understood as well. Where paths
// begin with "/", a token that begins with it is a switch only when it names a registered switch or an option.
class TKivCommandLineParser {
 public:
  // The parameters are for tests, which try both rules on either platform.
  explicit TKivCommandLineParser(bool pSlashBeginsPaths);
  // The program's own parser, with the platform's rules.
  static TKivCommandLineParser& GetInstance();

  // Splits at blanks. Double quotes group blanks into one token and are removed. No other function removes quotes: they
  // get tokens without them. A quote after a backslash, or a doubled one within quotes, is a character: "\"cache\"". A
  // backslash in front of a quote that closes a token or a part of a list is an ordinary character, so "C:\my folder\"
  // keeps its end. Where such a quote follows another one that is a character, it is its pair: "\"a\" OR b" is one
  // token.
  static std::vector<std::u16string> SplitCommandLine(std::u16string_view pCommandLine);
  static bool StartsWithSwitchIndicator(std::u16string_view pToken);
  // Without "/", "-" or "--".
  static std::u16string_view RemoveSwitchIndicator(std::u16string_view pToken);

  void RegisterCmdLineSwitch(const TCommandLineItem& pItem) { fItems.push_back(pItem); }
  // Switches that are read elsewhere: they are skipped, with the value that follows.
  void RegisterParametersToIgnore(std::span<const std::u16string_view> pNames);
  bool IsIgnored(std::u16string_view pToken) const;
  std::span<const TCommandLineItem> RegisteredSwitches() const { return fItems; }
  // The registered switch that the token names; nullptr when it names none. A "=value" is ignored.
  const TCommandLineItem* FindRegistered(std::u16string_view pToken) const;

  // Whether the token is a registered switch or an option with an indicator in front.
  bool NamesKnown(std::u16string_view pToken) const;
  // Whether the token is a switch, known or not.
  bool IsSwitch(std::u16string_view pToken) const;
  // Whether the token can be a switch's value: any token but a switch. A number always can.
  bool IsValue(std::u16string_view pToken) const;
  // The same for a switch that takes values of this kind.
  bool IsValueOfKind(std::u16string_view pToken, TValueKind pKind) const;

  using TTokens = std::span<const std::u16string>;
  // Whether any token is the switch, in any spelling. A name that begins with "/" or "-" must equal the whole token.
  bool FindSwitch(std::u16string_view pName, TTokens pTokens) const;
  bool FindSwitches(std::span<const std::u16string_view> pNames, TTokens pTokens) const;
  // The token after the first such switch at or after pStart. With pValueOnly it must be a value. False when there is
  // none.
  bool FindParameterAfterSwitch(std::u16string_view pName, TTokens pTokens, size_t pStart, bool pValueOnly,
                                std::u16string& pParameter) const;
  // The value of the first such switch, or empty; and the values of all of them. Both include "--name=value".
  std::u16string FindPathAfterSwitch(std::u16string_view pName, TTokens pTokens) const;
  std::vector<std::u16string> FindPathsAfterSwitch(std::u16string_view pName, TTokens pTokens) const;
  // The typed forms. False when the value is missing or malformed.
  bool FindBooleanValueAfterSwitch(std::u16string_view pName, TTokens pTokens, bool& pValue) const;
  bool FindIntegerValueAfterSwitch(std::u16string_view pName, TTokens pTokens, int64_t& pValue) const;

  // The tokens without paths to scan, for a command line that is passed on. Leaves out tokens that are neither a switch
  // nor a value, and the switches that take paths to scan, with their values.
  std::vector<std::u16string> GetFilteredCommandLineWithoutPaths(TTokens pTokens) const;

  // Begins a stage of the run. Switches of earlier stages have no further effect.
  void FireMoment(TTimeMoment pMoment) { fMoment = pMoment; }
  // Whether the switch belongs to the current stage and so takes effect now.
  bool IsTimeMomentUsed(const TCommandLineItem& pItem) const { return pItem.fMoment == fMoment; }

  // Sets the option that token pIndex names to the next token or to "True". Returns the number of tokens used. 0 when
  // the token is no option, or when the option refuses the value; then pError says why.
  size_t TryApplyCommandLineOptionToGlobalOptions(TTokens pTokens, size_t pIndex, TGlobalOptions& pOptions,
                                                  std::string& pError) const;

 private:
  static bool NamesOption(std::u16string_view pToken);
  static TValueKind KindOfOption(std::u16string_view pToken);

  const bool fSlashBeginsPaths;
  std::vector<TCommandLineItem> fItems;
  std::vector<std::u16string> fIgnored;
  TTimeMoment fMoment = TTimeMoment::tmStartUp;
};

// Splits "--name=value", and "-d2" into a letter and a number. Otherwise there is no value.
struct TSplitToken {
  std::u16string_view fSwitch;
  std::u16string_view fValue;
  bool fHasValue = false;
};
TSplitToken SplitSwitchValue(std::u16string_view pToken);
// The token up to its first "=" or ":", for tokens with a value in an unknown form.
std::u16string_view WithoutJoinedValue(std::u16string_view pToken);

}  // namespace Vantrel
