#pragma once

// The pane that searches for files, in the scanned tree or on the disk.

#include "automation/commandline/CommandLineState.h"
#include "window/panes/FoundPane.h"

class QComboBox;

namespace Vantrel::Window {

class TListModel;

class TSearchPane : public TFoundPane {
  Q_OBJECT
 public:
  explicit TSearchPane(const TWindowStart& pStart, QWidget* pParent = nullptr);

  TPrintable Printable() const override;
  void SetUnit(TSizeUnit pUnit);
  void Start() override;

  // Keeps the query of the line with a name in the user's options file, as --keepsearch does; or forgets one.
  void Keep(const QString& pName);
  void Forget(const QString& pName);
  QMenu& Searches() { return *fSearches; }

  QComboBox& Target() { return *fTarget; }
  TListModel& Model() { return *fModel; }

 protected:
  void TakeNews(TFoundNews& pNews) override;
  void ForgetFound() override;
  QString PathAt(const QModelIndex& pIndex) const override;

 private:
  QWidget* MakeControls();
  QToolButton* NewSearchesButton();
  void FillSearches();
  void AskForName();
  bool ChangeKept(const CommandLine::TCommandLineState& pChange);

  QComboBox* fTarget;
  QMenu* fSearches = nullptr;  // kept and ready-made ones
  TListModel* fModel;
};

}  // namespace Vantrel::Window
