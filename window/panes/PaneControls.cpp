#include "window/panes/PaneControls.h"

#include <QStandardItemModel>

namespace Vantrel::Window {

TPaneControls::TPaneControls(QWidget* pPane) : fPane(pPane), fRow(new TFlowLayout) {
  fRow->setContentsMargins(6, 4, 6, 4);
  fRow->setSpacing(4);
}

QToolButton* TPaneControls::AddButton(QStyle::StandardPixmap pSymbol, const QString& pName) {
  QToolButton* button = AddTextButton({}, pName);
  button->setIcon(fPane->style()->standardIcon(pSymbol, nullptr, button));
  button->setAccessibleName(pName);
  return button;
}

QToolButton* TPaneControls::AddTextButton(const QString& pText, const QString& pHint) {
  auto* button = new QToolButton(fPane);
  button->setText(pText);
  button->setToolTip(pHint);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  fRow->addWidget(button);
  return button;
}

QComboBox* TPaneControls::AddChoice(const QString& pName, const QStringList& pItems) {
  auto* choice = new QComboBox(fPane);
  choice->addItems(pItems);
  choice->setToolTip(pName);
  choice->setAccessibleName(pName);
  choice->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  fRow->addWidget(choice);
  return choice;
}

void EnableItem(QComboBox& pChoice, int pItem, bool pEnabled) {
  if (auto* model = qobject_cast<QStandardItemModel*>(pChoice.model())) model->item(pItem)->setEnabled(pEnabled);
}

}  // namespace Vantrel::Window
