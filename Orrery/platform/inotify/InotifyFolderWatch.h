// InotifyFolderWatch: which of a set of folders changed, from the kernel's
// inotify events.
//
// A folder counts as changed when an entry in it appears, disappears, is
// renamed or has its attributes changed, when a file in it that was open
// for writing is closed, and when the folder itself goes away. The closed
// write is why this is not QFileSystemWatcher: its folder watches leave out
// IN_CLOSE_WRITE (and IN_MODIFY), so an entry created empty and filled
// afterwards, which is how most programs write a file, shows up only as
// the empty file being created. A scan started by that event can read the
// entry before it is complete, and nothing would ever say to read it again.
//
// Folders are watched through symbolic links. Two paths that lead to the
// same folder share one kernel watch; each is reported. A folder that goes
// away stops being watched by itself: folders() no longer names it, so
// whoever keeps the set of folders sees that it needs adding again.
//
// Thread rules: main thread (the thread it lives in) only.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

class QSocketNotifier;

namespace orrery::platform {

class InotifyFolderWatch final : public QObject {
  Q_OBJECT

 public:
  explicit InotifyFolderWatch(QObject* parent = nullptr);
  ~InotifyFolderWatch() override;

  // Starts watching `folders`; returns those that cannot be watched (gone,
  // not a folder, the system's watch limit reached, no inotify at all).
  QStringList addFolders(const QStringList& folders);
  void removeFolders(const QStringList& folders);
  // The folders watched now.
  QStringList folders() const;

 signals:
  // Once for each watched folder that changed since the last time the
  // kernel's events were read.
  void folderChanged(const QString& folder);

 private:
  void readEvents();
  void forget(int watch);

  int fd_ = -1;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::map<QString, int> watchOf_;
  std::map<int, std::vector<QString>> foldersOf_;
};

}  // namespace orrery::platform
