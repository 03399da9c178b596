#include "Orrery/shell/AppDelegate.h"

#include <QApplication>
#include <QCoreApplication>
#include <QIcon>
#include <QLayout>
#include <QMessageBox>
#include <QQuickView>
#include <QSystemTrayIcon>
#include <QTimer>

#include <string>
#include <string_view>

#include "Orrery/base/Logging.h"
#include "Orrery/platform/PlatformFactory.h"
#include "Orrery/shell/StartupSync.h"
#include "Orrery/trash/WorkspaceTrash.h"
#include "Orrery/triggers/ShortcutField.h"
#include "Orrery/triggers/TriggerChecks.h"
#include "Orrery/triggers/TriggerNotes.h"
#include "OrreryCore/text/Collation.h"
#include "OrreryCore/text/Localized.h"

namespace orrery::app {

namespace {

// Binds the core's localized texts to Qt's translator.
void installTranslator() {
  text::setTranslator([](std::string_view source, std::string_view comment) {
    const std::string sourceText(source);
    const std::string commentText(comment);
    // lupdate files the text::localized() calls under "orrery::text", or
    // under "text" where it cannot follow the namespaces of a file.
    QString translated = QCoreApplication::translate("orrery::text", sourceText.c_str(), commentText.c_str());
    if (translated == QLatin1String(sourceText.c_str())) {
      translated = QCoreApplication::translate("text", sourceText.c_str(), commentText.c_str());
    }
    return translated.toStdString();
  });
}

}  // namespace

std::filesystem::path AppDelegate::defaultDataDirectory() { return platform::dataDirectory(); }

AppDelegate::AppDelegate(std::filesystem::path dataDirectory, QObject* parent)
    : QObject(parent), dataDirectory_(std::move(dataDirectory)), syncStateStore_(dataDirectory_) {
  installTranslator();
  // Before anything sorts names: the catalog orders new apps by name.
  text::setDefaultLocale(platform::collationLocale());
  arrangement_ = std::make_unique<ArrangementController>(LayoutStore(dataDirectory_),
                                                         catalogSyncEnabled(loadedSyncState()));
  catalog_ = std::make_unique<AppCatalog>(std::make_shared<FolderScanner>(platform::makeAppScanner()),
                                          *arrangement_, clock_);
  // The last edit reaches the disk before the event loop ends.
  connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, arrangement_.get(),
          &ArrangementController::flush);
  settings_ = std::make_unique<SettingsStore>(defaults_);
  loginItem_ = platform::makeLoginItem(QCoreApplication::applicationFilePath());
  if (loginItem_) launchAtLogin_ = std::make_unique<LaunchAtLogin>(*settings_, *loginItem_);
}

AppDelegate::~AppDelegate() {
  // The triggers go before the overlay that uses their Esc grab.
  if (overlay_) overlay_->setEscapeFallback(nullptr);
}

const SyncStateStore::LoadResult& AppDelegate::loadedSyncState() {
  if (!loadedSyncState_) loadedSyncState_ = syncStateStore_.loadWithStatus();
  return *loadedSyncState_;
}

