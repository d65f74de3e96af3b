#include "automation/commandline/Suggestions.h"

#include <algorithm>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

std::u16string Folded(std::u16string_view pText) {
  std::u16string folded(pText);
  for (char16_t& character : folded) character = FoldAscii(character);
  return folded;
}

// The number of insertions, deletions, replacements and swaps of neighbours that turn one text into the other.
size_t EditDistance(std::u16string_view pA, std::u16string_view pB) {
  std::vector<std::vector<size_t>> cost(pA.size() + 1, std::vector<size_t>(pB.size() + 1));
  for (size_t i = 0; i <= pA.size(); ++i) {
    for (size_t j = 0; j <= pB.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const size_t replaced = cost[i - 1][j - 1] + (pA[i - 1] == pB[j - 1] ? 0 : 1);
      cost[i][j] = std::min({replaced, cost[i - 1][j] + 1, cost[i][j - 1] + 1});
      if (i > 1 && j > 1 && pA[i - 1] == pB[j - 2] && pA[i - 2] == pB[j - 1])
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[pA.size()][pB.size()];
}

struct TForeignName {
  std::u16string_view fName;  // in small letters
  std::string_view fOurs;
};

// Names that other programs of this kind, find and grep have for the same.
constexpr TForeignName kForeignNames[] = {
    {u"age", "--ageoffiles"},
    {u"ages", "--ageoffiles"},
    {u"all", "--filesintree"},
    {u"apparent", "--apparent-size"},
    {u"b", "-a --SizeUnit B"},
    {u"biggest", "--topfileslist"},
    {u"block-size", "--SizeUnit"},
    {u"bytes", "--SizeUnit B"},
    {u"count-links", "--ShareHardLinks false"},
    {u"dereference", "--FollowSymbolicLinks"},
    {u"diff", "--compare"},
    {u"dupes", "--duplicates"},
    {u"exclude-dir", "--exclude"},
    {u"exclude-from", "--importpatterns"},
    {u"file-types", "--extensionslist"},
    {u"files", "--filesintree"},
    {u"filetypes", "--filetypeslist"},
    {u"follow", "--FollowSymbolicLinks"},
    {u"follow-links", "--FollowSymbolicLinks"},
    {u"follow-symlinks", "--FollowSymbolicLinks"},
    {u"extensions", "--extensionslist"},
    {u"f", "--open"},
    {u"format", "--output FILE, whose extension says the format"},
    {u"group-by", "--extensionslist, --filetypeslist or --userslist"},
    {u"human-readable", "--SizeUnit auto"},  // the default
    {u"i", "--exclude"},
    {u"ignore", "--exclude"},
    {u"ignore-dir", "--exclude"},
    {u"ignore-dirs", "--exclude"},
    {u"iname", "--search"},
    {u"inodes", "--sort files"},
    {u"jobs", "--MaximumThreads"},
    {u"k", "--SizeUnit KB"},
    {u"largest", "--topfileslist"},
    {u"level", "--depth"},
    {u"levels", "--depth"},
    {u"limit", "--top"},
    {u"lines", "--top"},
    {u"m", "--SizeUnit MB"},
    {u"max-depth", "--depth"},
    {u"maxdepth", "--depth"},
    {u"min-size", "--min"},
    {u"mtime", "--search 'modified:<2024'"},
    {u"name", "--search"},
    {u"newer", "--search 'modified:>2024'"},
    {u"no-color", "--color never"},
    {u"no-colors", "--color never"},
    {u"no-cross", "--one-file-system"},
    {u"no-progress", "--quiet"},
    {u"non-interactive", "--nogui"},
    {u"num-lines", "--top"},
    {u"number-of-lines", "--top"},
    {u"output-file", "--output"},
    {u"owners", "--userslist"},
    {u"same-file-system", "--one-file-system"},
    {u"sb", "-d 0 -a --SizeUnit B"},
    {u"sh", "-d 0"},  // as du has it: sizes are for people already
    {u"size", "--search 'size:>1GB'"},
    {u"sk", "-d 0 --SizeUnit KB"},
    {u"sm", "-d 0 --SizeUnit MB"},
    {u"summarize", "--depth 0"},
    {u"t", "--top or --min"},
    {u"threads", "--MaximumThreads"},
    {u"threshold", "--min"},
    {u"top-files", "--topfileslist"},
    {u"topfiles", "--topfileslist"},
    {u"topfolders", "--topfolderslist"},
    {u"types", "--filetypeslist"},
    {u"users", "--userslist"},
    {u"xdev", "--one-file-system"},
};

}  // namespace

std::string SuggestionFor(const TKivCommandLineParser& pParser, std::u16string_view pToken) {
  // Handles "/CSV=file", which would be right with two dashes.
  const std::u16string_view front = WithoutJoinedValue(pToken);
  const bool isJoined = front.size() < pToken.size() && pParser.NamesKnown(front);
  const std::u16string_view name = TKivCommandLineParser::RemoveSwitchIndicator(isJoined ? front : pToken);
  constexpr size_t kLongestName = 64;  // a longer token is not a misspelled name
  const std::u16string typed = Folded(name.substr(0, kLongestName));
  for (const TForeignName& foreign : kForeignNames)
    if (foreign.fName == typed) return ". Did you mean " + std::string(foreign.fOurs) + "?";
  std::u16string best;
  size_t bestDistance = std::max<size_t>(1, typed.size() / 3) + 1;
  auto consider = [&](std::u16string_view pCandidate) {
    const size_t distance = EditDistance(typed, Folded(pCandidate));
    if (distance >= bestDistance || distance >= pCandidate.size()) return;
    bestDistance = distance;
    best = pCandidate;
  };
  // As the help writes them: --scan, /SCAN.
  const bool isDashed = isJoined || pToken.starts_with(u'-');
  for (const TCommandLineItem& item : pParser.RegisteredSwitches())
    consider(isDashed ? Folded(item.fName) : std::u16string(item.fName));
  for (const TOptionInfo& option : AllOptions()) consider(FromUtf8(option.fName));
  if (best.empty()) return {};
  const std::u16string_view indicator = isJoined ? u"--" : pToken.substr(0, pToken.size() - name.size());
  return ". Did you mean " + ToDisplay(std::u16string(indicator) + best) + (isJoined ? "=?" : "?");
}

}  // namespace Vantrel::CommandLine
