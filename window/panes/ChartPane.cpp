#include "window/panes/ChartPane.h"

#include <QComboBox>
#include <QHelpEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QVBoxLayout>

#include "automation/actions/HistoryTasks.h"
#include "automation/actions/PictureAction.h"
#include "export/history/HistoryDatabase.h"
#include "platform/files/Folders.h"
#include "presentation/charts/ChartSources.h"
#include "presentation/drawing/Theme.h"
#include "window/models/Background.h"
#include "window/models/ShownText.h"
#include "window/painting/DrawingPainter.h"
#include "window/painting/PictureFile.h"
#include "window/panes/PaneControls.h"

namespace Vantrel::Window {

using namespace Charts;

namespace {

constexpr int kLevels = 4;  // of folders, in rings

// Folders and file types have several levels, which only rings show. Ages have an order, which columns show best.
TChartType UsualTypeOf(TChartPane::TSource pSource) {
  switch (pSource) {
    case TChartPane::TSource::csFolders:
    case TChartPane::TSource::csFileTypes:
      return TChartType::ctRing;
    case TChartPane::TSource::csFileAges:
      return TChartType::ctColumn;
    default:
      return TChartType::ctBar;
  }
}

TChartView::TData ReadHistory(const IHierarchicalRoot& pRoot, const std::u16string& pDatabase) {
  TTimeSeries series;
  series.fTitle = u"History of " + pRoot.GetTitle();
  if (!pDatabase.empty() && PathExists(pDatabase))
    for (const History::THistoryEntry& entry : History::THistoryDatabaseReaderWriter().ReadRootHistoryData(
             pDatabase, pRoot.GetPath(), History::HistoryPattern(pRoot)))
      series.fPoints.push_back({entry.fDate, entry.fSize, entry.fUnreadFolders > 0});
  return series;
}

TChartView::TData ReadData(const TPlace& pPlace, TChartPane::TSource pSource, const std::u16string& pDatabase) {
  IHierarchicalRoot& root = *pPlace.fRoot;
  switch (pSource) {
    case TChartPane::TSource::csExtensions:
      return ExtensionsData(root, pPlace.fFolder);
    case TChartPane::TSource::csFileTypes:
      return FileTypesData(root, pPlace.fFolder);
    case TChartPane::TSource::csOwners:
      return OwnersData(root, pPlace.fFolder);
    case TChartPane::TSource::csFileAges:
      return FileAgesData(root, pPlace.fFolder);
    case TChartPane::TSource::csHistory:
      return ReadHistory(root, pDatabase);
    default:
      return FoldersData(root, kLevels, pPlace.fFolder);
  }
}

QString HintText(const Drawing::TSubject& pSubject) {
  QStringList lines;
  for (const QString& line : ToQString(pSubject.fHint).split(u'\n'))
    lines.append(Shown(FromQString(line)).toHtmlEscaped());
  return QStringLiteral("<p style='white-space:pre'>") + lines.join(QStringLiteral("<br>")) + QStringLiteral("</p>");
}

}  // namespace

// --- the chart
// -----------------------------------------------------------------------------------------------------------

TChartView::TChartView(QWidget* pParent) : QWidget(pParent) {
  setMouseTracking(true);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(80, 60);
  setAccessibleName(tr("Chart"));
}

void TChartView::Show(TData pData, TChartType pType, const TChartSettings& pSettings) {
  fData = std::move(pData);
  fType = pType;
  fSettings = pSettings;
  Draw();
}

void TChartView::ShowText(const QString& pText) {
  fData = {};
  fText = pText;
  Draw();
}

void TChartView::Draw() {
  fSettings.fWidth = width();
  fSettings.fHeight = height();
  fSettings.fFontSize = QFontInfo(font()).pixelSize();
  fSettings.fDark = palette().color(QPalette::Window).lightness() < 128;
  const TFontMeasure measure(font());
  if (const auto* values = std::get_if<TChartData>(&fData))
    fDrawing = MakeChart(fType, *values, fSettings, measure);
  else if (const auto* series = std::get_if<TTimeSeries>(&fData))
    fDrawing = MakeChart(fType, *series, fSettings, measure);
  else
    fDrawing = {};
  setAccessibleDescription(ToQString(fDrawing.fTitle));
  update();
}

const Drawing::TSubject* TChartView::SubjectAt(QPointF pPosition) const {
  const int subject = Drawing::SubjectAt(fDrawing, {pPosition.x(), pPosition.y()});
  return subject == Drawing::kNoSubject ? nullptr : &fDrawing.fSubjects[static_cast<size_t>(subject)];
}

void TChartView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  if (HasDrawing()) return PaintDrawing(painter, fDrawing, font());
  painter.fillRect(rect(), palette().window());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap, fText);
}

void TChartView::resizeEvent(QResizeEvent*) {
  Draw();
}

void TChartView::changeEvent(QEvent* pEvent) {
  QWidget::changeEvent(pEvent);
  if (pEvent->type() == QEvent::PaletteChange || pEvent->type() == QEvent::FontChange) Draw();
}

bool TChartView::event(QEvent* pEvent) {
  if (pEvent->type() != QEvent::ToolTip) return QWidget::event(pEvent);
  const auto* help = static_cast<QHelpEvent*>(pEvent);
  if (const Drawing::TSubject* subject = SubjectAt(help->pos()))
    QToolTip::showText(help->globalPos(), HintText(*subject), this);
  else
    QToolTip::hideText();
  return true;
}

