// Measures the window: its start, the steps of its event loop during a scan, what it costs a scan, large folders.

// window PATH [FOLDER]: scans the path without and with the window, then opens and sorts the folder, whose path is
// beneath PATH. Prints a table. Ends with 1 when a target is missed.

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTabWidget>
#include <QTest>
#include <cstdio>
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

// Remembers the longest time that one event took, with all that it called.
class TTimedApplication : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* pReceiver, QEvent* pEvent) override {
    if (fDepth++ > 0) {
      const bool isDone = QApplication::notify(pReceiver, pEvent);
      --fDepth;
      return isDone;
    }
    QElapsedTimer timer;
    timer.start();
    const int type = pEvent->type();
    const std::string name = pReceiver->metaObject()->className();
    const bool isDone = QApplication::notify(pReceiver, pEvent);
    --fDepth;
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    if (milliseconds > fLongest) {
      fLongest = milliseconds;
      fWhat = name + ", event " + std::to_string(type);
    }
    return isDone;
  }
  double TakeLongest() { return std::exchange(fLongest, 0.0); }

  std::string fWhat;

 private:
  int fDepth = 0;
  double fLongest = 0;
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

double ScanAlone(const std::u16string& pPath) {
  const TRef<IScanRoots> roots = NewStart().fCreateRoots(std::make_shared<TGlobalOptions>());
  const double seconds = Bench::Seconds([&] { roots->Scan(pPath)->WaitForScan(kForever); });
  roots->Dispose();
  return seconds;
}

double Wait(const std::function<bool()>& pIsSo) {
  QElapsedTimer timer;
  timer.start();
  while (!pIsSo()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double ScanInWindow(TMainWindow& pWindow, const std::u16string& pPath) {
  const double seconds = Bench::Seconds([&] {
    pWindow.Session().Scan(pPath);
    Wait([&] {
      const auto roots = pWindow.Tree().Roots();
      return !roots.empty() && (roots[0]->GetState() & rsFinished) != 0 && (roots[0]->GetState() & rsScanning) == 0;
    });
  });
  return seconds;
}

void MeasureFolder(TTimedApplication& pApplication, TMainWindow& pWindow, const QString& pFolder) {
  pWindow.Panes().setCurrentIndex(0);
  TContentsModel& contents = pWindow.Contents().Model();
  pWindow.GoTo(pFolder);
  pApplication.TakeLongest();
  const std::u16string path = pFolder.toStdU16String();
  Wait([&] { return pWindow.Chosen().fPath == path; });
  const double opened =
      Wait([&] { return contents.rowCount() > 1 && contents.Folder() && contents.Folder()->GetFullPath() == path; });
  Print("Opening the folder: to its first rows", opened, "ms", 100);
  pApplication.TakeLongest();
  contents.sort(ecName, Qt::AscendingOrder);
  Print("Sorting it by name", Wait([&] { return !contents.IsFetching(); }), "ms", 1000);
  contents.sort(EntryColumnOf(TColumn::mdLastChange), Qt::AscendingOrder);
  Print("Sorting it by last change", Wait([&] { return !contents.IsFetching(); }), "ms", 1000);
  Print("Longest step of the event loop meanwhile", pApplication.TakeLongest(), "ms", 50);
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

  ScanAlone(path);  // warms the cache
  std::vector<double> alone;
  std::vector<double> inWindow;
  double longest = 0;
  for (int round = 0; round < kRounds; ++round) {
    alone.push_back(ScanAlone(path));
    window->Panes().setCurrentIndex(1);  // the treemap; the tree is always visible
    application.TakeLongest();
    inWindow.push_back(ScanInWindow(*window, path));
    longest = std::max(longest, application.TakeLongest());
    std::printf("  round %d: longest step so far in %s\n", round + 1, application.fWhat.c_str());
    if (round + 1 < kRounds) {
      window->Session().Close(window->Tree().Roots()[0]);
      QTest::qWait(1500);
    }
  }
  const TScanProgress progress = window->Tree().Roots()[0]->GetProgress();
  std::printf("%lld files, %lld folders; %.2f s without a window, %.2f s with one\n",
              static_cast<long long>(progress.fFiles), static_cast<long long>(progress.fFolders), Bench::Median(alone),
              Bench::Median(inWindow));
  Print("Scan with the window against one without", 100 * Bench::Median(inWindow) / Bench::Median(alone), "%", 105);
  Print("Longest step of the event loop during a scan", longest, "ms", 50);
  if (pCount > 2) MeasureFolder(application, *window, QString::fromLocal8Bit(pArguments[2]));
  Print("Rows of the models", static_cast<double>(window->Tree().CountRows() + window->Contents().Model().CountRows()),
        "", 0);
  std::fflush(stdout);
  std::_Exit(gMet ? 0 : 1);  // the tree need not be freed
}
