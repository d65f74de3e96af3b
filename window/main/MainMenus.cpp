// The part of the main window that makes its menus and bars.

#include <QActionGroup>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>

#include "window/main/MainWindow.h"
#include "window/main/Session.h"
#include "window/models/Icons.h"
#include "window/models/TreeModel.h"
#include "window/panes/EntriesView.h"

namespace Vantrel::Window {

QAction* TMainWindow::NewAction(const char* pName, const QString& pText, const QKeySequence& pKeys,
                                void (TMainWindow::*pDo)()) {
  auto* action = new QAction(pText, this);
  action->setObjectName(QString::fromLatin1(pName));
  action->setShortcut(pKeys);
  connect(action, &QAction::triggered, this, pDo);
  fActions.insert(pName, action);
  return action;
}

void TMainWindow::MakeMenus() {
  MakeFileMenu();
  MakeScanMenu();
  MakeItemMenu();
  MakeViewMenu();
  MakeHelpMenu();
}

void TMainWindow::MakeFileMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&File"));
  menu->addAction(NewAction("open", tr("&Open a scan file…"), QKeySequence::Open, &TMainWindow::OpenFile));
  menu->addAction(NewAction("save", tr("&Save the scan…"), QKeySequence::Save, &TMainWindow::SaveFile));
  menu->addAction(NewAction("export", tr("&Export…"), tr("Ctrl+E"), &TMainWindow::ExportFile));
  menu->addAction(NewAction("print", tr("P&rint what is shown…"), QKeySequence::Print, &TMainWindow::PrintShown));
  menu->addSeparator();
  menu->addAction(NewAction("compare", tr("&Compare with a scan file…"), tr("Ctrl+D"), &TMainWindow::CompareFile));
  menu->addAction(NewAction("endCompare", tr("End the c&omparison"), {}, &TMainWindow::EndComparison));
  menu->addSeparator();
  menu->addAction(NewAction("options", tr("O&ptions…"), tr("Ctrl+,"), &TMainWindow::ShowOptions));
  menu->addSeparator();
  auto* quit = new QAction(tr("&Quit"), this);
  quit->setObjectName(QStringLiteral("quit"));
  quit->setShortcut(tr("Ctrl+Q"));
  connect(quit, &QAction::triggered, this, &QWidget::close);
  menu->addAction(quit);
  fActions["open"]->setIcon(Icon(TSymbol::syOpen));
  fActions["save"]->setIcon(Icon(TSymbol::sySave));
  fActions["export"]->setIcon(Icon(TSymbol::syExport));
  fActions["compare"]->setIcon(Icon(TSymbol::syCompare));
  fActions["options"]->setIcon(Icon(TSymbol::syOptions));
}

void TMainWindow::MakeScanMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&Scan"));
  menu->addAction(NewAction("scan", tr("&Scan a folder…"), QKeySequence::New, &TMainWindow::ScanFolder));
  menu->addAction(NewAction("start", tr("&Drives and recent targets"), tr("Alt+Home"), &TMainWindow::ShowStartPage));
  menu->addAction(NewAction("path", tr("Type a &path"), tr("Ctrl+L"), &TMainWindow::EditPath));
  menu->addSeparator();
  menu->addAction(NewAction("search", tr("&Find files…"), QKeySequence::Find, &TMainWindow::FindFiles));
  menu->addAction(NewAction("duplicates", tr("Find d&uplicates…"), tr("Ctrl+Shift+F"), &TMainWindow::FindDuplicates));
  menu->addSeparator();
  menu->addAction(NewAction("refresh", tr("&Refresh the branch"), QKeySequence(Qt::Key_F5), &TMainWindow::Refresh));
  menu->addAction(NewAction("again", tr("Scan &again"), tr("Ctrl+R"), &TMainWindow::ScanAgain));
  menu->addAction(NewAction("pause", tr("&Pause"), tr("Ctrl+Shift+P"), &TMainWindow::PauseAll));
  menu->addAction(NewAction("stop", tr("S&top"), tr("Ctrl+."), &TMainWindow::StopAll));
  menu->addSeparator();
  menu->addAction(NewAction("close", tr("&Close the scan"), QKeySequence::Close, &TMainWindow::CloseRoot));
  fActions["scan"]->setIcon(Icon(TSymbol::syScan));
  fActions["search"]->setIcon(Icon(TSymbol::sySearch));
  fActions["start"]->setIcon(Icon(TSymbol::syHome));
  fActions["refresh"]->setIcon(Icon(TSymbol::syRefresh));
  fActions["pause"]->setIcon(Icon(TSymbol::syPause));
  fActions["stop"]->setIcon(Icon(TSymbol::syStop));
  fActions["close"]->setIcon(Icon(TSymbol::syClose));
}

// The same entries as in the context menu, so that they are found by keyboard.
void TMainWindow::MakeItemMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&Item"));
  menu->setObjectName(QStringLiteral("itemMenu"));
  menu->addAction(NewAction("openItem", tr("&Open"), tr("Ctrl+Return"), &TMainWindow::OpenItem));
  menu->addAction(NewAction("showItem", tr("Show in the &file manager"), tr("Ctrl+Shift+O"), &TMainWindow::ShowItem));
  menu->addAction(NewAction("terminal", tr("&Terminal here"), tr("Ctrl+Shift+T"), &TMainWindow::OpenTerminalHere));
  menu->addAction(NewAction("copyPath", tr("&Copy the path"), tr("Ctrl+Shift+C"), &TMainWindow::CopyPath));
  menu->addSeparator();
  menu->addAction(fActions["refresh"]);
  menu->addAction(NewAction("scanItem", tr("&Scan this only"), tr("Ctrl+Shift+N"), &TMainWindow::ScanItem));
  menu->addAction(NewAction("leaveOut", tr("&Leave out of scans"), {}, &TMainWindow::LeaveOut));
  menu->addSeparator();
  menu->addAction(NewAction("properties", tr("&Properties"), tr("Alt+Return"), &TMainWindow::ShowProperties));
}

