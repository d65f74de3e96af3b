#pragma once

#include "model/roots/RootInterfaces.h"

namespace Vantrel::ScanEngine {

// The enumerator factory and the scan engine behind the interface that the roots know.
Kiv::TRef<Kiv::IScanServices> CreateScanServices();

}  // namespace Vantrel::ScanEngine