void TChartView::mouseMoveEvent(QMouseEvent* pEvent) {
  const Drawing::TSubject* subject = SubjectAt(pEvent->position());
  setCursor(subject && !subject->fKey.empty() ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void TChartView::mouseReleaseEvent(QMouseEvent* pEvent) {
  const Drawing::TSubject* subject = SubjectAt(pEvent->position());
  if (pEvent->button() == Qt::LeftButton && subject && !subject->fKey.empty())
    Q_EMIT SubjectChosen(ToQString(subject->fKey));
}

TPrintable TChartPane::Printable() const {
  if (!fView->HasDrawing()) return {};
  return {ToQString(fView->GetDrawing().fTitle), [drawing = fView->GetDrawing()] { return drawing; }, {}};
}

// --- the pane
// ------------------------------------------------------------------------------------------------------------

TChartPane::TChartPane(std::shared_ptr<TGlobalOptions> pOptions, QWidget* pParent)
    : TPane(pParent), fOptions(std::move(pOptions)), fView(new TChartView(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  TPaneControls controls(this);
  fSources = controls.AddChoice(tr("What is shown"), {tr("Folders"), tr("Extensions"), tr("File types"), tr("Owners"),
                                                      tr("File ages"), tr("History")});
  fForms = controls.AddChoice(tr("Form of the chart"), {});
  connect(controls.AddTextButton(tr("Copy"), tr("Copy the picture")), &QToolButton::clicked, this, &TChartPane::Copy);
  connect(controls.AddTextButton(tr("Save…"), tr("Save the picture as a file")), &QToolButton::clicked, this,
          &TChartPane::Save);
  layout->addLayout(controls.Row());
  layout->addWidget(fView, 1);
  connect(fSources, &QComboBox::activated, this, [this](int pItem) { SetSource(static_cast<TSource>(pItem)); });
  connect(fForms, &QComboBox::activated, this, &TChartPane::SetForm);
  connect(fView, &TChartView::SubjectChosen, this, [this](const QString& pKey) {
    if (fSource == TSource::csFolders) Q_EMIT PathChosen(pKey);
  });
  FillForms();
  Read();
}

void TChartPane::ShowPlace(const TPlace& pPlace) {
  fPlace = pPlace;
  Read();
}

void TChartPane::Refresh() {
  if (fIsReading)
    fIsOutdated = true;
  else
    Read();
}

void TChartPane::SetSource(TSource pSource) {
  fSource = pSource;
  fSources->setCurrentIndex(static_cast<int>(pSource));
  FillForms();
  Read();
}

void TChartPane::FillForms() {
  fForms->clear();
  fForms->addItems(IsHistory() ? QStringList{tr("Area"), tr("Line")}
                               : QStringList{tr("Automatic"), tr("Bars"), tr("Columns"), tr("Pie"), tr("Rings")});
  fForms->setCurrentIndex(IsHistory() ? static_cast<int>(fOptions->HistoryChartType)
                                      : static_cast<int>(fOptions->ChartType));
}

void TChartPane::SetForm(int pItem) {
  if (IsHistory())
    fOptions->HistoryChartType = static_cast<THistoryChartForm>(pItem);
  else
    fOptions->ChartType = static_cast<TChartForm>(pItem);
  Read();
}

TChartType TChartPane::Type() const {
  if (IsHistory()) return PostScanActions::ChartTypeOf(fOptions->HistoryChartType);
  if (fOptions->ChartType == TChartForm::cfAutomatic) return UsualTypeOf(fSource);
  return PostScanActions::ChartTypeOf(fOptions->ChartType);
}

void TChartPane::Read() {
  const uint64_t request = ++fRequest;
  fIsOutdated = false;
  fIsReading = false;
  if (!fPlace.fRoot || !fPlace.fFolder) return fView->ShowText(tr("Nothing is chosen."));
  fIsReading = true;
  const std::u16string database = IsHistory() ? CommandLine::HistoryFile(*fOptions) : std::u16string();
  RunInBackground(
      ShortWork(), this, [place = fPlace, source = fSource, database] { return ReadData(place, source, database); },
      [this, request](TOutcome<TChartView::TData> pOutcome) {
        if (request != fRequest) return;
        fIsReading = false;
        if (!pOutcome.fError.isEmpty())
          fView->ShowText(pOutcome.fError);
        else
          Take(std::move(pOutcome.fValue));
      });
}

void TChartPane::Take(TChartView::TData pData) {
  const auto* series = std::get_if<TTimeSeries>(&pData);
  if (series && series->fPoints.empty()) {
    fView->ShowText(
        tr("The history holds no scan of this path. Scans are recorded if the option RecordHistory is on."));
  } else {
    TChartSettings settings;
    settings.fMostItems = static_cast<size_t>(fOptions->ChartItems) + 1;  // and the rest
    settings.fFormat = WindowFormat(fOptions->SizeUnit);
    fView->Show(std::move(pData), Type(), settings);
  }
  Q_EMIT ChartShown();
  if (fIsOutdated) Read();
}

void TChartPane::SaveToFile(const std::u16string& pFile) const {
  WritePictureFile(fView->GetDrawing(), pFile, font());
}

void TChartPane::Save() {
  if (!fView->HasDrawing()) return;
  SavePictureAs(this, fSources->currentText() + QStringLiteral(".png"), font(),
                [drawing = fView->GetDrawing()] { return drawing; });
}

void TChartPane::Copy() const {
  if (fView->HasDrawing()) CopyPicture(BitmapOf(fView->GetDrawing(), font()));
}

}  // namespace Vantrel::Window
