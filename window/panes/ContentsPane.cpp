#include "window/panes/ContentsPane.h"

#include <QLabel>
#include <QVBoxLayout>

#include "platform/files/Paths.h"
#include "window/models/ContentsModel.h"
#include "window/models/ShownText.h"
#include "window/panes/EntriesView.h"

namespace Vantrel::Window {

TContentsPane::TContentsPane(QWidget* pParent) : TPane(pParent), fModel(new TContentsModel(this)), fTitle(new QLabel) {
  setObjectName(QStringLiteral("contents"));
  fView = new TEntriesView(*fModel,
                           {TColumn::mdPercentOfParent, TColumn::mdAllocated, TColumn::mdFiles, TColumn::mdLastChange});
  fView->setRootIsDecorated(false);
  fView->setItemsExpandable(false);
  fView->setAlternatingRowColors(true);
  fView->setAccessibleName(tr("Contents of the chosen folder"));
  fView->SetEmptyText(tr("The folder is empty, or the scan kept no files."));
  fTitle->setTextFormat(Qt::PlainText);
  fTitle->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  fTitle->setContentsMargins(10, 6, 10, 6);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(fTitle);
  layout->addWidget(fView, 1);
  setFocusProxy(fView);
  connect(fView, &QTreeView::activated, this, &TContentsPane::Activate);
  connect(fView, &TEntriesView::UpWanted, this, [this] {
    const TRef<IFolderData>& folder = fModel->Folder();
    const TRef<IHierarchicalElement> parent = folder ? folder->GetParentFolder() : nullptr;
    if (parent) Q_EMIT PathChosen(ToQString(parent->GetFullPath()));
  });
  connect(fModel, &TEntriesModel::Filled, this, &TContentsPane::ShowSummary);
}

void TContentsPane::ShowPlace(const TPlace& pPlace) {
  fModel->SetFolder(pPlace.fRoot, pPlace.fFolder);
  ShowSummary();
}

void TContentsPane::Refresh() {
  fModel->Refresh();
}

TPrintable TContentsPane::Printable() const {
  return {fTitle->text(), {}, TPrintedTable::Of(*fView)};
}

void TContentsPane::ShowSummary() {
  const TRef<IFolderData>& folder = fModel->Folder();
  if (!folder) {
    fTitle->clear();
    return;
  }
  const TSizeValues values = folder->GetValues();
  const TValueFormat& format = fModel->Format();
  fTitle->setText(tr("%1: %2 (%3 allocated), %4 files, %5 folders")
                      .arg(Shown(folder->GetFullPath()), ShownSize(values.fSize, format),
                           ShownSize(values.fAllocated, format), ShownCount(values.fFiles, format),
                           ShownCount(values.fFolders, format)));
  fTitle->setToolTip(fTitle->text());
}

void TContentsPane::Activate(const QModelIndex& pIndex) {
  const TEntryKind kind = fModel->KindAt(pIndex);
  if (kind == TEntryKind::ekFolder) Q_EMIT PathChosen(ToQString(fModel->PathAt(pIndex)));
}

}  // namespace Vantrel::Window
