#pragma once

// Hands files and folders to the desktop: to open them, to show them, to work in them.

#include <QString>
#include <string>

namespace Vantrel::Window {

// Each call starts another program and returns at once. False when there is none for it.
bool OpenWithDesktop(const std::u16string& pPath);
// Shows the file or folder, selected, in the folder that holds it.
bool ShowInFileManager(const std::u16string& pPath);
bool OpenTerminal(const std::u16string& pFolder);

}  // namespace Vantrel::Window
