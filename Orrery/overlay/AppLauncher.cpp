#include "Orrery/overlay/AppLauncher.h"

#include <QMetaObject>

#include <mutex>

#include "Orrery/base/Logging.h"
#include "OrreryCore/text/Localized.h"

namespace orrery::app {

// Where a finished launch delivers its outcome. The launcher unhooks itself
// when it is destroyed, under the lock, so a launch thread never posts to a
// launcher that is going away.
struct AppLauncher::Mailbox {
  std::mutex mutex;
  AppLauncher* launcher = nullptr;
};

AppLauncher::AppLauncher(std::shared_ptr<const AppOpener> opener, QObject* parent)
    : QObject(parent), opener_(std::move(opener)), mailbox_(std::make_shared<Mailbox>()) {
  mailbox_->launcher = this;
  // A launch stuck on a dead mount must not hold up the next one the user
  // clicks; beyond a few at once, waiting costs nothing visible.
  pool_.setMaxThreadCount(4);
}

AppLauncher::~AppLauncher() {
  std::lock_guard lock(mailbox_->mutex);
  mailbox_->launcher = nullptr;
}

void AppLauncher::launch(const AppInfo& app) {
  pool_.start([opener = opener_, mailbox = mailbox_, app] {
    auto outcome = opener->open(app);
    std::lock_guard lock(mailbox->mutex);
    if (mailbox->launcher == nullptr) return;
    QMetaObject::invokeMethod(
        mailbox->launcher,
        [launcher = mailbox->launcher, app, outcome = std::move(outcome)] {
          launcher->finished(app, outcome);
        },
        Qt::QueuedConnection);
  });
}

void AppLauncher::finished(const AppInfo& app, const Expected<std::monostate, LaunchFailure>& outcome) {
  const QString appID = QString::fromStdString(app.id);
  if (outcome) {
    emit launched(appID);
    return;
  }
  const LaunchFailure& failure = outcome.error();
  qCCritical(launchLog, "„%s“ (%s) konnte nicht geöffnet werden: %s", app.name.c_str(), app.url.c_str(),
             failure.detail.c_str());
  emit launchFailed(appID, QString::fromStdString(failureMessage(app, failure)));
}

std::string AppLauncher::failureMessage(const AppInfo& app, const LaunchFailure& failure) {
  std::string reason;
  switch (failure.reason) {
    case LaunchFailure::Reason::entryMissing:
      reason = text::localized("It's no longer installed.",
                               "Launch error: the app was removed since the list of apps was last read");
      break;
    case LaunchFailure::Reason::entryInvalid:
      reason = text::localized("Its description can't be read or doesn't say how to start it.",
                               "Launch error: the app's desktop entry or bundle is unreadable or incomplete");
      break;
    case LaunchFailure::Reason::programMissing:
      reason = text::localized("The program it starts wasn't found.",
                               "Launch error: the executable the app names does not exist");
      break;
    case LaunchFailure::Reason::programNotExecutable:
      reason =
          text::localized("The program it starts isn't allowed to run.",
                          "Launch error: the app's executable lacks execute permission or is no program");
      break;
    case LaunchFailure::Reason::other:
      reason = failure.detail.empty()
                   ? text::localized("Starting it failed.", "Launch error: the system gave no reason")
                   : failure.detail;
      break;
  }
  return text::arg(
             text::localized("Couldn't open “%1”.", "Launch error, first sentence; %1 is the app's name"),
             {app.name}) +
         " " + reason;
}

}  // namespace orrery::app
