#include "window/models/Icons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <functional>
#include <map>

namespace Vantrel::Window {

namespace {

const QColor kFolder(0xE3, 0xA8, 0x2B);
const QColor kFolderDark(0xC0, 0x86, 0x10);
const QColor kBlue(0x2F, 0x7D, 0xD1);
const QColor kGreen(0x2E, 0x9E, 0x5B);
const QColor kRed(0xD6, 0x45, 0x3D);
const QColor kAmber(0xE0, 0x8A, 0x00);

// Symbols are drawn in a square of 16 units.
class TBrush {
 public:
  TBrush(QPainter& pPainter, const QColor& pInk) : fPainter(pPainter), fInk(pInk) {}

  void Fill(const QPainterPath& pPath, const QColor& pColor) const { fPainter.fillPath(pPath, pColor); }
  void Line(const QPainterPath& pPath, const QColor& pColor, double pWidth = 1.5) const {
    fPainter.strokePath(pPath, QPen(pColor, pWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  }
  const QColor& Ink() const { return fInk; }

 private:
  QPainter& fPainter;
  const QColor fInk;
};

QPainterPath Rounded(double pX, double pY, double pWidth, double pHeight, double pRadius = 1.2) {
  QPainterPath path;
  path.addRoundedRect(QRectF(pX, pY, pWidth, pHeight), pRadius, pRadius);
  return path;
}

QPainterPath Polyline(std::initializer_list<QPointF> pPoints, bool pClosed = false) {
  QPainterPath path(*pPoints.begin());
  for (const QPointF& point : pPoints) path.lineTo(point);
  if (pClosed) path.closeSubpath();
  return path;
}

QPainterPath Arc(double pLeft, double pTop, double pSize, double pStart, double pSweep) {
  const QRectF rectangle(pLeft, pTop, pSize, pSize);
  QPainterPath path;
  path.arcMoveTo(rectangle, pStart);
  path.arcTo(rectangle, pStart, pSweep);
  return path;
}

void DrawFolder(const TBrush& pBrush, const QColor& pFront, const QColor& pBack) {
  pBrush.Fill(Rounded(1.5, 2.8, 6.5, 4), pBack);
  pBrush.Fill(Rounded(1.5, 4, 13, 9), pBack);
  pBrush.Fill(Rounded(1.5, 5.2, 13, 8.3), pFront);
}

void DrawWarning(const TBrush& pBrush, double pX, double pY, double pSize) {
  const double half = pSize / 2;
  pBrush.Fill(Polyline({{pX + half, pY}, {pX + pSize, pY + pSize}, {pX, pY + pSize}}, true), kAmber);
  pBrush.Line(Polyline({{pX + half, pY + pSize * 0.38}, {pX + half, pY + pSize * 0.62}}), Qt::white, pSize * 0.13);
  pBrush.Line(Polyline({{pX + half, pY + pSize * 0.83}, {pX + half, pY + pSize * 0.84}}), Qt::white, pSize * 0.13);
}

void DrawPage(const TBrush& pBrush, double pX, double pY) {
  const QPainterPath page =
      Polyline({{pX, pY}, {pX + 5.5, pY}, {pX + 8.5, pY + 3}, {pX + 8.5, pY + 11.5}, {pX, pY + 11.5}}, true);
  QColor body = pBrush.Ink();
  body.setAlphaF(0.12F);
  QColor edge = pBrush.Ink();
  edge.setAlphaF(0.6F);
  pBrush.Fill(page, body);
  pBrush.Line(page, edge, 1);
}

void DrawDrive(const TBrush& pBrush) {
  QColor body = pBrush.Ink();
  body.setAlphaF(0.15F);
  QColor edge = pBrush.Ink();
  edge.setAlphaF(0.7F);
  pBrush.Fill(Rounded(1.5, 3.5, 13, 9, 2), body);
  pBrush.Line(Rounded(1.5, 3.5, 13, 9, 2), edge, 1.1);
  pBrush.Line(Polyline({{4, 9.7}, {8, 9.7}}), edge, 1.1);
  pBrush.Fill(Rounded(10.6, 8.7, 2, 2, 1), kGreen);
}

void DrawArrow(const TBrush& pBrush, bool pDown) {
  const double head = pDown ? 9.5 : 2.5;
  const double side = pDown ? 6.5 : 5.5;
  pBrush.Line(Polyline({{8, 2.5}, {8, 9.5}}), kBlue);
  pBrush.Line(Polyline({{5, side}, {8, head}, {11, side}}), kBlue);
  pBrush.Line(Polyline({{2.5, 10}, {2.5, 13.5}, {13.5, 13.5}, {13.5, 10}}), pBrush.Ink());
}

void DrawOptions(const TBrush& pBrush) {
  for (const auto& [y, x] : {std::pair(4.0, 10.0), std::pair(8.0, 5.0), std::pair(12.0, 9.0)}) {
    pBrush.Line(Polyline({{2.0, y}, {14.0, y}}), pBrush.Ink(), 1.1);
    pBrush.Fill(Rounded(x - 1.6, y - 1.6, 3.2, 3.2, 1.6), kBlue);
  }
}

void DrawProgram(const TBrush& pBrush) {
  pBrush.Fill(Rounded(1, 1, 8, 9, 1), kBlue);
  pBrush.Fill(Rounded(10, 1, 5, 5, 1), kGreen);
  pBrush.Fill(Rounded(10, 7, 5, 8, 1), kFolder);
  pBrush.Fill(Rounded(1, 11, 8, 4, 1), kRed);
}

void DrawCompare(const TBrush& pBrush) {
  pBrush.Line(Polyline({{3, 5.5}, {12.5, 5.5}}), kGreen);
  pBrush.Line(Polyline({{10, 3}, {12.5, 5.5}, {10, 8}}), kGreen);
  pBrush.Line(Polyline({{13, 11}, {3.5, 11}}), kRed);
  pBrush.Line(Polyline({{6, 8.5}, {3.5, 11}, {6, 13.5}}), kRed);
}

using TDraw = std::function<void(const TBrush&)>;

const std::map<TSymbol, TDraw>& Drawings() {
  static const std::map<TSymbol, TDraw> drawings{
      {TSymbol::syDrive, DrawDrive},
      {TSymbol::syFolder, [](const TBrush& pBrush) { DrawFolder(pBrush, kFolder, kFolderDark); }},
      {TSymbol::syFolderIncomplete,
       [](const TBrush& pBrush) {
         DrawFolder(pBrush, kFolder, kFolderDark);
         DrawWarning(pBrush, 8.2, 8, 7.6);
       }},
      {TSymbol::syFiles,
       [](const TBrush& pBrush) {
         DrawPage(pBrush, 2, 1.5);
         DrawPage(pBrush, 5.5, 3.5);
       }},
      {TSymbol::syFile, [](const TBrush& pBrush) { DrawPage(pBrush, 3.75, 2.2); }},
      {TSymbol::syGone,
       [](const TBrush& pBrush) {
         QColor pale = pBrush.Ink();
         pale.setAlphaF(0.35F);
         pBrush.Line(Rounded(1.5, 4.5, 13, 8.5), pale, 1);
         pBrush.Line(Polyline({{5, 7}, {11, 11}}), kRed, 1.2);
         pBrush.Line(Polyline({{11, 7}, {5, 11}}), kRed, 1.2);
       }},
      {TSymbol::syScan,
       [](const TBrush& pBrush) {
         pBrush.Fill(Polyline({{4, 2.5}, {13.5, 8}, {4, 13.5}}, true), kGreen);
       }},
      {TSymbol::syStop, [](const TBrush& pBrush) { pBrush.Fill(Rounded(3.5, 3.5, 9, 9, 1.5), kRed); }},
      {TSymbol::syPause,
       [](const TBrush& pBrush) {
         pBrush.Fill(Rounded(4, 3.5, 3, 9, 0.8), kBlue);
         pBrush.Fill(Rounded(9, 3.5, 3, 9, 0.8), kBlue);
       }},
      {TSymbol::syRefresh,
       [](const TBrush& pBrush) {
         pBrush.Line(Arc(3, 3, 10, 60, 290), kBlue, 1.6);
         pBrush.Fill(Polyline({{9.2, 0.8}, {13.6, 3.4}, {9.2, 6.4}}, true), kBlue);
       }},
      {TSymbol::syClose,
       [](const TBrush& pBrush) {
         pBrush.Line(Polyline({{4, 4}, {12, 12}}), pBrush.Ink());
         pBrush.Line(Polyline({{12, 4}, {4, 12}}), pBrush.Ink());
       }},
      {TSymbol::syOpen,
       [](const TBrush& pBrush) {
         DrawFolder(pBrush, kFolder, kFolderDark);
         pBrush.Fill(Polyline({{4, 8}, {15.5, 8}, {13.5, 13.5}, {2, 13.5}}, true), kFolder.lighter(125));
       }},
      {TSymbol::sySave, [](const TBrush& pBrush) { DrawArrow(pBrush, true); }},
      {TSymbol::syExport, [](const TBrush& pBrush) { DrawArrow(pBrush, false); }},
      {TSymbol::syCompare, DrawCompare},
      {TSymbol::syOptions, DrawOptions},
      {TSymbol::syHome,
       [](const TBrush& pBrush) {
         pBrush.Line(Polyline({{2, 8}, {8, 2.5}, {14, 8}}), kBlue);
         pBrush.Line(Polyline({{3.8, 7.5}, {3.8, 13.3}, {12.2, 13.3}, {12.2, 7.5}}), pBrush.Ink(), 1.2);
       }},
      {TSymbol::syWarning, [](const TBrush& pBrush) { DrawWarning(pBrush, 1.5, 1.5, 13); }},
      {TSymbol::syProgram, DrawProgram},
      {TSymbol::sySearch,
       [](const TBrush& pBrush) {
         pBrush.Line(Arc(2, 2, 8.5, 0, 360), kBlue, 1.6);
         pBrush.Line(Polyline({{9.6, 9.6}, {13.6, 13.6}}), pBrush.Ink(), 1.8);
       }},
  };
  return drawings;
}

class TSymbolEngine : public QIconEngine {
 public:
  explicit TSymbolEngine(TSymbol pSymbol) : fSymbol(pSymbol) {}

  void paint(QPainter* pPainter, const QRect& pRectangle, QIcon::Mode pMode, QIcon::State) override {
    const double side = std::min(pRectangle.width(), pRectangle.height());
    pPainter->save();
    pPainter->setRenderHint(QPainter::Antialiasing);
    if (pMode == QIcon::Disabled) pPainter->setOpacity(0.35);
    pPainter->translate(pRectangle.x() + (pRectangle.width() - side) / 2,
                        pRectangle.y() + (pRectangle.height() - side) / 2);
    pPainter->scale(side / 16, side / 16);
    const QPalette palette = QGuiApplication::palette();
    const bool isSelected = pMode == QIcon::Selected && InvertsSelection(*QApplication::style());
    Drawings().at(fSymbol)(TBrush(*pPainter, palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text)));
    pPainter->restore();
  }
  QPixmap pixmap(const QSize& pSize, QIcon::Mode pMode, QIcon::State pState) override {
    QPixmap picture(pSize);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(&painter, QRect(QPoint(), pSize), pMode, pState);
    return picture;
  }
  QIconEngine* clone() const override { return new TSymbolEngine(fSymbol); }

 private:
  const TSymbol fSymbol;
};

}  // namespace

QIcon Icon(TSymbol pSymbol) {
  static std::map<TSymbol, QIcon> icons;
  QIcon& icon = icons[pSymbol];
  if (icon.isNull()) icon = QIcon(new TSymbolEngine(pSymbol));
  return icon;
}

bool InvertsSelection(const QStyle& pStyle) {
  return pStyle.name() != QLatin1String("windowsvista");
}

}  // namespace Vantrel::Window
