#include "automation/commandline/ShellCompletions.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "automation/commandline/GeneratedText.h"
#include "automation/commandline/HelpText.h"
#include "automation/commandline/SwitchTable.h"
#include "model/columns/MetaData.h"
#include "model/options/GlobalOptions.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

using TLines = std::vector<std::string>;

// The completions that are possible after a switch or an option.
enum class TFollow : uint8_t {
  foNothing,       // it has no value: paths follow
  foOptionalText,  // a value that cannot be completed, or paths
  foText,
  foFile,
  foFolder,
  foOptionalWord,  // one of a few words, or paths
  foWord,
  foColumns,  // joined with "," or ";"
  foOrder,    // a column, then perhaps ",ascending" or ",descending"
};

// A switch, an alias of a switch, or an option.
struct TCompletion {
  std::string fName;  // "--sortby"
  std::string fHelp;
  TFollow fFollow;
  std::string fWords = {};  // with blanks between them
};

// Texts of both tables that stand for a column's name or several: "COLUMN[,DIRECTION]", "column;column;...".
TFollow FollowOfText(std::string_view pValueText) {
  const bool isColumn = pValueText.starts_with("COLUMN") || pValueText.starts_with("column");
  if (!isColumn) return TFollow::foText;
  return pValueText.find("DIRECTION") != std::string_view::npos ? TFollow::foOrder : TFollow::foColumns;
}

TFollow FollowOf(const TSwitch& pSwitch) {
  switch (pSwitch.fItem.fValueKind) {
    case TValueKind::vkNone:
      return TFollow::foNothing;
    case TValueKind::vkTopic:
      return TFollow::foWord;
    case TValueKind::vkText:
      return FollowOfText(pSwitch.fValueText);
    case TValueKind::vkOptionalBoolean:
      return TFollow::foOptionalWord;
    case TValueKind::vkOptionalMode:
    case TValueKind::vkOptionalSize:
    case TValueKind::vkLevel:
      return TFollow::foOptionalText;
    case TValueKind::vkPaths:
      return TFollow::foFolder;
    case TValueKind::vkPath:
    case TValueKind::vkFile:
    case TValueKind::vkOptionalFile:
      return TFollow::foFile;
    case TValueKind::vkInteger:
    case TValueKind::vkPattern:
    case TValueKind::vkSecret:
    case TValueKind::vkAnything:
      return TFollow::foText;
  }
  return TFollow::foText;
}

TFollow FollowOf(const Vantrel::TOptionInfo& pOption) {
  switch (pOption.fKind) {
    case Vantrel::TOptionKind::okBoolean:
      return TFollow::foOptionalWord;
    case Vantrel::TOptionKind::okChoice:
      return TFollow::foWord;
    case Vantrel::TOptionKind::okInteger:
      return TFollow::foText;
    case Vantrel::TOptionKind::okText:
      return FollowOfText(pOption.fRange);
  }
  return TFollow::foText;
}

bool IsSwitchName(std::string_view pName) {
  const auto switches = AllSwitches();
  return std::any_of(switches.begin(), switches.end(), [&](const TSwitch& pSwitch) {
    return Vantrel::SameTextAscii(Vantrel::FromUtf8(pName), pSwitch.fItem.fName);
  });
}

std::vector<TCompletion> Completions() {
  std::vector<TCompletion> completions;
  for (const TSwitch& item : AllSwitches()) {
    // "-h" and "-?" need no completion.
    if (item.fRank == TSwitchRank::srNotBuilt || item.fItem.fName.size() == 1) continue;
    // Shells take the colon for a sign of their own. Such a switch has another spelling.
    if (item.fItem.fName.find(u':') != std::u16string_view::npos) continue;
    const TFollow follow = FollowOf(item);
    completions.push_back({SwitchName(item), std::string(MainSwitchOf(item).fHelp), follow,
                           follow == TFollow::foOptionalWord ? "true false" : ""});
  }
  for (const Vantrel::TOptionInfo& option : Vantrel::AllOptions()) {
    // Some switches set the option with their own name.
    if (IsSwitchName(option.fName)) continue;
    const TFollow follow = FollowOf(option);
    const bool hasWords = follow == TFollow::foOptionalWord || follow == TFollow::foWord;
    std::string words = hasWords ? option.fRange : "";
    std::replace(words.begin(), words.end(), '|', ' ');
    completions.push_back({"--" + option.fName, option.fHelp, follow, words});
  }
  std::string topics;
  for (const THelpTopic& topic : HelpTopics()) topics.append(topics.empty() ? "" : " ").append(topic.fName);
  for (const TCompletion& named : completions) topics.append(" ").append(named.fName.substr(2));
  for (TCompletion& completion : completions)
    if (completion.fFollow == TFollow::foWord && completion.fWords.empty()) completion.fWords = topics;
  return completions;
}

