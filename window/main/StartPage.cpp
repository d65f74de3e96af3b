#include "window/main/StartPage.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "presentation/lists/DriveList.h"
#include "window/main/PathBar.h"
#include "window/models/Background.h"
#include "window/models/Icons.h"
#include "window/models/ListModel.h"
#include "window/models/ShownText.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

namespace {

QLabel* NewTitle(const QString& pText, double pScale) {
  auto* title = new QLabel(pText);
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * pScale);
  font.setWeight(QFont::DemiBold);
  title->setFont(font);
  return title;
}

// Up to a number of rows a list is as high as they are; then it scrolls.
int HeightOfRows(int pRows, int pRowHeight) {
  constexpr int kMostRows = 10;
  constexpr int kFrame = 4;
  return std::clamp(pRows, 1, kMostRows) * pRowHeight + kFrame;
}

}  // namespace

TStartPage::TStartPage(QWidget* pParent)
    : QWidget(pParent),
      fField(NewPathField()),
      fDrives(new TTableView),
      fDriveModel(new TListModel(this)),
      fRecent(new QListWidget),
      fRecentTitle(NewTitle(tr("Recent"), 1.15)) {
  constexpr int kWidest = 1000;
  fDrives->setModel(fDriveModel);
  fDrives->setAccessibleName(tr("Drives and mounts"));
  fDrives->SetEmptyText(tr("Looking for drives…"));
  fDrives->setSortingEnabled(false);
  fDrives->setFrameShape(QFrame::StyledPanel);
  fDrives->setSelectionMode(QAbstractItemView::SingleSelection);
  fRecent->setAccessibleName(tr("Recent targets"));
  fRecent->setAlternatingRowColors(true);
  fRecent->setUniformItemSizes(true);
  fRecent->setIconSize(QSize(16, 16));

  auto* column = new QWidget;
  column->setMaximumWidth(kWidest);
  auto* layout = new QVBoxLayout(column);
  layout->setContentsMargins(32, 28, 32, 24);
  layout->setSpacing(10);
  layout->addWidget(NewTitle(tr("Where has the space gone?"), 1.7));
  auto* hint = new QLabel(tr("Scan a drive or a folder. Folders can also be dropped onto this window."));
  hint->setWordWrap(true);

  layout->addWidget(hint);
  layout->addWidget(MakePathRow());
  layout->addSpacing(10);
  layout->addWidget(NewTitle(tr("Drives and mounts"), 1.15));
  layout->addWidget(fDrives);
  layout->addSpacing(6);
  layout->addWidget(fRecentTitle);
  layout->addWidget(fRecent);
  layout->addStretch(1);
  auto* outer = new QHBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addStretch(1);
  outer->addWidget(column, 30);
  outer->addStretch(1);

  connect(fDrives, &QTreeView::activated, this, [this](const QModelIndex& pIndex) {
    Q_EMIT PathChosen(ToQString(fDriveModel->List().fRows[pIndex.row()].fKey));
  });
  connect(fRecent, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* pItem) { Q_EMIT PathChosen(pItem->data(Qt::UserRole).toString()); });
  SetRecent({});
}

QWidget* TStartPage::MakePathRow() {
  auto* row = new QWidget;
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  fField->setAccessibleName(tr("Path to scan"));
  auto* scan = new QPushButton(Icon(TSymbol::syScan), tr("&Scan"));
  auto* browse = new QPushButton(tr("&Browse…"));
  auto* open = new QPushButton(Icon(TSymbol::syOpen), tr("&Open a scan file…"));
  layout->addWidget(fField, 1);
  layout->addWidget(scan);
  layout->addWidget(browse);
  layout->addWidget(open);
  const auto choose = [this] {
    if (!fField->text().isEmpty()) Q_EMIT PathChosen(fField->text());
  };
  connect(fField, &QLineEdit::returnPressed, this, choose);
  connect(scan, &QPushButton::clicked, this, choose);
  connect(browse, &QPushButton::clicked, this, &TStartPage::Browse);
  connect(open, &QPushButton::clicked, this, &TStartPage::FileWanted);
  return row;
}

void TStartPage::Browse() {
  const QString path = QFileDialog::getExistingDirectory(this, tr("Choose a folder to scan"), QDir::homePath());
  if (!path.isEmpty()) Q_EMIT PathChosen(path);
}

void TStartPage::SetRecent(const QStringList& pPaths) {
  fRecent->clear();
  for (const QString& path : pPaths) {
    auto* item = new QListWidgetItem(Icon(TSymbol::syFolder), Shown(FromQString(path)), fRecent);
    item->setData(Qt::UserRole, path);
    item->setSizeHint(QSize(0, fontMetrics().height() + 10));
  }
  fRecent->setFixedHeight(HeightOfRows(fRecent->count(), fontMetrics().height() + 10));
  fRecent->setVisible(!pPaths.isEmpty());
  fRecentTitle->setVisible(!pPaths.isEmpty());
}

void TStartPage::SetUnit(int pUnit) {
  fDriveModel->SetUnit(static_cast<TSizeUnit>(pUnit));
}

// A drive that does not answer is listed without sizes after a while.
void TStartPage::ReadDrives() {
  if (fIsReading) return;
  fIsReading = true;
  RunInBackground(
      LongWork(), this, [] { return Presentation::DriveList(); },
      [this](TOutcome<Presentation::TList> pList) {
        fIsReading = false;
        fDrives->SetEmptyText(tr("No drives were found."));
        fDriveModel->SetList(std::move(pList.fValue));
        if (fDriveModel->rowCount() == 0) return;
        fDrives->FitColumns();
        constexpr int kBarWidth = 150;
        const int last = fDriveModel->columnCount() - 1;
        if (fDrives->columnWidth(last) < kBarWidth) fDrives->setColumnWidth(last, kBarWidth);
        fDrives->setFixedHeight(HeightOfRows(fDriveModel->rowCount(), fDrives->sizeHintForRow(0)) +
                                fDrives->header()->height());
        if (!fDrives->currentIndex().isValid()) fDrives->setCurrentIndex(fDriveModel->index(0, 0));
      });
}

void TStartPage::showEvent(QShowEvent* pEvent) {
  ReadDrives();
  QWidget::showEvent(pEvent);
}

}  // namespace Vantrel::Window
