#include "Orrery/catalog/AppCatalog.h"

#include <QMetaObject>
#include <QThread>

#include <algorithm>
#include <mutex>

#include "Orrery/base/Logging.h"
#include "Orrery/platform/posix/ProcessEnvironment.h"
#include "OrreryCore/catalog/ScanGuard.h"

namespace orrery::app {

// Where a finished scan delivers its result. The catalog unhooks itself when
// it is destroyed, under the lock, so a scan thread never posts to a
// catalog that is going away.
struct AppCatalog::Mailbox {
  std::mutex mutex;
  AppCatalog* catalog = nullptr;
};

namespace {

long count(std::size_t n) { return static_cast<long>(n); }

}  // namespace

AppCatalog::AppCatalog(std::shared_ptr<const Scanner> scanner, ArrangementController& arrangement,
                       Clock& clock, QObject* parent)
    : QObject(parent),
      scanner_(std::move(scanner)),
      arrangement_(arrangement),
      clock_(clock),
      mailbox_(std::make_shared<Mailbox>()) {
  mailbox_->catalog = this;
  pool_.setMaxThreadCount(1);
  pool_.setThreadPriority(QThread::LowPriority);
  // The thread stays for the next scan instead of waking up to expire.
  pool_.setExpiryTimeout(-1);
}

AppCatalog::~AppCatalog() {
  std::lock_guard lock(mailbox_->mutex);
  mailbox_->catalog = nullptr;
}

void AppCatalog::start() {
  if (started_) return;
  started_ = true;
  // Watching starts before the first scan, so nothing that changes while it
  // runs goes unnoticed.
  watcher_ = std::make_unique<DirectoryWatcher>(
      scanner_->roots(), scanner_->maxDepth(),
      [scanner = scanner_](std::string_view name) { return scanner->isCandidate(name); }, clock_,
      watchLatency);
  connect(watcher_.get(), &DirectoryWatcher::changed, this, &AppCatalog::foldersChanged);
  if (!watcher_->rearm()) {
    qCCritical(catalogLog,
               "FSEvents-Beobachtung konnte nicht gestartet werden; Änderungen werden nicht erkannt");
    watcher_.reset();
  }
  rescan(false);
}

void AppCatalog::foldersChanged() { rescan(false); }

void AppCatalog::rescan(bool confirming) {
  if (scanInFlight_) {
    scanDirty_ = true;
    if (confirming) confirmPending_ = true;
    return;
  }
  scanInFlight_ = true;
  // Folders that appeared since the last scan are watched from now on; what
  // happens in them before this point, the scan sees.
  if (watcher_) watcher_->rearm();
  pool_.start([scanner = scanner_, mailbox = mailbox_, confirming] {
    platform::lowerCurrentThreadPriority();
    std::vector<AppInfo> scanned = scanner->scan();
    std::lock_guard lock(mailbox->mutex);
    if (mailbox->catalog == nullptr) return;
    QMetaObject::invokeMethod(
        mailbox->catalog,
        [catalog = mailbox->catalog, scanned = std::move(scanned), confirming] {
          catalog->scanFinished(scanned, confirming);
        },
        Qt::QueuedConnection);
  });
}

void AppCatalog::scanFinished(const std::vector<AppInfo>& scanned, bool confirming) {
  scanInFlight_ = false;
  if (watcher_) watcher_->rearm();
  process(scanned, confirming);
  if (scanDirty_) {
    scanDirty_ = false;
    const bool followUpConfirming = std::exchange(confirmPending_, false);
    rescan(followUpConfirming);
  }
}

void AppCatalog::process(const std::vector<AppInfo>& scanned, bool confirming) {
  // Before the first projection with sync on, the shared arrangement also
  // names other machines' apps; measuring this machine's scan against them
  // would hold back every first scan.
  const AppIDSet referenced = arrangement_.syncEnabled() && !arrangement_.projectionIDs()
                                  ? AppIDSet{}
                                  : arrangement_.layout().referencedAppIDs();
  const std::size_t baseline = std::max(apps_.size(), referenced.size());
  const std::size_t n = scanned.size();

  if (n == 0) {
    qCCritical(catalogLog, "Scan fand keine Apps; Ergebnis verworfen, Layout bleibt unverändert");
    return;
  }
  if (ScanGuard::decide(n, baseline, false) == ScanDecision::needsConfirmation) {
    if (!confirming) {
      qCCritical(catalogLog, "Scan fand nur %ld von %ld Apps; Bestätigungsscan in 5 s", count(n),
                 count(baseline));
      requestConfirmingScan();
      return;
    }
    qCCritical(catalogLog, "Bestätigungsscan bestätigt: %ld Apps statt %ld", count(n), count(baseline));
  }

  const PendingRemovals::Outcome outcome = pending_.evaluate(scanned, apps_, referenced, clock_.now());
  if (!outcome.keep.empty()) {
    qCInfo(catalogLog, "%ld bekannte App(s) fehlen im Scan; Entfernen erst nach Bestätigung",
           count(outcome.keep.size()));
  }
  if (outcome.nextCheck) scheduleRecheck(*outcome.nextCheck);

  AppMap installed;
  installed.reserve(outcome.installed.size());
  for (const AppInfo& app : outcome.installed) installed.emplace(app.id, app);
  const bool appsChanged = installed != apps_;
  apps_ = std::move(installed);

  arrangement_.reconcile(outcome.installed, outcome.keep);

  if (appsChanged) emit changed();
  emit scanApplied(*arrangement_.projectionIDs(), confirming);
}

void AppCatalog::removeIntentionally(const AppIDSet& ids) {
  if (ids.empty()) return;
  pending_.markIntentionallyRemoved(ids, clock_.now());
  rescan(true);
}

void AppCatalog::requestConfirmingScan() {
  const std::uint64_t id = nextConfirmation_++;
  confirmations_.emplace(id, clock_.runAfter(confirmationDelay, [this, id] {
    confirmations_.erase(id);
    rescan(true);
  }));
}

void AppCatalog::scheduleRecheck(Date at) {
  recheck_.cancel();
  const auto untilDue =
      std::max(std::chrono::ceil<std::chrono::milliseconds>(at - clock_.now()), std::chrono::milliseconds(0));
  recheck_ = clock_.runAfter(untilDue + recheckMargin, [this] {
    recheck_ = ScheduledAction();
    rescan(false);
  });
}

}  // namespace orrery::app
