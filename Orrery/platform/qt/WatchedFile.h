// WatchedFile: tells when a configuration file may have changed, whether it
// is written in place, replaced by a rename (as KConfig and xfconf save),
// created or deleted.
//
// Qt's file watcher loses a file that is replaced or deleted, so the
// folder is watched as well and the file taken up again whenever it
// reappears.
//
// Thread rules: main thread (Qt's file watcher).
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

namespace orrery::platform {

class WatchedFile final : public QObject {
  Q_OBJECT

 public:
  explicit WatchedFile(QString path, QObject* parent = nullptr);

  const QString& path() const { return path_; }

 signals:
  void changed();

 private:
  void rewatch();

  QString path_;
  QFileSystemWatcher watcher_;
};

}  // namespace orrery::platform
