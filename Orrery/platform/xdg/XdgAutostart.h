// XdgAutostart: launch at login through an XDG autostart entry,
// "orrery.desktop" in "$XDG_CONFIG_HOME/autostart" (~/.config/autostart
// when the variable is unset or relative).
//
// The desktop session starts every entry it finds there or in the
// "autostart" folder of an $XDG_CONFIG_DIRS folder (/etc/xdg by default),
// the user's entry masking a system-wide one of the same name; an entry with
// Hidden=true, or X-GNOME-Autostart-enabled=false, starts nothing. status()
// reads the entries the same way, so it reports what the session will do,
// whoever wrote them. Turning it off removes the user's entry and, when a
// system-wide entry would still start the program, masks it with a Hidden
// entry.
//
// The entry names the executable by its absolute path, quoted by the rules
// of the Exec key, so paths with spaces or "$" survive.
//
// Thread rules: main thread only.
#pragma once

#include <QString>
#include <QStringList>

#include <string>
#include <variant>

#include "Orrery/platform/xdg/XdgDirectories.h"
#include "Orrery/settings/LoginItem.h"
#include "OrreryCore/base/Expected.h"

namespace orrery::platform {

class XdgAutostart final : public app::LoginItem {
 public:
  static constexpr const char* entryName = "orrery.desktop";

  struct Locations {
    QString configHome;      // $XDG_CONFIG_HOME, resolved
    QStringList configDirs;  // $XDG_CONFIG_DIRS, resolved, in priority order
  };
  static Locations from(const XdgDirectories& folders);

  XdgAutostart(Locations locations, QString executable);

  Expected<std::monostate, std::string> registerItem() override;
  Expected<std::monostate, std::string> unregisterItem() override;
  Status status() const override;

  // The user's entry, the one this class writes.
  QString userEntry() const;

  // The Exec value that runs `program` without arguments.
  static QString execValue(const QString& program);

 private:
  Expected<std::monostate, std::string> writeUserEntry(bool hidden) const;

  Locations locations_;
  QString executable_;
};

}  // namespace orrery::platform
