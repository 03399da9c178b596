#include "Orrery/settings/QSettingsKeyValueStore.h"

#include <QByteArray>
#include <QVariant>

#include "Orrery/base/Logging.h"

namespace orrery::app {

QSettingsKeyValueStore::QSettingsKeyValueStore() : settings_(std::make_unique<QSettings>()) {}

QSettingsKeyValueStore::QSettingsKeyValueStore(const QString& iniFile)
    : settings_(std::make_unique<QSettings>(iniFile, QSettings::IniFormat)) {}

std::optional<std::string> QSettingsKeyValueStore::data(const std::string& key) const {
  const QVariant value = settings_->value(QString::fromStdString(key));
  if (!value.isValid()) return std::nullopt;
  return value.toByteArray().toStdString();
}

void QSettingsKeyValueStore::setData(const std::string& key, std::string bytes) {
  settings_->setValue(QString::fromStdString(key), QByteArray::fromStdString(bytes));
  settings_->sync();
  if (settings_->status() != QSettings::NoError) {
    qCWarning(settingsLog, "Einstellungen konnten nicht gespeichert werden: %s",
              qUtf8Printable(settings_->fileName()));
  }
}

}  // namespace orrery::app
