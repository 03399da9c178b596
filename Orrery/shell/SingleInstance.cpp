#include "Orrery/shell/SingleInstance.h"

#include <QDir>
#include <QFile>

namespace orrery::app {

InstanceClaim claimDataDirectory(const std::filesystem::path& directory) {
  const QString folder = QFile::decodeName(QByteArray::fromStdString(directory.string()));
  if (!QDir().mkpath(folder)) return {};
  auto lock = std::make_unique<QLockFile>(folder + QStringLiteral("/.orrery.lock"));
  // Held for the life of the program: only a dead owner makes it stale,
  // never its age.
  lock->setStaleLockTime(0);
  if (lock->tryLock(0)) return {std::move(lock), false};
  return {nullptr, lock->error() == QLockFile::LockFailedError};
}

}  // namespace orrery::app
