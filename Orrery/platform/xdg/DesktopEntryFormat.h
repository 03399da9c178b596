// DesktopEntryFormat: freedesktop desktop entries, the way installed
// applications are described on Linux desktops.
//
// The roots are "$XDG_DATA_HOME/applications", then "applications" in each
// "$XDG_DATA_DIRS" folder, with the XDG Base Directory defaults
// (~/.local/share; /usr/local/share:/usr/share) where a variable is unset,
// empty or relative. Flatpak's export folders are ordinary entries of
// XDG_DATA_DIRS; their entries are symbolic links, which are read through.
//
// A candidate is a file named "*.desktop". Its id is the desktop-file ID:
// the path below the root with "/" turned into "-" ("kde/konsole.desktop"
// gives "kde-konsole.desktop"). Entries are read the way GLib's key-file
// parser reads them and judged the way GIO's app listing judges them: an
// entry that cannot be parsed, does not start with [Desktop Entry], is not
// Type=Application, is Hidden, names a TryExec or Exec program that is not
// installed, is NoDisplay, or is excluded by OnlyShowIn/NotShowIn for the
// current desktops is not listed, yet it still claims its ID and so hides
// entries with that ID in later roots (that is how a user or administrator
// takes an app out of the menu). A desktop-file ID that is not UTF-8 is
// never listed either, since ids end up in JSON.
//
// name is the Name in the process's message language (LANGUAGE, LC_ALL,
// LC_MESSAGES, LANG, as every GLib program picks it), skipping empty
// translations, else the untranslated Name, else the file name without
// ".desktop". modified is the entry's modification time with links
// followed: Flatpak keeps the exported link and replaces what it points to.
//
// Depth: the scanner's depth rule counts folders below applications/, so
// with the default of 2, entries in applications/, applications/a/ and
// applications/a/b/ are found. GIO looks at any depth, but real systems use
// at most one level (the old kde4/ folders), and a bounded walk keeps the
// folder watcher bounded too. Names beginning with "." are skipped like on
// every platform.
//
// Reading: one scan looks each TryExec/Exec program up once, and opens the
// entries of a folder relative to the folder. Entries are read by
// DesktopEntryFile, which answers as GLib's key-file parser does without
// storing every line in hash tables first; the few files it leaves to GLib
// (carriage returns, control characters, keys outside ASCII and the like)
// go through GLib's parser, and the same code judges both.
//
// Thread rules: immutable after construction; scans may start on any
// thread, each with its own reader.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "OrreryCore/catalog/BundleFormat.h"

namespace orrery::platform {

// The parts of the process environment that decide which entries are apps.
struct DesktopEnvironment {
  std::string dataHome;                      // XDG_DATA_HOME, resolved
  std::vector<std::string> dataDirs;         // XDG_DATA_DIRS, resolved, in order
  std::vector<std::string> currentDesktops;  // XDG_CURRENT_DESKTOP split at ":"
  std::string searchPath;                    // PATH, for TryExec and Exec

  // From variables looked up by name (nullptr for unset), with the XDG Base
  // Directory defaults. HOME is needed only where a default uses it.
  static DesktopEnvironment fromVariables(const std::function<const char*(const char*)>& lookup);

  friend bool operator==(const DesktopEnvironment&, const DesktopEnvironment&) = default;
};

class DesktopEntryFormat final : public BundleFormat {
 public:
  explicit DesktopEntryFormat(DesktopEnvironment environment);

  std::vector<std::string> defaultRoots() const override;
  bool isCandidate(std::string_view name) const override;
  Kind candidateKind() const override { return Kind::regularFile; }
  std::unique_ptr<Reader> startScan() const override;

  const DesktopEnvironment& environment() const { return environment_; }

 private:
  DesktopEnvironment environment_;
};

}  // namespace orrery::platform
