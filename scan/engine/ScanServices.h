#pragma once

// Factory and engine behind the interface that the roots know; the way from a root down to a branch.

#include "model/roots/RootInterfaces.h"

namespace Vantrel::ScanEngine {

// The enumerator factory and the scan engine behind the interface that the roots know.
Vantrel::TRef<Vantrel::IScanServices> CreateScanServices();

}  // namespace Vantrel::ScanEngine
