// Measures the window: its start, the steps of its event loop during a scan, what it costs a scan, large folders.

// window PATH [FOLDER]: scans the path without and with the window, then opens and sorts the folder, whose path is
// beneath PATH. Prints a table. Ends with 1 when a target is missed.

#include <malloc.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "bench/Timing.h"
#include "model/roots/ScanRoots.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanServices.h"
#include "window/main/MainWindow.h"
#include "window/main/Session.h"
#include "window/main/WindowStart.h"
#include "window/models/ContentsModel.h"
#include "window/models/TreeModel.h"
#include "window/panes/ContentsPane.h"
#include "window/panes/EntriesView.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Window;

constexpr int64_t kForever = 3'600'000;
constexpr int kRounds = 3;

double ThreadMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Times each event with all that it calls. Remembers the one that took longest.
class TTimedApplication : public QApplication {
 public:
  using QApplication::QApplication;

  struct TStep {
    double fPassed = 0;     // milliseconds
    double fProcessor = 0;  // of these, those in which the thread ran
    std::string fWhat;
  };

  bool notify(QObject* pReceiver, QEvent* pEvent) override {
    if (fDepth++ > 0) {
      const bool isDone = QApplication::notify(pReceiver, pEvent);
      --fDepth;
      return isDone;
    }
    QElapsedTimer timer;
    timer.start();
    const double before = ThreadMilliseconds();
    const int type = pEvent->type();
    const char* name = pReceiver->metaObject()->className();
    const bool isDone = QApplication::notify(pReceiver, pEvent);
    --fDepth;
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    fLongestProcessor = std::max(fLongestProcessor, ThreadMilliseconds() - before);
    if (milliseconds > fLongest.fPassed)
      fLongest = {milliseconds, ThreadMilliseconds() - before, std::string(name) + ", event " + std::to_string(type)};
    return isDone;
  }
  void Forget() {
    fLongest = {};
    fLongestProcessor = 0;
  }
  const TStep& Longest() const { return fLongest; }
  double LongestProcessor() const { return fLongestProcessor; }

 private:
  int fDepth = 0;
  TStep fLongest;
  double fLongestProcessor = 0;
};

bool gMet = true;

void Print(const char* pWhat, double pValue, const char* pUnit, double pMost) {
  const bool isMet = pMost <= 0 || pValue <= pMost;
  gMet &= isMet;
  std::printf("%-52s %10.1f %-3s", pWhat, pValue, pUnit);
  if (pMost > 0) std::printf("  at most %.0f: %s", pMost, isMet ? "met" : "MISSED");
  std::printf("\n");
  std::fflush(stdout);
}

TWindowStart NewStart() {
  TWindowStart start;
  start.fProgramName = "Vantrel";
  start.fReadOnly = true;
  start.fCreateRoots = [](std::shared_ptr<const TGlobalOptions> pOptions) {
    return CreateScanRoots(ScanEngine::CreateScanServices(), std::move(pOptions));
  };
  return start;
}

struct TDuration {
  double fSeconds;
  double fProcessor;  // of all threads. Other programs change it less than they change the time that passes.
};

template <class TCall>
TDuration DurationOf(const TCall& pCall) {
  const std::clock_t before = std::clock();
  const double seconds = Bench::Seconds(pCall);
  return {seconds, static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC};
}

TDuration ScanAlone(const std::u16string& pPath) {
  const TRef<IScanRoots> roots = NewStart().fCreateRoots(std::make_shared<TGlobalOptions>());
  const TDuration duration = DurationOf([&] { roots->Scan(pPath)->WaitForScan(kForever); });
  roots->Dispose();
  return duration;
}

