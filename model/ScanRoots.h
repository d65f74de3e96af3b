#pragma once

#include <memory>

#include "model/GlobalOptions.h"
#include "model/RootInterfaces.h"

namespace Kiv {

// The list of open roots (TDSMCustomRoots). The options are copied at each scan's start.
TRef<IScanRoots> CreateScanRoots(TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions);

}  // namespace Kiv
