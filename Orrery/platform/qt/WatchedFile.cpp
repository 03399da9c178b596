#include "Orrery/platform/qt/WatchedFile.h"

#include <QFileInfo>

namespace orrery::platform {

WatchedFile::WatchedFile(QString path, QObject* parent) : QObject(parent), path_(std::move(path)) {
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] {
    rewatch();
    emit changed();
  });
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] {
    // Only a change that concerns the file: it came, went or was replaced.
    const bool watching = watcher_.files().contains(path_);
    rewatch();
    if (watching != watcher_.files().contains(path_) || !watching) emit changed();
  });
  rewatch();
}

void WatchedFile::rewatch() {
  const QFileInfo info(path_);
  if (info.exists() && !watcher_.files().contains(path_)) watcher_.addPath(path_);
  const QString folder = info.absolutePath();
  if (QFileInfo::exists(folder) && !watcher_.directories().contains(folder)) watcher_.addPath(folder);
}

}  // namespace orrery::platform
