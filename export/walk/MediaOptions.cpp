#include "export/walk/MediaOptions.h"

namespace Vantrel::Exporting {

TMediaSettings TMediaOptions::Effective(TMediaType pMedia) const {
  TMediaSettings settings = fOptions.Media(pMedia);
  if (settings.fOverrideUnits) {
    settings.fUsePlainByteValues = false;
  } else {
    settings.fAutomaticUnit = fOptions.SizeUnit == TSizeUnit::suAutomatic;
    settings.fSizeUnit = fOptions.SizeUnit;
  }
  settings.fDecimalUnits = fOptions.DecimalUnits;
  settings.fShowUnchanged = fOptions.ShowUnchanged;
  // Bytes need no unit in the caption. Numbers in a unit that is not shown would be useless.
  if (settings.fUsePlainByteValues) settings.fAutomaticUnit = true;
  if (!settings.fShowUnits && settings.fAutomaticUnit) settings.fUsePlainByteValues = true;
  return settings;
}

}  // namespace Vantrel::Exporting
