// PlatformFactory: the one place that knows which platform the program
// runs on. Everything else is handed the adapters made here and never asks.
//
// Thread rules: call from any thread; the results are immutable.
#pragma once

#include <memory>

#include "catalog/AppScanner.h"
#include "catalog/BundleFormat.h"
#include "storage/LayoutStore.h"

namespace orrery::platform {

// How installed applications look here: .app bundles on macOS, desktop
// entries elsewhere, configured from the process environment.
std::shared_ptr<const BundleFormat> makeBundleFormat();

// The scanner the application uses: the format's default roots at the
// default depth.
AppScanner makeAppScanner();

// Where this platform keeps per-user application data: the XDG data home
// on Linux, the application-support folder on macOS.
LayoutStore::DataLocation dataLocation();

}  // namespace orrery::platform
