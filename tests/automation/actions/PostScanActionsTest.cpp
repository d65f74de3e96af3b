// The queue, its errors, and when the program ends.

#include <gmock/gmock.h>

#include "automation/actions/ExportFile.h"
#include "automation/actions/PostScanActions.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "tests/support/Failures.h"
#include "tests/support/FakeTree.h"
#include "tests/support/LineList.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::PostScanActions;
using Exporting::TRecursionLevel;
using testing::ElementsAre;
using Vantrel::Testing::MessageOf;
using Vantrel::Testing::TFakeRoot;
using Vantrel::Testing::TFakeRoots;
using Vantrel::Testing::TLineList;

class THost : public IPostScanHost {
 public:
  bool fTerminating = false;
  bool fUnattended = true;
  bool fStayOpen = false;
  bool fClosing = false;
  int fModalLevel = 0;
  int fTerminated = 0;

  bool IsTerminating() const override { return fTerminating; }
  bool IsUnattended() const override { return fUnattended; }
  bool MustStayOpen() const override { return fStayOpen; }
  bool ClosesAfterExport() const override { return fClosing; }
  int ModalLevel() const override { return fModalLevel; }
  void Terminate() override { ++fTerminated; }
  std::string ProgramName() const override { return "Vantrel"; }
};

class TAction : public TBasePostScanAction {
 public:
  TAction(std::vector<int>& pRun, int pNumber, int32_t pLevel = kAnyLevel, uint32_t pFlags = 0)
      : fRun(pRun), fNumber(pNumber), fLevel(pLevel), fFlags(pFlags) {}
  void Execute(IHierarchicalRoot&, bool pReplaceExisting, bool pReportErrors) override {
    EXPECT_TRUE(pReplaceExisting && pReportErrors);
    fRun.push_back(fNumber);
  }
  std::u16string GetInformation() const override { return u"test"; }
  int32_t GetRecursionlevel() const override { return fLevel; }
  uint32_t GetFlags() const override { return fFlags; }
  bool UsesMedia(TMediaType pMedia) const override { return pMedia == TMediaType::mtText; }

 private:
  std::vector<int>& fRun;
  int fNumber;
  int32_t fLevel;
  uint32_t fFlags;
};

class PostScanActions : public testing::Test {
 protected:
  THost fHost;
  TGlobalOptions fOptions;
  TMediaOptions fMedia{fOptions};
  TLineList fOutput;
  TPostProcessActionHandler fHandler{fHost, fMedia, fOutput};
  TRef<TFakeRoots> fRoots = MakeRef<TFakeRoots>();
  TRef<TFakeRoot> fRoot = MakeRef<TFakeRoot>(u"/no such place");
  std::vector<int> fRun;

  void Add(int pNumber, int32_t pLevel = TBasePostScanAction::kAnyLevel, uint32_t pFlags = 0) {
    fHandler.Add(std::make_unique<TAction>(fRun, pNumber, pLevel, pFlags));
  }
  bool Perform() { return fHandler.PerformPostProcessActions(fRoot.get(), *fRoots); }
};

TEST_F(PostScanActions, WithoutWindowAndQueueTheReportIsWrittenAndTheProgramEnds) {
  EXPECT_TRUE(Perform());
  EXPECT_FALSE(fOutput.fLines.empty());
  EXPECT_EQ(fHost.fTerminated, 1);
  fOutput.fCapacity = fOutput.fLines.size() + 1;
  EXPECT_FALSE(Perform());
}

TEST_F(PostScanActions, TheQueueRunsInOrderInPlaceOfTheReport) {
  Add(1);
  Add(2);
  EXPECT_TRUE(Perform());
  EXPECT_THAT(fRun, ElementsAre(1, 2));
  EXPECT_TRUE(fOutput.fLines.empty());
}

TEST_F(PostScanActions, ProgrammingErrorsStopTheQueue) {
  Add(1);
  fHandler.Add(nullptr);
  Add(2);
  EXPECT_EQ(MessageOf<EException>([&] { Perform(); }), "The PostScanActions array must not contain nil values!");
  EXPECT_THAT(fRun, ElementsAre(1));
  EXPECT_EQ(MessageOf<EException>([&] { fHandler.PerformPostProcessActions(nullptr, *fRoots); }),
            "pRoot must not be nil");
  EXPECT_EQ(fHost.fTerminated, 0);
}

