#include "automation/commandline/HelpText.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "automation/commandline/ExitCodes.h"
#include "automation/commandline/GeneratedText.h"
#include "automation/commandline/ManualPage.h"
#include "automation/commandline/ShellCompletions.h"
#include "automation/commandline/SwitchTable.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

constexpr std::string_view kUsage = "Usage: vantrel [SWITCH]... [PATH]...";
constexpr std::string_view kRowFormat = "  {:<32} {}";
constexpr size_t kScreenWidth = 80;

std::string NameOf(const TSwitch& pSwitch) {
  const std::string name = TypedName(pSwitch);
  return pSwitch.fValueText.empty() ? name : fmt::format("{} {}", name, pSwitch.fValueText);
}

std::string SwitchRow(const TSwitch& pSwitch) {
  return fmt::format(kRowFormat, NameOf(pSwitch), pSwitch.fHelp);
}

// Wraps words into lines of a screen's width.
void AppendWrapped(std::vector<std::string>& pLines, std::string_view pText, std::string_view pIndent) {
  std::string line(pIndent);
  while (!pText.empty()) {
    const size_t end = std::min(pText.find(' '), pText.size());
    if (line.size() > pIndent.size() && line.size() + 1 + end > kScreenWidth) {
      pLines.push_back(line);
      line = pIndent;
    }
    if (line.size() > pIndent.size()) line += ' ';
    line += pText.substr(0, end);
    pText.remove_prefix(std::min(end + 1, pText.size()));
  }
  if (line.size() > pIndent.size()) pLines.push_back(line);
}

void AppendOption(std::vector<std::string>& pLines, const Vantrel::TOptionInfo& pOption) {
  pLines.push_back(fmt::format("  --{:<28}{}", pOption.fName, pOption.fHelp));
  const std::string range = pOption.fRange.empty() ? "any text" : pOption.fRange;
  const std::string shown = ShownDefault(pOption);
  pLines.push_back("      " + (shown.empty() ? range : range + ", default " + shown));
}

std::vector<std::string> SwitchHelpText(const TSwitch& pNamed) {
  const TSwitch& main = MainSwitchOf(pNamed);
  if (main.fRank == TSwitchRank::srNotBuilt) return {NameOf(main), "  " + std::string(main.fHelp)};
  std::vector<std::string> lines = {NameOf(main)};
  AppendWrapped(lines, main.fHelp, "  ");
  AppendWrapped(lines, DetailsOf(main), "  ");
  std::string aliases;
  for (const TSwitch* alias = &main + 1; alias->fRank == TSwitchRank::srAlias; ++alias)
    aliases.append(aliases.empty() ? "" : ", ").append(TypedName(*alias));
  if (!aliases.empty()) lines.push_back("  The same as " + aliases + ".");
  lines.emplace_back(main.fItem.fRepeatable ? "  May be given more than once." : "  May be given once.");
  return lines;
}

std::string LineOfThisSystem(std::string_view pLine) {
  std::string line(pLine);
  if (NativePathDelimiter() == u'/') return line;
  if (const size_t path = line.find("/data"); path != line.npos) line.replace(path, 5, "D:\\Data");
  std::ranges::replace(line, '\'', '"');
  return line;
}

}  // namespace

const std::vector<TExample>& Examples() {
  static const std::vector<TExample> examples = {
      {"A full disk without others mounted inside: folders, largest files, types of files",
       "vantrel -x / --topfileslist --topfolderslist --filetypeslist"},
      {"Large files that were last changed long ago", "vantrel /data --search \"size:>100MB modified:>1year\""},
      {"Each morning at five, as a line of a crontab: files with their date, and the history",
       "0 5 * * * vantrel -x /data --csv /srv/reports/data.csv --xml /srv/reports/data.xml.zip --date "
       "--record-history"},
      {"The same on Windows, for a task; /NOGUI says that no user is there",
       "vantrel.exe /NOGUI /SCAN \"D:\\Data;E:\\Shares\" /CSV C:\\reports\\data.csv /XML C:\\reports\\data.xml.zip "
       "/DATE "
       "/RECORD-HISTORY"},
      {"What has grown since the newest of these files from before today", "vantrel /data --compare /srv/reports"},
      {"How a folder has grown over all recorded scans", "vantrel --history /data"},
      {"By mail, through sendmail", "vantrel /home --exclude \"*.tmp;*.bak\" --email admin@example.org"},
      {"By mail, through a server; the password is in VANTREL_PASSWORD",
       "vantrel /home --email admin@example.org --MailServer mail.example.org --MailUser reports@example.org"},
      {"The paths of all files, for another program",
       "vantrel /data --pathlist - --null --filesintree | xargs -0 ls -ld"},
      {"Files as CSV, with columns of your choice",
       "vantrel /data --csv - --exportedelements 4 --usecolumns fullpath,size,lastchange,owner"},
      {"An NTFS disk that is not mounted", "vantrel ntfs:/dev/sdb1"},
  };
  return examples;
}

const std::vector<TExitCodeInfo>& ExitCodes() {
  static const std::vector<TExitCodeInfo> codes = {
      {ecOk, "all was read and written"},
      {ecIncomplete, "some folders could not be read"},
      {ecWrongCommandLine, "wrong command line, nothing was done"},
      {ecPathNotFound, "a path could not be scanned or a file not loaded"},
      {ecCancelled, "stopped by the user"},
      {ecOutputFailed, "a report, export or mail failed"},
      {ecInternalError, "a fault of the program, or no memory"},
  };
  return codes;
}

