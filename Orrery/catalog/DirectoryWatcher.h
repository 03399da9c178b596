// DirectoryWatcher: tells the catalog that the application folders changed.
//
// Watches each root and its folders down to the scan depth, the way the
// scan walks them: names beginning with "." and app candidates are not
// looked into, and folders reached through a symbolic link are not followed
// (a root that is itself a link is watched through it). The set of folders
// changes as apps are installed, so the owner calls rearm() whenever the
// folders may have changed (before and after every scan): new folders are
// added, vanished ones dropped.
//
// A folder changes when entries come, go or are renamed in it, and also
// when a file in it is closed after writing: installers create an entry
// and fill it afterwards, and a scan that ran in between read it
// incomplete. A folder renamed or removed stops being watched under its
// path, so rearm() watches whatever takes its place.
//
// A root that does not exist yet (no ~/.local/share/applications on a fresh
// account) is waited for: its nearest existing parent is watched, and only a
// change that brings the root closer to existing counts, so unrelated
// traffic in a folder like ~/.local/share does not start scans.
//
// Changes are coalesced: the first one after a quiet period is reported at
// once, later ones are gathered and reported together `latency` after the
// previous report. A burst of installer activity thus costs one scan per
// latency period, and a single change is seen without delay.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Orrery/base/Clock.h"
#include "Orrery/platform/inotify/InotifyFolderWatch.h"

namespace orrery::app {

class DirectoryWatcher final : public QObject {
  Q_OBJECT

 public:
  using CandidateTest = std::function<bool(std::string_view name)>;

  DirectoryWatcher(std::vector<std::string> roots, int maxDepth, CandidateTest isCandidate, Clock& clock,
                   std::chrono::milliseconds latency, QObject* parent = nullptr);
  ~DirectoryWatcher() override;

  // Watches the folders as they are now. False when there are roots but not
  // one of them (nor a parent to wait in) can be watched.
  bool rearm();

  // The folders watched for changes, and the parents waited in, sorted.
  std::vector<std::string> watchedFolders() const;

 signals:
  // The folders changed; coalesced as described above.
  void changed();

 private:
  void folderChanged(const QString& path);
  void noteChange();
  void report();

  std::vector<std::string> roots_;
  int maxDepth_;
  CandidateTest isCandidate_;
  Clock& clock_;
  std::chrono::milliseconds latency_;

  platform::InotifyFolderWatch watcher_;
  std::set<QString> folders_;  // roots and their folders, watched for any change
  // Parents watched for missing roots, each with the roots waited for.
  std::map<QString, std::vector<QString>> waiting_;

  std::optional<Clock::MonotonicTime> lastReport_;
  ScheduledAction gathered_;
};

}  // namespace orrery::app