// Entries of which one is checked, named after what they choose: "unit0", "unit1".
void TMainWindow::AddChoices(QMenu& pMenu, const char* pName, const QStringList& pTexts,
                             const std::function<void(int)>& pChoose) {
  auto* group = new QActionGroup(this);
  for (int i = 0; i < pTexts.size(); ++i) {
    QAction* action = pMenu.addAction(pTexts[i]);
    action->setCheckable(true);
    action->setObjectName(QString::fromLatin1(pName) + QString::number(i));
    group->addAction(action);
    fActions.insert(action->objectName().toLatin1(), action);
    connect(action, &QAction::triggered, this, [pChoose, i] { pChoose(i); });
  }
}

void TMainWindow::MakeViewMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&View"));
  QMenu* figures = menu->addMenu(tr("Leading &figure"));
  AddChoices(*figures, "figure", {tr("&Size"), tr("&Allocated"), tr("&Files"), tr("&Percent")},
             [this](int pFigure) { SetFigure(static_cast<TFigure>(pFigure)); });
  for (int i = 0; i < figures->actions().size(); ++i)
    figures->actions()[i]->setShortcut(QKeySequence(Qt::ALT | (Qt::Key_1 + i)));
  AddChoices(*menu->addMenu(tr("&Unit")), "unit",
             {tr("Bytes"), tr("KB"), tr("MB"), tr("GB"), tr("TB"), tr("Automatic")}, [this](int pUnit) {
               TGlobalOptions options = fSession->Options();
               options.SizeUnit = static_cast<TSizeUnit>(pUnit);
               fSession->SetOptions(options);
               SetUnit(pUnit);
             });
  QAction* changes = menu->addAction(tr("Changes before &names"));
  changes->setCheckable(true);
  changes->setObjectName(QStringLiteral("changesInNames"));
  fActions.insert("changesInNames", changes);
  connect(changes, &QAction::toggled, this, [this](bool pShown) { fTree->SetShowsChangesInNames(pShown); });
  menu->addSeparator();
  for (int i = 0; i < fPanes->count(); ++i) {
    QAction* action = menu->addAction(fPanes->tabText(i));
    if (i < 9) action->setShortcut(QKeySequence(Qt::CTRL | (Qt::Key_1 + i)));
    action->setObjectName(QStringLiteral("pane%1").arg(i));
    connect(action, &QAction::triggered, this, [this, i] {
      fPanes->setCurrentIndex(i);
      fPanes->currentWidget()->setFocus();
    });
  }
}

void TMainWindow::MakeHelpMenu() {
  QMenu* menu = menuBar()->addMenu(tr("&Help"));
  menu->addAction(NewAction("about", tr("&About"), {}, &TMainWindow::ShowAbout));
}

void TMainWindow::MakeToolBar() {
  QToolBar* bar = addToolBar(tr("Tools"));
  bar->setObjectName(QStringLiteral("tools"));
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  bar->setIconSize(QSize(18, 18));
  const std::pair<const char*, QString> entries[] = {{"start", tr("Start")},     {"scan", tr("Scan")},
                                                     {"refresh", tr("Refresh")}, {"pause", tr("Pause")},
                                                     {"stop", tr("Stop")},       {"", {}},
                                                     {"open", tr("Open")},       {"save", tr("Save")},
                                                     {"export", tr("Export")},   {"", {}},
                                                     {"search", tr("Find")},     {"compare", tr("Compare")},
                                                     {"options", tr("Options")}};
  for (const auto& [name, text] : entries) {
    if (*name == '\0') {
      bar->addSeparator();
      continue;
    }
    QAction* action = fActions[name];
    action->setIconText(text);
    const QString keys = action->shortcut().toString(QKeySequence::NativeText);
    action->setToolTip(QString(action->text()).remove(u'&') + (keys.isEmpty() ? QString() : " (" + keys + ")"));
    bar->addAction(action);
  }
}

void TMainWindow::MakeStatusBar() {
  fProgressText = new QLabel;
  fProgressText->setTextFormat(Qt::PlainText);
  fProgressText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  fProgressText->setContentsMargins(6, 0, 6, 0);
  fProgressBar = new QProgressBar;
  fProgressBar->setMaximumWidth(160);
  fProgressBar->setTextVisible(false);
  fProgressBar->setAccessibleName(tr("Progress of the scan"));
  fJobText = new QLabel;
  fJobStop = new QToolButton;
  fJobStop->setAutoRaise(true);
  fJobStop->setIcon(Icon(TSymbol::syStop));
  fJobStop->setToolTip(tr("Stop this work"));
  fJobStop->setAccessibleName(fJobStop->toolTip());
  connect(fJobStop, &QToolButton::clicked, this, [this] {
    for (const auto& job : fSession->Jobs()) job->fCancelled = true;
  });
  statusBar()->setSizeGripEnabled(false);
  statusBar()->addWidget(fProgressText, 1);
  statusBar()->addPermanentWidget(fProgressBar);
  statusBar()->addPermanentWidget(fJobText);
  statusBar()->addPermanentWidget(fJobStop);
  fProgressBar->hide();
  ShowJobs();
}

}  // namespace Vantrel::Window
