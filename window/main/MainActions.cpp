// The part of the main window that does what its menus say.

#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <iterator>

#include "automation/actions/ExportFile.h"
#include "platform/files/Paths.h"
#include "window/dialogs/CompareQuestion.h"
#include "window/dialogs/OptionsDialog.h"
#include "window/dialogs/PropertiesDialog.h"
#include "window/main/ExportKinds.h"
#include "window/main/FileManager.h"
#include "window/main/MainWindow.h"
#include "window/main/PathBar.h"
#include "window/main/Session.h"
#include "window/main/StartPage.h"
#include "window/main/WindowSettings.h"
#include "window/models/Background.h"
#include "window/models/ContentsModel.h"
#include "window/models/ShownText.h"
#include "window/models/TreeModel.h"
#include "window/panes/ContentsPane.h"
#include "window/panes/DuplicatesPane.h"
#include "window/panes/EntriesView.h"
#include "window/panes/QueryEdit.h"
#include "window/panes/SearchPane.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

// --- scanning --------------------------------------------------------------------------------------------------------

// A path in an open root is gone to; any other one is scanned.
void TMainWindow::ScanTyped(const QString& pPath) {
  if (pPath.isEmpty()) return;
  const std::u16string typed = FromQString(pPath);
  for (const TRef<IHierarchicalRoot>& root : fTree->Roots())
    if (IsSameOrInside(typed, root->GetPath(), root->GetPathDelimiter())) {
      fPages->setCurrentIndex(1);
      return GoTo(pPath);
    }
  fSession->Scan(typed);
}

void TMainWindow::ScanFolder() {
  const QString path = QFileDialog::getExistingDirectory(this, tr("Choose a folder to scan"), QDir::homePath());
  if (!path.isEmpty()) fSession->Scan(FromQString(path));
}

void TMainWindow::EditPath() {
  if (fPages->currentIndex() == 0)
    fStartPage->PathField().setFocus();
  else
    fPathBar->Edit();
}

void TMainWindow::FindFiles() {
  ShowFoundPane(*fSearch);
}

void TMainWindow::FindDuplicates() {
  ShowFoundPane(*fDuplicates);
}

void TMainWindow::ShowFoundPane(TFoundPane& pPane) {
  if (fTree->rowCount() > 0) fPages->setCurrentIndex(1);
  fPanes->setCurrentWidget(&pPane);
  if (pPane.Query().isEnabled())
    pPane.Query().setFocus();
  else
    pPane.Table().setFocus();
  pPane.Query().selectAll();
  UpdateActions();
}

// A pane opens with what the command line asks for.
void TMainWindow::BeginSearch() {
  const TWindowStart& start = fSession->Start();
  if (start.fDuplicates.fIsWanted) {
    fPanes->setCurrentWidget(fDuplicates);
    fDuplicates->SetRequest(start.fDuplicates, start.fQuery.value_or(u""));
    fDueSearch = fDuplicates;
  } else if (start.fQuery) {
    fPanes->setCurrentWidget(fSearch);
    fSearch->SetQuery(*start.fQuery);
    if (start.fSearchesAtOnce) fDueSearch = fSearch;
  }
}

void TMainWindow::ScanAgain() {
  fSession->ScanAgain(ChosenRoot());
}

// An opened file of the tree stands for its folder.
void TMainWindow::Refresh() {
  const TRef<IHierarchicalRoot> root = fChosen.fRoot;
  if (!root || !fChosen.fFolder) return;
  if (fChosen.fFolder == root->GetTopFolder()) return fSession->ScanAgain(root);
  if (!root->RefreshFolder(*fChosen.fFolder, true)) Tell(tr("This branch cannot be refreshed; scan it all again."));
  UpdateActions();
}

// All scans hold, or all go on.
void TMainWindow::PauseAll() {
  for (const TRef<IHierarchicalRoot>& root : fTree->Roots()) root->PauseScan(!fWasPaused);
  Tick();
}

void TMainWindow::StopAll() {
  for (const TRef<IHierarchicalRoot>& root : fTree->Roots()) root->CancelScan();
  for (const auto& job : fSession->Jobs()) job->fCancelled = true;
}