// The text with a backslash before each of the characters.
std::string WithBackslashes(std::string_view pText, std::string_view pCharacters) {
  std::string result;
  for (const char c : pText) {
    if (pCharacters.find(c) != std::string_view::npos) result += '\\';
    result += c;
  }
  return result;
}

// --- bash ----------------------------------------------------------------------------------------------------------

constexpr std::string_view kBashBegin = R"(    local IFS=$' \t\n' words='' other='' word
    # Without the marks of quoting. "--name=value" comes as three words.
    local current=${2//[\\\"\']/} previous=$3
    [[ $current != = ]] || current=''
    [[ $previous != = ]] || previous=${COMP_WORDS[COMP_CWORD - 2]}
    local last=$current  # the part that is completed
    case ${previous,,} in)";

constexpr std::string_view kBashEnd = R"(        *) other=dirnames ;;
    esac
    [[ $current != -* ]] || words=$names
    [[ -z $other ]] || compopt -o "$other"

    for word in $words; do
        [[ ${word,,} != "${last,,}"* ]] || COMPREPLY+=("${current%"$last"}$word")
    done
    # Of several, readline takes what all have in common, letter case included: lower case, unless all are as typed.
    ((${#COMPREPLY[@]} > 1)) || return 0
    for word in "${COMPREPLY[@]}"; do
        [[ $word == "$current"* ]] || { COMPREPLY=("${COMPREPLY[@],,}"); break; }
    done
}
complete -F _vantrel vantrel)";

// Bash's action for all switches with the same values.
std::string BashAction(const TCompletion& pCompletion) {
  switch (pCompletion.fFollow) {
    case TFollow::foNothing:
    case TFollow::foOptionalText:
    case TFollow::foFolder:
      return {};  // as after a path
    case TFollow::foText:
      return ":";
    case TFollow::foFile:
      return "other=default";
    case TFollow::foOptionalWord:
      return fmt::format("words='{}' other=dirnames", pCompletion.fWords);
    case TFollow::foWord:
      return fmt::format("words='{}'", pCompletion.fWords);
    // Readline quotes file names, which a ";" needs.
    case TFollow::foColumns:
      return "words=$columns last=${current##*[,;]}; compopt -o nospace -o filenames";
    case TFollow::foOrder:
      return "words=$columns last=${current##*,}; [[ $current != *,* ]] || words='ascending descending'";
  }
  return {};
}

// The actions, each with the pattern of all names that use it.
std::vector<std::pair<std::string, std::string>> BashBranches(const std::vector<TCompletion>& pCompletions) {
  std::vector<std::pair<std::string, std::string>> branches;
  for (const TCompletion& completion : pCompletions) {
    const std::string action = BashAction(completion);
    if (action.empty()) continue;
    const std::string pattern = LowerText(completion.fName);
    const auto same =
        std::find_if(branches.begin(), branches.end(), [&](const auto& pBranch) { return pBranch.first == action; });
    if (same == branches.end()) {
      branches.emplace_back(action, pattern);
    } else {
      same->second.append("|").append(pattern);
    }
  }
  return branches;
}

// --- zsh -----------------------------------------------------------------------------------------------------------

constexpr std::string_view kZshBegin = R"(#compdef vantrel
# Completions of vantrel for zsh.

_vantrel_words() {
  compadd -M 'm:{a-zA-Z}={A-Za-z}' "$@"
}

_vantrel_columns() {
  compset -P '*[,;]'
  _vantrel_words -S '' -a columns
}

_vantrel_order() {
  if compset -P '*,'; then
    _vantrel_words ascending descending
  else
    _vantrel_words -qS ',' -a columns
  fi
}

_vantrel() {)";

constexpr std::string_view kZshEnd = R"(    '*:path:_files -/'
  )
  # Names as they are typed go first; then letter case does not count.
  _arguments -S $names || _arguments -S -M 'm:{a-zA-Z}={A-Za-z}' $names
}

# Read by the completion system at the first use, or by "source" at any time.
if [[ $funcstack[1] == _vantrel ]]; then
  _vantrel "$@"
else
  compdef _vantrel vantrel
fi)";

