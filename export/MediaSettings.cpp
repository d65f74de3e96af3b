#include "export/MediaSettings.h"

#include "platform/Text.h"

namespace Kiv::Hierarchical::Exporting {

TMediaOptions::TMediaOptions(const TGlobalOptions& pOptions) : fOptions(pOptions) {
  Of(TMediaType::mtCSV).fSeparator = u",";
  Of(TMediaType::mtCSV).fAlternativeSeparator = u";";
}

TMediaSettings& TMediaOptions::Of(TMediaType pMedia) {
  return fSettings.at(static_cast<size_t>(pMedia));
}

TMediaSettings TMediaOptions::Effective(TMediaType pMedia) const {
  TMediaSettings settings = fSettings.at(static_cast<size_t>(pMedia));
  if (settings.fOverrideUnits) return settings;
  settings.fAutomaticUnit = true;
  const std::u16string wanted = FromUtf8(fOptions.SizeUnit);
  for (TSizeUnit unit : {TSizeUnit::suBytes, TSizeUnit::suKB, TSizeUnit::suMB, TSizeUnit::suGB, TSizeUnit::suTB}) {
    if (!SameTextAscii(UnitName(unit), wanted)) continue;
    settings.fAutomaticUnit = false;
    settings.fSizeUnit = unit;
  }
  return settings;
}

}  // namespace Kiv::Hierarchical::Exporting
