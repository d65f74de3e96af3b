// Whole runs on made-up roots: exit codes, messages, cancellation. Command lines are run by command_line_test.py.

#include <gmock/gmock.h>

#include <thread>

#include "app/Application.h"
#include "app/CancelRequest.h"
#include "automation/commandline/CommandLineParser.h"
#include "automation/commandline/ExitCodes.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/FakeTree.h"
#include "tests/support/LineList.h"
#include "window/main/WindowStart.h"

namespace {

using namespace Vantrel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Vantrel::Testing::TFakeFolder;
using Vantrel::Testing::TFakeRoot;
using Vantrel::Testing::TFakeRoots;
using Vantrel::Testing::TLineList;

class Application : public testing::Test {
 protected:
  TRef<TFakeRoots> fRoots = MakeRef<TFakeRoots>();
  TLineList fOutput;
  std::vector<std::string> fErrors;
  bool fLeaveQuickly = false;
  bool fErrorsByMainThread = true;
  CommandLine::TProgramAbilities fAbilities;
  bool fHasWindowProgram = false;
  std::vector<std::vector<std::u16string>> fWindowPaths;  // of each window opened
  std::vector<bool> fContinued;                           // each run left to the window program: waited for?

  TRef<TFakeRoot> AddRoot(std::u16string pPath) {
    auto root = MakeRef<TFakeRoot>(pPath);
    root->fTop = MakeRef<TFakeFolder>(pPath, TSizeValues{});
    fRoots->fKnown[pPath] = root;
    return root;
  }

  int Run(std::u16string_view pLine) {
    fErrors.clear();
    TRunSettings settings;
    settings.fPlatformName = "Test";
    settings.fLeaveQuickly = fLeaveQuickly;
    settings.fOutput = &fOutput;
    settings.fWriteError = [this, mainThread = std::this_thread::get_id()](std::string_view pText) {
      fErrors.emplace_back(pText);
      fErrorsByMainThread = fErrorsByMainThread && std::this_thread::get_id() == mainThread;
    };
    settings.fCreateRoots = [this](std::shared_ptr<const TGlobalOptions>) { return fRoots; };
    settings.fAbilities = fAbilities;
    settings.fOpenWindow = [this](const Window::TWindowStart& pStart) {
      fWindowPaths.push_back(pStart.fPaths);
      return 0;
    };
    if (fHasWindowProgram)
      settings.fContinueInWindowProgram = [this](bool pWait) {
        fContinued.push_back(pWait);
        return 0;
      };
    TApplication application(settings);
    return application.Run(TKivCommandLineParser::SplitCommandLine(pLine));
  }