TEST_F(PostScanActions, NothingHappensWhileTheProgramEnds) {
  fHost.fTerminating = true;
  EXPECT_TRUE(Perform());
  EXPECT_TRUE(fOutput.fLines.empty());
  EXPECT_EQ(fHost.fTerminated, 0);
}

TEST_F(PostScanActions, TheProgramEndsOnlyWhenNothingIsLeft) {
  fRoots->fActiveScans = 1;
  Perform();
  EXPECT_EQ(fHost.fTerminated, 0) << "another scan runs";
  fRoots->fActiveScans = 0;
  fHost.fStayOpen = true;
  Perform();
  EXPECT_EQ(fHost.fTerminated, 0) << "it must stay open";
  fHost.fStayOpen = false;
  fHost.fModalLevel = 1;
  Perform();
  EXPECT_EQ(fHost.fTerminated, 0) << "a dialog is open";
  fHost.fModalLevel = 0;
  Perform();
  EXPECT_EQ(fHost.fTerminated, 1);
}

TEST_F(PostScanActions, WithAWindowAnActionMustAllowTheEnd) {
  fHost.fUnattended = false;
  fHost.fClosing = true;
  EXPECT_FALSE(fHandler.ShouldCloseApplication());
  Add(1);
  EXPECT_FALSE(fHandler.ShouldCloseApplication());
  Add(2, TBasePostScanAction::kAnyLevel, TBasePostScanAction::kMayClose);
  EXPECT_TRUE(fHandler.ShouldCloseApplication());
  fHost.fClosing = false;
  EXPECT_FALSE(fHandler.ShouldCloseApplication());
}

TEST_F(PostScanActions, TheTreeIsExportedDeepEnoughForAllActions) {
  EXPECT_EQ(fHandler.MergedRecursionLevel(TMediaType::mtText).fRecursionLevel, (TRecursionLevel{1, false}));
  fMedia.Of(TMediaType::mtText).fRecursionLevel = {5, true};  // chosen by somebody
  EXPECT_EQ(fHandler.MergedRecursionLevel(TMediaType::mtText).fRecursionLevel, (TRecursionLevel{5, true}));
  Add(1);
  EXPECT_EQ(fHandler.MergedRecursionLevel(TMediaType::mtText).fRecursionLevel, (TRecursionLevel{5, true}));
  Add(2, 2);
  Add(3, 7);
  EXPECT_EQ(fHandler.MergedRecursionLevel(TMediaType::mtText).fRecursionLevel.fLevel, 7);
  EXPECT_EQ(fHandler.MergedRecursionLevel(TMediaType::mtXML).fRecursionLevel.fLevel, TRecursionLevel::kUnlimited);
}

// Fails where it is told to, and notes what it was asked for.
class TFailingAction : public TBasePostScanAction {
 public:
  enum TStep { stPrepare, stExecute, stFinish, stNone };
  TFailingAction(std::vector<std::string>& pCalls, std::string pName, TStep pFailing, uint32_t pFlags = 0)
      : fCalls(pCalls), fName(std::move(pName)), fFailing(pFailing), fFlags(pFlags) {}
  void Prepare() override { Call(stPrepare, ".Prepare"); }
  void Execute(IHierarchicalRoot&, bool, bool) override { Call(stExecute, ".Execute"); }
  void Finish() override { Call(stFinish, ".Finish"); }
  std::u16string GetInformation() const override { return FromUtf8(fName); }
  uint32_t GetFlags() const override { return fFlags; }
  int GetFailureCode() const override { return fFailing == stFinish ? 3 : TBasePostScanAction::GetFailureCode(); }
  std::vector<std::u16string> GetAttachments() const override { return fFiles; }

  std::vector<std::u16string> fFiles;

 private:
  void Call(TStep pStep, const char* pText) {
    fCalls.push_back(fName + pText);
    if (pStep == fFailing) throw EInvalidOperation(fName + " failed");
  }

  std::vector<std::string>& fCalls;
  std::string fName;
  TStep fFailing;
  uint32_t fFlags;
};

