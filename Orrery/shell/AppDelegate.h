// AppDelegate: builds the program's long-lived services and wires them
// together; no logic of its own beyond that.
//
// Construction makes, in this order: the sync state as loaded at start
// (once; it decides whether the arrangement starts in sync mode), the
// arrangement's owner over the arrangement file in the data folder, the
// catalog over the platform's scanner,
// and the settings store over the application's settings. launch(), called
// once the event loop runs, adjusts the sync state to the existing
// arrangement, starts the catalog (first scan, folder watching) and makes
// the settings' launchAtLogin show what the system will do.
//
// launch() also builds the overlay (its model and its window, hidden) and
// keeps the model in step with the arrangement, the apps and the settings,
// and puts the tray item on the panel. The settings window is built the
// first time it opens. The triggers and the sync engine come later and
// will be created there too.
//
// start() is launch() followed by what the command line asked for and, on
// the very first run, the settings window. handleCommandLine() is also
// where later starts of the program arrive (through the SingleInstance
// channel): a start with nothing to do is a re-launch, which opens the
// settings when the tray item is not on a panel, since the window is then
// the only way back to the settings.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "Orrery/appearance/BackgroundModel.h"
#include "Orrery/appearance/DesktopPictureSource.h"
#include "Orrery/appearance/IconCache.h"
#include "Orrery/base/QtClock.h"
#include "Orrery/catalog/AppCatalog.h"
#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/overlay/AppLauncher.h"
#include "Orrery/overlay/OverlayController.h"
#include "Orrery/overlay/OverlayModel.h"
#include "Orrery/overlay/PerfRun.h"
#include "Orrery/overlay/WindowSystem.h"
#include "Orrery/settings/LaunchAtLogin.h"
#include "Orrery/settings/LoginItem.h"
#include "Orrery/settings/QSettingsKeyValueStore.h"
#include "Orrery/settings/SettingsStore.h"
#include "Orrery/settings/SettingsWindow.h"
#include "Orrery/shell/CommandLine.h"
#include "Orrery/shell/TrayItem.h"
#include "Orrery/triggers/KeyboardLayout.h"
#include "Orrery/triggers/ShortcutRecorder.h"
#include "Orrery/triggers/TriggerController.h"
#include "OrreryCore/sync/SyncStateStore.h"

namespace orrery::app {

class AppDelegate final : public QObject {
  Q_OBJECT

 public:
  // The platform's folder for the program's data ("Orrery" in
  // $XDG_DATA_HOME on Linux, in Application Support on macOS).
  static std::filesystem::path defaultDataDirectory();

  explicit AppDelegate(std::filesystem::path dataDirectory, QObject* parent = nullptr);
  ~AppDelegate() override;

  void launch();
  // launch(), the command line, and the settings window on the first run.
  void start(const CommandLine& commandLine);
  // What a start asked for; `later` for a start while this one ran.
  void handleCommandLine(const CommandLine& commandLine, bool later);
  // A later start's whole command line (program name first), as the
  // SingleInstance channel delivers it; a line that does not parse is
  // logged and dropped.
  void handleLaterStart(const QStringList& arguments);

  void toggleOverlay();
  // Hides the overlay and brings the settings window to the front.
  void openSettings();
  // Whether the desktop has a tray; Qt is asked unless this is set before
  // launch() (tests run where there is none).
  void setTrayAvailability(std::function<bool()> available) { trayAvailable_ = std::move(available); }
  // Shows the overlay; `label` names the occasion in the show-time log.
  // Before the first scan is in, the saved arrangement has no names or
  // icons yet, so a show asked for then waits for it (a fraction of a
  // second at start), or for `firstScanWait` should the first scan need
  // confirming; a toggle meanwhile takes the waiting show back.
  void showOverlay(const QString& label);
  static constexpr std::chrono::milliseconds firstScanWait{1000};
  // Shows the overlay with the first folder of that name open; when there
  // is none, says so in the log and shows nothing.
  void showFolder(const QString& name);
  // The scripted run of "--perf-test", once the first scan is in; quits
  // the program when it is over.
  void runPerfTest();
  // The checks of "--trigger-test"; quits the program when they are done,
  // with status 1 when one failed.
  void runTriggerTest();

