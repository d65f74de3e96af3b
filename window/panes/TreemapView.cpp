#include "window/panes/TreemapView.h"

#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "export/pictures/TreemapDrawing.h"
#include "window/models/Background.h"
#include "window/models/ShownText.h"
#include "window/painting/DrawingPainter.h"

namespace Vantrel::Window {

using namespace Treemap;

namespace {

// Never destroyed: a drive that hangs when it is asked for its free space must not keep the program from ending.
ThreadPool::TWorkerThreadPool& TreemapPool() {
  static ThreadPool::TWorkerThreadPool& pool = [&]() -> ThreadPool::TWorkerThreadPool& {
    auto* made = new ThreadPool::TWorkerThreadPool({});
    made->SetMaxRunningThreads(2);
    return *made;
  }();
  return pool;
}

// While something else needs the processors, a picture may take one part in so many of the time.
constexpr int64_t kBusyShare = 40;
constexpr int64_t kLeastPause = 300;  // milliseconds between two pictures of data that change

Pictures::TTreemapDrawingStyle StyleOf(double pTextSize) {
  return {.fLegendTextSize = pTextSize, .fHasHints = false};
}

}  // namespace

TTreemapView::TTreemapView(QWidget* pParent)
    : QWidget(pParent), fChart(TreemapPool(), [view = QPointer<TTreemapView>(this)] {
        // On any thread. The view is looked at on its own thread alone.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [view] {
              if (view) view->TakePicture();
            },
            Qt::QueuedConnection);
      }) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(80, 60);
  setAccessibleName(tr("Treemap"));
  setAccessibleDescription(
      tr("Rectangles as large as the files and folders they stand for. Arrow keys go from one to "
         "the next, up to the folder around it and down into it."));
  fNextRequest.setSingleShot(true);
  connect(&fNextRequest, &QTimer::timeout, this, &TTreemapView::Request);
}

void TTreemapView::Show(TRef<const ITreemapPresenter> pPresenter, const TValueFormat& pFormat, bool pIsBusy) {
  fPresenter = std::move(pPresenter);
  fFormat = pFormat;
  fIsBusy = pIsBusy;
  Request();
  update();
}

void TTreemapView::Refresh(TRef<const ITreemapPresenter> pPresenter, bool pIsBusy) {
  fPresenter = std::move(pPresenter);
  fIsBusy = pIsBusy;
  // A picture that failed, such as for lack of memory, is told by no call.
  const bool hasFailed = !fChart.GetFlags().Has(TTreemapFlag::tmfIsPainting) && !fChart.GetPicture();
  if (fIsWorking && !hasFailed)
    fIsOutdated = true;
  else if (!fNextRequest.isActive())
    Request();
}

void TTreemapView::ShowNothing(const QString& pText) {
  fPresenter = nullptr;
  fEmptyText = pText;
  fPicture = nullptr;
  fImage = {};
  fMarkedTile = kNoTile;
  Hover(kNoTile);
  Request();
  update();
}

bool TTreemapView::IsDark() const {
  return palette().color(QPalette::Window).lightness() < 128;
}

double TTreemapView::TextSize() const {
  return QFontInfo(font()).pixelSize() * devicePixelRatioF();
}

// Asks for a picture of the widget's size in the pixels of the screen.
void TTreemapView::Request() {
  fNextRequest.stop();
  fIsOutdated = false;
  fIsWorking = false;
  fChart.SetPresenter(nullptr);  // ends what is under way, and the settings below start nothing
  const QSize size = PixelSize();
  if (!fPresenter || !isVisible() || size.isEmpty()) return;
  TTreemapSettings settings;
  settings.fDark = IsDark();
  settings.fFormat = fFormat;
  settings.fTextSize = static_cast<int32_t>(std::lround(TextSize()));
  settings.fMeasure = std::make_shared<TFontMeasure>(font());
  settings.fThreads = fIsBusy ? 1 : 0;
  settings.fWidth = size.width();
  settings.fHeight = size.height();
  const double legend = Pictures::LegendHeight(fPresenter->GetLegend(), settings.fWidth, settings.fHeight,
                                               *settings.fMeasure, StyleOf(TextSize()));
  fRequested = settings;
  fChart.SetSettings(settings);
  fChart.SetBounds(settings.fWidth, settings.fHeight - static_cast<int32_t>(std::ceil(legend)));
  fIsWorking = true;
  fSinceRequest.start();
  fChart.SetPresenter(fPresenter);
}

// The tiles are there. Their texts are drawn on another thread, too.
void TTreemapView::TakePicture() {
  const std::shared_ptr<const TTreemapPicture> picture = fChart.GetPicture();
  if (!picture || picture == fPicture) return;
  RunInBackground(
      ShortWork(), this,
      [picture, settings = fRequested, textSize = TextSize(), font = font()] {
        const Drawing::TDrawing drawing =
            Pictures::DrawingOfTreemap(*picture, settings.fHeight, u"", Drawing::ThemeOf(settings.fDark),
                                       settings.fFormat, *settings.fMeasure, StyleOf(textSize));
        return BitmapOf(drawing, font);
      },
      [this, picture](TOutcome<QImage> pOutcome) {
        if (picture == fChart.GetPicture()) TakeImage(picture, std::move(pOutcome.fValue));
      });
}

