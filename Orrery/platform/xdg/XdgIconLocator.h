// XdgIconLocator: the icon a desktop entry names in its Icon key, read the
// way GIO's GDesktopAppInfo reads it, so an app shows the icon every other
// menu shows for it.
//
// The key is a locale string: "Icon[de_CH]" and the other translations in
// the process's message languages come before plain "Icon". A value that
// is not an absolute path is a theme name; a ".png", ".xpm" or ".svg" at
// its end is dropped, as GIO drops it, because many entries write the file
// name where the name belongs. Entries are read by DesktopEntryFile, and
// by GLib's parser for the few it leaves to GLib.
//
// Thread rules: immutable after construction; icon() may run on any thread.
#pragma once

#include <string>
#include <vector>

#include "Orrery/appearance/IconLocator.h"

namespace orrery::platform {

class XdgIconLocator final : public app::IconLocator {
 public:
  // The translations looked at are those of GLib's language names
  // (g_get_language_names()), taken when the object is made.
  XdgIconLocator();

  std::string icon(const AppInfo& app) const override;

  // The icon named by the entry `bytes`, as icon() gives it.
  std::string iconOfEntry(const std::string& bytes) const;

 private:
  std::vector<std::string> keys_;  // "Icon[<language>]"…, then "Icon"
};

}  // namespace orrery::platform