  size_t Reports() const {
    return static_cast<size_t>(
        std::count_if(fOutput.fLines.begin(), fOutput.fLines.end(),
                      [](const std::string& pLine) { return pLine.find(" Report, ") != std::string::npos; }));
  }
};

TEST_F(Application, ReportsEachPathWithItsOwnTotals) {
  AddRoot(u"a");
  AddRoot(u"a/b");
  EXPECT_EQ(Run(u"a a/b"), ecOk);
  EXPECT_EQ(Reports(), 2u);
  EXPECT_THAT(fErrors, IsEmpty());
  EXPECT_THAT(fRoots->fRemoved, ElementsAre(u"a", u"a/b"));
  EXPECT_TRUE(fRoots->fDisposed);
}

TEST_F(Application, TheHighestExitCodeCounts) {
  AddRoot(u"fine");
  AddRoot(u"torn")->AddError(u"torn/x", 5);
  const auto missing = AddRoot(u"missing");
  missing->AddError(u"missing", 2);
  missing->fState = rsPathNotFound | rsHasErrors;
  EXPECT_EQ(Run(u"torn fine"), ecIncomplete);
  EXPECT_EQ(Reports(), 1u + 1);
  EXPECT_EQ(Run(u"missing torn fine"), ecPathNotFound);
  EXPECT_EQ(Reports(), 2u + 2) << "the others are reported all the same";
  EXPECT_THAT(fErrors, ElementsAre("Cannot scan \"missing\": " + OSErrorText(2)));
}

TEST_F(Application, ACancelledScanIsReportedAndTheOthersAreNamed) {
  const auto root = AddRoot(u"a");
  AddRoot(u"b");
  int waits = 0;
  root->fOnWait = [&] {
    if (++waits == 2) RequestCancel();
    return waits == 5;
  };
  EXPECT_EQ(Run(u"a b"), ecCancelled);
  EXPECT_TRUE(root->fCancelled);
  EXPECT_EQ(Reports(), 1u);
  EXPECT_THAT(fOutput.fLines, testing::Contains(HasSubstr("The scan was cancelled after")));
  EXPECT_THAT(fErrors, ElementsAre("Not scanned: \"b\""));
}

TEST_F(Application, OnlyTheLastTreeIsLeftStandingWhenLeavingQuickly) {
  AddRoot(u"a");
  AddRoot(u"b");
  fLeaveQuickly = true;
  EXPECT_EQ(Run(u"a b"), ecOk);
  EXPECT_THAT(fRoots->fRemoved, ElementsAre(u"a"));
  EXPECT_FALSE(fRoots->fDisposed);
  fRoots->Release();  // the reference that the run left behind
}

TEST_F(Application, WhatOtherThreadsLogReachesTheConsoleByTheMainThread) {
  AddRoot(u"a")->fOnWait = [] {
    std::thread([] { LogDebug(u"of a worker"); }).join();
    return true;
  };
  EXPECT_EQ(Run(u"a --debug"), ecOk);
  EXPECT_THAT(fErrors, testing::Contains("of a worker"));
  EXPECT_TRUE(fErrorsByMainThread) << "a worker wrote to the console";
}

TEST_F(Application, AFaultOfTheProgramIsOneLineAndACode) {
  EXPECT_EQ(Run(u"unknown"), ecInternalError);
  EXPECT_THAT(fErrors, ElementsAre("TFakeRoots.CreateRoot: unexpected path"));
}

// What is done where: here, in the window, or by the window program after which the console program waits or not.
TEST_F(Application, OpensTheWindowForWhatWritesNothing) {
  using enum CommandLine::TWindowUse;
  enum TWhere { wHere, wWindow };
  struct TRow {
    const char16_t* fLine;
    TWhere fWhenAsked, fUsual;
  };
  const TRow rows[] = {{u"a --nooptions", wHere, wWindow},
                       {u"a --nooptions --gui", wWindow, wWindow},
                       {u"a --nooptions /NOGUI", wHere, wHere},
                       {u"a --nooptions --csv -", wHere, wHere},
                       {u"a --nooptions --csv - --gui", wWindow, wWindow},
                       {u"a --nooptions --chart", wHere, wHere},
                       {u"--version --gui", wHere, wHere},
                       {u"--exportdrivelist --nooptions", wHere, wHere}};
  AddRoot(u"a");
  for (const bool isConsole : {false, true}) {
    for (const auto use : {wuWhenAsked, wuUsual}) {
      for (const TRow& row : rows) {
        fAbilities = {use, true};
        fHasWindowProgram = isConsole;
        fWindowPaths.clear();
        fContinued.clear();
        EXPECT_NE(Run(row.fLine), ecWrongCommandLine) << ToUtf8(row.fLine);
        const bool isWindow = (use == wuUsual ? row.fUsual : row.fWhenAsked) == wWindow;
        EXPECT_EQ(fWindowPaths.size(), isWindow && !isConsole ? 1u : 0u) << ToUtf8(row.fLine);
        EXPECT_EQ(fContinued, std::vector<bool>(isWindow && isConsole ? 1 : 0, false)) << ToUtf8(row.fLine);
      }
    }
  }
  // A bitmap with text is drawn by the window program, and the console program waits. A wrong line is told here.
  EXPECT_EQ(Run(u"a --nooptions --piechart nowhere/x.png"), ecOk);
  EXPECT_THAT(fContinued, ElementsAre(true));
  EXPECT_EQ(Run(u"a --nooptions --piechart nowhere/x.png --nosuch"), ecWrongCommandLine);
  EXPECT_THAT(fContinued, ElementsAre(true));
  fHasWindowProgram = false;
  fAbilities = {};
  EXPECT_EQ(Run(u"a --nooptions --piechart nowhere/x.png"), ecWrongCommandLine);
  EXPECT_EQ(Run(u"--gui"), ecWrongCommandLine);
}

}  // namespace
