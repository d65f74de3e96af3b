#pragma once

// Creates the scan services, which connect the roots to the enumerator factory and the scan engine.

#include "model/roots/RootInterfaces.h"

namespace Vantrel::ScanEngine {

// Makes the enumerator factory and the scan engine available through the interface that the roots use.
Vantrel::TRef<Vantrel::IScanServices> CreateScanServices();

}  // namespace Vantrel::ScanEngine
