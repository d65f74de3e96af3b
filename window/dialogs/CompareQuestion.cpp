#include "window/dialogs/CompareQuestion.h"

#include <QCheckBox>
#include <QCommandLinkButton>
#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QVBoxLayout>

#include "window/main/WindowSettings.h"

namespace Vantrel::Window {

namespace {

QString Text(const char* pText) {
  return QCoreApplication::translate("CompareQuestion", pText);
}

struct TAnswer {
  const char* fKey;
  const char* fText;
  const char* fExplanation;
};
constexpr TAnswer kAnswers[] = {
    {"columns", QT_TRANSLATE_NOOP("CompareQuestion", "Show in columns"),
     QT_TRANSLATE_NOOP("CompareQuestion",
                       "Activate columns to show size changes in \"Details\", \"Extensions\", and \"Users\".")},
    {"tree", QT_TRANSLATE_NOOP("CompareQuestion", "Show in tree"),
     QT_TRANSLATE_NOOP("CompareQuestion", "Show size changes directly in the tree (as a prefix of the folder names).")},
    {"both", QT_TRANSLATE_NOOP("CompareQuestion", "Show both"),
     QT_TRANSLATE_NOOP("CompareQuestion", "Show size changes in tree and activate columns.")}};

void AddTexts(QLayout& pLayout) {
  const QString name = QCoreApplication::applicationName();
  auto* title = new QLabel(Text(QT_TRANSLATE_NOOP("CompareQuestion", "How shall %1 show size changes?")).arg(name));
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * 1.3);
  title->setFont(font);
  auto* explanation = new QLabel(Text(QT_TRANSLATE_NOOP("CompareQuestion",
                                                        "%1 offers several options to visualize size changes. Please "
                                                        "decide where to show these values."))
                                     .arg(name));
  explanation->setWordWrap(true);
  pLayout.addWidget(title);
  pLayout.addWidget(explanation);
}

}  // namespace

TChangePlaces PlacesOf(const QString& pAnswer) {
  return {pAnswer == QStringLiteral("columns") || pAnswer == QStringLiteral("both"),
          pAnswer == QStringLiteral("tree") || pAnswer == QStringLiteral("both")};
}

TChangePlaces AskWhereToShowChanges(QWidget& pParent, TWindowSettings& pSettings) {
  QDialog dialog(&pParent);
  dialog.setObjectName(QStringLiteral("compareQuestion"));
  dialog.setWindowTitle(Text(QT_TRANSLATE_NOOP("CompareQuestion", "Question")));
  auto* layout = new QVBoxLayout(&dialog);
  layout->setContentsMargins(20, 18, 20, 16);
  AddTexts(*layout);
  QString answer;
  for (const TAnswer& one : kAnswers) {
    auto* button = new QCommandLinkButton(Text(one.fText), Text(one.fExplanation));
    button->setObjectName(QString::fromLatin1(one.fKey));
    QObject::connect(button, &QAbstractButton::clicked, &dialog, [&dialog, &answer, chosen = button->objectName()] {
      answer = chosen;
      dialog.accept();
    });
    layout->addWidget(button);
  }
  auto* again = new QCheckBox(Text(QT_TRANSLATE_NOOP("CompareQuestion", "&Do not show again")));
  layout->addSpacing(8);
  layout->addWidget(again);
  dialog.exec();
  if (!answer.isEmpty() && again->isChecked()) pSettings.Set(QStringLiteral("showChanges"), answer);
  return PlacesOf(answer);
}

}  // namespace Vantrel::Window
