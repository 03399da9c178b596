// AppCatalog: the one owner of the installed apps and of the arrangement
// while the program runs.
//
// It scans the application folders in the background whenever they change,
// passes each result through the scan-safety rules (an empty scan is
// dropped, a suspiciously short one must be confirmed by a second scan 5 s
// later, a vanished app is kept for 20 s), reconciles the arrangement with
// it and saves it. User edits come in through mutate(), arrangements
// received from other machines through applyShared(). Nothing else changes
// the arrangement.
//
// With sync on, two arrangements are kept: `shared`, covering the apps of
// all the user's machines, which is what is saved and synced, and `layout`,
// its projection onto the apps installed here, which is what the overlay
// shows. An app missing here is then hidden from view but never removed from
// the shared arrangement. With sync off both are the same.
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
#include "Orrery/catalog/DirectoryWatcher.h"
#include "Orrery/catalog/Scanner.h"
#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/catalog/PendingRemovals.h"
#include "OrreryCore/storage/LayoutStore.h"

namespace orrery::app {

class AppCatalog final : public QObject {
  Q_OBJECT

 public:
  using AppMap = std::unordered_map<std::string, AppInfo>;
  using Edit = std::function<void(Layout&)>;

  // How long the watcher gathers changes after reporting one.
  static constexpr std::chrono::milliseconds watchLatency{1000};
  // The wait before a short scan is confirmed by a second one.
  static constexpr std::chrono::seconds confirmationDelay{5};
  // Added to a pending removal's due date, so the recheck lands after it.
  static constexpr std::chrono::milliseconds recheckMargin{500};

  // Loads the arrangement from `store` at once; scanning starts with start().
  AppCatalog(std::shared_ptr<const Scanner> scanner, LayoutStore store, bool syncEnabled, Clock& clock,
             QObject* parent = nullptr);
  ~AppCatalog() override;

  const AppMap& apps() const { return apps_; }
  const Layout& layout() const { return layout_; }
  const Layout& shared() const { return shared_; }
  // A sentence about the arrangement file for the user; nothing when all is well.
  const std::optional<std::string>& storageProblem() const { return storageProblem_; }
  bool syncEnabled() const { return syncEnabled_; }
  // A scan is running (or its result is on its way back).
  bool isScanning() const { return scanInFlight_; }
  // The folder watcher; null before start() or when it could not be set up.
  const DirectoryWatcher* watcher() const { return watcher_.get(); }

  // Scans for the first time and starts watching the folders. Idempotent.
  void start();

  // Scans again 5 s from now, as a confirming scan.
  void requestConfirmingScan();

  // The one way for user edits to change the arrangement: `edit` changes a
  // copy of the visible arrangement, which then replaces it (folded into the
  // shared one when sync is on) and is saved. userChanged() follows when the
  // arrangement really changed; it is saved either way.
  void mutate(const Edit& edit);

  // Installs an arrangement received from another machine and saves it.
  void applyShared(Layout layout);

 public slots:
  // The application folders changed on disk.
  void foldersChanged();

 signals:
  // A scan changed the installed apps.
  void changed();
  // A user edit changed the arrangement.
  void userChanged();
  // A scan was applied: the ids now installed, and whether it was a confirming one.
  void scanApplied(const orrery::AppIDSet& installed, bool confirming);
  // `layout` (the visible arrangement) changed.
  void layoutChanged();
  void storageProblemChanged();

 private:
  struct Mailbox;

  void rescan(bool confirming);
  void scanFinished(const std::vector<AppInfo>& scanned, bool confirming);
  void process(const std::vector<AppInfo>& scanned, bool confirming);
  void scheduleRecheck(Date at);
  void persist();
  void setLayout(Layout layout);
  void setStorageProblem(std::optional<std::string> problem);

  std::shared_ptr<const Scanner> scanner_;
  LayoutStore store_;
  Clock& clock_;

  AppMap apps_;
  Layout layout_;
  Layout shared_;
  std::optional<std::string> storageProblem_;
  bool syncEnabled_;

  std::unique_ptr<DirectoryWatcher> watcher_;
  bool scanInFlight_ = false;
  bool scanDirty_ = false;
  bool confirmPending_ = false;
  bool started_ = false;
  PendingRemovals pending_;
  ScheduledAction recheck_;
  std::map<std::uint64_t, ScheduledAction> confirmations_;
  std::uint64_t nextConfirmation_ = 0;
  // The installed ids of the last projection; absent until a scan was applied.
  std::optional<AppIDSet> projectionIDs_;

  std::shared_ptr<Mailbox> mailbox_;
  QThreadPool pool_;  // last: waits for a running scan before the rest goes
};

}  // namespace orrery::app