void TMainWindow::CloseRoot() {
  fSession->Close(ChosenRoot());
}

void TMainWindow::NoteRecent(const QString& pPath) {
  constexpr int kMost = 12;
  QStringList recent = fSettings->Get(QStringLiteral("recent")).toStringList();
  recent.removeAll(pPath);
  recent.prepend(pPath);
  while (recent.size() > kMost) recent.removeLast();
  fSettings->Set(QStringLiteral("recent"), recent);
  fStartPage->SetRecent(recent);
}

// --- files -----------------------------------------------------------------------------------------------------------

void TMainWindow::OpenFile() {
  const QStringList files = QFileDialog::getOpenFileNames(
      this, tr("Open a scan file"), {}, tr("Scan files (*.xml *.xml.zip *.zip *.json *.jsonl *.gz);;All files (*)"));
  for (const QString& file : files) fSession->OpenScanFile(FromQString(file));
}

void TMainWindow::SaveFile() {
  const TRef<IHierarchicalRoot> root = ChosenRoot();
  if (!root) return;
  const QString name = ToQString(PostScanActions::NameForFiles(*root)) + QStringLiteral(".xml");
  const QString file = QFileDialog::getSaveFileName(this, tr("Save the scan"), name,
                                                    tr("Scan files (*.xml);;Packed scan files (*.xml.zip)"));
  if (!file.isEmpty()) ExportAs(0, file);
}

void TMainWindow::ExportFile() {
  const TRef<IHierarchicalRoot> root = ChosenRoot();
  if (!root) return;
  QStringList filters;
  for (const TExportKind& kind : ExportKinds()) filters << kind.fFilter;
  QString chosen = filters.value(1);
  QFileDialog dialog(this, tr("Export"), {}, filters.join(QStringLiteral(";;")));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.selectNameFilter(chosen);
  const QString base = ToQString(PostScanActions::NameForFiles(*root));
  const auto suggest = [&](const QString& pFilter) {
    const TExportKind& kind = ExportKinds()[std::max<qsizetype>(0, filters.indexOf(pFilter))];
    dialog.setDefaultSuffix(kind.fSuffix);
    dialog.selectFile(base + u'.' + kind.fSuffix);
  };
  suggest(chosen);
  connect(&dialog, &QFileDialog::filterSelected, this, suggest);
  if (dialog.exec() != QDialog::Accepted) return;
  ExportAs(static_cast<int>(filters.indexOf(dialog.selectedNameFilter())), dialog.selectedFiles().value(0));
}

