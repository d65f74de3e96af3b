#pragma once

// The treemap of the chosen root: zoom, colours, what areas stand for, free space; saved and copied as a picture.

#include <memory>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "presentation/treemap/TreemapPresenters.h"
#include "window/panes/Pane.h"

class QComboBox;
class QLabel;
class QToolButton;

namespace Vantrel::Window {

class TTreemapView;

// The treemap begins at the root's top folder. It stays there when another folder of it is chosen, and marks that
// folder. Zooming shows a folder alone. What the user sets is kept in the options.
class TTreemapPane : public TPane {
  Q_OBJECT
 public:
  explicit TTreemapPane(std::shared_ptr<TGlobalOptions> pOptions, QWidget* pParent = nullptr);

  void ShowPlace(const TPlace& pPlace) override;
  void Refresh() override;
  TPrintable Printable() const override;

  // The folder that is shown alone; nullptr when nothing is.
  TRef<IFolderData> GetShownFolder() const;
  // Zooms to a folder of the root, and back. The first two do nothing where there is nowhere to go.
  void ZoomBack();
  void ZoomOut();
  void ZoomTo(TRef<IFolderData> pFolder);

  // Writes the picture as SVG or PNG, by the name; an exception names the file if it cannot be written. For calls from
  // programs; Save asks the user for a file and writes it on another thread.
  void SaveToFile(const std::u16string& pFile) const;
  void Save();
  void Copy() const;
  TTreemapView& View() { return *fView; }

 Q_SIGNALS:
  // The user wants the menu of a file or folder.
  void MenuWanted(const QString& pPath, const QPoint& pGlobalPosition);

 private:
  void AddControls();
  void ShowFolder(TRef<IFolderData> pFolder);
  void Update(bool pIsRefresh = false);
  TRef<const Treemap::ITreemapPresenter> MakePresenter(TRef<IFolderData> pFolder) const;
  void UpdateControls();
  void TellHovered(uint32_t pTile);
  void OpenTile(uint32_t pTile);
  void ZoomTowards(uint32_t pTile);
  void ShowMenu(const QPoint& pPosition);
  bool IsInTree(IFolderData& pFolder) const;

  const std::shared_ptr<TGlobalOptions> fOptions;
  TPlace fPlace;
  TRef<IFolderData> fZoomed;             // nullptr: the root's top folder is shown
  std::vector<TRef<IFolderData>> fBack;  // what was shown before; nullptr for the top folder

  TTreemapView* fView = nullptr;
  QComboBox* fSource = nullptr;
  QComboBox* fColors = nullptr;
  QComboBox* fAreas = nullptr;
  QToolButton* fBackButton = nullptr;
  QToolButton* fUpButton = nullptr;
  QToolButton* fFreeSpace = nullptr;
  QLabel* fHovered = nullptr;
};

}  // namespace Vantrel::Window
