#include "Orrery/platform/macos/WorkspaceOpener.h"

#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace orrery::platform {

using app::LaunchFailure;

Expected<std::monostate, LaunchFailure> WorkspaceOpener::open(const AppInfo& app) const {
  const QString bundle = QString::fromStdString(app.url);
  // open says "does not exist" in a sentence of its own; an uninstalled app
  // is worth telling apart because the catalog drops it soon.
  if (!QFileInfo::exists(bundle))
    return Unexpected(LaunchFailure{LaunchFailure::Reason::entryMissing, "Bundle fehlt"});

  QProcess process;
  process.setProcessChannelMode(QProcess::SeparateChannels);
  process.setStandardInputFile(QProcess::nullDevice());
  // The path is absolute, so open cannot take it for an option.
  process.start(QStringLiteral("/usr/bin/open"), {bundle});
  // Launch Services answers within seconds even for a large app; a minute
  // means it hangs, and the user is better told than kept waiting.
  if (!process.waitForFinished(60'000)) {
    process.kill();
    process.waitForFinished();
    return Unexpected(LaunchFailure{LaunchFailure::Reason::other, process.errorString().toStdString()});
  }
  if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0) return std::monostate{};
  const QString said = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
  return Unexpected(LaunchFailure{LaunchFailure::Reason::other, said.toStdString()});
}

}  // namespace orrery::platform
