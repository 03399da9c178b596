// GioAppOpener: starts the app of a desktop entry the way the desktop's own
// launchers do, through GIO's GDesktopAppInfo.
//
// GIO reads the entry at the app's path (TryExec, Path, Terminal,
// DBusActivatable), expands the Exec line's field codes into an argument
// vector and spawns that directly. No shell ever sees the command line, and
// none is built here, so quotes, "$", "~" and spaces in an entry mean what
// the entry says and nothing more. Terminal=true entries get the terminal
// GIO finds; D-Bus activatable ones are activated over the session bus when
// there is one. GIO refuses an entry whose program cannot run without
// saying why; the entry is then read once more to tell a missing program
// from one that may not run and from a broken entry.
//
// The started program is the user's, not ours: it gets our environment without the one-shot startup tokens we
// were started with, none of our open files (GLib closes them), every signal at its default and none blocked,
// and it is never left as a zombie (GLib spawns it through an intermediate process it reaps at once, so its
// parent is the session's reaper, not us).
//
// Startup notification: the launch context is a plain GAppLaunchContext,
// which hands out no startup ID, so the window manager shows no busy
// pointer for the launch.
//
// Thread rules: open() may be called from any thread, several calls at
// once; each call uses GIO objects of its own, and one that hangs on an
// entry that cannot be read holds up only itself.
#pragma once

#include <variant>

#include "Orrery/overlay/AppOpener.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::platform {

class GioAppOpener final : public app::AppOpener {
 public:
  Expected<std::monostate, app::LaunchFailure> open(const AppInfo& app) const override;
};

}  // namespace orrery::platform
