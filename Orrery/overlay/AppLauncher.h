// AppLauncher: opens the apps the user picks in the overlay, without making
// the overlay wait for the system.
//
// launch() returns at once; the platform's AppOpener runs on one of the
// launcher's own threads. Reading an entry can stall on a slow or dead
// mount, and spawning a program from a large process takes a moment, so the
// overlay can close or keep animating meanwhile. The outcome comes back on
// the launcher's thread: launched(appID), or launchFailed(appID, message)
// with a sentence for the user ("Couldn't open “Files”." and the reason)
// and a line in the "launch" log.
//
// The threads are the launcher's own rather than a shared pool because a
// started program inherits the scheduling of the thread that spawned it:
// the catalog's scan threads run at a lowered priority that apps must not get.
//
// Thread rules: create, call and destroy on one thread with an event loop
// (the main thread); the signals are delivered there. An outcome that
// arrives after the launcher is gone is dropped.
#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <memory>
#include <string>

#include "Orrery/overlay/AppOpener.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class AppLauncher final : public QObject {
  Q_OBJECT

 public:
  explicit AppLauncher(std::shared_ptr<const AppOpener> opener, QObject* parent = nullptr);
  // Waits for launches under way (they take milliseconds) without reporting them.
  ~AppLauncher() override;

  AppLauncher(const AppLauncher&) = delete;
  AppLauncher& operator=(const AppLauncher&) = delete;

  // Starts `app` in the background. Several launches may run at once; each
  // one is reported once.
  void launch(const AppInfo& app);

  // The sentence launchFailed() carries when `app` did not start for `failure`.
  static std::string failureMessage(const AppInfo& app, const LaunchFailure& failure);

 signals:
  void launched(const QString& appID);
  void launchFailed(const QString& appID, const QString& message);

 private:
  struct Mailbox;

  void finished(const AppInfo& app, const Expected<std::monostate, LaunchFailure>& outcome);

  std::shared_ptr<const AppOpener> opener_;
  std::shared_ptr<Mailbox> mailbox_;
  QThreadPool pool_;  // last: waits for running launches before the rest goes
};

}  // namespace orrery::app
