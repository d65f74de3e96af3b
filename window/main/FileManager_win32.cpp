#include <QDesktopServices>
#include <QDir>
#include <QProcess>
#include <QUrl>

#include "window/main/FileManager.h"

namespace Vantrel::Window {

bool OpenWithDesktop(const std::u16string& pPath) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdU16String(pPath)));
}

// The shell reads its own command line, so the quotes are its own as well.
bool ShowInFileManager(const std::u16string& pPath) {
  QProcess explorer;
  explorer.setProgram(QStringLiteral("explorer.exe"));
  explorer.setNativeArguments(QStringLiteral("/select,\"%1\"").arg(QString::fromStdU16String(pPath)));
  return explorer.startDetached();
}

bool OpenTerminal(const std::u16string& pFolder) {
  return QProcess::startDetached(QStringLiteral("cmd.exe"), {}, QString::fromStdU16String(pFolder));
}

}  // namespace Vantrel::Window
