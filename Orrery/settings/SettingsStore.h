// SettingsStore: the one owner of the current Settings while the program
// runs.
//
// Loaded once at start from the platform's key-value store (one key,
// "settings", holding the record's JSON bytes) and written back on every
// assignment. Observers are told through settingsChanged() only when the
// record really changed. onChange(old, new) is the sync engine's hook: it is
// called on every local assignment, equal records included, and never while
// settings from another machine are being applied, so a change that came
// from elsewhere is not sent back out.
//
// Thread rules: main thread only; onChange is called synchronously inside
// the assignment.
#pragma once

#include <QObject>

#include <functional>

#include "OrreryCore/settings/KeyValueStore.h"
#include "OrreryCore/settings/Settings.h"
#include "OrreryCore/sync/SyncedSettings.h"

namespace orrery::app {

class SettingsStore final : public QObject {
  Q_OBJECT

 public:
  using ChangeCallback = std::function<void(const Settings& old, const Settings& current)>;

  // `defaults` must outlive the store.
  explicit SettingsStore(KeyValueStore& defaults, QObject* parent = nullptr);

  const Settings& settings() const { return settings_; }
  // Stores and saves the record; see above for who is told.
  void setSettings(Settings settings);

  // Takes the eight shared fields from another machine; the per-machine
  // fields stay. Nothing happens (not even a save) when nothing differs.
  void applyRemote(const SyncedSettings& synced);

  void setOnChange(ChangeCallback onChange) { onChange_ = std::move(onChange); }

 signals:
  void settingsChanged();

 private:
  Settings settings_;
  ChangeCallback onChange_;
  KeyValueStore& defaults_;
  bool applyingRemote_ = false;
};

}  // namespace orrery::app
