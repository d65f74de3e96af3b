// The part of the main window that tells how far the work is, and keeps panes up to date.

#include <QAction>
#include <QDateTime>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "window/main/MainWindow.h"
#include "window/main/PathBar.h"
#include "window/main/Session.h"
#include "window/main/StartPage.h"
#include "window/models/ContentsModel.h"
#include "window/models/Icons.h"
#include "window/models/ShownText.h"
#include "window/models/TreeModel.h"
#include "window/panes/ContentsPane.h"
#include "window/panes/DuplicatesPane.h"
#include "window/panes/ListPane.h"
#include "window/panes/SearchPane.h"

namespace Vantrel::Window {

namespace {

bool IsScanning(const IHierarchicalRoot& pRoot) {
  return (pRoot.GetState() & rsScanning) != 0;
}

bool IsPaused(const IHierarchicalRoot& pRoot) {
  return (pRoot.GetState() & rsPaused) != 0;
}

// "0:07", "1:02:03".
QString ShownDuration(int64_t pMilliseconds) {
  const int64_t seconds = pMilliseconds / 1000;
  const auto two = [](int64_t pNumber) { return QStringLiteral("%1").arg(pNumber, 2, 10, QChar(u'0')); };
  const QString hours = seconds >= 3600 ? QString::number(seconds / 3600) + u':' : QString();
  const int64_t minutes = seconds / 60 % 60;
  return hours + (hours.isEmpty() ? QString::number(minutes) : two(minutes)) + u':' + two(seconds % 60);
}

}  // namespace

// Several times a second: takes the changes of the roots, and shows the progress. Panes are filled again at most every
// second, and only the visible one.
void TMainWindow::Tick() {
  constexpr int kTicksBetweenRefreshes = 5;
  // A larger tree is looked at less often, since a scan needs the processors more than the view of it.
  constexpr int64_t kFilesPerTick = 250'000;
  bool isScanning = false;
  bool isPaused = false;
  int64_t files = 0;
  for (const TRef<IHierarchicalRoot>& root : fTree->Roots()) {
    if (!IsScanning(*root)) continue;
    isScanning = true;
    isPaused |= IsPaused(*root);
    files += root->GetProgress().fFiles;
  }
  const int slower = 1 + static_cast<int>(std::min<int64_t>(files / kFilesPerTick, 10));
  if (fTicks % slower == 0) fTree->Poll();
  if (isScanning != fWasScanning || isPaused != fWasPaused) {
    fWasScanning = isScanning;
    ShowPause(isPaused);
    UpdateActions();
  }
  if (fDueSearch && !isScanning && fSession->Jobs().empty() && fPlace.fRoot && fPlace.fFolder)
    std::exchange(fDueSearch, nullptr)->Start();
  ShowStatus();
  if (!fSession->Jobs().empty()) ShowJobs();
  if (++fTicks % (kTicksBetweenRefreshes * slower) == 0 && fPlace.fRoot && IsScanning(*fPlace.fRoot)) RefreshPanes();
}

// The entry says what it does next.
void TMainWindow::ShowPause(bool pIsPaused) {
  fWasPaused = pIsPaused;
  QAction& action = *fActions["pause"];
  action.setText(pIsPaused ? tr("&Resume") : tr("&Pause"));
  action.setIconText(pIsPaused ? tr("Resume") : tr("Pause"));
  action.setIcon(Icon(pIsPaused ? TSymbol::syScan : TSymbol::syPause));
  action.setToolTip(action.iconText() + " (" + action.shortcut().toString(QKeySequence::NativeText) + ")");
}

void TMainWindow::RefreshPanes() {
  for (TPane* pane : fAllPanes) {
    if (pane->isVisible())
      pane->Refresh();
    else
      fStale.insert(pane);  // filled again when it is shown
  }
}

void TMainWindow::RefreshPane(const QString& pName) {
  for (TPane* pane : fAllPanes)
    if (pane->objectName() == pName) pane->Refresh();
}

void TMainWindow::ShowChosenFolder() {
  auto* pane = qobject_cast<TPane*>(fPanes->currentWidget());
  if (pane) pane->ShowPlace(fPlace);
  if (pane && fStale.remove(pane)) pane->Refresh();
  if (!fPlace.fRoot || !fPlace.fFolder) return fPathBar->SetPath({}, {}, {});
  fPathBar->SetPath(ToQString(fPlace.fRoot->GetPath()), ToQString(fPlace.fFolder->GetFullPath()),
                    QChar(fPlace.fRoot->GetPathDelimiter()));
}

void TMainWindow::ShowStatus() {
  const TValueFormat& format = fTree->Format();
  for (const TRef<IHierarchicalRoot>& root : fTree->Roots()) {
    if (!IsScanning(*root)) continue;
    const TScanProgress progress = root->GetProgress();
    const QString text = IsPaused(*root) ? tr("Paused at %1: %2 files, %3 folders, %4   %5")
                                         : tr("Scanning, %1: %2 files, %3 folders, %4   %5");
    fProgressText->setText(text.arg(ShownDuration(progress.fElapsed), ShownCount(progress.fFiles, format),
                                    ShownCount(progress.fFolders, format), ShownSize(progress.fBytes, format),
                                    Window::Shown(progress.fLastScannedFolder)));
    // A bar needs a whole that is known: the files of the earlier scan.
    const int64_t whole = root->GetLastScanNumberOfFiles();
    fProgressBar->setVisible(whole > 0);
    if (whole > 0) fProgressBar->setValue(static_cast<int>(std::min<int64_t>(100, progress.fFiles * 100 / whole)));
    return;
  }
  fProgressBar->hide();
  if (QDateTime::currentMSecsSinceEpoch() < fMessageUntil) return;
  if (fPages->currentIndex() == 0 || !fChosen.fRoot || !fChosen.fFolder) return fProgressText->clear();
  const TSizeValues values = fChosen.fFolder->GetValues();
  const TStorageInformation storage = fChosen.fRoot->GetStorageInformation();
  QString text = tr("%1 files, %2 folders, %3 (%4 allocated)")
                     .arg(ShownCount(values.fFiles, format), ShownCount(values.fFolders, format),
                          ShownSize(values.fSize, format), ShownSize(values.fAllocated, format));
  if (storage.fTotalBytes > 0)
    text += tr("   ·   drive: %1 free of %2")
                .arg(ShownSize(storage.fFreeBytes, format), ShownSize(storage.fTotalBytes, format));
  const int64_t errors = fChosen.fRoot->GetProgress().fErrors;
  if (errors > 0) text += tr("   ·   incomplete: %1 folders could not be read").arg(ShownCount(errors, format));
  fProgressText->setText(text);
}

void TMainWindow::ShowJobs() {
  const auto& jobs = fSession->Jobs();
  fJobText->setVisible(!jobs.empty());
  fJobStop->setVisible(!jobs.empty());
  if (jobs.empty()) return;
  const TJob& job = *jobs.back();
  constexpr int kWidest = 320;
  QString text = fJobText->fontMetrics().elidedText(job.fTitle, Qt::ElideMiddle, kWidest);
  if (job.fBytes > 0) text += QStringLiteral("  ") + ShownSize(static_cast<int64_t>(job.fBytes), fTree->Format());
  fJobText->setText(text);
}

// Stays for some seconds in the place of the figures.
void TMainWindow::Tell(const QString& pText) {
  constexpr qint64 kMilliseconds = 8000;
  fMessageUntil = QDateTime::currentMSecsSinceEpoch() + kMilliseconds;
  fProgressText->setText(pText);
}

void TMainWindow::Fail(const QString& pTitle, const QString& pMessage) {
  auto* box = new QMessageBox(QMessageBox::Warning, pTitle, pMessage, QMessageBox::Ok, this);
  box->setTextFormat(Qt::PlainText);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setObjectName(QStringLiteral("failure"));
  box->open();  // the window goes on
}

void TMainWindow::NoteEnd(const IHierarchicalRoot& pRoot) {
  const TRootStates state = pRoot.GetState();
  if ((state & rsPathNotFound) != 0) {
    const std::vector<TScanError> errors = pRoot.GetErrors();
    Fail(tr("Scan"), tr("Cannot scan %1: %2")
                         .arg(Window::Shown(pRoot.GetPath()),
                              errors.empty() ? tr("it cannot be opened") : Window::Shown(errors.front().fText)));
  } else if ((state & rsCancelled) != 0) {
    Tell(tr("Stopped: the figures are those of the part that was scanned"));
  }
}

void TMainWindow::UpdateActions() {
  const TRef<IHierarchicalRoot> root = fPages->currentIndex() == 1 ? ChosenRoot() : nullptr;
  const bool isScanning = root && IsScanning(*root);
  const bool isLive = root && (root->GetState() & rsIsXMLImport) == 0;
  const bool hasItem = root && fChosen.fFolder && !fChosen.fPath.empty();
  const auto enable = [this](const char* pName, bool pIsEnabled) { fActions[pName]->setEnabled(pIsEnabled); };
  enable("save", root && !isScanning);
  enable("export", root && !isScanning);
  enable("print", root != nullptr);
  enable("compare", root && !isScanning);
  enable("endCompare", root && root->GetComparison() != nullptr);
  enable("refresh", isLive && !isScanning && fChosen.fFolder && !fChosen.fIsGone);
  enable("again", isLive && !isScanning);
  enable("pause", fWasScanning);
  enable("stop", fWasScanning || !fSession->Jobs().empty());
  enable("close", root != nullptr);
  enable("openItem", hasItem && isLive && !fChosen.fIsGone);
  enable("showItem", hasItem && isLive && !fChosen.fIsGone);
  enable("terminal", hasItem && isLive && !fChosen.fIsGone);
  enable("copyPath", hasItem);
  enable("scanItem", hasItem && isLive && !fChosen.fIsFile && !fChosen.fIsGone);
  const bool isTop = root && fChosen.fFolder == root->GetTopFolder();
  enable("leaveOut", hasItem && isLive && !isScanning && !fChosen.fIsFile && !fChosen.fIsGone && !isTop);
  enable("properties", hasItem);
  enable("changesInNames", root && root->GetComparison() != nullptr);
}

void TMainWindow::SetFigure(TFigure pFigure) {
  fTree->SetFigure(pFigure);
  fContents->Model().SetFigure(pFigure);
  fActions["figure" + QByteArray::number(static_cast<int>(pFigure))]->setChecked(true);
}

void TMainWindow::SetUnit(int pUnit) {
  const auto unit = static_cast<TSizeUnit>(pUnit);
  fTree->SetUnit(unit);
  fContents->Model().SetUnit(unit);
  fStartPage->SetUnit(pUnit);
  for (TPane* pane : fAllPanes)
    if (auto* list = qobject_cast<TListPane*>(pane)) list->SetUnit(unit);
  fSearch->SetUnit(unit);
  fDuplicates->SetUnit(unit);
  fActions["unit" + QByteArray::number(pUnit)]->setChecked(true);
}

}  // namespace Vantrel::Window
