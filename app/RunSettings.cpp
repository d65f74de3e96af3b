#include "app/RunSettings.h"

#include "app/ConsoleOutput.h"
#include "export/xml/OptionsFile.h"
#include "model/roots/ScanRoots.h"
#include "platform/system/Console.h"
#include "scan/engine/ScanServices.h"

namespace Vantrel {

TRunSettings CreateRunSettings(std::string pPlatformName) {
  static TConsoleOutput output;
  TRunSettings settings;
  settings.fPlatformName = std::move(pPlatformName);
  settings.fShowProgress = !TConsole::IsErrorRedirected();
  settings.fUserOptionsFile = Options::UserOptionsFile();
  settings.fOutput = &output;
  settings.fWriteError = [](std::string_view pText) { TConsole::WriteError(pText); };
  settings.fWriteNote = [](std::string_view pText) { TConsole::WriteNote(pText); };
  settings.fCreateRoots = [](std::shared_ptr<const TGlobalOptions> pOptions) {
    return CreateScanRoots(ScanEngine::CreateScanServices(), std::move(pOptions));
  };
  return settings;
}

}  // namespace Vantrel
