#include "automation/commandline/ManualPage.h"

#include <fmt/format.h>

#include <string_view>

#include "automation/commandline/GeneratedText.h"
#include "automation/commandline/HelpText.h"
#include "automation/commandline/SwitchTable.h"
#include "model/options/GlobalOptions.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

using TLines = std::vector<std::string>;

constexpr std::string_view kBegin = R"(.\" Made by "vantrel --help man".
.TH VANTREL 1 "" Vantrel "User Commands"
.SH NAME
vantrel \- scan folders and report where the space went
.SH SYNOPSIS
\fBvantrel\fR [\fISWITCH\fR]... [\fIPATH\fR]...
.SH DESCRIPTION
\fBvantrel\fR scans each path, or the current folder, and writes a report on it to the standard output: for every folder
its allocated size and size, the files and folders in it, its share and its date of last change.
Other formats are written to files by switches such as \fB\-\-csv\fR and \fB\-\-xml\fR.
Progress and messages go to the standard error, progress only when that is a terminal.
.PP
Switches are written \fB\-\-\fINAME\fR, \fB\-\fINAME\fR or \fB/\fINAME\fR, in any letter case.
A value is the next word or, behind \fB\-\-\fINAME\fB=\fR, a part of the same one.
What is neither a switch nor a switch's value is a path to scan; after \fB\-\-\fR only paths follow.
Where paths begin with a slash, a word that begins with one is a switch only when it is the name of one.
.PP
A wrong command line is refused before anything is scanned.)";

constexpr std::string_view kOptions = R"(.SH OPTIONS
Options are set for one run by \fB\-\-\fINAME VALUE\fR or \fB\-\-\fINAME\fB=\fIVALUE\fR, in any letter case, and kept for
all runs with \fB\-\-savesettings\fR.
Those of true and false become true without a value.)";

constexpr std::string_view kExitStatus = R"(.SH EXIT STATUS
Of several paths and outputs the highest code counts.)";

constexpr std::string_view kFiles = R"(.SH ENVIRONMENT
.TP
.B NO_COLOR
When it is set and not empty, messages on a terminal have no colour.
.TP
.B VANTREL_PASSWORD
The password for the mail server, unless \fB\-\-password\fR gives one.
.TP
.B XDG_CONFIG_HOME
Where the folder with the user's options file lies; \fI~/.config\fR when it is not set.
.TP
.B XDG_DATA_HOME
Where the folder with the history of scans lies; \fI~/.local/share\fR when it is not set.
.TP
.B TMPDIR
Where scratch files are made; \fI/tmp\fR when it is not set.
.SH FILES
.TP
.I ~/.config/vantrel/options.xml
The user's own options, written by \fB\-\-savesettings\fR and loaded first by every run without \fB\-\-nooptions\fR; on
Windows \fI%APPDATA%\eVantrel\eoptions.xml\fR.
.TP
.I ~/.local/share/vantrel/history.db
The totals of the scans with \fB\-\-record\-history\fR, unless \fB\-\-HistoryFile\fR names another file; on Windows
\fI%LOCALAPPDATA%\eVantrel\ehistory.db\fR.)";

constexpr std::string_view kEnd = R"(.SH SEE ALSO
.BR du (1),
.BR ncdu (1))";

// Text that man shows unchanged. Formatters would turn the replaced characters into typographic ones.
std::string Escaped(std::string_view pText) {
  std::string result = pText.starts_with('.') ? "\\&" : "";
  for (const char c : pText) {
    switch (c) {
      case '\\':
        result += "\\e";
        break;
      case '-':
        result += "\\-";
        break;
      case '\'':
        result += "\\(aq";
        break;
      case '`':
        result += "\\(ga";
        break;
      case '^':
        result += "\\(ha";
        break;
      case '~':
        result += "\\(ti";
        break;
      default:
        result += c;
    }
  }
  return result;
}

// A help line as a sentence.
std::string Sentence(std::string_view pHelp) {
  std::string text(pHelp);
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return Escaped(text.ends_with('.') ? text : text + ".");
}

std::string ShownName(const TSwitch& pSwitch) {
  return "\\fB" + Escaped(TypedName(pSwitch)) + "\\fR";
}

void AppendSwitch(TLines& pLines, std::span<const TSwitch> pSwitchAndAliases) {
  const TSwitch& main = pSwitchAndAliases.front();
  std::string tag;
  for (const TSwitch& spelling : pSwitchAndAliases) tag.append(tag.empty() ? "" : ", ").append(ShownName(spelling));
  if (!main.fValueText.empty()) tag += fmt::format(" \\fI{}\\fR", Escaped(main.fValueText));
  pLines.insert(pLines.end(), {".TP", tag, Sentence(main.fHelp)});
  if (const std::string details = DetailsOf(main); !details.empty()) pLines.push_back(Escaped(details));
  if (!main.fItem.fRepeatable) pLines.emplace_back("May be given once.");
}

void AppendSwitches(TLines& pLines) {
  pLines.emplace_back(".SH SWITCHES");
  std::string notBuilt;
  for (std::span<const TSwitch> rest = AllSwitches(); !rest.empty();) {
    size_t count = 1;
    while (count < rest.size() && rest[count].fRank == TSwitchRank::srAlias) ++count;
    if (rest.front().fRank == TSwitchRank::srNotBuilt) {
      notBuilt.append(notBuilt.empty() ? "" : ", ").append(ShownName(rest.front()));
    } else {
      AppendSwitch(pLines, rest.first(count));
    }
    rest = rest.subspan(count);
  }
  pLines.insert(pLines.end(), {".PP", "Known, but refused as not part of this version:", notBuilt + "."});
}

void AppendOptions(TLines& pLines) {
  pLines.emplace_back(kOptions);
  for (const Vantrel::TOptionInfo& option : Vantrel::AllOptions()) {
    pLines.insert(pLines.end(),
                  {".TP", fmt::format("\\fB{}\\fR", Escaped("--" + option.fName)), Sentence(option.fHelp)});
    std::string values = "Values: " + (option.fRange.empty() ? "any text" : option.fRange);
    if (!option.fDefault.empty()) values += "; default: " + ShownDefault(option);
    pLines.push_back(Escaped(values + "."));
  }
}

void AppendExamples(TLines& pLines) {
  pLines.emplace_back(".SH EXAMPLES");
  for (const TExample& example : Examples())
    pLines.insert(pLines.end(),
                  {Escaped(example.fTask) + ":", ".PP", ".RS", ".nf", Escaped(example.fLine), ".fi", ".RE", ".PP"});
  pLines.pop_back();  // no paragraph before the next heading
}

}  // namespace

std::vector<std::string> ManualPage() {
  TLines lines = {std::string(kBegin)};
  AppendSwitches(lines);
  AppendOptions(lines);
  lines.emplace_back(kExitStatus);
  for (const TExitCodeInfo& code : ExitCodes())
    lines.insert(lines.end(), {".TP", fmt::format("\\fB{}\\fR", code.fCode), Sentence(code.fMeaning)});
  lines.emplace_back(kFiles);
  AppendExamples(lines);
  lines.emplace_back(kEnd);
  return AsOneText(lines, ".\\\"");
}

}  // namespace Vantrel::CommandLine