void AppDelegate::launch() {
  if (launched_) return;
  launched_ = true;
  startupSyncState_ = loadedSyncState().treatingExistingLayout(arrangement_->shared());
  catalog_->start();
  if (launchAtLogin_) launchAtLogin_->refresh();

  const IconThemeFolders iconFolders = platform::iconThemeFolders();
  icons_ = std::make_unique<IconCache>(platform::makeIconLocator(),
                                       platform::iconThemeName(QIcon::themeName(), iconFolders), iconFolders);
  overlayModel_ = std::make_unique<OverlayModel>(*arrangement_, clock_);
  const auto syncOverlay = [this] {
    overlayModel_->sync(arrangement_->layout(), catalog_->apps(), settings_->settings());
  };
  // Before the view exists, so its tiles are made once, at the grid's size.
  syncOverlay();
  windows_ = platform::makeWindowSystem();
  overlay_ = std::make_unique<OverlayController>(*overlayModel_, clock_, icons_->makeImageProvider(),
                                                 windows_.get());
  // Icons are made ahead, at the size the grid draws them, whenever the apps
  // or that size change; the tiles then find them ready.
  const auto preloadIcons = [this] {
    const int pixels = overlay_->iconPixelSize();
    if (pixels != iconPixels_) {
      iconPixels_ = pixels;
      overlayModel_->setIconSource(
          [pixels](const AppInfo& app) { return IconCache::imageSource(app, pixels).toString(); });
    }
    std::vector<AppInfo> apps;
    apps.reserve(catalog_->apps().size());
    for (const auto& [id, app] : catalog_->apps()) apps.push_back(app);
    icons_->preload(std::move(apps), pixels);
  };
  preloadIcons();

  // The background: rendered in the background, never waited for.
  pictures_ = platform::makeDesktopPictureSource(clock_);
  background_ = std::make_unique<BackgroundModel>(*pictures_, clock_);
  background_->setSettings(settings_->settings());
  background_->attach(*overlay_->window(), platform::makeCompositorProbe());
  connect(settings_.get(), &SettingsStore::settingsChanged, background_.get(),
          [this] { background_->setSettings(settings_->settings()); });
  const auto blurBehind = [this] {
    const bool blur = background_->blursBehind();
    if (blurringBehind_ == blur || windows_ == nullptr) return;
    blurringBehind_ = blur;
    windows_->setBlurBehind(*overlay_->window(), blur);
  };
  connect(background_.get(), &BackgroundModel::changed, overlay_.get(), blurBehind);
  blurBehind();

  // The overlay stays until the app really started, so a failure can be
  // shown where the user looked; it then stays usable.
  launcher_ = std::make_unique<AppLauncher>(platform::makeAppOpener());
  connect(overlayModel_.get(), &OverlayModel::launchRequested, launcher_.get(),
          [this](const AppInfo& app) { launcher_->launch(app); });
  connect(launcher_.get(), &AppLauncher::launched, overlay_.get(), [this] {
    overlayModel_->setMessage({});
    overlay_->hide();
  });
  connect(launcher_.get(), &AppLauncher::launchFailed, overlayModel_.get(),
          [this](const QString&, const QString& message) { overlayModel_->setMessage(message); });
  connect(arrangement_.get(), &ArrangementController::layoutChanged, overlayModel_.get(), syncOverlay);

  // Moving apps to the Trash: what left is gone from the catalog at once.
  if (std::unique_ptr<const FileTrash> files = platform::makeFileTrash())
    trashService_ = std::make_unique<WorkspaceTrash>(std::move(files));
  TrashFlow& trash = overlayModel_->trashFlow();
  trash.setService(trashService_.get());
  trash.setRunningProbe(platform::makeRunningAppsProbe());
  trash.setOverlayShown([this] { return overlay_ && overlay_->isVisible(); });
  trash.setOnRemoved([this](const AppIDSet& ids) { catalog_->removeIntentionally(ids); });
  trash.setStandaloneAlert([](const QString& title, const QString& message) {
    // The overlay went while the move ran: a window of its own, above the
    // others, that goes away by itself once read.
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Orrery"), title, QMessageBox::Ok);
    box->setInformativeText(message);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowFlag(Qt::WindowStaysOnTopHint);
    box->show();
    box->raise();
    box->activateWindow();
  });
  connect(catalog_.get(), &AppCatalog::changed, overlayModel_.get(), syncOverlay);
  connect(catalog_.get(), &AppCatalog::changed, icons_.get(), preloadIcons);
  connect(catalog_.get(), &AppCatalog::scanApplied, this, &AppDelegate::runWaitingShow);
  connect(settings_.get(), &SettingsStore::settingsChanged, overlayModel_.get(), syncOverlay);
  connect(overlayModel_.get(), &OverlayModel::gridChanged, icons_.get(), preloadIcons);

  // The triggers come last: they toggle the overlay.
  triggers_ = std::make_unique<TriggerController>(
      clock_, platform::makeTriggerPlatform(),
      [this](TriggerSource source) {
        if (overlay_->isVisible())
          overlay_->hide();
        else
          showOverlay(source == TriggerSource::hotKey ? QStringLiteral("hot key")
                                                      : QStringLiteral("hot corner"));
      },
      [this] { return TriggerSettings::from(settings_->settings()); });
  connect(settings_.get(), &SettingsStore::settingsChanged, triggers_.get(),
          [this] { applyTriggers(TriggerSettings::from(settings_->settings())); });
  applyTriggers(TriggerSettings::from(settings_->settings()));
  // Esc for the overlay while its window cannot hear it, through the same key grabs.
  overlay_->setEscapeFallback(&triggers_->escapeFallback());
  keyboardLayout_ = platform::makeKeyboardLayout();
  shortcutRecorder_ = std::make_unique<ShortcutRecorder>(
      *settings_, triggers_->status(), keyboardLayout_.get(),
      [this](bool suspended, const std::optional<TriggerSettings>& restoring) {
        setHotKeySuspended(suspended, restoring);
      });
  shortcutRecorder_->setStyle(platform::writesShortcutsInSymbols() ? ShortcutRecorder::Style::symbols
                                                                   : ShortcutRecorder::Style::words);
  if (!trayAvailable_) trayAvailable_ = [] { return QSystemTrayIcon::isSystemTrayAvailable(); };
  trayItem_ = std::make_unique<TrayItem>(*settings_, trayAvailable_, platform::trayPanelIsDark());
  connect(trayItem_.get(), &TrayItem::toggleRequested, this, &AppDelegate::toggleOverlay);
  connect(trayItem_.get(), &TrayItem::showRequested, this, [this] { showOverlay(QStringLiteral("tray")); });
  connect(trayItem_.get(), &TrayItem::settingsRequested, this, &AppDelegate::openSettings);
  connect(trayItem_.get(), &TrayItem::quitRequested, QCoreApplication::instance(), &QCoreApplication::quit,
          Qt::QueuedConnection);

  qCInfo(shellLog, "Orrery gestartet; Daten in %s", dataDirectory_.c_str());
}

