#include "window/main/ScanFollowUp.h"

#include <atomic>

#include "automation/actions/PostScanActions.h"
#include "window/main/WindowStart.h"
#include "window/models/Background.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

// The queue and what it needs. One thread at a time.
struct TScanFollowUp::TRun : private PostScanActions::IPostScanHost, private Exporting::ILineOutput {
  TRun(const TWindowStart& pStart, IScanRoots& pRoots)
      : fStart(pStart), fRoots(&pRoots), fMedia(*fStart.fOptions), fHandler(*this, fMedia, *this) {}

  bool IsTerminating() const override { return false; }
  bool IsUnattended() const override { return false; }
  bool MustStayOpen() const override { return fMustStay; }
  bool ClosesAfterExport() const override { return fStart.fOptions->CloseAfterExport; }
  int ModalLevel() const override { return 0; }
  void Terminate() override { fCloses = true; }
  std::string ProgramName() const override { return fStart.fProgramName; }
  std::shared_ptr<const TExpandedFolders> ExpandedFolders(const IHierarchicalRoot&) const override { return fExpanded; }
  // The report that is written when no action writes is what the window shows.
  bool WriteLine(std::string_view) override { return true; }
  int64_t LineCount() const override { return 0; }

  const TWindowStart fStart;
  const TRef<IScanRoots> fRoots;
  Exporting::TMediaOptions fMedia;
  PostScanActions::TPostProcessActionHandler fHandler;
  std::shared_ptr<const TExpandedFolders> fExpanded;  // of the root whose actions run
  std::atomic<bool> fMustStay{true};
  std::atomic<bool> fCloses{false};
};

TScanFollowUp::TScanFollowUp(const TWindowStart& pStart, IScanRoots& pRoots)
    : fRun(std::make_shared<TRun>(pStart, pRoots)), fLeft(pStart.fPaths.size() + pStart.fOpenFiles.size()) {}

TScanFollowUp::~TScanFollowUp() = default;

bool TScanFollowUp::Prepare() {
  const bool isPossible = fRun->fStart.fQueueActions(fRun->fHandler, *fRun->fRoots);
  TellFailures();
  return isPossible;
}

void TScanFollowUp::Expect(const IHierarchicalRoot& pRoot) {
  fExpected.insert(&pRoot);
}

bool TScanFollowUp::ScanEnded(const TRef<IHierarchicalRoot>& pRoot) {
  if (fExpected.erase(pRoot.get()) == 0) return false;
  Loaded(pRoot);
  return true;
}

void TScanFollowUp::Loaded(const TRef<IHierarchicalRoot>& pRoot) {
  fWaiting.push_back(pRoot);
  RunNext();
}

void TScanFollowUp::RootFailed() {
  if (fLeft > 0 && --fLeft == 0) FinishRun();
}

void TScanFollowUp::RunNext() {
  if (fIsRunning || fWaiting.empty()) return;
  fIsRunning = true;
  const TRef<IHierarchicalRoot> root = fWaiting.front();
  fWaiting.pop_front();
  fRun->fMustStay = fLeft > 1;
  fRun->fExpanded = fFindExpanded ? fFindExpanded(*root) : nullptr;
  auto perform = [run = fRun, root] { return run->fHandler.PerformPostProcessActions(root.get(), *run->fRoots); };
  RunInBackground(LongWork(), this, perform, [this](const TOutcome<bool>& pDone) {
    fIsRunning = false;
    if (!pDone.fError.isEmpty()) Q_EMIT Failed(tr("After the scan"), pDone.fError);
    TellFailures();
    if (fLeft > 0 && --fLeft == 0) return FinishRun();
    RunNext();
  });
}

void TScanFollowUp::FinishRun() {
  fIsRunning = true;
  auto finish = [run = fRun] { return run->fHandler.FinishActions(); };
  RunInBackground(LongWork(), this, finish, [this](const TOutcome<bool>& pDone) {
    if (!pDone.fError.isEmpty()) Q_EMIT Failed(tr("After the scan"), pDone.fError);
    TellFailures();
    if (fRun->fCloses) Q_EMIT CloseWanted();
  });
}

void TScanFollowUp::TellFailures() {
  for (const PostScanActions::TActionFailure& failure : fRun->fHandler.TakeFailures())
    if (!failure.fMessage.empty()) Q_EMIT Failed(tr("After the scan"), FromUtf8Text(failure.fMessage));
}

}  // namespace Vantrel::Window
