// The program's shell: one instance per session handing later starts'
// command lines over, the first run, the re-launch rule, and the settings
// window writing through the settings store.
#include <gtest/gtest.h>

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QSystemTrayIcon>
#include <QTest>
#include <QTranslator>

#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "Orrery/shell/AppDelegate.h"
#include "Orrery/shell/SingleInstance.h"
#include "OrreryCore/testing/TemporaryDirectory.h"
#include "OrreryCore/text/Localized.h"

namespace orrery::app {
namespace {

namespace fs = std::filesystem;
using orrery::testing::TemporaryDirectory;

QString qpath(const fs::path& path) { return QString::fromStdString(path.string()); }

// Hands `arguments` over from another thread, as a second program would:
// the claim blocks until the running one answered, so the test's thread
// must keep its event loop going meanwhile.
InstanceChannel::Claim claimElsewhere(const QStringList& arguments, const InstanceChannel::Where& where) {
  auto pending = std::async(std::launch::async, [&] { return InstanceChannel::claim(arguments, where); });
  while (pending.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
    QCoreApplication::processEvents();
  }
  return pending.get();
}

TEST(InstanceChannel, TheFirstClaimServesLaterOnesAndALeftSocketIsTakenOver) {
  TemporaryDirectory runtime("orrery-runtime");
  const InstanceChannel::Where where{.sessionBus = false, .runtimeFolder = qpath(runtime.path())};

  auto first = InstanceChannel::claim({QStringLiteral("orrery")}, where);
  ASSERT_TRUE(first.channel) << first.problem.toStdString();
  EXPECT_FALSE(first.handedOver);
  std::vector<QStringList> received;
  QObject::connect(first.channel.get(), &InstanceChannel::commandLineReceived,
                   [&](const QStringList& arguments) { received.push_back(arguments); });

  const QStringList line = {QStringLiteral("orrery"), QStringLiteral("--show-folder"),
                            QStringLiteral("Spiele ä")};
  const auto second = claimElsewhere(line, where);
  EXPECT_TRUE(second.handedOver) << second.problem.toStdString();
  EXPECT_FALSE(second.channel);
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(received[0], line);

  // The running program ends; the socket file it leaves does not keep the
  // next start from serving.
  first.channel.reset();
  std::ofstream(runtime.path() / "ch.lumenfold.Orrery.socket") << "left over";
  auto next = InstanceChannel::claim({QStringLiteral("orrery")}, where);
  EXPECT_TRUE(next.channel) << next.problem.toStdString();
}

class ShellTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // The platform finds apps and settings through these; each test has its own.
    for (const char* name : {"XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_HOME"}) {
      saved_.emplace_back(name, qgetenv(name));
    }
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(tree().string() + "/data"));
    qputenv("XDG_DATA_DIRS", QByteArray::fromStdString(tree().string() + "/system"));
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(tree().string() + "/config"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, qpath(tree() / "config"));
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, qpath(tree() / "config"));
    QCoreApplication::setOrganizationName(QStringLiteral("Lumenfold"));
    QCoreApplication::setApplicationName(QStringLiteral("Orrery"));
    fs::create_directories(tree() / "data/applications");
  }
  void TearDown() override {
    delegate.reset();
    for (const auto& [name, value] : saved_) {
      if (value.isNull()) {
        qunsetenv(name.c_str());
      } else {
        qputenv(name.c_str(), value);
      }
    }
  }

  const fs::path& tree() const { return temporary.path(); }
  void install(const std::string& id, const std::string& name) const {
    std::ofstream(tree() / "data/applications" / id)
        << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=true\n";
  }

  // A delegate as the program makes it, with or without a tray on the desktop.
  AppDelegate& makeDelegate(bool trayAvailable = false) {
    delegate = std::make_unique<AppDelegate>(tree() / "data/Orrery");
    delegate->setTrayAvailability([trayAvailable] { return trayAvailable; });
    return *delegate;
  }
  void setShowTrayItem(bool on) {
    Settings settings = delegate->settings().settings();
    settings.showMenuBarIcon = on;
    delegate->settings().setSettings(settings);
  }
  bool settingsOpen() { return delegate->settingsWindow() && delegate->settingsWindow()->isVisible(); }
  bool firstScanIn() {
    return QTest::qWaitFor([&] { return delegate->arrangement().projectionIDs().has_value(); }, 10000);
  }
  // Past the first run, so a test starts with no window open.
  void finishFirstRun() {
    Settings settings = delegate->settings().settings();
    settings.firstRunDone = true;
    delegate->settings().setSettings(settings);
  }

  TemporaryDirectory temporary{"orrery-shell"};
  std::unique_ptr<AppDelegate> delegate;

 private:
  std::vector<std::pair<std::string, QByteArray>> saved_;
};

