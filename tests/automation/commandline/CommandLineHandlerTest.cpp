// Command lines and what they ask for, or the message that refuses them.

#include <gmock/gmock.h>

#include "automation/commandline/CommandLineHandler.h"
#include "automation/commandline/ExitCodes.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::CommandLine;
using testing::ElementsAre;

// A command line for either rule; tokens are separated by single blanks.
class TCommandLine {
 public:
  explicit TCommandLine(std::u16string_view pLine, bool pSlashBeginsPaths = true)
      : fParser(pSlashBeginsPaths), fHandler(fParser, fOptions) {
    fHandler.HandleCommandLineSwitches(TKivCommandLineParser::SplitCommandLine(pLine));
  }
  const TCommandLineState& State() const { return fHandler.State(); }
  // The message that the program would end with; empty when the command line is fine.
  std::string Refusal() {
    try {
      fHandler.FinalizeCommandLineOptions();
    } catch (const ECommandLineParserCriticalException& error) {
      EXPECT_EQ(error.ExitCode(), Vantrel::ecWrongCommandLine);
      return error.what();
    }
    return {};
  }
  TGlobalOptions fOptions;

 private:
  TKivCommandLineParser fParser;
  TCommandLineHandler fHandler;
};

TEST(CommandLineHandler, CollectsPaths) {
  struct TCase {
    std::u16string fLine;
    std::vector<std::u16string> fPaths;
  };
  const TCase anywhere[] = {
      {u"/SCAN a", {u"a"}},
      {u"/scan a;b c /NOGUI d", {u"a", u"b", u"c", u"d"}},
      {u"--SCAN a -Scan b", {u"a", u"b"}},
      {u"--scan=a;b c;d", {u"a", u"b", u"c;d"}},  // only the switch takes joined paths
      {u"a;b", {u"a;b"}},
      {u"/MaximumThreads 2 a", {u"a"}},
      {u"/KeepFiles a", {u"a"}},
      {u"a -- /NOGUI --version", {u"a", u"/NOGUI", u"--version"}},
      {u"/SCAN -- -x", {u"-x"}},
      {u"-5", {u"-5"}},
      {u"/SCAN ;a;;b;", {u"a", u"b"}},
  };
  for (const TCase& item : anywhere) {
    for (bool slashBeginsPaths : {false, true}) {
      TCommandLine line(item.fLine, slashBeginsPaths);
      EXPECT_EQ(line.State().fPaths, item.fPaths) << ToUtf8(item.fLine);
      EXPECT_EQ(line.Refusal(), "") << ToUtf8(item.fLine);
    }
  }
  const TCase onLinux[] = {
      {u"/usr", {u"/usr"}},
      {u"/SCAN /usr;/home /nogui /", {u"/usr", u"/home", u"/"}},
      {u"/scan/ /NoGui", {u"/scan/"}},
      {u"--StayOnFileSystem /usr", {u"/usr"}},
      {u"--NumberOfTopFiles 5 /usr", {u"/usr"}},
  };
  for (const TCase& item : onLinux) {
    TCommandLine line(item.fLine);
    EXPECT_EQ(line.State().fPaths, item.fPaths) << ToUtf8(item.fLine);
    EXPECT_EQ(line.Refusal(), "") << ToUtf8(item.fLine);
  }
}

TEST(CommandLineHandler, TheHistoryThatIsSavedIsTheSameFromEveryFolder) {
  TCommandLine history(u"--SaveSettings --HistoryFile sub/h.db --ChecksumCache sub/s.db");
  history.Refusal();
  EXPECT_EQ(history.fOptions.HistoryFile, ToNativeBytes(AbsolutePath(u"sub/h.db")));
  EXPECT_EQ(history.fOptions.ChecksumCache, ToNativeBytes(AbsolutePath(u"sub/s.db")));
}

TEST(CommandLineHandler, TakesPatterns) {
  auto shown = [](const TCommandLine& pLine) {
    auto options = PatternMatching::TPatternsToStringRepresentationOptions::Default();
    options.Delimiter = u" | ";
    return pLine.State().fPatterns ? ToUtf8(pLine.State().fPatterns->ToString(options)) : "none";
  };
  struct TCase {
    std::u16string fLine;
    std::string fPatterns;
  };
  const TCase cases[] = {
      {u"a --exclude *.tmp;*.bak /FILTER *.c", "(+)*.c | (-)*.tmp;*.bak"},
      {u"a /EXCLUDE /^cache-/i /exclude -old", "(-)*-old* | (-)/^cache-/i"},  // what looks like a switch
      {u"a --exclude=--nogui --exclude (+)x", "(+)*x* | (-)*--nogui*"},
      {u"a --exclude scan", "(-)*scan*"},
      {u"a /NOGUI", "none"},
  };
  for (const TCase& item : cases) {
    for (bool slashBeginsPaths : {false, true}) {
      TCommandLine line(item.fLine, slashBeginsPaths);
      EXPECT_EQ(line.Refusal(), "") << ToUtf8(item.fLine);
      EXPECT_EQ(shown(line), item.fPatterns) << ToUtf8(item.fLine);
      EXPECT_THAT(line.State().fPaths, ElementsAre(u"a"));
    }
  }
  EXPECT_EQ(TCommandLine(u"a --exclude /NOGUI").Refusal(),
            "A pattern was expected after the command line parameter --exclude");
  EXPECT_EQ(TCommandLine(u"a --exclude --nogui").Refusal(),
            "A pattern was expected after the command line parameter --exclude");
  EXPECT_EQ(TCommandLine(u"a /IMPORTPATTERNS --nogui").Refusal(),
            "A file was expected after the command line parameter /IMPORTPATTERNS");
  EXPECT_EQ(TCommandLine(u"a --filter (Group)Nonsense --exclude=").Refusal(),
            "--filter \"(Group)Nonsense\": No file group found matching \"Nonsense\"\r\n"
            "--exclude \"\": The pattern is empty (argument \"pPattern\")");
}

}  // namespace
