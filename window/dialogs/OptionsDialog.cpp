#include "window/dialogs/OptionsDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "model/options/OptionSubjects.h"
#include "window/dialogs/OptionEditor.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

TOptionsDialog::TOptionsDialog(const TGlobalOptions& pOptions, bool pIsReadOnly, QWidget* pParent)
    : QDialog(pParent),
      fOptions(pOptions),
      fSubjects(new QListWidget),
      fSearch(new QLineEdit),
      fNothing(new QLabel(tr("No option matches."))),
      fButtons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)) {
  constexpr QSize kFirstSize(860, 600);
  setObjectName(QStringLiteral("options"));
  setWindowTitle(tr("Options"));
  resize(kFirstSize);
  fSearch->setPlaceholderText(tr("Search all options"));
  fSearch->setClearButtonEnabled(true);
  fSearch->setAccessibleName(fSearch->placeholderText());
  fSubjects->setAccessibleName(tr("Subjects"));
  fSubjects->setFixedWidth(170);
  for (const std::string_view subject : OptionSubjects()) fSubjects->addItem(FromUtf8Text(subject));
  fSubjects->addItem(tr("Changed ones"));
  for (int i = 0; i < fSubjects->count(); ++i) fSubjects->item(i)->setSizeHint(QSize(0, fontMetrics().height() + 12));
  QPushButton* reset = fButtons->addButton(tr("&Reset these"), QDialogButtonBox::ResetRole);
  reset->setToolTip(tr("Gives the options that are shown their first values"));
  auto* middle = new QHBoxLayout;
  middle->addWidget(fSubjects);
  middle->addWidget(MakeRows(pIsReadOnly), 1);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(fSearch);
  layout->addLayout(middle, 1);
  if (pIsReadOnly) layout->addWidget(new QLabel(tr("This run changes no options (/READONLY).")));
  layout->addWidget(fButtons);
  connect(fSearch, &QLineEdit::textChanged, this, &TOptionsDialog::Filter);
  connect(fSubjects, &QListWidget::currentRowChanged, this, [this] {
    fSearch->clear();
    Filter();
  });
  connect(reset, &QPushButton::clicked, this, &TOptionsDialog::ResetShown);
  connect(fButtons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(fButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  fButtons->button(QDialogButtonBox::Ok)->setEnabled(!pIsReadOnly);
  reset->setEnabled(!pIsReadOnly);
  fSubjects->setCurrentRow(0);
  fSearch->setFocus();
}

QWidget* TOptionsDialog::MakeRows(bool pIsReadOnly) {
  auto* rows = new QWidget;
  auto* layout = new QVBoxLayout(rows);
  layout->setContentsMargins(0, 4, 0, 4);
  layout->setSpacing(2);
  for (const TOptionInfo& option : AllOptions()) {
    auto* editor = new TOptionEditor(option, fOptions);
    editor->setEnabled(!pIsReadOnly);
    connect(editor, &TOptionEditor::Edited, this, &TOptionsDialog::Check);
    layout->addWidget(editor);
    fEditors.push_back(editor);
  }
  fNothing->setAlignment(Qt::AlignCenter);
  layout->addWidget(fNothing);
  layout->addStretch(1);
  auto* area = new QScrollArea;
  area->setWidget(rows);
  area->setWidgetResizable(true);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setFocusPolicy(Qt::NoFocus);
  return area;
}

TOptionEditor* TOptionsDialog::EditorOf(const QString& pName) const {
  const auto found = std::find_if(fEditors.begin(), fEditors.end(), [&](const TOptionEditor* pEditor) {
    return FromUtf8Text(pEditor->Option().fName) == pName;
  });
  return found == fEditors.end() ? nullptr : *found;
}

// A search looks through all subjects.
void TOptionsDialog::Filter() {
  const QString searched = fSearch->text();
  const int row = fSubjects->currentRow();
  const bool isChanged = row == fSubjects->count() - 1;
  const QString subject = row >= 0 ? fSubjects->item(row)->text() : QString();
  bool isAny = false;
  for (TOptionEditor* editor : fEditors) {
    const bool isShown = !searched.isEmpty() ? editor->Matches(searched)
                         : isChanged         ? editor->Differs()
                                             : FromUtf8Text(SubjectOf(editor->Option())) == subject;
    editor->setVisible(isShown);
    isAny |= isShown;
  }
  fNothing->setVisible(!isAny);
}

void TOptionsDialog::Check() {
  const bool isValid =
      std::all_of(fEditors.begin(), fEditors.end(), [](const TOptionEditor* pEditor) { return pEditor->IsValid(); });
  fButtons->button(QDialogButtonBox::Ok)->setEnabled(isValid);
}

void TOptionsDialog::ResetShown() {
  for (TOptionEditor* editor : fEditors)
    if (editor->isVisible()) editor->Reset();
}

}  // namespace Vantrel::Window