const std::vector<THelpTopic>& HelpTopics() {
  static const std::vector<THelpTopic> topics = {
      {"examples", "lines to copy for larger tasks", ExamplesHelpText},
      {"switches", "all switches", SwitchesHelpText},
      {"options", "all options", OptionsHelpText},
      {"man", "the manual page", ManualPage},
      {"bash", "completions for bash", BashCompletions},
      {"zsh", "completions for zsh", ZshCompletions},
      {"fish", "completions for fish", FishCompletions},
  };
  return topics;
}

// Quotes are added because blanks and punctuation alone are hard to see.
std::string ShownDefault(const Vantrel::TOptionInfo& pOption) {
  const std::string& text = pOption.fDefault;
  const bool isPlain =
      text.find_first_of("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ") != text.npos;
  return text.empty() || isPlain ? text : "\"" + text + "\"";
}

std::vector<std::string> UsageText() {
  return {std::string(kUsage), "Try \"vantrel --help\"."};
}

// What people do with the program, each as a line to copy. On Windows with its paths, and with the quotes that all of
// its shells know: cmd.exe takes '>' between single quotes for a redirection.
std::vector<std::string> HelpText() {
  constexpr std::pair<std::string_view, std::string_view> kTasks[] = {
      {"vantrel -d 2 /data", "folders, two levels deep"},
      {"vantrel -x /data --topfileslist -n 50", "a full disk: the largest files"},
      {"vantrel /data --filetypeslist --ageoffiles", "what it is, and how old"},
      {"vantrel /data --search 'size:>1GB'", "find files"},
      {"vantrel /data --duplicates", "what is there twice"},
      {"vantrel /data --treemap data.svg", "a picture"},
      {"vantrel /data --xml old.xml.zip", "keep a scan ..."},
      {"vantrel /data --compare old.xml.zip", "... and see what has grown since"},
      {"vantrel /data --csv - --filesintree", "every file, for a script"},
      {"vantrel /data --exclude '*.tmp' --min 1%", "without some files or trifles"},
  };
  std::vector<std::string> lines = {std::string(kUsage),
                                    "Shows where the space of each path has gone, or of the current folder.", ""};
  for (const auto& [command, meaning] : kTasks)
    lines.push_back(fmt::format("  {:<44} {}", LineOfThisSystem(command), meaning));
  lines.insert(lines.end(), {"", "-d LEVELS deep, -n ROWS at most, -s COLUMN for the order, -r reversed, -x on one",
                             "file system, -a size of contents first, -o FILE to write, -q without progress.", "",
                             "More: --help examples (each night, mail, scripts), --help switches,",
                             "--help options, --help NAME for one of them, --version.",
                             "Exit code: 0 all read and written, 1 some folders unreadable, 2 wrong command",
                             "line, 3 a path not scanned, 4 stopped, 5 an output failed, 6 a fault."});
  return lines;
}

std::vector<std::string> ExamplesHelpText() {
  std::vector<std::string> lines;
  for (const TExample& example : Examples()) {
    if (!lines.empty()) lines.emplace_back();
    lines.insert(lines.end(), {std::string(example.fTask) + ":", "  " + std::string(example.fLine)});
  }
  return lines;
}

std::vector<std::string> SwitchesHelpText() {
  std::vector<std::string> lines = {"Switches, in any letter case, as --NAME, -NAME or /NAME; --NAME=VALUE works too:"};
  for (const TSwitch& item : AllSwitches())
    if (item.fRank == TSwitchRank::srUsual) lines.push_back(SwitchRow(item));
  lines.push_back(fmt::format(kRowFormat, "--OPTION VALUE", "set an option, such as --SizeUnit GB"));
  lines.push_back(fmt::format(kRowFormat, "--", "only paths follow"));
  return lines;
}

std::vector<std::string> OptionsHelpText() {
  std::vector<std::string> lines = {"Options: --NAME VALUE, --NAME=VALUE or /NAME VALUE. true|false alone means true."};
  for (const Vantrel::TOptionInfo& option : Vantrel::AllOptions()) AppendOption(lines, option);
  return lines;
}

bool TryFindHelp(std::u16string_view pTopic, std::vector<std::string>& pLines) {
  if (pTopic.empty()) {
    pLines = HelpText();
    return true;
  }
  const std::u16string_view name = Vantrel::TKivCommandLineParser::RemoveSwitchIndicator(pTopic);
  const std::string narrow = Vantrel::ToUtf8(name);
  const bool isSwitch = name.size() < pTopic.size();  // "--options" is one, "options" are all
  for (const THelpTopic& topic : HelpTopics()) {
    if (isSwitch || !Vantrel::SameTextAscii(topic.fName, narrow)) continue;
    pLines = topic.fText();
    return true;
  }
  for (const TSwitch& item : AllSwitches()) {
    if (!Vantrel::SameTextAscii(item.fItem.fName, name)) continue;
    pLines = SwitchHelpText(item);
    return true;
  }
  const Vantrel::TOptionInfo* option = Vantrel::FindOption(narrow);
  if (option == nullptr) return false;
  pLines.clear();
  AppendOption(pLines, *option);
  return true;
}

}  // namespace Vantrel::CommandLine
