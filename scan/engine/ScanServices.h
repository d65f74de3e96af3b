#pragma once

// The kinds of storage and the scan engine, behind the interface that the roots know.

#include "model/roots/RootInterfaces.h"

namespace Vantrel::ScanEngine {

Vantrel::TRef<Vantrel::IScanServices> CreateScanServices();

}  // namespace Vantrel::ScanEngine
