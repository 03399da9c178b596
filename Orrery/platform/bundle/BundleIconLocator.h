// BundleIconLocator: the icon file of a macOS application bundle, the one
// Finder shows.
//
// Its name is CFBundleIconFile in "Contents/Info.plist" (XML or binary),
// with ".icns" added when it has no extension, inside
// "Contents/Resources". Apps built with an asset catalog name their icon
// with CFBundleIconName instead and keep it in Assets.car, which no image
// reader here understands; most of them still ship "<name>.icns" beside
// it for older systems, so that file is taken when it exists. Anything
// else gives no icon, and the app shows the generic one.
//
// Thread rules: immutable; icon() may run on any thread.
#pragma once

#include <string>
#include <string_view>

#include "Orrery/appearance/IconLocator.h"

namespace orrery::platform {

class BundleIconLocator final : public app::IconLocator {
 public:
  std::string icon(const AppInfo& app) const override;

  // The icon the Info.plist `bytes` names for the bundle at `bundlePath`.
  static std::string iconOfBundle(const std::string& bundlePath, std::string_view infoPlist);
};

}  // namespace orrery::platform