void TTreemapView::TakeImage(const std::shared_ptr<const TTreemapPicture>& pPicture, QImage pImage) {
  fPicture = pPicture;
  fImage = std::move(pImage);
  fIsWorking = false;
  fMarkedTile = fPicture->FindTile(fMarked);
  Hover(underMouse() ? TileAt(mapFromGlobal(QCursor::pos())) : kNoTile);
  update();
  Q_EMIT PictureShown();
  if (!fIsOutdated) return;
  fIsOutdated = false;
  const int64_t taken = fSinceRequest.elapsed();
  fNextRequest.start(static_cast<int>(std::max(kLeastPause, fIsBusy ? taken * kBusyShare : taken)));
}

uint32_t TTreemapView::TileAt(QPointF pPosition) const {
  if (!HasPicture()) return kNoTile;
  const int x = static_cast<int>(std::floor(pPosition.x() * fImage.width() / std::max(1, width())));
  const int y = static_cast<int>(std::floor(pPosition.y() * fImage.height() / std::max(1, height())));
  return fPicture->GetTileByPosition(x, y);
}

QRectF TTreemapView::AreaOf(uint32_t pTile) const {
  if (!HasPicture() || pTile >= fPicture->fTiles.size()) return {};
  const TTreemapRect& rect = fPicture->fTiles[pTile].fRect;
  const double x = static_cast<double>(width()) / fImage.width();
  const double y = static_cast<double>(height()) / fImage.height();
  return {rect.fLeft * x, rect.fTop * y, rect.Width() * x, rect.Height() * y};
}

TRef<IHierarchicalElement> TTreemapView::NodeOf(uint32_t pTile) const {
  if (!HasPicture() || pTile >= fPicture->fTiles.size()) return nullptr;
  const TRef<TTreeMapElement> element = fPicture->CreateElement(pTile);
  return element ? element->GetNode() : nullptr;
}

std::function<Drawing::TDrawing()> TTreemapView::DrawingMaker(std::u16string pTitle) const {
  return [picture = fPicture, settings = fRequested, size = TextSize(), title = std::move(pTitle)] {
    if (!picture) return Drawing::TDrawing();
    return Pictures::DrawingOfTreemap(*picture, settings.fHeight, title, Drawing::ThemeOf(settings.fDark),
                                      settings.fFormat, *settings.fMeasure, {.fLegendTextSize = size});
  };
}

// --- marks -----------------------------------------------------------------------------------------------------------

void TTreemapView::MarkFolder(TTreemapElementID pFolder) {
  if (HasPicture() && fMarkedTile < fPicture->fTiles.size()) {
    const TTreemapTile& marked = fPicture->fTiles[fMarkedTile];
    const bool isInside = marked.fParent != kNoTile && marked.fKind == TTreemapTileKind::tkLeaf &&
                          fPicture->fTiles[marked.fParent].fID == pFolder;
    if (isInside && marked.fID == fMarked) return;
  }
  fMarked = pFolder;
  fMarkedTile = fPicture ? fPicture->FindTile(pFolder) : kNoTile;
  update();
}

void TTreemapView::Mark(uint32_t pTile) {
  fMarkedTile = pTile;
  fMarked = fPicture->fTiles[pTile].fID;
  update();
}

void TTreemapView::Hover(uint32_t pTile) {
  if (pTile == fHoveredTile) return;
  fHoveredTile = pTile;
  update();
  Q_EMIT TileHovered(pTile);
}