void AppDelegate::applyTriggers(const TriggerSettings& settings) {
  if (triggers_) triggers_->applyTriggers(settings);
}

void AppDelegate::setHotKeySuspended(bool suspended, const std::optional<TriggerSettings>& restoring) {
  if (triggers_) triggers_->setHotKeySuspended(suspended, restoring);
}

void AppDelegate::runTriggerTest() {
  if (!overlay_) return;
  TriggerChecks test([this] { overlay_->toggle(); }, [this] { return overlay_->isVisible(); });
  bool passed = true;
  for (const auto& result : test.run()) passed = passed && result.passed;
  // After the overlay's fades have run their course.
  QTimer::singleShot(OverlayController::fadeDuration * 2, QCoreApplication::instance(),
                     [passed] { QCoreApplication::exit(passed ? 0 : 1); });
}

void AppDelegate::runPerfTest() {
  if (!overlay_ || perfRun_) return;
  perfRun_ = std::make_unique<PerfRun>(*overlay_, *overlayModel_);
  connect(perfRun_.get(), &PerfRun::finished, QCoreApplication::instance(), &QCoreApplication::quit);
  // The grid is measured with the apps in it: after the first scan.
  connect(catalog_.get(), &AppCatalog::scanApplied, perfRun_.get(), [this] {
    if (!perfStarted_) {
      perfStarted_ = true;
      perfRun_->start();
    }
  });
}

void AppDelegate::showOverlay(const QString& label) {
  if (overlay_) whenAppsKnown([this, label] { overlay_->show(nullptr, label); });
}

