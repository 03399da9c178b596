// DesktopHotCorners: the corners the desktop itself acts on, in the form
// the core's SystemHotCorners reads (the Dock's "wvous-…-corner" keys, where
// a value above 1 means the corner has an action).
//
// - GNOME: org.gnome.desktop.interface enable-hot-corners, read through
//   GSettings only where that schema is installed (GSettings aborts the
//   program on an unknown schema); GNOME Shell's hot corner is the top left.
// - KDE Plasma: kwinrc, the user's file before the system's. [ElectricBorders]
//   names an action per corner ("None" for none); an effect's BorderActivate
//   lists the screen edges that start it (KWin's numbering: 1 top right,
//   3 bottom right, 5 bottom left, 7 top left). In a Plasma session without
//   any setting, the top left opens the Overview, as Plasma ships it.
//
// Thread rules: read() touches GSettings and files; call from the main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OrreryCore/triggers/SystemHotCorners.h"

namespace orrery::platform {

struct DesktopHotCorners {
  // The kwinrc files to read, the most important first.
  std::vector<std::string> kwinrcFiles;
  bool plasmaSession = false;
  // GNOME's setting counts only where GNOME Shell runs; elsewhere its
  // schema may be installed without anyone acting on it.
  bool gnomeSession = false;

  DockDefaults read() const;

  // The KDE part alone, from the text of kwinrc files (most important
  // first) and whether the session is Plasma's.
  static DockDefaults fromKWin(const std::vector<std::string>& kwinrcTexts, bool plasmaSession);
  // GNOME's setting, when the schema is installed; false otherwise.
  static bool gnomeHotCornerEnabled();
  // What the settings say when the desktop already uses the corner.
  static std::string warning();
};

}  // namespace orrery::platform
