#pragma once

// The question where changes since an older scan are shown.

#include <QString>

class QWidget;

namespace Vantrel::Window {

class TWindowSettings;

struct TChangePlaces {
  bool fInColumns = false;
  bool fInTree = false;
};

// Asks, and remembers the answer if the user wants it. Neither place if the user closes the question.
TChangePlaces AskWhereToShowChanges(QWidget& pParent, TWindowSettings& pSettings);
// A remembered answer: "columns", "tree" or "both".
TChangePlaces PlacesOf(const QString& pAnswer);

}  // namespace Vantrel::Window
