#pragma once

// The controls above a pane's picture.

#include <QComboBox>
#include <QStyle>
#include <QToolButton>

#include "window/panes/FlowLayout.h"

namespace Vantrel::Window {

// Adds controls from left to right, in as many rows as the pane's width needs.
class TPaneControls {
 public:
  explicit TPaneControls(QWidget* pPane);

  QLayout* Row() { return fRow; }
  // A button with a symbol of the style. The name is its tooltip, and what screen readers say.
  QToolButton* AddButton(QStyle::StandardPixmap pSymbol, const QString& pName);
  QToolButton* AddTextButton(const QString& pText, const QString& pHint);
  // A choice with a label for screen readers and as tooltip.
  QComboBox* AddChoice(const QString& pName, const QStringList& pItems);

 private:
  QWidget* fPane;
  TFlowLayout* fRow;
};

// Makes an item of a choice available or not.
void EnableItem(QComboBox& pChoice, int pItem, bool pEnabled);

}  // namespace Vantrel::Window
