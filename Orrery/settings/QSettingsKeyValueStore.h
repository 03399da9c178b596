// QSettingsKeyValueStore: the KeyValueStore of the program, Qt's
// application settings (an INI file under $XDG_CONFIG_HOME on Linux, the
// user defaults on macOS). Values are stored as byte arrays, so the JSON of
// the settings record is kept byte for byte.
//
// Every write is flushed at once: the record is written rarely, and a crash
// right after a change must not lose it.
//
// Thread rules: main thread only.
#pragma once

#include <QSettings>
#include <QString>

#include <memory>
#include <optional>
#include <string>

#include "OrreryCore/settings/KeyValueStore.h"

namespace orrery::app {

class QSettingsKeyValueStore final : public KeyValueStore {
 public:
  // The application's own settings (organization and application name of
  // the QCoreApplication).
  QSettingsKeyValueStore();
  // An INI file at the given path, for tests and tools.
  explicit QSettingsKeyValueStore(const QString& iniFile);

  std::optional<std::string> data(const std::string& key) const override;
  void setData(const std::string& key, std::string bytes) override;

 private:
  std::unique_ptr<QSettings> settings_;
};

}  // namespace orrery::app
