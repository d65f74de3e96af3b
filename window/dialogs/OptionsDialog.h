#pragma once

// The dialog of all options, made from their table.

#include <QDialog>
#include <memory>
#include <vector>

#include "model/options/GlobalOptions.h"

class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace Vantrel::Window {

class TOptionEditor;

// Edits a copy of the options. What differs from the default is marked and can be reset.
class TOptionsDialog : public QDialog {
  Q_OBJECT
 public:
  // With pIsReadOnly the values can be looked at only.
  TOptionsDialog(const TGlobalOptions& pOptions, bool pIsReadOnly, QWidget* pParent = nullptr);

  const TGlobalOptions& Edited() const { return fOptions; }
  // The editor of an option; nullptr for an unknown name.
  TOptionEditor* EditorOf(const QString& pName) const;

 private:
  QWidget* MakeRows(bool pIsReadOnly);
  void Filter();
  void Check();
  void ResetShown();

  TGlobalOptions fOptions;
  std::vector<TOptionEditor*> fEditors;
  QListWidget* fSubjects;
  QLineEdit* fSearch;
  QLabel* fNothing;
  QDialogButtonBox* fButtons;
};

}  // namespace Vantrel::Window
