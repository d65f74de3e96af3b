// Compares a scan with a subscriber to a scan without one.

// subscriber PATH [ROUNDS]: scans the path without and with a subscriber, in turn, round after round. The subscriber
// takes its queue every 50 ms on its own thread and reads each node in it, as a view does. Its thread's own processor
// time is not the scan's, so it is shown apart. Ends with 1 when the target is missed.

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "bench/Timing.h"
#include "model/options/GlobalOptions.h"
#include "model/roots/ScanRoots.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanServices.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Bench;

constexpr double kMost = 1.03;
constexpr int kDefaultRounds = 15;
constexpr std::chrono::milliseconds kBetweenTakes(50);
constexpr int64_t kForever = 3'600'000;

double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// Takes a root's changes while it lives.
class TView {
 public:
  explicit TView(IHierarchicalRoot& pRoot) : fSubscription(pRoot.Subscribe()), fThread([this] { Run(); }) {}
  // Takes the rest, ends, and returns the processor time that reading took.
  double End() {
    {
      std::lock_guard lock(fLock);
      fEnds = true;
    }
    fWake.notify_all();
    fThread.join();
    fSubscription->End();
    return fSeconds;
  }
  size_t Changes() const { return fChanges; }

 private:
  void Run() {
    std::unique_lock lock(fLock);
    while (!fEnds) {
      fWake.wait_for(lock, kBetweenTakes);
      Read();
    }
    fSeconds = ThreadSeconds();
  }
  void Read() {
    for (const TChangedNode& changed : fSubscription->Take().fNodes) {
      fSeen += changed.fNode->AsFolder()->GetValues().fSize + changed.fNode->GetLastChangeDate().fTicks;
      ++fChanges;
    }
  }

  const TRef<ITreeSubscription> fSubscription;
  std::mutex fLock;
  std::condition_variable fWake;
  bool fEnds = false;
  size_t fChanges = 0;
  int64_t fSeen = 0;  // uses what was read
  double fSeconds = 0;
  std::thread fThread;
};

struct TFigures {
  std::vector<double> fWalls;
  std::vector<double> fWork;  // processor time, without the view's
  std::vector<double> fReading;
  size_t fChanges = 0;
};

void Measure(const std::u16string& pPath, bool pSubscribes, TFigures& pFigures) {
  const TRef<IScanRoots> roots =
      CreateScanRoots(ScanEngine::CreateScanServices(), std::make_shared<const TGlobalOptions>());
  const TRef<IHierarchicalRoot> root = roots->CreateRoot(pPath);
  const double before = ProcessorSeconds();
  double reading = 0;
  pFigures.fWalls.push_back(Seconds([&] {
    std::unique_ptr<TView> view;
    if (pSubscribes) view = std::make_unique<TView>(*root);
    root->Scan();
    root->WaitForScan(kForever);
    if (!view) return;
    reading = view->End();
    pFigures.fChanges = view->Changes();
  }));
  pFigures.fWork.push_back(ProcessorSeconds() - before - reading);
  pFigures.fReading.push_back(reading);
  roots->Dispose();
}

}  // namespace

int main(int pCount, char** pArguments) {
  const int rounds = pCount == 3 ? std::atoi(pArguments[2]) : kDefaultRounds;
  if (pCount < 2 || pCount > 3 || rounds < 1) {
    std::fputs("usage: subscriber PATH [ROUNDS]\n", stderr);
    return 2;
  }
  const std::u16string path = FromNativeBytes(pArguments[1]);
  TFigures unmeasured;
  Measure(path, true, unmeasured);  // warms the cache
  TFigures without;
  TFigures with;
  for (int round = 0; round < rounds; ++round) {
    Measure(path, false, without);
    Measure(path, true, with);
  }
  std::printf("%zu changes read, in %.4f s of processor time\n", with.fChanges, Median(with.fReading));
  std::printf("wall: %.4f s with, %.4f s without, ratio %.3f\n", Median(with.fWalls), Median(without.fWalls),
              Median(with.fWalls) / Median(without.fWalls));
  return ReportMedians("processor time of a scan with a subscriber", with.fWork, "without", without.fWork, kMost) ? 0
                                                                                                                  : 1;
}
