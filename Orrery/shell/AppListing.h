// AppListing: "orrery --list-apps", for people asking why an app is
// missing.
//
// Scans the way the running program does and prints one line per app in
// the order the overlay shows them: the saved arrangement (read, never
// written, never moved aside when damaged) reconciled with the scan, apps
// in a folder after a "# Folder: NAME" line. Each line is the app's ID, name
// and file, separated by tabs. With `all`, the entries the overlay leaves
// out follow, each with its reason: hidden in Orrery, or what the entry
// itself says (NoDisplay, Hidden, OnlyShowIn/NotShowIn, TryExec, ...), or
// an entry with the same ID in an earlier folder that masks it.
//
// Thread rules: any thread; reads the disk, touches no running program.
#pragma once

#include <filesystem>
#include <ostream>

#include "OrreryCore/catalog/AppScanner.h"

namespace orrery::app {

// Writes the listing to `out`, problems (an unreadable arrangement) to
// `errors`; returns the process's exit status.
int listApps(const AppScanner& scanner, const std::filesystem::path& layoutFile, bool all, std::ostream& out,
             std::ostream& errors);

}  // namespace orrery::app
