#include "window/main/PathBar.h"

#include <QCompleter>
#include <QEvent>
#include <QFileSystemModel>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>

#include "window/models/ShownText.h"

namespace Vantrel::Window {

// The completer lists folders on a thread of its own, and begins only when the field is used.
QLineEdit* NewPathField(QWidget* pParent) {
  auto* field = new QLineEdit(pParent);
  field->setPlaceholderText(QObject::tr("Path of a folder, drive or mount"));
  field->setClearButtonEnabled(true);
  QObject::connect(field, &QLineEdit::textEdited, field, [field] {
    if (field->completer()) return;
    auto* completer = new QCompleter(field);
    auto* folders = new QFileSystemModel(completer);
    folders->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Hidden);
    folders->setOption(QFileSystemModel::DontWatchForChanges);
    folders->setRootPath(QString());
    completer->setModel(folders);
    field->setCompleter(completer);
  });
  return field;
}

TPathBar::TPathBar(QWidget* pParent) : QStackedWidget(pParent), fCrumbs(new QWidget), fField(NewPathField()) {
  fButtons = new QHBoxLayout(fCrumbs);
  fButtons->setContentsMargins(6, 0, 6, 0);
  fButtons->setSpacing(0);
  fCrumbs->setCursor(Qt::IBeamCursor);
  fCrumbs->setToolTip(tr("Click to type a path"));
  fCrumbs->installEventFilter(this);
  auto* area = new QScrollArea;  // a deep path does not widen the window
  area->setWidget(fCrumbs);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::StyledPanel);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setFocusPolicy(Qt::NoFocus);
  connect(area->horizontalScrollBar(), &QScrollBar::rangeChanged, area,
          [area](int, int pEnd) { area->horizontalScrollBar()->setValue(pEnd); });
  addWidget(area);
  addWidget(fField);
  setFixedHeight(fField->sizeHint().height() + 4);
  fField->setAccessibleName(tr("Path to scan or to go to"));
  fField->installEventFilter(this);
  connect(fField, &QLineEdit::returnPressed, this, [this] {
    const QString path = fField->text();
    setCurrentIndex(0);
    if (!path.isEmpty()) Q_EMIT PathTyped(path);
  });
}

void TPathBar::SetPath(const QString& pTop, const QString& pPath, QChar pDelimiter) {
  if (fPath == pPath) return;
  fPath = pPath;
  while (QLayoutItem* item = fButtons->takeAt(0)) {
    if (item->widget()) item->widget()->deleteLater();
    delete item;
  }
  if (pPath.isEmpty()) return;
  AddButton(pTop, pTop);
  constexpr int kMostButtons = 40;  // of a path of thousands of parts, the last ones are shown
  QList<QPair<QString, QString>> parts;
  qsizetype end = pTop.size();
  while (end < pPath.size()) {
    qsizetype begin = end;
    while (begin < pPath.size() && pPath[begin] == pDelimiter) ++begin;
    end = pPath.indexOf(pDelimiter, begin);
    if (end < 0) end = pPath.size();
    if (end > begin) parts.append({pPath.mid(begin, end - begin), pPath.left(end)});
  }
  if (parts.size() > kMostButtons) parts = parts.mid(parts.size() - kMostButtons);
  for (const auto& [name, path] : parts) {
    auto* arrow = new QLabel(QStringLiteral("›"));
    arrow->setEnabled(false);
    fButtons->addWidget(arrow);
    AddButton(name, path);
  }
  fButtons->addStretch(1);
}

void TPathBar::AddButton(const QString& pText, const QString& pPath) {
  auto* button = new QToolButton;
  button->setAutoRaise(true);
  button->setCursor(Qt::ArrowCursor);
  constexpr int kWidest = 240;
  QString text = Shown(FromQString(pText)).replace(QStringLiteral("&"), QStringLiteral("&&"));
  button->setText(button->fontMetrics().elidedText(text, Qt::ElideMiddle, kWidest));
  button->setToolTip(Shown(FromQString(pPath)));
  button->setAccessibleName(tr("Go to %1").arg(text));
  connect(button, &QToolButton::clicked, this, [this, pPath] { Q_EMIT PathChosen(pPath); });
  fButtons->addWidget(button);
}

void TPathBar::Edit() {
  fField->setText(fPath);
  setCurrentIndex(1);
  fField->setFocus(Qt::ShortcutFocusReason);
  fField->selectAll();
}

bool TPathBar::eventFilter(QObject* pObject, QEvent* pEvent) {
  if (pObject == fCrumbs && pEvent->type() == QEvent::MouseButtonPress) {
    Edit();
    return true;
  }
  if (pObject == fField) {
    const bool isEscape =
        pEvent->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(pEvent)->key() == Qt::Key_Escape;
    const bool hasLeft = pEvent->type() == QEvent::FocusOut &&
                         static_cast<QFocusEvent*>(pEvent)->reason() != Qt::PopupFocusReason &&
                         static_cast<QFocusEvent*>(pEvent)->reason() != Qt::ActiveWindowFocusReason;
    if (isEscape || hasLeft) setCurrentIndex(0);
    if (isEscape) return true;
  }
  return QStackedWidget::eventFilter(pObject, pEvent);
}

}  // namespace Vantrel::Window