  // Applies the trigger settings where they differ from those last applied.
  void applyTriggers(const TriggerSettings& settings);
  // The shortcut recorder's switch: while suspended the shortcut is not
  // held; ending restores `restoring`, or the stored trigger settings.
  void setHotKeySuspended(bool suspended, const std::optional<TriggerSettings>& restoring = std::nullopt);
  // Null before launch().
  TriggerController* triggers() { return triggers_.get(); }
  // The model of the settings' shortcut field; null before launch().
  ShortcutRecorder* shortcutRecorder() { return shortcutRecorder_.get(); }

  ArrangementController& arrangement() { return *arrangement_; }
  AppCatalog& catalog() { return *catalog_; }
  SettingsStore& settings() { return *settings_; }
  // Null before launch().
  OverlayController* overlay() { return overlay_.get(); }
  OverlayModel* overlayModel() { return overlayModel_.get(); }
  // Null before launch().
  TrayItem* trayItem() { return trayItem_.get(); }
  // Null until the settings window first opened.
  SettingsWindow* settingsWindow() { return settingsWindow_.get(); }
  // The sync state the sync engine will start from; set by launch().
  const std::optional<SyncStateStore::LoadResult>& startupSyncState() const { return startupSyncState_; }

 private:
  const SyncStateStore::LoadResult& loadedSyncState();
  // Runs `show` once the first scan is in (at once when it is).
  void whenAppsKnown(std::function<void()> show);
  void runWaitingShow();

  std::filesystem::path dataDirectory_;
  QtClock clock_;
  SyncStateStore syncStateStore_;
  std::optional<SyncStateStore::LoadResult> loadedSyncState_;
  std::optional<SyncStateStore::LoadResult> startupSyncState_;

  std::unique_ptr<ArrangementController> arrangement_;
  std::unique_ptr<AppCatalog> catalog_;  // after arrangement_, which it uses
  QSettingsKeyValueStore defaults_;
  std::unique_ptr<SettingsStore> settings_;
  std::unique_ptr<LoginItem> loginItem_;  // none where the platform has no adapter
  std::unique_ptr<LaunchAtLogin> launchAtLogin_;
  std::unique_ptr<IconCache> icons_;
  int iconPixels_ = 0;  // the size the tiles' icon sources ask for
  std::unique_ptr<AppLauncher> launcher_;
  std::unique_ptr<TrashService> trashService_;  // before overlayModel_, whose flow uses it
  std::unique_ptr<OverlayModel> overlayModel_;
  std::unique_ptr<WindowSystem> windows_;  // before overlay_, which uses it
  std::unique_ptr<OverlayController> overlay_;
  std::unique_ptr<DesktopPictureSource> pictures_;  // before background_, which uses it
  std::unique_ptr<BackgroundModel> background_;
  std::optional<bool> blurringBehind_;
  std::unique_ptr<PerfRun> perfRun_;
  std::unique_ptr<TriggerController> triggers_;  // after overlay_, which it toggles
  std::unique_ptr<KeyboardLayout> keyboardLayout_;
  std::unique_ptr<ShortcutRecorder> shortcutRecorder_;  // after triggers_ and the layout
  std::function<bool()> trayAvailable_;
  std::unique_ptr<TrayItem> trayItem_;
  std::unique_ptr<SettingsWindow> settingsWindow_;
  bool perfStarted_ = false;
  bool launched_ = false;
  bool appsKnown_ = false;
  std::function<void()> waitingShow_;
  ScheduledAction waitingShowDeadline_;
};

}  // namespace orrery::app
