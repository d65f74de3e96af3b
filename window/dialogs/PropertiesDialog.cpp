#include "window/dialogs/PropertiesDialog.h"

#include <QDialogButtonBox>
#include <QVBoxLayout>

#include "presentation/lists/DetailsList.h"
#include "window/models/ShownText.h"
#include "window/panes/ListPane.h"

namespace Vantrel::Window {

TPropertiesDialog::TPropertiesDialog(const TPlace& pPlace, QWidget* pParent) : QDialog(pParent) {
  constexpr QSize kFirstSize(620, 560);
  setWindowTitle(tr("Properties of %1").arg(Shown(pPlace.fFolder->GetObjectName())));
  resize(kFirstSize);
  auto* details = new TListPane(QStringLiteral("properties"), tr("Reading…"), [](const TPlace& pShown) {
    return Presentation::DetailsList(*pShown.fRoot, *pShown.fFolder, WindowFormat(TSizeUnit::suAutomatic));
  });
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(details, 1);
  layout->addWidget(buttons);
  details->ShowPlace(pPlace);
}

}  // namespace Vantrel::Window
