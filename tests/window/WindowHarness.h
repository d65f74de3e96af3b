#pragma once

// A main window over real folders, with its files in a folder of the test.

#include <gtest/gtest.h>

#include <QAction>
#include <QElapsedTimer>
#include <QTest>
#include <functional>
#include <memory>

#include "model/roots/ScanRoots.h"
#include "scan/engine/ScanServices.h"
#include "tests/support/TemporaryFolder.h"
#include "window/main/MainWindow.h"
#include "window/main/Session.h"
#include "window/main/WindowStart.h"
#include "window/models/ShownText.h"
#include "window/models/TreeModel.h"

namespace Vantrel::Window {

constexpr int kLongestWait = 60'000;  // milliseconds; only there to end a hang

inline bool WaitFor(const std::function<bool()>& pIsSo) {
  return QTest::qWaitFor(pIsSo, kLongestWait);
}

class TWindowHarness {
 public:
  TWindowHarness() {
    fStart.fUserOptionsFile = fSettings.File("options.xml");
    fStart.fProgramName = "Vantrel";
    fStart.fVersion = "0";
    fStart.fCreateRoots = [](std::shared_ptr<const TGlobalOptions> pOptions) {
      return CreateScanRoots(ScanEngine::CreateScanServices(), std::move(pOptions));
    };
  }

  TMainWindow& Window() {
    if (!fWindow) {
      fWindow = std::make_unique<TMainWindow>(fStart);
      fWindow->show();
    }
    return *fWindow;
  }
  void Close() {
    if (!fWindow) return;
    fWindow->close();
    fWindow = nullptr;
  }
  QAction& Action(const char* pName) {
    auto* action = Window().findChild<QAction*>(QString::fromLatin1(pName));
    if (!action) throw std::runtime_error(std::string("no action ") + pName);
    return *action;
  }
  // Waits until all scans have ended and all lists are there.
  bool Settle() {
    return WaitFor([this] {
      if (!Window().Session().Jobs().empty() || Window().Tree().rowCount() == 0) return false;
      for (const TRef<IHierarchicalRoot>& root : Window().Tree().Roots())
        if ((root->GetState() & (rsFinished | rsPathNotFound | rsCancelled)) == 0 ||
            (root->GetState() & rsScanning) != 0)
          return false;
      Window().Tree().Poll();
      QTest::qWait(150);
      return !Window().Tree().IsFetching();
    });
  }
  bool Scan(const std::u16string& pPath) {
    Window().Session().Scan(pPath);
    return Settle();
  }

  TWindowStart fStart;
  Testing::TTemporaryFolder fSettings;

 private:
  std::unique_ptr<TMainWindow> fWindow;
};

}  // namespace Vantrel::Window
