#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "window/main/FileManager.h"

namespace Vantrel::Window {

namespace {

// Of the bytes of the path, since they need not be UTF-8.
QUrl UrlOf(const std::u16string& pPath) {
  const QByteArray bytes = QByteArray::fromStdString(ToNativeBytes(pPath));
  return QUrl::fromEncoded("file://" + bytes.toPercentEncoding("/"));
}

}  // namespace

bool OpenWithDesktop(const std::u16string& pPath) {
  return QDesktopServices::openUrl(UrlOf(pPath));
}

// By the desktop's common interface; a desktop without it opens the folder.
bool ShowInFileManager(const std::u16string& pPath) {
  const QString bus = QStandardPaths::findExecutable(QStringLiteral("dbus-send"));
  if (!bus.isEmpty()) {
    const QString items = QStringLiteral("array:string:") + QString::fromLatin1(UrlOf(pPath).toEncoded());
    if (QProcess::startDetached(
            bus,
            {QStringLiteral("--session"), QStringLiteral("--type=method_call"),
             QStringLiteral("--dest=org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
             QStringLiteral("org.freedesktop.FileManager1.ShowItems"), items, QStringLiteral("string:")}))
      return true;
  }
  return OpenWithDesktop(std::u16string(FolderOfPath(pPath, NativePathDelimiter())));
}

bool OpenTerminal(const std::u16string& pFolder) {
  QStringList terminals{qEnvironmentVariable("TERMINAL")};
  for (const char* name : {"x-terminal-emulator", "gnome-terminal", "konsole", "xfce4-terminal", "xterm"})
    terminals << QString::fromLatin1(name);
  for (const QString& name : terminals) {
    const QString program = name.isEmpty() ? QString() : QStandardPaths::findExecutable(name);
    if (!program.isEmpty() && QProcess::startDetached(program, {}, QString::fromLocal8Bit(ToNativeBytes(pFolder))))
      return true;
  }
  return false;
}

}  // namespace Vantrel::Window
