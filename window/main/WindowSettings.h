#pragma once

// What the window remembers besides the options: sizes, columns, recent targets.

#include <QSettings>
#include <QVariant>
#include <memory>

namespace Vantrel::Window {

// Kept in a file beside the options. Without a folder for it, and in a read-only run, nothing is written.
class TWindowSettings {
 public:
  // pFolder is that of the options file; empty for none.
  TWindowSettings(const QString& pFolder, bool pIsReadOnly) : fIsReadOnly(pIsReadOnly) {
    if (!pFolder.isEmpty())
      fSettings = std::make_unique<QSettings>(pFolder + QStringLiteral("/window.ini"), QSettings::IniFormat);
  }

  QVariant Get(const QString& pName, const QVariant& pDefault = {}) const {
    return fSettings ? fSettings->value(pName, pDefault) : pDefault;
  }
  void Set(const QString& pName, const QVariant& pValue) {
    if (fSettings && !fIsReadOnly) fSettings->setValue(pName, pValue);
  }

 private:
  std::unique_ptr<QSettings> fSettings;
  const bool fIsReadOnly;
};

}  // namespace Vantrel::Window
