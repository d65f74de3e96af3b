#pragma once

// The pane with the contents of the chosen folder.

#include "window/panes/Pane.h"

class QLabel;

namespace Vantrel::Window {

class TContentsModel;
class TEntriesView;

class TContentsPane : public TPane {
  Q_OBJECT
 public:
  explicit TContentsPane(QWidget* pParent = nullptr);

  void ShowPlace(const TPlace& pPlace) override;
  void Refresh() override;
  TPrintable Printable() const override;
  TContentsModel& Model() { return *fModel; }
  TEntriesView& View() { return *fView; }

 private:
  void Activate(const QModelIndex& pIndex);
  void ShowSummary();

  TContentsModel* fModel;
  TEntriesView* fView;
  QLabel* fTitle;
};

}  // namespace Vantrel::Window