// Sleeps between events, as the program does. A loop that asks again and again would take a processor from the scan.
double Wait(const std::function<bool()>& pIsSo) {
  constexpr int kMillisecondsBetweenLooks = 5;
  QElapsedTimer timer;
  timer.start();
  QTimer wake;
  wake.start(kMillisecondsBetweenLooks);
  while (!pIsSo()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

TDuration ScanInWindow(TMainWindow& pWindow, const std::u16string& pPath) {
  return DurationOf([&] {
    pWindow.Session().Scan(pPath);
    Wait([&] {
      const auto roots = pWindow.Tree().Roots();
      return !roots.empty() && (roots[0]->GetState() & rsFinished) != 0 && (roots[0]->GetState() & rsScanning) == 0;
    });
  });
}

void MeasureFolder(TTimedApplication& pApplication, TMainWindow& pWindow, const QString& pFolder) {
  pWindow.Panes().setCurrentIndex(0);
  TContentsModel& contents = pWindow.Contents().Model();
  const std::u16string path = pFolder.toStdU16String();
  pApplication.Forget();
  const size_t bytesBefore = mallinfo2().uordblks + mallinfo2().hblkhd;
  const size_t rowsBefore = pWindow.Tree().CountRows() + contents.CountRows();
  pWindow.GoTo(pFolder);
  const double opened =
      Wait([&] { return contents.rowCount() > 1 && contents.Folder() && contents.Folder()->GetFullPath() == path; });
  Print("Opening the folder: to its first rows", opened, "ms", 100);
  Wait([&] { return !contents.IsFetching(); });
  const size_t rows = pWindow.Tree().CountRows() + contents.CountRows() - rowsBefore;
  Print("Memory for each of its rows, models and views",
        static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd - bytesBefore) / static_cast<double>(rows), "B",
        100);
  contents.sort(ecName, Qt::AscendingOrder);
  Print("Sorting it by name", Wait([&] { return !contents.IsFetching(); }), "ms", 1000);
  contents.sort(EntryColumnOf(TColumn::mdLastChange), Qt::AscendingOrder);
  Print("Sorting it by last change", Wait([&] { return !contents.IsFetching(); }), "ms", 1000);
  contents.sort(EntryColumnOf(TColumn::mdExtension), Qt::AscendingOrder);
  Print("Sorting it by extension", Wait([&] { return !contents.IsFetching(); }), "ms", 1000);
  contents.sort(EntryColumnOf(TColumn::mdPercentOfRoot), Qt::AscendingOrder);
  Print("Sorting it by percent of the root", Wait([&] { return !contents.IsFetching(); }), "ms", 1000);
  Print("Longest step of the event loop meanwhile", pApplication.Longest().fPassed, "ms", 50);
  Print("The longest in processor time", pApplication.LongestProcessor(), "ms", 0);
}

// Scans without a window and with it in turn, and prints the times and the longest step of the event loop.
void MeasureScan(TTimedApplication& pApplication, TMainWindow& pWindow, const std::u16string& pPath) {
  ScanAlone(pPath);  // warms the cache
  std::vector<double> alone;
  std::vector<double> inWindow;
  double processorAlone = 0;
  double processorInWindow = 0;
  pApplication.Forget();
  for (int round = 0; round < kRounds; ++round) {
    const TDuration without = ScanAlone(pPath);
    pWindow.Panes().setCurrentIndex(1);  // the treemap; the tree is always visible
    const TDuration with = ScanInWindow(pWindow, pPath);
    alone.push_back(without.fSeconds);
    inWindow.push_back(with.fSeconds);
    processorAlone += without.fProcessor;
    processorInWindow += with.fProcessor;
    std::printf("  round %d: %.2f s without a window (processors %.2f), %.2f s with one (%.2f)\n", round + 1,
                without.fSeconds, without.fProcessor, with.fSeconds, with.fProcessor);
    if (round + 1 < kRounds) {
      pWindow.Session().Close(pWindow.Tree().Roots()[0]);
      QTest::qWait(1500);
    }
  }
  const TScanProgress progress = pWindow.Tree().Roots()[0]->GetProgress();
  const TTimedApplication::TStep& longest = pApplication.Longest();
  std::printf("%lld files, %lld folders; the longest step was %s, %.1f ms of it on the processor\n",
              static_cast<long long>(progress.fFiles), static_cast<long long>(progress.fFolders), longest.fWhat.c_str(),
              longest.fProcessor);
  const auto best = [](const std::vector<double>& pTimes) { return *std::min_element(pTimes.begin(), pTimes.end()); };
  Print("Scan with the window against one without", 100 * best(inWindow) / best(alone), "%", 105);
  Print("The same in processor time", 100 * processorInWindow / processorAlone, "%", 0);
  Print("Longest step of the event loop during a scan", longest.fPassed, "ms", 50);
  Print("The longest in processor time", pApplication.LongestProcessor(), "ms", 0);
}

}  // namespace

int main(int pCount, char** pArguments) {
  if (pCount < 2) return std::fputs("window PATH [FOLDER]\n", stderr), 2;
  const std::u16string path = FromNativeBytes(pArguments[1]);
  QElapsedTimer start;
  start.start();
  TTimedApplication application(pCount, pArguments);
  auto window = std::make_unique<TMainWindow>(NewStart());
  window->resize(1600, 1000);
  window->show();
  if (!QTest::qWaitForWindowExposed(window.get())) return 2;
  QCoreApplication::processEvents();
  Print("Start to shown window", static_cast<double>(start.nsecsElapsed()) / 1e6, "ms", 500);

  MeasureScan(application, *window, path);
  if (pCount > 2) MeasureFolder(application, *window, QString::fromLocal8Bit(pArguments[2]));
  Print("Rows of the models", static_cast<double>(window->Tree().CountRows() + window->Contents().Model().CountRows()),
        "", 0);
  std::fflush(stdout);
  std::_Exit(gMet ? 0 : 1);  // the tree need not be freed
}
