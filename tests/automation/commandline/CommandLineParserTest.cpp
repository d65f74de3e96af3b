// Tokens, values and options, by the rules of both platforms.

#include <gmock/gmock.h>

#include "automation/commandline/CommandLineParser.h"
#include "platform/text/Text.h"

namespace {

using namespace Vantrel;
using testing::ElementsAre;
using TTokens = std::vector<std::u16string>;

// Both rules are tested on both platforms.
TKivCommandLineParser MakeParser(bool pSlashBeginsPaths) {
  TKivCommandLineParser parser(pSlashBeginsPaths);
  parser.RegisterCmdLineSwitch({u"NOGUI", TValueKind::vkNone, true});
  parser.RegisterCmdLineSwitch({u"EXPAND", TValueKind::vkInteger, true});
  return parser;
}

TEST(CommandLineSplitting, QuotesGroupBlanksAndBackslashesAreOrdinary) {
  auto split = TKivCommandLineParser::SplitCommandLine;
  EXPECT_THAT(split(u"a  b\tc"), ElementsAre(u"a", u"b", u"c"));
  EXPECT_THAT(split(uR"(x "C:\my folder\" /SCAN)"), ElementsAre(u"x", uR"(C:\my folder\)", u"/SCAN"));
  EXPECT_THAT(split(uR"("C:\a b";"D:\c d" "")"), ElementsAre(uR"(C:\a b;D:\c d)", u""));
  EXPECT_THAT(split(uR"(--title="a b" "open end )"), ElementsAre(u"--title=a b", u"open end "));
  EXPECT_THAT(split(u"   "), ElementsAre());
  // A quote that is a character: one layer is taken off, and what is left is exact.
  EXPECT_THAT(split(uR"("\"cache\"" \"cache\" "\"my cache\"" "(Owner)\"root\"")"),
              ElementsAre(uR"("cache")", uR"("cache")", uR"("my cache")", uR"x((Owner)"root")x"));
  EXPECT_THAT(split(uR"(--exclude="\"a\"" """my cache""" "a""b")"),
              ElementsAre(uR"(--exclude="a")", uR"("my cache")", uR"(a"b)"));
  // The end of a pair that a backslash began, though a blank follows.
  EXPECT_THAT(split(uR"("--search=\"(copy)\" OR name:\"a b\" \"c\"" x "C:\a\" y)"),
              ElementsAre(uR"x(--search="(copy)" OR name:"a b" "c")x", u"x", uR"(C:\a\)", u"y"));
  EXPECT_THAT(split(uR"(/SCAN "C:\a b\";"D:\c d\" "C:\e\")"),
              ElementsAre(u"/SCAN", uR"(C:\a b\;D:\c d\)", uR"(C:\e\)"));
}

TEST(CommandLineTokens, TellSwitchesFromValuesAndPaths) {
  struct TCase {
    const char16_t* fToken;
    bool fSwitchOnWindows;
    bool fSwitchOnLinux;
  };
  const TCase cases[] = {
      {u"/NOGUI", true, true},    {u"/nogui", true, true},     {u"-NoGui", true, true},   {u"--nogui", true, true},
      {u"--NOGUI=1", true, true}, {u"/keepfiles", true, true},  // an option
      {u"/usr", true, false},     {u"/", false, false},        {u"/NOGUI/", true, false}, {u"/KIV_RUN", true, true},
      {u"-unknown", true, true},  {u"-", false, false},        {u"-5", false, false},     {u"-5x", true, true},
      {u"-5.5", false, false},    {u"-1.5.2", true, true},     {u"-1.", true, true},      {u"-.5", false, false},
      {u"/kiv_a/b", true, false}, {u"NOGUI", false, false},    {u"C:\\", false, false},   {u"", false, false},
  };
  const TKivCommandLineParser windows = MakeParser(false);
  const TKivCommandLineParser linux_ = MakeParser(true);
  for (const TCase& item : cases) {
    EXPECT_EQ(windows.IsSwitch(item.fToken), item.fSwitchOnWindows) << ToUtf8(item.fToken);
    EXPECT_EQ(linux_.IsSwitch(item.fToken), item.fSwitchOnLinux) << ToUtf8(item.fToken);
    EXPECT_EQ(linux_.IsValue(item.fToken), !item.fSwitchOnLinux) << ToUtf8(item.fToken);
  }
}

TEST(CommandLineSearch, FindsSwitchesInEverySpelling) {
  const TKivCommandLineParser parser = MakeParser(false);
  for (const char16_t* spelling : {u"-NOGUI", u"/NOGUI", u"/nogui", u"--NoGui"})
    EXPECT_TRUE(parser.FindSwitch(u"NOGUI", TTokens{u"x", spelling})) << ToUtf8(spelling);
  EXPECT_FALSE(parser.FindSwitch(u"NOGUI", TTokens{u"NOGUI", u"/NOGUIX"}));
  // A name with an indicator stands for the whole token.
  EXPECT_TRUE(parser.FindSwitch(u"/nogui", TTokens{u"/NOGUI"}));
  EXPECT_FALSE(parser.FindSwitch(u"/nogui", TTokens{u"-NOGUI"}));
}

TEST(CommandLineSearch, ValuesAfterSwitches) {
  const TKivCommandLineParser parser = MakeParser(false);
  int64_t number = 0;
  EXPECT_TRUE(parser.FindIntegerValueAfterSwitch(u"EXPAND", TTokens{u"/EXPAND", u"-1"}, number));
  EXPECT_EQ(number, -1);
  for (const TTokens& tokens :
       {TTokens{u"/EXPAND", u"/NOGUI"}, TTokens{u"/EXPAND"}, TTokens{u"/EXPAND", u"x"}, TTokens{u"EXPAND", u"3"}})
    EXPECT_FALSE(parser.FindIntegerValueAfterSwitch(u"EXPAND", tokens, number)) << ToUtf8(tokens.back());

  bool flag = false;
  EXPECT_TRUE(parser.FindBooleanValueAfterSwitch(u"ReadOnly", TTokens{u"-readonly", u"TRUE"}, flag) && flag);
  EXPECT_TRUE(parser.FindBooleanValueAfterSwitch(u"ReadOnly", TTokens{u"-readonly", u"0"}, flag) && !flag);
  EXPECT_FALSE(parser.FindBooleanValueAfterSwitch(u"ReadOnly", TTokens{u"-readonly", u"yes"}, flag));

  std::u16string text;
  const TTokens tokens = {u"/A", u"first one", u"/A", u"/B"};
  EXPECT_TRUE(parser.FindParameterAfterSwitch(u"A", tokens, 0, true, text));
  EXPECT_EQ(text, u"first one");
  EXPECT_FALSE(parser.FindParameterAfterSwitch(u"A", tokens, 1, true, text));
  EXPECT_TRUE(parser.FindParameterAfterSwitch(u"A", tokens, 1, false, text));
  EXPECT_EQ(text, u"/B");
}

TEST(CommandLineSearch, PathsAfterSwitches) {
  const TKivCommandLineParser parser = MakeParser(false);
  const TTokens tokens = {u"x",      u"/OPEN", u"a",  u"-open", u"/NOGUI", u"--Open=b c",
                          u"--open", u"\"d\"", u"--", u"/OPEN", u"e"};
  EXPECT_THAT(parser.FindPathsAfterSwitch(u"OPEN", tokens), ElementsAre(u"a", u"b c", u"\"d\""));
  EXPECT_EQ(parser.FindPathAfterSwitch(u"OPEN", tokens), u"a");
  EXPECT_EQ(parser.FindPathAfterSwitch(u"CLOSE", tokens), u"");
  const std::u16string_view names[] = {u"CLOSE", u"nogui"};
  EXPECT_TRUE(parser.FindSwitches(names, tokens));
  EXPECT_FALSE(parser.FindSwitches(std::span(names).first(1), tokens));
}

TEST(CommandLineSearch, TheCommandLineWithoutItsPaths) {
  struct TCase {
    TTokens fTokens;
    TTokens fKept;
  };
  const TCase cases[] = {
      {{u"a", u"/NOGUI", u"b"}, {u"/NOGUI"}},
      {{u"/SCAN", u"a", u"b;c", u"/NOGUI"}, {u"/NOGUI"}},
      {{u"--scan=a", u"/EXPAND", u"3", u"b"}, {u"/EXPAND", u"3"}},
      {{u"/EXPAND", u"b", u"c"}, {u"/EXPAND", u"b"}},
      {{u"--MaximumThreads", u"2", u"a", u"--KeepFiles", u"b"}, {u"--MaximumThreads", u"2", u"--KeepFiles"}},
      {{u"--KeepFiles", u"false", u"a"}, {u"--KeepFiles", u"false"}},
      {{u"--CSV", u"out.csv", u"a", u"--CSV=x", u"b"}, {u"--CSV", u"out.csv", u"--CSV=x"}},
      {{u"/NOGUI", u"--", u"/SCAN", u"x"}, {u"/NOGUI"}},
      {{}, {}},
  };
  TKivCommandLineParser parser(false);
  parser.RegisterCmdLineSwitch({u"NOGUI", TValueKind::vkNone, true});
  parser.RegisterCmdLineSwitch({u"EXPAND", TValueKind::vkInteger, true});
  parser.RegisterCmdLineSwitch({u"SCAN", TValueKind::vkPaths, true});
  parser.RegisterCmdLineSwitch({u"CSV", TValueKind::vkFile, true});
  for (const TCase& item : cases) EXPECT_EQ(parser.GetFilteredCommandLineWithoutPaths(item.fTokens), item.fKept);
}

// What goes to a shell's history or a screen must not: a password is taken whatever it looks like.
TEST(CommandLineTokens, SecretsAreTakenWhateverTheyLookLike) {
  const TKivCommandLineParser parser = MakeParser(false);
  for (const char16_t* secret : {u"x", u"-x", u"--x", u"--x=y", u"/x", u"", u"KeepFiles", u"-5"})
    EXPECT_TRUE(parser.IsValueOfKind(secret, TValueKind::vkSecret)) << ToUtf8(secret);
  for (const char16_t* other : {u"--", u"/NOGUI", u"--nogui", u"-KeepFiles", u"--KeepFiles=x"})
    EXPECT_FALSE(parser.IsValueOfKind(other, TValueKind::vkSecret)) << ToUtf8(other);
}

TEST(CommandLineTokens, WhatSomebodyElseReadsIsASwitchOnBothPlatforms) {
  for (const bool slashBeginsPaths : {false, true}) {
    TKivCommandLineParser parser = MakeParser(slashBeginsPaths);
    const std::u16string_view names[] = {u"FOREIGN"};
    parser.RegisterParametersToIgnore(names);
    for (const char16_t* token : {u"/foreign", u"--FOREIGN=x", u"-Foreign"})
      EXPECT_TRUE(parser.IsIgnored(token) && parser.IsSwitch(token)) << ToUtf8(token);
    for (const char16_t* token : {u"foreign", u"/foreigner", u"/NOGUI", u""})
      EXPECT_FALSE(parser.IsIgnored(token)) << ToUtf8(token);
  }
}

TEST(CommandLineMoments, SwitchesActAtTheirMomentOnly) {
  TKivCommandLineParser parser(false);
  const TCommandLineItem early{u"A"}, late{u"B", TValueKind::vkNone, true, TTimeMoment::tmBeforeEnd};
  EXPECT_TRUE(parser.IsTimeMomentUsed(early) && !parser.IsTimeMomentUsed(late));
  parser.FireMoment(TTimeMoment::tmAfterScan);
  EXPECT_FALSE(parser.IsTimeMomentUsed(early) || parser.IsTimeMomentUsed(late));
  parser.FireMoment(TTimeMoment::tmBeforeEnd);
  EXPECT_TRUE(!parser.IsTimeMomentUsed(early) && parser.IsTimeMomentUsed(late));
}

struct TOptionCase {
  TTokens fTokens;
  size_t fConsumed;
  std::string fError;
  std::string fOption;  // whose value is looked at afterwards
  std::string fValue;
};

void CheckOptions(const std::vector<TOptionCase>& pCases, bool pSlashBeginsPaths) {
  const TKivCommandLineParser parser = MakeParser(pSlashBeginsPaths);
  for (const TOptionCase& item : pCases) {
    SCOPED_TRACE(ToUtf8(item.fTokens.front()) + (item.fTokens.size() > 1 ? " " + ToUtf8(item.fTokens[1]) : ""));
    TGlobalOptions options;
    std::string error;
    EXPECT_EQ(parser.TryApplyCommandLineOptionToGlobalOptions(item.fTokens, 0, options, error), item.fConsumed);
    EXPECT_EQ(error, item.fError);
    if (item.fOption.empty()) continue;
    EXPECT_EQ(FindOption(item.fOption)->fGet(options), item.fValue);
  }
}

TEST(OptionSetter, SetsOptionsByName) {
  CheckOptions({{{u"/MaximumThreads", u"2"}, 2, "", "MaximumThreads", "2"},
                {{u"--maximumthreads=256", u"x"}, 1, "", "MaximumThreads", "256"},
                {{u"/KeepFiles", u"FALSE"}, 2, "", "KeepFiles", "false"},
                {{u"/StayOnFileSystem"}, 1, "", "StayOnFileSystem", "true"},
                {{u"/StayOnFileSystem", u"C:\\x"}, 1, "", "StayOnFileSystem", "true"},  // a path follows
                {{u"/StayOnFileSystem", u"/NOGUI"}, 1, "", "StayOnFileSystem", "true"},
                {{u"/FileAgesDateType", u"Creation"}, 2, "", "FileAgesDateType", "creation"},
                {{u"/FileAges", u"1;10;100"}, 2, "", "FileAges", "1;10;100"},
                {{u"/ExportTitle", u"true"}, 2, "", "ExportTitle", "true"},
                {{u"/KIV_JOB", u"7"}, 2, "", "", ""},
                {{u"/kiv_job", u"/NOGUI"}, 1, "", "", ""},
                {{u"C:\\x"}, 0, "", "", ""}},
               false);
  CheckOptions(
      {{{u"/KIV_JOB", u"foo"}, 2, "", "", ""},
       {{u"--HistoryFile=h\xDCFF.db"}, 1, "", "HistoryFile", ToNativeBytes(u"h\xDCFF.db")},
       {{u"--ExportTitle", u"h\xDCFF"}, 0, "ExportTitle: \"h\\xFF\" is not allowed; expected text", "ExportTitle", ""},
       {{u"/StayOnFileSystem", u"/usr"}, 1, "", "StayOnFileSystem", "true"},
       {{u"--ExportTitle", u"/usr"}, 2, "", "ExportTitle", "/usr"},
       {{u"/usr"}, 0, "", "", ""}},
      true);
}

TEST(OptionSetter, RefusesWithTheRange) {
  CheckOptions(
      {{{u"/MaximumThreads", u" 2"},
        0,
        "MaximumThreads: \" 2\" is not allowed; expected 1..256",
        "MaximumThreads",
        "8"},
       {{u"/ThreadPriority", u"7"}, 0, "ThreadPriority: \"7\" is not allowed; expected 0..6", "ThreadPriority", "3"},
       {{u"/ThreadPriority", u"6"}, 2, "", "ThreadPriority", "6"},
       {{u"/FileAgesDateType", u"born"},
        0,
        "FileAgesDateType: \"born\" is not allowed; expected change|creation|access|none",
        "FileAgesDateType",
        "change"}},
      false);
  for (const char* ages : {"", ";", "1;;2", "2;1", "1;1", "-1", "1;x", "99999999999999999999"})
    CheckOptions({{{u"/FileAges", FromUtf8(ages)},
                   0,
                   "FileAges: \"" + std::string(ages) + "\" is not allowed; expected days;days;... in ascending order",
                   "FileAges",
                   "1;7;30;182;365;730;2147483647"}},
                 false);
}

// A default that its own option refuses would leave the field at zero.
TEST(OptionTable, EveryDefaultIsAcceptedAndReadBack) {
  const TGlobalOptions defaults;
  for (const TOptionInfo& option : AllOptions()) {
    TGlobalOptions other;
    EXPECT_TRUE(option.fSet(other, option.fDefault)) << option.fName;
    EXPECT_EQ(option.fGet(defaults), option.fDefault) << option.fName;
    EXPECT_EQ(FindOption(option.fName), &option) << "declared twice: " << option.fName;
  }
}

}  // namespace
