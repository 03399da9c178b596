// LaunchAtLogin: keeps the settings' launchAtLogin in step with what the
// system will really do at the next login.
//
// set() registers or unregisters the program, reports a failure as a
// message for the settings window, then reads the registration back and
// writes what it found into the settings record. refresh() does only the
// reading back, at start and whenever the settings are shown, since the user
// can change the registration outside the program.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>

#include <string>

#include "Orrery/settings/LoginItem.h"
#include "Orrery/settings/SettingsStore.h"

namespace orrery::app {

class LaunchAtLogin final : public QObject {
  Q_OBJECT

 public:
  // Both must outlive this object.
  LaunchAtLogin(SettingsStore& settings, LoginItem& item, QObject* parent = nullptr);

  void set(bool on);
  void refresh();

  // Why the last set() failed ("Couldn't turn on launch at login: …"); empty after success.
  const std::string& message() const { return message_; }
  // A hint about the registration's state (it awaits the user's approval); empty when none.
  const std::string& note() const { return note_; }

 signals:
  void messageChanged();

 private:
  SettingsStore& settings_;
  LoginItem& item_;
  std::string message_;
  std::string note_;
};

}  // namespace orrery::app
