#pragma once

// Loads a scan file during a run, with progress, so that a signal stops it.

#include <string>

#include "app/RunLog.h"
#include "app/RunSettings.h"
#include "export/xml/XMLReader.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel {

struct TLoadedScanFile {
  int fResult = 0;                  // an exit code
  TRef<IHierarchicalRoot> fRoot{};  // nullptr when nothing was loaded
};

// Loads the file and writes its notes, or why it cannot be loaded.
TLoadedScanFile LoadScanFile(const std::u16string& pFile, IScanRoots& pRoots, const TRunSettings& pSettings,
                             TRunLog& pLog);

}  // namespace Vantrel
