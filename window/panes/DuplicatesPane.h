#pragma once

// The pane that finds files and folders which are there twice.

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "automation/commandline/CommandLineState.h"
#include "window/panes/FoundPane.h"

class QAction;
class QCheckBox;
class QComboBox;
class QProgressBar;

namespace Vantrel::Window {

class TDuplicatesModel;
class TDuplicatesWork;

// Searches the disk beneath the chosen folder, or beneath all open roots.
class TDuplicatesPane : public TFoundPane {
  Q_OBJECT
 public:
  using TFindRoots = std::function<std::vector<TRef<IHierarchicalRoot>>()>;

  // pFindRoots gives the open roots, in the order of the tree.
  TDuplicatesPane(const TWindowStart& pStart, TFindRoots pFindRoots, QWidget* pParent = nullptr);

  TPrintable Printable() const override;
  void SetUnit(TSizeUnit pUnit);
  void Start() override;
  void SetPaused(bool pPaused);

  // Sets the controls, to search in all open scans. The query is used as in Start.
  void SetRequest(const CommandLine::TDuplicatesRequest& pRequest, std::u16string_view pQuery);
  // What the controls ask for.
  CommandLine::TDuplicatesRequest Request() const;

  QComboBox& Mode() { return *fMode; }
  QComboBox& Target() { return *fTarget; }
  QMenu& Criteria() { return *fCriteria; }
  QCheckBox& Verify() { return *fVerify; }
  TDuplicatesModel& Model() { return *fModel; }

 protected:
  void TakeNews(TFoundNews& pNews) override;
  void ForgetFound() override;
  QString PathAt(const QModelIndex& pIndex) const override;
  // Opens or closes a group, and leads from a file to its place in the tree.
  void Activate(const QModelIndex& pIndex) override;
  void AddToMenu(QMenu& pMenu) override;
  void SetSearching(bool pIsSearching) override;

 private:
  class TShownState;

  QWidget* MakeFirstRow();
  QWidget* MakeSecondRow();
  void MakeCriteria();
  QAction* AddCriterion(const QString& pText, bool pIsChecked);
  void UpdateControls();
  std::vector<TPlace> Places() const;

  const TFindRoots fFindRoots;
  QComboBox* fMode;
  QComboBox* fTarget;
  QToolButton* fCriteriaButton = nullptr;
  QMenu* fCriteria;
  QAction* fByName = nullptr;
  QAction* fBySize = nullptr;
  QAction* fByDate = nullptr;
  QAction* fByContents = nullptr;
  QAction* fWithEmpty = nullptr;
  std::vector<QAction*> fChecksums;  // fast, MD5, SHA-256
  QCheckBox* fVerify;
  QToolButton* fPauseButton;
  QProgressBar* fProgress;
  TDuplicatesModel* fModel;
  std::weak_ptr<TDuplicatesWork> fRunning;
};

}  // namespace Vantrel::Window
