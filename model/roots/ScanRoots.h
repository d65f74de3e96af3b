#pragma once

// The list of open roots, and the interpretation of typed paths.

#include <memory>

#include "model/options/GlobalOptions.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel {

// Creates the list of open roots (TDSMCustomRoots). The options are copied at each scan's start.
TRef<IScanRoots> CreateScanRoots(TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions);

}  // namespace Vantrel
