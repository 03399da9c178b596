#include "Orrery/platform/inotify/InotifyFolderWatch.h"

#include <QFile>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>

namespace orrery::platform {

namespace {

// IN_MODIFY is left out on purpose: a large write would report its folder
// once per chunk, each time with the file still incomplete; the close after
// it is what says the file can be read.
constexpr std::uint32_t kFolderEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB |
                                        IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

}  // namespace

InotifyFolderWatch::InotifyFolderWatch(QObject* parent)
    : QObject(parent), fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (fd_ < 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(fd_, QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, &InotifyFolderWatch::readEvents);
}

InotifyFolderWatch::~InotifyFolderWatch() {
  notifier_.reset();
  if (fd_ >= 0) ::close(fd_);
}

QStringList InotifyFolderWatch::addFolders(const QStringList& folders) {
  QStringList failed;
  for (const QString& folder : folders) {
    if (watchOf_.contains(folder)) continue;
    const int watch =
        fd_ < 0 ? -1 : inotify_add_watch(fd_, QFile::encodeName(folder).constData(), kFolderEvents);
    if (watch < 0) {
      failed.push_back(folder);
      continue;
    }
    watchOf_.emplace(folder, watch);
    foldersOf_[watch].push_back(folder);
  }
  return failed;
}

void InotifyFolderWatch::removeFolders(const QStringList& folders) {
  for (const QString& folder : folders) {
    const auto found = watchOf_.find(folder);
    if (found == watchOf_.end()) continue;
    const int watch = found->second;
    watchOf_.erase(found);
    std::vector<QString>& sharing = foldersOf_[watch];
    std::erase(sharing, folder);
    if (!sharing.empty()) continue;
    foldersOf_.erase(watch);
    inotify_rm_watch(fd_, watch);
  }
}

QStringList InotifyFolderWatch::folders() const {
  QStringList result;
  for (const auto& [folder, watch] : watchOf_) result.push_back(folder);
  return result;
}

void InotifyFolderWatch::forget(int watch) {
  const auto found = foldersOf_.find(watch);
  if (found == foldersOf_.end()) return;
  for (const QString& folder : found->second) watchOf_.erase(folder);
  foldersOf_.erase(found);
}

void InotifyFolderWatch::readEvents() {
  // Everything waiting is read before anything is reported, so a folder
  // that went away is already forgotten when a listener re-arms in
  // response, and is then added again if it came back.
  std::set<QString> changed;
  alignas(inotify_event) char buffer[16 * 1024];
  for (;;) {
    const ssize_t got = ::read(fd_, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    const char* const end = buffer + got;
    for (const char* at = buffer; at < end;) {
      const auto* event = reinterpret_cast<const inotify_event*>(at);
      at += sizeof(inotify_event) + event->len;
      // An overflow (wd -1) needs nothing of its own: the queue fills only
      // behind thousands of unread events, each reporting its folder, and
      // the scan they start reads the folders after the lost ones happened.
      const auto folders = foldersOf_.find(event->wd);
      if (folders == foldersOf_.end()) continue;
      changed.insert(folders->second.begin(), folders->second.end());
      if (event->mask & IN_MOVE_SELF) {
        // The watch would follow the folder to wherever it went and go on
        // reporting it under the old path, while whatever takes its place
        // there went unwatched.
        inotify_rm_watch(fd_, event->wd);
        forget(event->wd);
      } else if (event->mask & (IN_DELETE_SELF | IN_IGNORED | IN_UNMOUNT)) {
        forget(event->wd);
      }
    }
  }
  for (const QString& folder : changed) emit folderChanged(folder);
}

}  // namespace orrery::platform