TEST_F(ShellTest, TheFirstRunOpensTheSettingsOnceAndNeverAgain) {
  makeDelegate().start({});
  EXPECT_TRUE(settingsOpen());
  EXPECT_TRUE(delegate->settings().settings().firstRunDone);

  makeDelegate().start({});
  EXPECT_FALSE(settingsOpen());

  // A first start that asked for the overlay gets only the overlay; the
  // settings wait for the next plain start.
  QSettings().clear();
  install("alpha.desktop", "Alpha");
  makeDelegate().start({.toggle = true});
  EXPECT_FALSE(settingsOpen());
  EXPECT_TRUE(QTest::qWaitFor([&] { return delegate->overlay()->isVisible(); }, 10000));
  EXPECT_FALSE(delegate->settings().settings().firstRunDone);
  makeDelegate().start({});
  EXPECT_TRUE(settingsOpen());
}

TEST_F(ShellTest, ALaterStartWithoutOptionsOpensTheSettingsOnlyWhenTheTrayItemIsNotOnAPanel) {
  makeDelegate(/*trayAvailable=*/true);
  finishFirstRun();
  delegate->start({});
  ASSERT_TRUE(delegate->trayItem()->isShown());
  delegate->handleLaterStart({QStringLiteral("orrery")});
  EXPECT_FALSE(settingsOpen());

  setShowTrayItem(false);
  delegate->showOverlay(QStringLiteral("test"));
  delegate->handleLaterStart({QStringLiteral("orrery")});
  EXPECT_TRUE(settingsOpen());
  EXPECT_FALSE(delegate->overlay()->isVisible());

  // Switched on where no tray exists, the item is nowhere to be clicked.
  makeDelegate(/*trayAvailable=*/false);
  delegate->start({});
  setShowTrayItem(true);
  delegate->handleLaterStart({QStringLiteral("orrery")});
  EXPECT_TRUE(settingsOpen());
}

TEST_F(ShellTest, ToggleFromALaterStartTogglesTheRunningOverlay) {
  TemporaryDirectory runtime("orrery-runtime");
  const InstanceChannel::Where where{.sessionBus = false, .runtimeFolder = qpath(runtime.path())};
  auto first = InstanceChannel::claim({QStringLiteral("orrery")}, where);
  ASSERT_TRUE(first.channel) << first.problem.toStdString();
  install("alpha.desktop", "Alpha");
  makeDelegate();
  finishFirstRun();
  QObject::connect(first.channel.get(), &InstanceChannel::commandLineReceived, delegate.get(),
                   &AppDelegate::handleLaterStart);
  delegate->start({});
  ASSERT_TRUE(firstScanIn());
  ASSERT_FALSE(delegate->overlay()->isVisible());

  const QStringList toggle = {QStringLiteral("orrery"), QStringLiteral("--toggle")};
  EXPECT_TRUE(claimElsewhere(toggle, where).handedOver);
  EXPECT_TRUE(delegate->overlay()->isVisible());
  EXPECT_TRUE(claimElsewhere(toggle, where).handedOver);
  EXPECT_FALSE(delegate->overlay()->isVisible());

  // Settings hide the overlay; a line that does not parse changes nothing.
  EXPECT_TRUE(claimElsewhere(toggle, where).handedOver);
  EXPECT_TRUE(
      claimElsewhere({QStringLiteral("orrery"), QStringLiteral("--open-settings")}, where).handedOver);
  EXPECT_TRUE(settingsOpen());
  EXPECT_FALSE(delegate->overlay()->isVisible());
  EXPECT_TRUE(
      claimElsewhere({QStringLiteral("orrery"), QStringLiteral("--no-such-option")}, where).handedOver);
  EXPECT_FALSE(delegate->overlay()->isVisible());
}

