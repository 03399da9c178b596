// AppCatalog: the one owner of the installed apps while the program runs.
//
// It scans the application folders in the background whenever they change,
// passes each result through the scan-safety rules (an empty scan is
// dropped, a suspiciously short one must be confirmed by a second scan 5 s
// later, a vanished app is kept for 20 s) and hands what it accepted to the
// ArrangementController, which owns the arrangement and aligns it with the
// apps installed.
//
// Scans run one at a time on a low-priority thread of the catalog's own
// pool; any number of requests during a scan collapse into one follow-up,
// which is a confirming one if any of them was.
//
// Timers (the confirmation, the recheck of pending removals, the watcher's
// gathering window) come from the injected Clock.
//
// Thread rules: main thread only. Scan results come back by a queued call;
// one that arrives after the catalog is gone is dropped.
#pragma once

#include <QObject>
#include <QThreadPool>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Orrery/base/Clock.h"
#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/catalog/DirectoryWatcher.h"
#include "Orrery/catalog/Scanner.h"
#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/catalog/PendingRemovals.h"

namespace orrery::app {

class AppCatalog final : public QObject {
  Q_OBJECT

 public:
  using AppMap = std::unordered_map<std::string, AppInfo>;

  // How long the watcher gathers changes after reporting one.
  static constexpr std::chrono::milliseconds watchLatency{1000};
  // The wait before a short scan is confirmed by a second one.
  static constexpr std::chrono::seconds confirmationDelay{5};
  // Added to a pending removal's due date, so the recheck lands after it.
  static constexpr std::chrono::milliseconds recheckMargin{500};

  // Scanning starts with start(). `arrangement` must outlive the catalog.
  AppCatalog(std::shared_ptr<const Scanner> scanner, ArrangementController& arrangement, Clock& clock,
             QObject* parent = nullptr);
  ~AppCatalog() override;

  const AppMap& apps() const { return apps_; }
  // A scan is running (or its result is on its way back).
  bool isScanning() const { return scanInFlight_; }
  // The folder watcher; null before start() or when it could not be set up.
  const DirectoryWatcher* watcher() const { return watcher_.get(); }

  // Scans for the first time and starts watching the folders. Idempotent.
  void start();

  // Scans again 5 s from now, as a confirming scan.
  void requestConfirmingScan();

  // The user moved these apps to the Trash: they leave at the next scan,
  // without the grace period of a vanished app, and that scan starts now
  // and counts as confirmed (removing many apps at once is what the user
  // asked for, not a folder that briefly went missing).
  void removeIntentionally(const AppIDSet& ids);

 public slots:
  // The application folders changed on disk.
  void foldersChanged();

 signals:
  // A scan changed the installed apps.
  void changed();
  // A scan was applied: the ids now installed, and whether it was a confirming one.
  void scanApplied(const orrery::AppIDSet& installed, bool confirming);

 private:
  struct Mailbox;

  void rescan(bool confirming);
  void scanFinished(const std::vector<AppInfo>& scanned, bool confirming);
  void process(const std::vector<AppInfo>& scanned, bool confirming);
  void scheduleRecheck(Date at);

  std::shared_ptr<const Scanner> scanner_;
  ArrangementController& arrangement_;
  Clock& clock_;

  AppMap apps_;

  std::unique_ptr<DirectoryWatcher> watcher_;
  bool scanInFlight_ = false;
  bool scanDirty_ = false;
  bool confirmPending_ = false;
  bool started_ = false;
  PendingRemovals pending_;
  ScheduledAction recheck_;
  std::map<std::uint64_t, ScheduledAction> confirmations_;
  std::uint64_t nextConfirmation_ = 0;

  std::shared_ptr<Mailbox> mailbox_;
  QThreadPool pool_;  // last: waits for a running scan before the rest goes
};

}  // namespace orrery::app