void AppDelegate::start(const CommandLine& commandLine) {
  launch();
  // The first run opens the settings once. A start that asked for the
  // overlay (a key bound to --toggle, a test) gets just the overlay, with
  // no window behind it to take the keyboard when it hides; the settings
  // wait for the first start that asked for nothing in particular.
  const bool overlayAsked = commandLine.toggle || commandLine.showOverlay || commandLine.showFolder;
  const bool selfTest = commandLine.perfTest || commandLine.triggerTest;
  if (!selfTest && !overlayAsked && !settings_->settings().firstRunDone) {
    openSettings();
    Settings settings = settings_->settings();
    settings.firstRunDone = true;
    settings_->setSettings(settings);
  }
  handleCommandLine(commandLine, false);
}

void AppDelegate::handleCommandLine(const CommandLine& commandLine, bool later) {
  if (!launched_) return;
  if (commandLine.perfTest && !later) runPerfTest();
  if (commandLine.triggerTest && !later) runTriggerTest();
  if (commandLine.showOverlay) showOverlay(QStringLiteral("--show-overlay"));
  if (commandLine.showFolder) showFolder(*commandLine.showFolder);
  if (commandLine.openSettings) openSettings();
  if (commandLine.toggle) toggleOverlay();
  // A plain re-launch: the tray item is the way to the settings; without
  // it on a panel, the window is.
  if (later && !commandLine.hasAction() && !trayItem_->isShown()) openSettings();
}

void AppDelegate::handleLaterStart(const QStringList& arguments) {
  const auto commandLine = CommandLine::read(arguments);
  if (!commandLine) {
    qCWarning(shellLog, "Befehlszeile eines weiteren Starts verworfen: %s",
              qUtf8Printable(commandLine.error()));
    return;
  }
  handleCommandLine(*commandLine, true);
}

void AppDelegate::toggleOverlay() {
  if (!overlay_) return;
  if (waitingShow_) {
    waitingShow_ = nullptr;
    waitingShowDeadline_.cancel();
  } else if (overlay_->isVisible()) {
    overlay_->hide();
  } else {
    showOverlay(QStringLiteral("toggle"));
  }
}

void AppDelegate::whenAppsKnown(std::function<void()> show) {
  if (appsKnown_) {
    show();
    return;
  }
  waitingShow_ = std::move(show);
  if (!waitingShowDeadline_.isSet())
    waitingShowDeadline_ = clock_.runAfter(firstScanWait, [this] { runWaitingShow(); });
}

void AppDelegate::runWaitingShow() {
  appsKnown_ = true;
  waitingShowDeadline_.cancel();
  if (auto show = std::exchange(waitingShow_, nullptr)) show();
}

void AppDelegate::openSettings() {
  if (!launched_) return;
  if (overlay_ && overlay_->isVisible()) overlay_->hide();
  if (!settingsWindow_) {
    settingsWindow_ = std::make_unique<SettingsWindow>(SettingsWindow::Services{
        .settings = *settings_,
        .arrangement = *arrangement_,
        .catalog = *catalog_,
        .icons = &icons_->store(),
        .launchAtLogin = launchAtLogin_.get(),
        .trayAvailable = trayAvailable_,
        .dataDirectory = dataDirectory_,
    });
    if (shortcutRecorder_)
      settingsWindow_->shortcutRecorderSlot()->layout()->addWidget(new ShortcutField(*shortcutRecorder_));
    if (triggers_)
      settingsWindow_->shortcutRecorderSlot()->layout()->addWidget(new TriggerNotes(triggers_->status()));
  }
  settingsWindow_->show();
  settingsWindow_->raise();
  settingsWindow_->activateWindow();
}

void AppDelegate::showFolder(const QString& name) {
  if (!overlay_) return;
  const std::string wanted = name.toStdString();
  for (const LayoutItem& item : arrangement_->layout().items) {
    const Folder* folder = item.asFolder();
    if (folder == nullptr || folder->name != wanted) continue;
    const QString id = QString::fromStdString(folder->id.text());
    whenAppsKnown([this, id] {
      overlayModel_->openFolder(id);
      overlay_->show(nullptr, QStringLiteral("--show-folder"));
    });
    return;
  }
  qCWarning(shellLog, "--show-folder: Ordner %s nicht gefunden", qPrintable(name));
}

}  // namespace orrery::app
