#include "Orrery/settings/SettingsStore.h"

#include <utility>

namespace orrery::app {

SettingsStore::SettingsStore(KeyValueStore& defaults, QObject* parent)
    : QObject(parent), settings_(Settings::load(defaults)), defaults_(defaults) {}

void SettingsStore::setSettings(Settings settings) {
  const Settings old = std::exchange(settings_, std::move(settings));
  if (old != settings_) emit settingsChanged();
  settings_.save(defaults_);
  if (!applyingRemote_ && onChange_) onChange_(old, settings_);
}

void SettingsStore::applyRemote(const SyncedSettings& synced) {
  Settings merged = settings_.applying(synced);
  if (merged == settings_) return;
  applyingRemote_ = true;
  setSettings(std::move(merged));
  applyingRemote_ = false;
}

}  // namespace orrery::app
