#pragma once

// One option in the dialog of options: its name and help line, a field for its value, a button to reset it.

#include <QWidget>

#include "model/options/GlobalOptions.h"

class QLabel;
class QToolButton;

namespace Vantrel::Window {

class TOptionEditor : public QWidget {
  Q_OBJECT
 public:
  // The option and the edited options must outlive the editor.
  TOptionEditor(const TOptionInfo& pOption, TGlobalOptions& pOptions, QWidget* pParent = nullptr);

  const TOptionInfo& Option() const { return fOption; }
  // The value as text, as the command line takes it. False when the option refuses it; it then keeps its value.
  bool SetText(const QString& pText);
  bool IsValid() const { return fIsValid; }
  bool Differs() const;
  void Reset();
  bool Matches(const QString& pSearched) const;

 Q_SIGNALS:
  void Edited();

 private:
  QWidget* MakeField();
  QWidget* MakeNumberField();
  void Take(const QString& pText);
  void ShowValue();
  void ShowState();

  const TOptionInfo& fOption;
  TGlobalOptions& fOptions;
  QWidget* fField;
  QLabel* fName;
  QLabel* fHelp;
  QToolButton* fReset;
  bool fIsValid = true;
  bool fIsShowing = false;
};

}  // namespace Vantrel::Window
