#pragma once

// Reads the target of a Windows shortcut, a ".lnk" file.

#include <optional>
#include <string>

#include "search/metadata/FileBytes.h"

namespace Vantrel::Search {

// Where a shortcut leads, with backslashes. An empty path is not known.
struct TShortcutTarget {
  std::u16string fLocalPath;     // "C:\Data\x.txt", only of a drive that is always there
  std::u16string fRelativePath;  // from the folder of the shortcut: "..\x.txt"
};

// Empty when the file is no shortcut or damaged.
std::optional<TShortcutTarget> ReadShortcut(TFileBytes& pFile);

}  // namespace Vantrel::Search