// A bright line between two dark ones stands out on every colour.
void TTreemapView::PaintMark(QPainter& pPainter, uint32_t pTile, int pWidth) const {
  const QRectF area = AreaOf(pTile);
  if (area.isEmpty()) return;
  const double inset = pWidth / 2.0 + 1;
  const QRectF line = area.width() > 3 * inset && area.height() > 3 * inset
                          ? area.adjusted(inset, inset, -inset, -inset)
                          : area.adjusted(-1, -1, 1, 1);
  pPainter.setBrush(Qt::NoBrush);
  pPainter.setPen(QPen(Qt::black, pWidth + 2, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  pPainter.drawRect(line);
  pPainter.setPen(QPen(Qt::white, pWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  pPainter.drawRect(line);
}

void TTreemapView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  // The window has gone to a screen with other pixels.
  if (!fIsWorking && fPresenter && QSize(fRequested.fWidth, fRequested.fHeight) != PixelSize())
    QMetaObject::invokeMethod(this, &TTreemapView::Request, Qt::QueuedConnection);
  if (!HasPicture()) {
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString text = fPresenter ? (fIsWorking ? tr("Drawing…") : tr("There is nothing to draw.")) : fEmptyText;
    painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap, text);
    return;
  }
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(QRectF(rect()), fImage);
  if (fHoveredTile != kNoTile && fHoveredTile != fMarkedTile) PaintMark(painter, fHoveredTile, 1);
  if (fMarkedTile != kNoTile) PaintMark(painter, fMarkedTile, 2);
  if (hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
  }
}

// --- events ----------------------------------------------------------------------------------------------------------

void TTreemapView::resizeEvent(QResizeEvent*) {
  Request();
}

void TTreemapView::showEvent(QShowEvent*) {
  if (!fIsWorking) Request();
}

void TTreemapView::changeEvent(QEvent* pEvent) {
  QWidget::changeEvent(pEvent);
  if (pEvent->type() == QEvent::PaletteChange || pEvent->type() == QEvent::FontChange) Request();
}

// A path may hold "<b>", so hints are never read as text with marks.
QString TTreemapView::HintOf(uint32_t pTile) const {
  QStringList lines;
  for (const QString& line : ToQString(TTreemapWorkItem::CalculateHint(*fPicture, pTile, fFormat)).split(u'\n'))
    lines.append(Shown(FromQString(line)).toHtmlEscaped());
  return QStringLiteral("<p style='white-space:pre'>") + lines.join(QStringLiteral("<br>")) + QStringLiteral("</p>");
}

bool TTreemapView::event(QEvent* pEvent) {
  if (pEvent->type() == QEvent::ToolTip) {
    const auto* help = static_cast<QHelpEvent*>(pEvent);
    const uint32_t tile = TileAt(help->pos());
    if (tile == kNoTile)
      QToolTip::hideText();
    else
      QToolTip::showText(help->globalPos(), HintOf(tile), this, AreaOf(tile).toAlignedRect());
    return true;
  }
  return QWidget::event(pEvent);
}

void TTreemapView::mouseMoveEvent(QMouseEvent* pEvent) {
  Hover(TileAt(pEvent->position()));
}

void TTreemapView::leaveEvent(QEvent*) {
  Hover(kNoTile);
}

void TTreemapView::mousePressEvent(QMouseEvent* pEvent) {
  if (pEvent->button() == Qt::BackButton) return Q_EMIT ZoomedOut();
  const uint32_t tile = TileAt(pEvent->position());
  if (tile == kNoTile || (pEvent->button() != Qt::LeftButton && pEvent->button() != Qt::RightButton)) return;
  Mark(tile);
  Q_EMIT TileChosen(tile);
}

void TTreemapView::mouseDoubleClickEvent(QMouseEvent* pEvent) {
  const uint32_t tile = TileAt(pEvent->position());
  if (pEvent->button() == Qt::LeftButton && tile != kNoTile) Q_EMIT TileOpened(tile);
}

// One step of a wheel is 120. Touchpads send many smaller ones.
void TTreemapView::wheelEvent(QWheelEvent* pEvent) {
  constexpr int kStep = 120;
  pEvent->accept();
  fWheel += pEvent->angleDelta().y();
  if (std::abs(fWheel) < kStep) return;
  const bool isIn = fWheel > 0;
  fWheel = 0;
  const uint32_t tile = TileAt(pEvent->position());
  if (!isIn)
    Q_EMIT ZoomedOut();
  else if (tile != kNoTile)
    Q_EMIT ZoomedIn(tile);
}

// The tile that an arrow key leads to from the marked one; kNoTile if there is none.
uint32_t TTreemapView::Neighbour(int pKey) const {
  if (fMarkedTile == kNoTile) return 0;
  const std::vector<TTreemapTile>& tiles = fPicture->fTiles;
  const TTreemapTile& marked = tiles[fMarkedTile];
  if (pKey == Qt::Key_Up) return marked.fParent;
  if (pKey == Qt::Key_Down) {
    if (marked.fBranch == kNoTile || fPicture->fBranches[marked.fBranch].fTileCount == 0) return kNoTile;
    return fPicture->fBranches[marked.fBranch].fFirstTile;
  }
  if (marked.fParent == kNoTile) return kNoTile;
  const TTreemapBranch& siblings = fPicture->fBranches[tiles[marked.fParent].fBranch];
  if (pKey == Qt::Key_Left) return fMarkedTile > siblings.fFirstTile ? fMarkedTile - 1 : kNoTile;
  return fMarkedTile + 1 < siblings.fFirstTile + siblings.fTileCount ? fMarkedTile + 1 : kNoTile;
}

void TTreemapView::keyPressEvent(QKeyEvent* pEvent) {
  const int key = pEvent->key();
  if (!HasPicture()) return QWidget::keyPressEvent(pEvent);
  if (key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down) {
    const uint32_t tile = Neighbour(key);
    if (tile == kNoTile) return;
    Mark(tile);
    Q_EMIT TileHovered(tile);
    return Q_EMIT TileChosen(tile);
  }
  if ((key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Plus) && fMarkedTile != kNoTile)
    return Q_EMIT TileOpened(fMarkedTile);
  if (key == Qt::Key_Backspace || key == Qt::Key_Minus) return Q_EMIT ZoomedOut();
  QWidget::keyPressEvent(pEvent);
}

}  // namespace Vantrel::Window