class FailingActions : public PostScanActions {
 protected:
  std::vector<std::string> fCalls;
  using Step = TFailingAction::TStep;

  TFailingAction& Put(const char* pName, Step pFailing = Step::stNone, uint32_t pFlags = 0) {
    auto action = std::make_unique<TFailingAction>(fCalls, pName, pFailing, pFlags);
    TFailingAction& added = *action;
    fHandler.Add(std::move(action));
    return added;
  }
  std::vector<std::string> Calls() { return std::exchange(fCalls, {}); }
  std::string Failures() {
    std::string all;
    for (const TActionFailure& failure : fHandler.TakeFailures())
      all += failure.fMessage + " (" + std::to_string(failure.fExitCode) + ")\n";
    return all;
  }
};

TEST_F(FailingActions, WhatPreparesComesFirstAndAFailedPreparationIsTold) {
  Put("export", Step::stFinish);
  Put("compare", Step::stPrepare, TBasePostScanAction::kPrepares);
  Put("save", Step::stFinish, TBasePostScanAction::kSaves);
  EXPECT_FALSE(fHandler.ResolveRequirements());
  EXPECT_THAT(Calls(), ElementsAre("save.Prepare", "compare.Prepare", "export.Prepare"));
  EXPECT_TRUE(fHandler.CanWriteMore());
  EXPECT_FALSE(fHandler.FinishActions());
  EXPECT_FALSE(fHandler.CanWriteMore());
  EXPECT_EQ(Failures(), "compare failed (5)\nsave failed (3)\nexport failed (3)\n");
}

TEST_F(FailingActions, ALostConsoleTakesNoFurtherReport) {
  Put("compare", Step::stNone, TBasePostScanAction::kPrepares);
  EXPECT_TRUE(fHandler.CanWriteMore());
  fOutput.fCapacity = 1;
  EXPECT_FALSE(Perform());
  EXPECT_FALSE(fHandler.CanWriteMore());
}

TEST_F(FailingActions, AttachmentsAreThoseOfAllActionsAndMustBeThere) {
  const Vantrel::Testing::TTemporaryFolder folder;
  for (const char* name : {"1", "2", "3"}) folder.Put(name, "x");
  Put("a").fFiles = {folder.File("1"), folder.File("2")};
  Put("b").fFiles = {folder.File("3")};
  EXPECT_THAT(fHandler.CheckAttachments(), ElementsAre(folder.File("1"), folder.File("2"), folder.File("3")));
  Put("c").fFiles = {folder.File("missing")};
  EXPECT_EQ(MessageOf<EException>([&] { fHandler.CheckAttachments(); }),
            "The file to be mailed is not there: " + ToQuotedDisplay(folder.File("missing")));
}

TEST(ExportFileNames, TheStandardOutputIsNoFileThatIsUntouched) {
  EXPECT_EQ(MessageOf<EExportCancelled>([] { CheckNotCancelled(true, u"-"); }),
            "Stopped: what went to the standard output is not complete");
}

TEST(ExportFileNames, PartsGoInFrontOfTheExtension) {
  struct TCase {
    std::u16string_view fPath, fExpected;
  };
  const TCase cases[] = {
      {u"data.csv", u"data_x.csv"},       {u"data", u"data_x"},         {u"a.b/data.XML.Zip", u"a.b/data_x.XML.Zip"},
      {u"a.b/data", u"a.b/data_x"},       {u".hidden", u".hidden_x"},   {u".xml.zip", u".xml_x.zip"},
      {u"data.tar.gz", u"data.tar_x.gz"}, {u"data.zip", u"data_x.zip"}, {u"data.", u"data_x."},
  };
  for (const TCase& item : cases) EXPECT_EQ(WithPartInName(item.fPath, u"_x"), item.fExpected) << ToUtf8(item.fPath);

  const TCase roots[] = {
      {u"/data/photos", u"photos"}, {u"/data/a:b*c?\x1B", u"abc"}, {u"/", u"root"}, {u"/...", u"..."}};
  for (const TCase& item : roots)
    EXPECT_EQ(NameForFiles(*MakeRef<TFakeRoot>(std::u16string(item.fPath))), item.fExpected) << ToUtf8(item.fPath);
}

}  // namespace
