#pragma once

// The window's icons, drawn from shapes, so that they are sharp at every size and follow light and dark.

#include <QIcon>

namespace Vantrel::Window {

enum class TSymbol : uint8_t {
  syDrive,
  syFolder,
  syFolderIncomplete,
  syFiles,
  syFile,
  syGone,
  syScan,
  syStop,
  syRefresh,
  syClose,
  syOpen,
  sySave,
  syExport,
  syCompare,
  syOptions,
  syHome,
  syWarning,
  syProgram,
  sySearch,
};

// Made once for each symbol.
QIcon Icon(TSymbol pSymbol);

}  // namespace Vantrel::Window