// At start the saved arrangement has no names or icons until the first scan
// is in: an overlay asked for before then comes with them, and a toggle in
// between takes the show back.
TEST_F(ShellTest, AnOverlayAskedForAtStartWaitsForTheFirstScan) {
  install("alpha.desktop", "Alpha");
  fs::create_directories(tree() / "data/Orrery");
  std::ofstream(tree() / "data/Orrery/layout.json")
      << R"({"hidden": [], "items": [{"app": {"_0": "alpha.desktop"}}], "version": 1})";
  makeDelegate();
  finishFirstRun();
  CommandLine show;
  show.showOverlay = true;
  delegate->start(show);
  // The scan's result reaches the main thread through its event loop.
  EXPECT_FALSE(delegate->overlay()->isVisible());
  ASSERT_TRUE(QTest::qWaitFor([&] { return delegate->overlay()->isVisible(); }, 10000));
  const ArrangementListModel& page = delegate->overlayModel()->pageItemsModel(0);
  ASSERT_EQ(page.rowCount(), 1);
  EXPECT_EQ(page.index(0).data(ArrangementListModel::NameRole).toString(), QStringLiteral("Alpha"));

  makeDelegate();
  CommandLine toggle;
  toggle.toggle = true;
  delegate->start(toggle);
  delegate->toggleOverlay();
  ASSERT_TRUE(firstScanIn());
  QCoreApplication::processEvents();
  EXPECT_FALSE(delegate->overlay()->isVisible());
}

TEST_F(ShellTest, TheSettingsWindowWritesEachChangeAtOnceAndFollowsTheStore) {
  makeDelegate();
  delegate->start({});
  SettingsWindow* window = delegate->settingsWindow();
  ASSERT_TRUE(window);

  auto* columns = window->findChild<QSpinBox*>(QStringLiteral("columns"));
  ASSERT_TRUE(columns);
  EXPECT_EQ(columns->minimum(), Settings::columnsRange.lowerBound);
  EXPECT_EQ(columns->maximum(), Settings::columnsRange.upperBound);
  columns->setValue(9);
  EXPECT_EQ(delegate->settings().settings().columns, 9);
  EXPECT_EQ(delegate->overlayModel()->columns(), 9);
  // Beyond the range the control stops; the store never sees 13.
  columns->setValue(13);
  EXPECT_EQ(delegate->settings().settings().columns, Settings::columnsRange.upperBound);

  // A change made elsewhere (sync, another window) shows at once.
  Settings settings = delegate->settings().settings();
  settings.rows = 4;
  settings.showMenuBarIcon = false;
  delegate->settings().setSettings(settings);
  EXPECT_EQ(window->findChild<QSpinBox*>(QStringLiteral("rows"))->value(), 4);

  // No tray on this desktop: the fact, not a switch that does nothing.
  EXPECT_TRUE(window->findChild<QCheckBox*>(QStringLiteral("trayIcon"))->isHidden());
  EXPECT_FALSE(window->findChild<QLabel*>(QStringLiteral("noTray"))->isHidden());
  EXPECT_FALSE(window->findChild<QLabel*>(QStringLiteral("relaunchHint"))->isHidden());
}

