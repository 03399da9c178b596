// WorkspaceOpener: starts an .app bundle the way the Finder does, by handing
// its URL to the workspace (Launch Services) through /usr/bin/open.
//
// Launch Services starts the bundle's executable itself, or brings the app
// forward when it already runs; nothing here reads Info.plist or runs the
// executable directly. The path goes to open as one argument, never through
// a shell.
//
// Thread rules: open() may be called from any thread, several calls at
// once; it waits for the open command, which returns once the app is
// launched or refused.
#pragma once

#include <variant>

#include "Orrery/overlay/AppOpener.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::platform {

class WorkspaceOpener final : public app::AppOpener {
 public:
  Expected<std::monostate, app::LaunchFailure> open(const AppInfo& app) const override;
};

}  // namespace orrery::platform
