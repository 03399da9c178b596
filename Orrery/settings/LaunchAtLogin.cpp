#include "Orrery/settings/LaunchAtLogin.h"

#include "OrreryCore/text/Localized.h"

namespace orrery::app {

LaunchAtLogin::LaunchAtLogin(SettingsStore& settings, LoginItem& item, QObject* parent)
    : QObject(parent), settings_(settings), item_(item) {}

void LaunchAtLogin::set(bool on) {
  const auto result = on ? item_.registerItem() : item_.unregisterItem();
  if (!result) {
    message_ = (on ? text::localized("Couldn't turn on launch at login: ",
                                     "Settings, General: followed by the system's reason")
                   : text::localized("Couldn't turn off launch at login: ",
                                     "Settings, General: followed by the system's reason")) +
               result.error();
  } else {
    message_.clear();
  }
  refresh();
  emit messageChanged();
}

void LaunchAtLogin::refresh() {
  bool enabled = false;
  std::string note;
  switch (item_.status()) {
    case LoginItem::Status::enabled:
      enabled = true;
      break;
    case LoginItem::Status::requiresApproval:
      enabled = true;
      note = text::localized("Please allow it in System Settings (General → Login Items).",
                             "Settings, General: launch at login awaits the user's approval");
      break;
    case LoginItem::Status::notRegistered:
    case LoginItem::Status::notFound:
      break;
  }
  if (note != note_) {
    note_ = std::move(note);
    emit messageChanged();
  }
  if (settings_.settings().launchAtLogin != enabled) {
    Settings updated = settings_.settings();
    updated.launchAtLogin = enabled;
    settings_.setSettings(std::move(updated));
  }
}

}  // namespace orrery::app
