// RunningDesktopApps: which of the given apps have a process running now,
// found through /proc.
//
// A process belongs to an app when it was started from the app's desktop
// entry (GIO and the desktops' launchers put the entry's path into the
// child's GIO_LAUNCHED_DESKTOP_FILE) or when it runs the entry's executable
// (the Exec line's program, resolved through PATH by GIO), which also
// catches apps started from a terminal. Processes the user may not read are
// someone else's and are skipped.
//
// Thread rules: reads /proc and the entries on the calling thread; any
// thread.
#pragma once

#include <filesystem>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::platform {

AppIDSet runningDesktopApps(const std::vector<AppInfo>& apps,
                            const std::filesystem::path& procRoot = "/proc");

}  // namespace orrery::platform