// The pane that is shown. Its content is taken now and printed on another thread.
void TMainWindow::PrintShown() {
  const auto* pane = qobject_cast<TPane*>(fPanes->currentWidget());
  TPrintable printable = pane ? pane->Printable() : TPrintable();
  if (printable.IsEmpty()) return Tell(tr("There is nothing to print here."));
  const auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  printer->setDocName(printable.fTitle);
  QPrintDialog dialog(printer.get(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  RunInBackground(
      LongWork(), this, [printer, printable = std::move(printable)] { return Print(printable, *printer); },
      [this](const TOutcome<bool>& pPrinted) {
        if (!pPrinted.fError.isEmpty() || !pPrinted.fValue)
          Fail(tr("Print"), pPrinted.fError.isEmpty() ? tr("The printer cannot be used.") : pPrinted.fError);
      });
}

void TMainWindow::ExportAs(int pKind, const QString& pFile) {
  const TRef<IHierarchicalRoot> root = ChosenRoot();
  if (!root || pFile.isEmpty() || pKind < 0 || static_cast<size_t>(pKind) >= ExportKinds().size()) return;
  const TExportKind& kind = ExportKinds()[pKind];
  if (kind.fPicture)
    fSession->ExportPicture(root, {*kind.fPicture, {}, FromQString(pFile)});
  else
    fSession->Export(root, kind.fFormat, FromQString(pFile));
}

// --- comparing -------------------------------------------------------------------------------------------------------

void TMainWindow::CompareFile() {
  const TRef<IHierarchicalRoot> root = ChosenRoot();
  if (!root) return;
  const QString file =
      QFileDialog::getOpenFileName(this, tr("Compare with an older scan"), {},
                                   tr("Scan files (*.xml *.xml.zip *.zip *.json *.jsonl *.gz);;All files (*)"));
  if (!file.isEmpty()) fSession->Compare(root, FromQString(file));
}

void TMainWindow::EndComparison() {
  fSession->EndComparison(ChosenRoot());
  UpdateActions();
}

void TMainWindow::ShowComparison(const TRef<IHierarchicalRoot>& pRoot) {
  const TRef<IComparison> comparison = pRoot->GetComparison();
  if (!comparison) return;  // a scan has ended it meanwhile
  const QString remembered = fSettings->Get(QStringLiteral("showChanges")).toString();
  const TChangePlaces places = remembered.isEmpty() ? AskWhereToShowChanges(*this, *fSettings) : PlacesOf(remembered);
  fActions["changesInNames"]->setChecked(places.fInTree);
  if (places.fInColumns)
    for (TEntriesView* view : {fTreeView, &fContents->View()})
      for (const TColumn column : {TColumn::mdSizeChange, TColumn::mdSizeChangePercent, TColumn::mdChangeState})
        view->ShowColumn(column, true);
  Tell(tr("Compared with the scan of %1")
           .arg(ShownValue(TColumn::mdLastChange, comparison->GetScanTimeStamp(), fTree->Format())));
  UpdateActions();
}

// --- the chosen item -------------------------------------------------------------------------------------------------

void TMainWindow::ShowItemMenu(const TEntriesView& pView, const QModelIndex& pIndex, const QPoint& pAt) {
  if (!pIndex.isValid() || pView.Entries().KindAt(pIndex) == TEntryKind::ekMore) return;
  Choose(pView.Entries(), pIndex);
  if (auto* menu = findChild<QMenu*>(QStringLiteral("itemMenu"))) menu->popup(pAt);
}

void TMainWindow::OpenItem() {
  if (!OpenWithDesktop(fChosen.fPath)) Fail(tr("Open"), tr("The desktop has no program for this."));
}

void TMainWindow::ShowItem() {
  if (!ShowInFileManager(fChosen.fPath)) Fail(tr("Show"), tr("No file manager was found."));
}

void TMainWindow::OpenTerminalHere() {
  if (!OpenTerminal(fChosen.fFolder->GetFullPath())) Fail(tr("Terminal"), tr("No terminal program was found."));
}

void TMainWindow::CopyPath() {
  QApplication::clipboard()->setText(ToQString(fChosen.fPath));
  Tell(tr("Copied: %1").arg(Window::Shown(fChosen.fPath)));
}

void TMainWindow::ScanItem() {
  fSession->Scan(fChosen.fFolder->GetFullPath());
}

void TMainWindow::LeaveOut() {
  fSession->LeaveOut(fChosen.fRoot, fChosen.fFolder);
}

void TMainWindow::ShowProperties() {
  if (!fChosen.fRoot || !fChosen.fFolder) return;
  auto* dialog = new TPropertiesDialog({fChosen.fRoot, fChosen.fFolder}, this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->show();
}

// --- the program -----------------------------------------------------------------------------------------------------

void TMainWindow::ShowOptions() {
  TOptionsDialog dialog(fSession->Options(), fSession->IsReadOnly(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  fSession->SetOptions(dialog.Edited());
  SetUnit(static_cast<int>(fSession->Options().SizeUnit));
}

void TMainWindow::ShowAbout() {
  const TWindowStart& start = fSession->Start();
  auto* box = new QMessageBox(QMessageBox::NoIcon, tr("About"), {}, QMessageBox::Ok, this);
  box->setIconPixmap(windowIcon().pixmap(64));
  box->setText(tr("<h3>%1 %2</h3>").arg(FromUtf8Text(start.fProgramName), FromUtf8Text(start.fVersion)));
  box->setInformativeText(tr("Shows where the space on drives has gone."));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->open();
}

}  // namespace Vantrel::Window
