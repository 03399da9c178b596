#include <gtest/gtest.h>

#include <QFile>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Orrery/platform/xdg/XdgAutostart.h"
#include "Orrery/settings/LaunchAtLogin.h"
#include "OrreryCore/testing/TemporaryDirectory.h"

namespace orrery::app {
namespace {

using platform::XdgAutostart;

namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
  std::ifstream in(path);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

QString qPath(const fs::path& path) { return QString::fromStdString(path.string()); }

class XdgAutostartTest : public ::testing::Test {
 protected:
  XdgAutostart autostart() const {
    return XdgAutostart({qPath(home()), {qPath(system())}}, QStringLiteral("/opt/Orrery Beta/bin/orrery"));
  }
  fs::path home() const { return temporary.path() / "config"; }
  fs::path system() const { return temporary.path() / "xdg"; }
  fs::path userEntry() const { return home() / "autostart/orrery.desktop"; }
  void writeSystemEntry(const std::string& extra) const {
    fs::create_directories(system() / "autostart");
    std::ofstream(system() / "autostart/orrery.desktop") << "[Desktop Entry]\nType=Application\nExec=orrery\n"
                                                         << extra;
  }

  orrery::testing::TemporaryDirectory temporary{"orrery-autostart"};
};

TEST_F(XdgAutostartTest, RegisteringWritesAnEntryThatStartsThisProgram) {
  XdgAutostart item = autostart();
  EXPECT_EQ(item.status(), LoginItem::Status::notRegistered);
  ASSERT_TRUE(item.registerItem());
  EXPECT_EQ(item.status(), LoginItem::Status::enabled);
  const std::string entry = readFile(userEntry());
  EXPECT_TRUE(entry.starts_with("[Desktop Entry]\n"));
  EXPECT_NE(entry.find("\nExec=\"/opt/Orrery Beta/bin/orrery\"\n"), std::string::npos) << entry;

  ASSERT_TRUE(item.unregisterItem());
  EXPECT_FALSE(fs::exists(userEntry()));
  EXPECT_EQ(item.status(), LoginItem::Status::notRegistered);
}

TEST_F(XdgAutostartTest, ExecQuotesWhatTheShellAndTheKeyFileWouldReadOtherwise) {
  EXPECT_EQ(XdgAutostart::execValue(QStringLiteral("/usr/bin/orrery")),
            QStringLiteral("\"/usr/bin/orrery\""));
  // $ and " are escaped with a backslash, which the key file escapes again;
  // % is doubled so it is no field code.
  EXPECT_EQ(XdgAutostart::execValue(QStringLiteral("/a $b/\"c\"/100%")),
            QStringLiteral(R"("/a \\$b/\\"c\\"/100%%")"));
}

TEST_F(XdgAutostartTest, TheUsersEntryDecidesOverTheSystemsOne) {
  writeSystemEntry("");
  XdgAutostart item = autostart();
  EXPECT_EQ(item.status(), LoginItem::Status::enabled);

  // Turning it off must mask the system-wide entry.
  ASSERT_TRUE(item.unregisterItem());
  EXPECT_EQ(item.status(), LoginItem::Status::notRegistered);
  EXPECT_NE(readFile(userEntry()).find("\nHidden=true\n"), std::string::npos);

  ASSERT_TRUE(item.registerItem());
  EXPECT_EQ(item.status(), LoginItem::Status::enabled);
}

TEST_F(XdgAutostartTest, DisabledEntriesStartNothing) {
  writeSystemEntry("X-GNOME-Autostart-enabled=false\n");
  EXPECT_EQ(autostart().status(), LoginItem::Status::notRegistered);
  writeSystemEntry("Hidden=true\n");
  EXPECT_EQ(autostart().status(), LoginItem::Status::notRegistered);
  // Keys of other groups do not count.
  writeSystemEntry("[Desktop Action quit]\nHidden=true\n");
  EXPECT_EQ(autostart().status(), LoginItem::Status::enabled);
}

TEST_F(XdgAutostartTest, AFolderThatCannotBeMadeIsReported) {
  fs::create_directories(home());
  std::ofstream(home() / "autostart") << "a file in the way";
  const auto result = autostart().registerItem();
  ASSERT_FALSE(result);
  EXPECT_FALSE(result.error().empty());
}

// A login item whose answers the test sets.
class ScriptedLoginItem final : public LoginItem {
 public:
  Expected<std::monostate, std::string> registerItem() override {
    if (failure) return Unexpected(*failure);
    state = Status::enabled;
    return std::monostate{};
  }
  Expected<std::monostate, std::string> unregisterItem() override {
    if (failure) return Unexpected(*failure);
    state = Status::notRegistered;
    return std::monostate{};
  }
  Status status() const override { return state; }

  Status state = Status::notRegistered;
  std::optional<std::string> failure;
};

TEST(LaunchAtLogin, TheSettingAlwaysShowsWhatTheSystemDoes) {
  MemoryKeyValueStore defaults;
  SettingsStore settings(defaults);
  ScriptedLoginItem item;
  LaunchAtLogin launchAtLogin(settings, item);

  // Registered outside the program: the record follows at start.
  item.state = LoginItem::Status::enabled;
  launchAtLogin.refresh();
  EXPECT_TRUE(settings.settings().launchAtLogin);

  launchAtLogin.set(false);
  EXPECT_FALSE(settings.settings().launchAtLogin);
  EXPECT_EQ(launchAtLogin.message(), "");

  item.failure = "Permission denied";
  launchAtLogin.set(true);
  EXPECT_EQ(launchAtLogin.message(), "Couldn't turn on launch at login: Permission denied");
  EXPECT_FALSE(settings.settings().launchAtLogin);

  item.failure.reset();
  launchAtLogin.set(true);
  EXPECT_EQ(launchAtLogin.message(), "");
  EXPECT_TRUE(settings.settings().launchAtLogin);

  item.failure = "Read-only file system";
  launchAtLogin.set(false);
  EXPECT_EQ(launchAtLogin.message(), "Couldn't turn off launch at login: Read-only file system");
  EXPECT_TRUE(settings.settings().launchAtLogin);

  item.state = LoginItem::Status::requiresApproval;
  launchAtLogin.refresh();
  EXPECT_TRUE(settings.settings().launchAtLogin);
  EXPECT_EQ(launchAtLogin.note(), "Please allow it in System Settings (General → Login Items).");
}

}  // namespace
}  // namespace orrery::app
