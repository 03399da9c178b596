// AppOpener: the system's way of starting an installed app, one blocking
// call per launch. AppLauncher runs it on a thread of its own and turns the
// outcome into signals and a sentence for the user.
//
// Implementations: GioAppOpener (desktop entries through GIO, Linux and
// other free desktops); WorkspaceOpener (bundles through the workspace, macOS).
// They say why a launch failed in terms the launcher can word for the user,
// and keep the system's own words for the log.
//
// Thread rules: open() may be called from any thread, several calls at once.
// It may block (a slow file system, a program that takes long to spawn), so
// never on the main thread.
#pragma once

#include <string>
#include <variant>

#include "OrreryCore/base/Expected.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

struct LaunchFailure {
  enum class Reason {
    entryMissing,          // the entry or bundle vanished since the scan
    entryInvalid,          // it can't be read, or it names nothing to start
    programMissing,        // the program it names is not there
    programNotExecutable,  // the program is there but may not be run
    other,                 // anything else; `detail` says what
  };

  Reason reason = Reason::other;
  // What went wrong in the system's words, for the log: GLib's message, an
  // errno text; for `other` also shown to the user.
  std::string detail;

  friend bool operator==(const LaunchFailure&, const LaunchFailure&) = default;
};

class AppOpener {
 public:
  virtual ~AppOpener() = default;

  // Starts `app` (its `url` is the entry's or bundle's path) and returns once
  // the system has taken it over: the program spawned or the activation sent.
  // Whether the app then gets as far as a window is not known here.
  virtual Expected<std::monostate, LaunchFailure> open(const AppInfo& app) const = 0;

 protected:
  AppOpener() = default;
  AppOpener(const AppOpener&) = default;
  AppOpener& operator=(const AppOpener&) = default;
};

}  // namespace orrery::app
