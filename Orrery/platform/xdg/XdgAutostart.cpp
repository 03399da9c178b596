#include "Orrery/platform/xdg/XdgAutostart.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace orrery::platform {

namespace {

enum class EntryState { missing, starts, startsNothing };

// What the session makes of the autostart entry at `path`.
EntryState readEntry(const QString& path) {
  QFile file(path);
  if (!file.exists()) return EntryState::missing;
  // An entry the session cannot read starts nothing, yet still masks
  // entries of the same name further down.
  if (!file.open(QIODevice::ReadOnly)) return EntryState::startsNothing;
  bool inMainGroup = false;
  bool sawMainGroup = false;
  bool hidden = false;
  bool disabled = false;
  while (!file.atEnd()) {
    const QByteArray line = file.readLine().trimmed();
    if (line.isEmpty() || line.startsWith('#')) continue;
    if (line.startsWith('[')) {
      inMainGroup = line == "[Desktop Entry]";
      sawMainGroup = sawMainGroup || inMainGroup;
      continue;
    }
    if (!inMainGroup) continue;
    const qsizetype equals = line.indexOf('=');
    if (equals < 0) continue;
    const QByteArray key = line.left(equals).trimmed();
    const QByteArray value = line.mid(equals + 1).trimmed();
    if (key == "Hidden") hidden = value == "true";
    if (key == "X-GNOME-Autostart-enabled") disabled = value == "false";
  }
  return sawMainGroup && !hidden && !disabled ? EntryState::starts : EntryState::startsNothing;
}

}  // namespace

XdgAutostart::Locations XdgAutostart::from(const XdgDirectories& folders) {
  Locations locations;
  locations.configHome = QString::fromStdString(folders.configHome);
  for (const std::string& folder : folders.configDirs)
    locations.configDirs.push_back(QString::fromStdString(folder));
  return locations;
}

XdgAutostart::XdgAutostart(Locations locations, QString executable)
    : locations_(std::move(locations)), executable_(std::move(executable)) {}

QString XdgAutostart::userEntry() const {
  return locations_.configHome + QStringLiteral("/autostart/") + QLatin1String(entryName);
}

QString XdgAutostart::execValue(const QString& program) {
  QString quoted = QStringLiteral("\"");
  for (const QChar c : program) {
    if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
      quoted += QLatin1Char('\\');
    quoted += c;
  }
  quoted += QLatin1Char('"');
  // A single % would start a field code.
  quoted.replace(QStringLiteral("%"), QStringLiteral("%%"));
  // The key file's own escaping comes on top of the Exec quoting.
  quoted.replace(QStringLiteral("\\"), QStringLiteral("\\\\"));
  return quoted;
}

Expected<std::monostate, std::string> XdgAutostart::writeUserEntry(bool hidden) const {
  if (locations_.configHome.isEmpty()) return Unexpected(std::string("No home folder"));
  const QString folder = locations_.configHome + QStringLiteral("/autostart");
  if (!QDir().mkpath(folder)) {
    return Unexpected(QStringLiteral("The folder %1 can't be created.").arg(folder).toStdString());
  }
  QString content = QStringLiteral("[Desktop Entry]\nType=Application\nName=Orrery\n");
  if (hidden) {
    content += QStringLiteral("Hidden=true\n");
  } else {
    content += QStringLiteral("Exec=") + execValue(executable_) +
               QStringLiteral("\nTerminal=false\nX-GNOME-Autostart-enabled=true\n");
  }
  QSaveFile file(userEntry());
  if (!file.open(QIODevice::WriteOnly)) return Unexpected(file.errorString().toStdString());
  const QByteArray bytes = content.toUtf8();
  if (file.write(bytes) != bytes.size() || !file.commit())
    return Unexpected(file.errorString().toStdString());
  return std::monostate{};
}

Expected<std::monostate, std::string> XdgAutostart::registerItem() { return writeUserEntry(false); }

Expected<std::monostate, std::string> XdgAutostart::unregisterItem() {
  QFile entry(userEntry());
  if (entry.exists() && !entry.remove()) return Unexpected(entry.errorString().toStdString());
  // A system-wide entry of the same name would still start the program.
  if (status() == Status::enabled) return writeUserEntry(true);
  return std::monostate{};
}

app::LoginItem::Status XdgAutostart::status() const {
  QStringList folders;
  if (!locations_.configHome.isEmpty()) folders.push_back(locations_.configHome);
  folders.append(locations_.configDirs);
  for (const QString& folder : folders) {
    const EntryState state = readEntry(folder + QStringLiteral("/autostart/") + QLatin1String(entryName));
    if (state != EntryState::missing)
      return state == EntryState::starts ? Status::enabled : Status::notRegistered;
  }
  return Status::notRegistered;
}

}  // namespace orrery::platform
