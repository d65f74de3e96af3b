#include "window/dialogs/OptionEditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QToolButton>

#include "window/models/Icons.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

namespace {

constexpr int kFieldWidth = 230;

QString Utf8(const std::string& pText) {
  return FromUtf8Text(pText);
}

}  // namespace

TOptionEditor::TOptionEditor(const TOptionInfo& pOption, TGlobalOptions& pOptions, QWidget* pParent)
    : QWidget(pParent),
      fOption(pOption),
      fOptions(pOptions),
      fName(new QLabel(Utf8(pOption.fName))),
      fHelp(new QLabel),
      fReset(new QToolButton) {
  setObjectName(Utf8(pOption.fName));
  fField = MakeField();
  fField->setAccessibleName(Utf8(pOption.fName));
  fField->setAccessibleDescription(Utf8(pOption.fHelp));
  fField->setFixedWidth(kFieldWidth);
  fName->setBuddy(fField);
  fHelp->setWordWrap(true);
  fHelp->setTextFormat(Qt::PlainText);
  QFont small = fHelp->font();
  small.setPointSizeF(small.pointSizeF() * 0.92);
  fHelp->setFont(small);
  fReset->setAutoRaise(true);
  fReset->setIcon(Icon(TSymbol::syRefresh));
  fReset->setToolTip(tr("Reset to %1").arg(pOption.fDefault.empty() ? tr("nothing") : Utf8(pOption.fDefault)));
  fReset->setAccessibleName(tr("Reset %1").arg(Utf8(pOption.fName)));
  QSizePolicy policy = fReset->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  fReset->setSizePolicy(policy);
  connect(fReset, &QToolButton::clicked, this, &TOptionEditor::Reset);
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(10, 6, 6, 6);
  layout->setVerticalSpacing(1);
  layout->setHorizontalSpacing(12);
  layout->addWidget(fName, 0, 0);
  layout->addWidget(fHelp, 1, 0);
  layout->addWidget(fField, 0, 1, 2, 1, Qt::AlignVCenter);
  layout->addWidget(fReset, 0, 2, 2, 1, Qt::AlignVCenter);
  layout->setColumnStretch(0, 1);
  ShowValue();
  ShowState();
}

QWidget* TOptionEditor::MakeField() {
  switch (fOption.fKind) {
    case TOptionKind::okBoolean: {
      auto* box = new QCheckBox(tr("on"));
      connect(box, &QCheckBox::toggled, this,
              [this](bool pIsOn) { Take(pIsOn ? QStringLiteral("true") : QStringLiteral("false")); });
      return box;
    }
    case TOptionKind::okChoice: {
      auto* box = new QComboBox;
      box->addItems(Utf8(fOption.fRange).split(u'|'));
      connect(box, &QComboBox::currentTextChanged, this, &TOptionEditor::Take);
      return box;
    }
    case TOptionKind::okInteger:
      if (QWidget* field = MakeNumberField()) return field;
      [[fallthrough]];
    default: {
      auto* field = new QLineEdit;
      field->setPlaceholderText(Utf8(fOption.fRange));
      connect(field, &QLineEdit::textChanged, this, &TOptionEditor::Take);
      return field;
    }
  }
}

// nullptr when the range is too large for Qt's field.
QWidget* TOptionEditor::MakeNumberField() {
  const QStringList bounds = Utf8(fOption.fRange).split(QStringLiteral(".."));
  bool isLeast = false;
  bool isMost = false;
  const int least = bounds.value(0).toInt(&isLeast);
  const int most = bounds.value(1).toInt(&isMost);
  if (!isLeast || !isMost) return nullptr;
  auto* field = new QSpinBox;
  field->setRange(least, most);
  connect(field, &QSpinBox::textChanged, this, [this, field] { Take(field->cleanText()); });
  return field;
}

void TOptionEditor::Take(const QString& pText) {
  if (fIsShowing) return;
  fIsValid = fOption.fSet(fOptions, pText.toStdString());
  ShowState();
  Q_EMIT Edited();
}

bool TOptionEditor::SetText(const QString& pText) {
  if (!fOption.fSet(fOptions, pText.toStdString())) return false;
  fIsValid = true;
  ShowValue();
  ShowState();
  Q_EMIT Edited();
  return true;
}

bool TOptionEditor::Differs() const {
  return fOption.fGet(fOptions) != fOption.fDefault;
}

void TOptionEditor::Reset() {
  SetText(Utf8(fOption.fDefault));
}

bool TOptionEditor::Matches(const QString& pSearched) const {
  for (const QString& word : pSearched.split(u' ', Qt::SkipEmptyParts))
    if (!Utf8(fOption.fName).contains(word, Qt::CaseInsensitive) &&
        !Utf8(fOption.fHelp).contains(word, Qt::CaseInsensitive))
      return false;
  return true;
}

void TOptionEditor::ShowValue() {
  fIsShowing = true;
  const QString text = Utf8(fOption.fGet(fOptions));
  if (auto* check = qobject_cast<QCheckBox*>(fField)) check->setChecked(text == QStringLiteral("true"));
  if (auto* choice = qobject_cast<QComboBox*>(fField)) choice->setCurrentText(text);
  if (auto* number = qobject_cast<QSpinBox*>(fField)) number->setValue(text.toInt());
  if (auto* line = qobject_cast<QLineEdit*>(fField)) line->setText(text);
  fIsShowing = false;
}

void TOptionEditor::ShowState() {
  QFont font = fName->font();
  font.setBold(Differs());
  fName->setFont(font);
  fReset->setVisible(Differs() || !fIsValid);
  const QString refused = tr("Not allowed; expected %1").arg(Utf8(fOption.fRange));
  fHelp->setText(fIsValid ? Utf8(fOption.fHelp) : refused);
  QPalette colors;
  colors.setColor(QPalette::WindowText,
                  fIsValid ? palette().color(QPalette::PlaceholderText) : QColor(0xD6, 0x45, 0x3D));
  fHelp->setPalette(colors);
}

}  // namespace Vantrel::Window
