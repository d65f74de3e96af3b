#include <gmock/gmock.h>

#include "automation/PostScanActions.h"
#include "platform/Errors.h"
#include "tests/support/FakeTree.h"
#include "tests/support/LineList.h"

namespace {

using namespace Kiv;
using namespace Kiv::PostScanActions;
using Hierarchical::Exporting::TRecursionLevel;
using testing::ElementsAre;
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
  static std::string MessageOf(const std::function<void()>& pCall) {
    try {
      pCall();
    } catch (const EException& error) {
      return error.what();
    }
    return {};
  }
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
  EXPECT_EQ(MessageOf([&] { Perform(); }), "The PostScanActions array must not contain nil values!");
  EXPECT_THAT(fRun, ElementsAre(1));
  EXPECT_EQ(MessageOf([&] { fHandler.PerformPostProcessActions(nullptr, *fRoots); }), "pRoot must not be nil");
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

}  // namespace