// The text after an option's name and help. Two colons: the value is optional.
std::string ZshAction(const TCompletion& pCompletion) {
  switch (pCompletion.fFollow) {
    case TFollow::foNothing:
      return {};
    case TFollow::foOptionalText:
      return "::value: ";
    case TFollow::foText:
      return ":value: ";
    case TFollow::foFile:
      return ":file:_files";
    case TFollow::foFolder:
      return ":path:_files -/";
    case TFollow::foOptionalWord:
      return fmt::format("::value:_vantrel_words {}", pCompletion.fWords);
    case TFollow::foWord:
      return fmt::format(":value:_vantrel_words {}", pCompletion.fWords);
    case TFollow::foColumns:
      return ":columns:_vantrel_columns";
    case TFollow::foOrder:
      return ":order:_vantrel_order";
  }
  return {};
}

// Escapes text for single quotes. "[", "]" and ":" have a meaning in the arguments of _arguments.
std::string ZshLine(const TCompletion& pCompletion) {
  std::string help;
  for (const char c : WithBackslashes(pCompletion.fHelp, "\\[]:")) help += c == '\'' ? "'\\''" : std::string(1, c);
  const std::string value = ZshAction(pCompletion);
  // A name that needs a value is completed with its "=".
  const bool needsValue = !value.empty() && !value.starts_with("::");
  return fmt::format("    '*{}{}[{}]{}'", pCompletion.fName, needsValue ? "=" : "", help, value);
}

// --- fish ----------------------------------------------------------------------------------------------------------

constexpr std::string_view kFishBegin = R"(# Completions of vantrel for fish.

# Each word behind what is typed up to the last separator.
function __vantrel_list --argument-names separator
    set -l typed (string replace --regex '^--[^=]*=' '' -- (commandline --current-token))
    set -l head (string match --regex "^.*$separator" -- (string unescape -- $typed))
    printf '%s\n' "$head"$argv[2..]
end

function __vantrel_order
    if string match --quiet '*,*' -- (commandline --current-token)
        __vantrel_list , ascending descending
    else
        __vantrel_list , $argv
    end
end

complete -c vantrel -f
complete -c vantrel -n 'not string match --quiet -- "--*=*" (commandline --current-token)' -a '(__fish_complete_directories)')";

// An optional value is completed only after "=". As a word of its own it would keep paths from being completed.
std::string FishAction(const TCompletion& pCompletion) {
  switch (pCompletion.fFollow) {
    case TFollow::foNothing:
    case TFollow::foOptionalText:
      return {};
    case TFollow::foText:
      return " -x";
    case TFollow::foFile:
      return " -r -F";
    case TFollow::foFolder:
      return " -x -a '(__fish_complete_directories)'";
    case TFollow::foOptionalWord:
      return fmt::format(" -a '{}'", pCompletion.fWords);
    case TFollow::foWord:
      return fmt::format(" -x -a '{}'", pCompletion.fWords);
    case TFollow::foColumns:
      return fmt::format(" -x -a '(__vantrel_list \"[,;]\" {})'", ColumnWords(" "));
    case TFollow::foOrder:
      return fmt::format(" -x -a '(__vantrel_order {})'", ColumnWords(" "));
  }
  return {};
}

}  // namespace

std::vector<std::string> BashCompletions() {
  const std::vector<TCompletion> completions = Completions();
  std::string names;
  for (const TCompletion& completion : completions) names.append(names.empty() ? "" : " ").append(completion.fName);
  TLines lines = {
      "# Completions of vantrel for bash 4 and later.", "_vantrel()",           "{", "    local names='" + names + "'",
      "    local columns='" + ColumnWords(" ") + "'",   std::string(kBashBegin)};
  for (const auto& [action, pattern] : BashBranches(completions))
    lines.push_back(fmt::format("        {}) {} ;;", pattern, action));
  lines.emplace_back(kBashEnd);
  return AsOneText(lines, "#");
}

std::vector<std::string> ZshCompletions() {
  TLines lines = {std::string(kZshBegin), "  local -a columns=(" + ColumnWords(" ") + ")", "  local -a names=("};
  for (const TCompletion& completion : Completions()) lines.push_back(ZshLine(completion));
  lines.emplace_back(kZshEnd);
  return AsOneText(lines, "#");
}

std::vector<std::string> FishCompletions() {
  TLines lines = {std::string(kFishBegin)};
  for (const TCompletion& completion : Completions())
    lines.push_back(fmt::format("complete -c vantrel -l {}{} -d '{}'", completion.fName.substr(2),
                                FishAction(completion), WithBackslashes(completion.fHelp, "\\'")));
  return AsOneText(lines, "#");
}

}  // namespace Vantrel::CommandLine
