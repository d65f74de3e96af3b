#pragma once

// The widget that shows a treemap: it lays out and draws on other threads, and follows pointer and keys.

#include <QElapsedTimer>
#include <QImage>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

#include "presentation/drawing/Drawing.h"
#include "presentation/treemap/TreemapChart.h"

namespace Vantrel::Window {

// Shows the treemap of a presenter. Until a new picture is ready, the previous one stays, stretched if need be. Window
// thread only.
class TTreemapView : public QWidget {
  Q_OBJECT
 public:
  explicit TTreemapView(QWidget* pParent = nullptr);

  // What is shown, and how values are written. While pIsBusy, such as during a scan, little time is spent on pictures.
  void Show(TRef<const Treemap::ITreemapPresenter> pPresenter, const TValueFormat& pFormat, bool pIsBusy);
  // Shows what has changed since.
  void Refresh(TRef<const Treemap::ITreemapPresenter> pPresenter, bool pIsBusy);
  // Shows a text alone.
  void ShowNothing(const QString& pText);

  // Marks the folder's tile. A marked file directly in that folder stays marked.
  void MarkFolder(Treemap::TTreemapElementID pFolder);

  // The picture as it is shown, without marks; empty before the first.
  const QImage& GetImage() const { return fImage; }
  std::shared_ptr<const Treemap::TTreemapPicture> GetPicture() const { return fPicture; }
  // The tile at a position of the widget; kNoTile outside the picture.
  uint32_t TileAt(QPointF pPosition) const;
  // Where a tile is on the widget.
  QRectF AreaOf(uint32_t pTile) const;
  // The folder or file of a tile; nullptr where it stands for neither.
  TRef<IHierarchicalElement> NodeOf(uint32_t pTile) const;
  uint32_t GetMarkedTile() const { return fMarkedTile; }
  // Makes the drawing of the picture shown, for files. The function is for any thread, and takes a while.
  std::function<Drawing::TDrawing()> DrawingMaker(std::u16string pTitle) const;

 Q_SIGNALS:
  void PictureShown();
  void TileHovered(uint32_t pTile);  // kNoTile: none
  void TileChosen(uint32_t pTile);
  void TileOpened(uint32_t pTile);  // by a double click or the enter key
  void ZoomedIn(uint32_t pTile);    // by the wheel
  void ZoomedOut();

 protected:
  bool event(QEvent* pEvent) override;
  void paintEvent(QPaintEvent* pEvent) override;
  void resizeEvent(QResizeEvent* pEvent) override;
  void showEvent(QShowEvent* pEvent) override;
  void changeEvent(QEvent* pEvent) override;
  void mouseMoveEvent(QMouseEvent* pEvent) override;
  void mousePressEvent(QMouseEvent* pEvent) override;
  void mouseDoubleClickEvent(QMouseEvent* pEvent) override;
  void wheelEvent(QWheelEvent* pEvent) override;
  void keyPressEvent(QKeyEvent* pEvent) override;
  void leaveEvent(QEvent* pEvent) override;

 private:
  void Request();
  void TakePicture();
  void TakeImage(const std::shared_ptr<const Treemap::TTreemapPicture>& pPicture, QImage pImage);
  void Hover(uint32_t pTile);
  void Mark(uint32_t pTile);
  void PaintMark(QPainter& pPainter, uint32_t pTile, int pWidth) const;
  uint32_t Neighbour(int pKey) const;
  QString HintOf(uint32_t pTile) const;
  double TextSize() const;  // in pixels of the picture
  QSize PixelSize() const { return (QSizeF(size()) * devicePixelRatioF()).toSize(); }
  bool IsDark() const;
  bool HasPicture() const { return fPicture && !fPicture->fTiles.empty() && !fImage.isNull(); }

  Treemap::TCustomTreemapChart fChart;
  TRef<const Treemap::ITreemapPresenter> fPresenter;
  Treemap::TTreemapSettings fRequested;
  TValueFormat fFormat;
  QString fEmptyText;

  std::shared_ptr<const Treemap::TTreemapPicture> fPicture;
  QImage fImage;
  uint32_t fHoveredTile = Treemap::kNoTile;
  uint32_t fMarkedTile = Treemap::kNoTile;
  Treemap::TTreemapElementID fMarked = Treemap::TTreemapElementID::None;
  int fWheel = 0;  // what the wheel has turned since the last step

  QElapsedTimer fSinceRequest;
  QTimer fNextRequest;  // runs while a request waits for its turn
  bool fIsBusy = false;
  bool fIsWorking = false;
  bool fIsOutdated = false;  // changed since the request that is worked on
};

}  // namespace Vantrel::Window