TEST_F(ShellTest, UnhidingAnAppInTheSettingsPutsItBackInTheArrangement) {
  install("alpha.desktop", "Alpha");
  install("beta.desktop", "Beta");
  makeDelegate();
  finishFirstRun();
  delegate->start({});
  ASSERT_TRUE(QTest::qWaitFor([&] { return delegate->catalog().apps().size() == 2; }, 10'000));
  delegate->arrangement().mutate([](Layout& layout) { layout.hide("beta.desktop"); });
  delegate->openSettings();
  SettingsWindow* window = delegate->settingsWindow();
  ASSERT_TRUE(window);
  EXPECT_TRUE(window->findChild<QLabel*>(QStringLiteral("noHiddenApps"))->isHidden());

  auto* unhide = window->findChild<QPushButton*>(QStringLiteral("unhide:beta.desktop"));
  ASSERT_TRUE(unhide);
  EXPECT_EQ(unhide->accessibleName(), QStringLiteral("Unhide Beta"));
  unhide->click();
  EXPECT_TRUE(delegate->arrangement().layout().hidden.empty());
  EXPECT_TRUE(delegate->arrangement().layout().referencedAppIDs().contains("beta.desktop"));
  EXPECT_FALSE(window->findChild<QLabel*>(QStringLiteral("noHiddenApps"))->isHidden());
}

TEST_F(ShellTest, TheLoginSwitchWritesTheAutostartEntryAndTheTraySwitchTheItem) {
  makeDelegate(/*trayAvailable=*/true);
  delegate->start({});
  SettingsWindow* window = delegate->settingsWindow();
  ASSERT_TRUE(window);
  const fs::path entry = tree() / "config/autostart/orrery.desktop";

  auto* login = window->findChild<QCheckBox*>(QStringLiteral("launchAtLogin"));
  login->click();
  EXPECT_TRUE(fs::exists(entry));
  EXPECT_TRUE(delegate->settings().settings().launchAtLogin);
  login->click();
  EXPECT_FALSE(fs::exists(entry));
  EXPECT_FALSE(delegate->settings().settings().launchAtLogin);

  auto* tray = window->findChild<QCheckBox*>(QStringLiteral("trayIcon"));
  ASSERT_FALSE(tray->isHidden());
  ASSERT_TRUE(delegate->trayItem()->icon());
  EXPECT_TRUE(delegate->trayItem()->icon()->isVisible());
  tray->click();
  EXPECT_FALSE(delegate->settings().settings().showMenuBarIcon);
  EXPECT_FALSE(delegate->trayItem()->icon()->isVisible());
  // The way back to the settings is now a start of the program.
  EXPECT_FALSE(window->findChild<QLabel*>(QStringLiteral("relaunchHint"))->isHidden());
  tray->click();
  EXPECT_TRUE(delegate->trayItem()->icon()->isVisible());
}

TEST_F(ShellTest, EveryControlOfTheSettingsWindowHasANameForScreenReaders) {
  install("alpha.desktop", "Alpha");
  makeDelegate(/*trayAvailable=*/true);
  delegate->start({});
  ASSERT_TRUE(QTest::qWaitFor([&] { return delegate->catalog().apps().size() == 1; }, 10'000));
  delegate->arrangement().mutate([](Layout& layout) { layout.hide("alpha.desktop"); });
  SettingsWindow* window = delegate->settingsWindow();
  ASSERT_TRUE(window);
  int controls = 0;
  for (QWidget* widget : window->findChildren<QWidget*>()) {
    if (!widget->focusPolicy() || widget->isHidden()) continue;
    // A spin box is one control to a screen reader; its text field is its part.
    if (qobject_cast<QAbstractSpinBox*>(widget->parentWidget())) continue;
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
    ASSERT_TRUE(accessible);
    EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
        << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    ++controls;
  }
  // The pane list, login, tray, two combos, five appearance controls and
  // more: a window that lost its controls would pass the loop above.
  EXPECT_GE(controls, 10);
}

TEST_F(ShellTest, TheCoresTextsAndTheWindowsReachTheGermanTranslation) {
  QTranslator german;
  ASSERT_TRUE(german.load(QStringLiteral(ORRERY_GERMAN_QM)));
  QCoreApplication::installTranslator(&german);
  makeDelegate();  // binds the core's texts to Qt's translator
  // One core text of each context lupdate files them under, and the window.
  EXPECT_EQ(text::localized("New Folder", "Default name of a new folder"), "Neuer Ordner");
  EXPECT_EQ(text::localized("Space", "Name of the space bar key"), "Leertaste");
  delegate->start({});
  EXPECT_EQ(delegate->settingsWindow()->windowTitle(), QStringLiteral("Orrery-Einstellungen"));
  QCoreApplication::removeTranslator(&german);
  EXPECT_EQ(text::localized("New Folder", "Default name of a new folder"), "New Folder");
}

}  // namespace
}  // namespace orrery::app
