#pragma once

// Tokens: switch, value or path; values of switches; options by name.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/system/Errors.h"

namespace Vantrel {

// A command line that cannot be worked on; carries the exit code with which the program ends.
class ECommandLineParserCriticalException : public EException {
 public:
  ECommandLineParserCriticalException(const std::string& pMessage, int pExitCode)
      : EException(pMessage), fExitCode(pExitCode) {}
  int ExitCode() const { return fExitCode; }

 private:
  int fExitCode;
};

// What may follow a switch. Optional values other than texts are taken only when they are of the kind, so that a path
// behind the switch stays a path.
enum class TValueKind : uint8_t {
  vkNone,
  vkTopic,  // of help: nothing, a text, or a switch
  vkText,
  vkInteger,
  vkOptionalBoolean,  // true, false, 1 or 0
  vkOptionalSize,     // "10MB", or whatever else is there but no path of the disk
  vkLevel,            // a number, or whatever else is there but no path of the disk
  vkPaths,            // all tokens up to the next switch
  vkPath,             // an existing file
  vkFile,             // a file to write; every token is taken for one, switches are refused
  vkOptionalFile,     // the same, but nothing may follow, and a switch is none
  vkSecret,    // whatever follows, so that none of it is ever taken for something to be shown; but no known switch
  vkPattern,   // may begin like a switch, "/^a/i" or "-old", but not with "--" or as a known one
  vkAnything,  // all tokens up to the next switch, whatever they are
};

// The moments of a run at which switches act.
enum class TTimeMoment : uint8_t { tmStartUp, tmAfterScan, tmBeforeEnd };

// A registered switch, as far as splitting the command line goes.
struct TCommandLineItem {
  std::u16string_view fName;  // without indicator
  TValueKind fValueKind = TValueKind::vkNone;
  bool fRepeatable = true;
  TTimeMoment fMoment = TTimeMoment::tmStartUp;
};

// Splits command lines, tells switches from values and paths, and sets options by name. One thread.
//
// A switch is a token that begins with "/" or "-"; "--name" and "--name=value" are understood as well. Where paths
// begin with "/", a token that begins with it is a switch only when it names a registered switch or an option.
class TKivCommandLineParser {
 public:
  // Parameters are for tests, which try both rules on either platform.
  explicit TKivCommandLineParser(bool pSlashBeginsPaths);
  // The program's own, with the rules of the platform.
  static TKivCommandLineParser& GetInstance();

  // Splits at blanks; double quotes group blanks into one token and are taken away. These are the only quotes that are
  // taken away: tokens come to all other functions without them. A quote behind a backslash, or a doubled one within
  // quotes, is a character: "\"cache\"". A backslash is a character like any other in front of a quote that closes a
  // token or a part of a list, so that "C:\my folder\" keeps its end.
  static std::vector<std::u16string> SplitCommandLine(std::u16string_view pCommandLine);
  static bool StartsWithSwitchIndicator(std::u16string_view pToken);
  // Without "/", "-" or "--".
  static std::u16string_view RemoveSwitchIndicator(std::u16string_view pToken);

  void RegisterCmdLineSwitch(const TCommandLineItem& pItem) { fItems.push_back(pItem); }
  // Switches that somebody else reads: they are passed over, with the value that follows.
  void RegisterParametersToIgnore(std::span<const std::u16string_view> pNames);
  bool IsIgnored(std::u16string_view pToken) const;
  std::span<const TCommandLineItem> RegisteredSwitches() const { return fItems; }
  // The registered switch that the token names, nullptr when it names none. A "=value" does not count.
  const TCommandLineItem* FindRegistered(std::u16string_view pToken) const;

  // Whether the token is a registered switch or an option with an indicator in front.
  bool NamesKnown(std::u16string_view pToken) const;
  // Whether the token is a switch, known or not.
  bool IsSwitch(std::u16string_view pToken) const;
  // Whether the token can be a switch's value: everything but switches; numbers always.
  bool IsValue(std::u16string_view pToken) const;
  // The same for a switch that takes such values.
  bool IsValueOfKind(std::u16string_view pToken, TValueKind pKind) const;

  using TTokens = std::span<const std::u16string>;
  // Whether any token is the switch, in whatever spelling; a name with an indicator wants the whole token to match.
  bool FindSwitch(std::u16string_view pName, TTokens pTokens) const;
  bool FindSwitches(std::span<const std::u16string_view> pNames, TTokens pTokens) const;
  // The token after the first such switch at or behind pStart. With pValueOnly it must be a value. False when there is
  // none.
  bool FindParameterAfterSwitch(std::u16string_view pName, TTokens pTokens, size_t pStart, bool pValueOnly,
                                std::u16string& pParameter) const;
  // The value of the first such switch, empty when there is none; and those of all of them, "--name=value" included.
  std::u16string FindPathAfterSwitch(std::u16string_view pName, TTokens pTokens) const;
  std::vector<std::u16string> FindPathsAfterSwitch(std::u16string_view pName, TTokens pTokens) const;
  // The typed forms: false when the value is missing or malformed.
  bool FindBooleanValueAfterSwitch(std::u16string_view pName, TTokens pTokens, bool& pValue) const;
  bool FindIntegerValueAfterSwitch(std::u16string_view pName, TTokens pTokens, int64_t& pValue) const;

  // The tokens without paths to scan, for a command line that is passed on: what is no switch and no switch's value,
  // and the values of switches that take paths to scan, with these switches.
  std::vector<std::u16string> GetFilteredCommandLineWithoutPaths(TTokens pTokens) const;

  // Begins a moment of the run; switches tied to an earlier one are done with.
  void FireMoment(TTimeMoment pMoment) { fMoment = pMoment; }
  // Whether the switch is tied to the moment that the run has reached, and so is to act now.
  bool IsTimeMomentUsed(const TCommandLineItem& pItem) const { return pItem.fMoment == fMoment; }

  // Sets the option that token pIndex names, to the token after it or to "True". Returns the number of tokens consumed,
  // 0 when the token is no option or the option refuses the value; then pError says why.
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

// "--name=value" taken apart; without "=", or with a single indicator, the value is absent.
struct TSplitToken {
  std::u16string_view fSwitch;
  std::u16string_view fValue;
  bool fHasValue = false;
};
TSplitToken SplitSwitchValue(std::u16string_view pToken);
// The token up to an "=" or ":" in it, for those that come with a value in a form that is not understood.
std::u16string_view WithoutJoinedValue(std::u16string_view pToken);

}  // namespace Vantrel
