#pragma once

// The window's icons, drawn from shapes, so that they are sharp at every size and follow light and dark.

#include <QIcon>
#include <QStyle>

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
  syPause,
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

// Whether the style draws selected rows dark with inverted text. That of Windows draws them pale with the usual text.
bool InvertsSelection(const QStyle& pStyle);

}  // namespace Vantrel::Window
