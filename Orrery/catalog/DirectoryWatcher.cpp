#include "Orrery/catalog/DirectoryWatcher.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace orrery::app {

namespace {

QString fromNative(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(path)); }
std::string toNative(const QString& path) { return QFile::encodeName(path).toStdString(); }

bool isFolder(const QString& path) { return QFileInfo(path).isDir(); }

// The nearest existing folder above `path`, or nothing when not even "/" is.
std::optional<QString> nearestExistingParent(const QString& path) {
  QString current = path;
  while (current != QStringLiteral("/")) {
    const qsizetype slash = current.lastIndexOf(QLatin1Char('/'));
    if (slash < 0) return std::nullopt;
    current = slash == 0 ? QStringLiteral("/") : current.left(slash);
    if (isFolder(current)) return current;
  }
  return std::nullopt;
}

}  // namespace

DirectoryWatcher::DirectoryWatcher(std::vector<std::string> roots, int maxDepth, CandidateTest isCandidate,
                                   Clock& clock, std::chrono::milliseconds latency, QObject* parent)
    : QObject(parent),
      roots_(std::move(roots)),
      maxDepth_(maxDepth),
      isCandidate_(std::move(isCandidate)),
      clock_(clock),
      latency_(latency) {
  connect(&watcher_, &platform::InotifyFolderWatch::folderChanged, this, &DirectoryWatcher::folderChanged);
}

DirectoryWatcher::~DirectoryWatcher() = default;

bool DirectoryWatcher::rearm() {
  std::set<QString> folders;
  std::map<QString, std::vector<QString>> waiting;

  // The folders the scan opens: the root and, below it, every folder down to
  // the scan depth that the scan would enter.
  const std::function<void(const QString&, int)> collect = [&](const QString& folder, int level) {
    folders.insert(folder);
    if (level >= maxDepth_) return;
    const QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Unsorted);
    for (const QFileInfo& entry : entries) {
      if (isCandidate_ && isCandidate_(toNative(entry.fileName()))) continue;
      collect(entry.filePath(), level + 1);
    }
  };

  for (const std::string& root : roots_) {
    const QString path = QDir::cleanPath(fromNative(root));
    if (isFolder(path)) {
      collect(path, 0);
    } else if (const auto parent = nearestExistingParent(path)) {
      waiting[*parent].push_back(path);
    }
  }

  const QStringList watched = watcher_.folders();
  const std::set<QString> current(watched.begin(), watched.end());
  QStringList toRemove;
  for (const QString& folder : current) {
    if (!folders.contains(folder) && !waiting.contains(folder)) toRemove.push_back(folder);
  }
  std::set<QString> wanted = folders;
  for (const auto& [parent, missing] : waiting) wanted.insert(parent);
  QStringList toAdd;
  for (const QString& folder : wanted) {
    if (!current.contains(folder)) toAdd.push_back(folder);
  }

  if (!toRemove.isEmpty()) watcher_.removeFolders(toRemove);
  if (!toAdd.isEmpty()) {
    // A folder can vanish between listing and watching, or the system's
    // watch limit can be reached; such folders are simply not watched.
    for (const QString& failed : watcher_.addFolders(toAdd)) {
      folders.erase(failed);
      waiting.erase(failed);
    }
  }
  folders_ = std::move(folders);
  waiting_ = std::move(waiting);
  return roots_.empty() || !folders_.empty() || !waiting_.empty();
}

std::vector<std::string> DirectoryWatcher::watchedFolders() const {
  std::vector<std::string> result;
  for (const QString& folder : folders_) result.push_back(toNative(folder));
  for (const auto& [parent, missing] : waiting_) result.push_back(toNative(parent));
  std::sort(result.begin(), result.end());
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

void DirectoryWatcher::folderChanged(const QString& path) {
  if (folders_.contains(path)) {
    noteChange();
    return;
  }
  const auto waited = waiting_.find(path);
  if (waited == waiting_.end()) return;
  const bool closer = std::any_of(waited->second.begin(), waited->second.end(), [&](const QString& root) {
    return isFolder(root) || nearestExistingParent(root) != path;
  });
  if (!closer) return;
  rearm();
  noteChange();
}

void DirectoryWatcher::noteChange() {
  if (gathered_.isSet()) return;  // a report is already due
  const Clock::MonotonicTime now = clock_.monotonicNow();
  if (!lastReport_ || now - *lastReport_ >= latency_) {
    report();
    return;
  }
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(latency_ - (now - *lastReport_));
  gathered_ = clock_.runAfter(wait, [this] { report(); });
}

void DirectoryWatcher::report() {
  gathered_ = ScheduledAction();
  lastReport_ = clock_.monotonicNow();
  emit changed();
}

}  // namespace orrery::app
