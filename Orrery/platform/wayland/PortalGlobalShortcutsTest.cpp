// The portal shortcut against a stand-in for the desktop portal on a
// private session bus: what is asked of the portal, and how its answers
// (a press, a refusal) come back. The real portals (KDE, GNOME) are not
// installed here; the stand-in speaks the documented interface.
#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "Orrery/platform/wayland/PortalGlobalShortcuts.h"
#include "Orrery/tests/program/DesktopSession.h"

struct Shortcut {
  QString id;
  QVariantMap properties;
};
Q_DECLARE_METATYPE(Shortcut)
QDBusArgument& operator<<(QDBusArgument& argument, const Shortcut& shortcut) {
  argument.beginStructure();
  argument << shortcut.id << shortcut.properties;
  argument.endStructure();
  return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, Shortcut& shortcut) {
  argument.beginStructure();
  argument >> shortcut.id >> shortcut.properties;
  argument.endStructure();
  return argument;
}

// org.freedesktop.portal.GlobalShortcuts as the portal documents it: each
// call answers with a request object whose Response follows.
class FakePortal : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.GlobalShortcuts")
  Q_PROPERTY(uint version READ version)

 public:
  explicit FakePortal(QDBusConnection connection) : connection_(std::move(connection)) {}
  uint version() const { return 1; }

  // Set by the test while no call is pending; read by the portal's thread.
  std::atomic<uint> bindResponse = 0;  // 0 granted, 1 cancelled by the user
  QString trigger() const {
    const std::lock_guard lock(mutex_);
    return preferredTrigger_;
  }
  void clearTrigger() {
    const std::lock_guard lock(mutex_);
    preferredTrigger_.clear();
  }

 public slots:
  QDBusObjectPath CreateSession(const QVariantMap& options) {
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop/session/%1/%2")
                             .arg(sender(), options.value(QStringLiteral("session_handle_token")).toString());
    {
      const std::lock_guard lock(mutex_);
      session_ = path;
    }
    return respond(options, 0, {{QStringLiteral("session_handle"), path}});
  }
  QDBusObjectPath BindShortcuts(const QDBusObjectPath&, const QList<Shortcut>& list, const QString&,
                                const QVariantMap& options) {
    if (!list.isEmpty()) {
      const std::lock_guard lock(mutex_);
      preferredTrigger_ = list.first().properties.value(QStringLiteral("preferred_trigger")).toString();
    }
    return respond(options, bindResponse, {});
  }

 public:
  void activate(const QString& shortcut) {
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                     QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                                     QStringLiteral("Activated"));
    QString path;
    {
      const std::lock_guard lock(mutex_);
      path = session_;
    }
    signal << QVariant::fromValue(QDBusObjectPath(path)) << shortcut << qulonglong{0} << QVariantMap();
    connection_.send(signal);
  }

 private:
  QString sender() const {
    QString name = message().service().mid(1);
    return name.replace(QLatin1Char('.'), QLatin1Char('_'));
  }
  QDBusObjectPath respond(const QVariantMap& options, uint response, const QVariantMap& results) {
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                             .arg(sender(), options.value(QStringLiteral("handle_token")).toString());
    QTimer::singleShot(0, this, [this, path, response, results] {
      QDBusMessage signal = QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.portal.Request"),
                                                       QStringLiteral("Response"));
      signal << response << results;
      connection_.send(signal);
    });
    return QDBusObjectPath(path);
  }
  QDBusConnection connection_;
  mutable std::mutex mutex_;
  QString preferredTrigger_;
  QString session_;
};

namespace orrery::platform {
namespace {

using namespace std::chrono_literals;
using testing::DesktopSession;

class PortalGlobalShortcutsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    DesktopSession::Options options;
    options.windowManager = false;
    options.sessionBus = true;
    auto started = DesktopSession::start(options);
    ASSERT_TRUE(started) << started.error();
    session = std::move(*started).release();
    // Before QtDBus first looks at the session bus.
    setenv("DBUS_SESSION_BUS_ADDRESS", session->busAddress().c_str(), 1);
    static char name[] = "orrery_platform_wayland_tests";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    application = new QCoreApplication(count, arguments);
    session->setPump([] { QCoreApplication::processEvents(); });
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
  }
  static void TearDownTestSuite() {
    delete application;
    application = nullptr;
    delete session;
    session = nullptr;
  }
  void SetUp() override {
    if (session == nullptr) GTEST_SKIP() << "no session bus";
  }

  // The stand-in on a connection and a thread of its own (the code under
  // test waits for replies on this one), owning the portal's name.
  std::unique_ptr<FakePortal> startPortal() {
    auto connection = QDBusConnection::connectToBus(QString::fromStdString(session->busAddress()),
                                                    QStringLiteral("portal"));
    auto portal = std::make_unique<FakePortal>(connection);
    portalThread.start();
    portal->moveToThread(&portalThread);
    connection.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), portal.get(),
                              QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
    EXPECT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    return portal;
  }
  void TearDown() override {
    portalThread.quit();
    portalThread.wait();
  }

  QThread portalThread;

  static inline DesktopSession* session = nullptr;
  static inline QCoreApplication* application = nullptr;
};

TEST_F(PortalGlobalShortcutsTest, BindsThePreferredTriggerAndReportsPressesAndRefusals) {
  EXPECT_FALSE(PortalGlobalShortcuts::available()) << "no portal on the bus yet";
  auto portal = startPortal();
  ASSERT_TRUE(PortalGlobalShortcuts::available());

  PortalGlobalShortcuts shortcuts;
  std::vector<app::KeyGrabService::GrabId> pressed;
  std::vector<app::KeyGrabService::GrabId> refused;
  shortcuts.setOnPressed([&](app::KeyGrabService::GrabId id) { pressed.push_back(id); });
  shortcuts.setOnRefused([&](app::KeyGrabService::GrabId id) { refused.push_back(id); });

  const auto granted = shortcuts.grab(HotKey{49, HotKey::kOption | HotKey::kCommand});
  ASSERT_EQ(granted.outcome, app::KeyGrabService::Outcome::grabbed);
  ASSERT_TRUE(session->waitUntil([&] { return !portal->trigger().isEmpty(); }, 10s));
  EXPECT_EQ(portal->trigger(), QStringLiteral("ALT+LOGO+space"));
  portal->activate(QStringLiteral("something-else"));
  portal->activate(QStringLiteral("toggle-overlay"));
  ASSERT_TRUE(session->waitUntil([&] { return !pressed.empty(); }, 10s));
  EXPECT_EQ(pressed, std::vector{granted.id});

  // The user says no in the desktop's dialog.
  portal->bindResponse = 1;
  portal->clearTrigger();
  const auto asked = shortcuts.grab(HotKey{40, HotKey::kControl});
  ASSERT_EQ(asked.outcome, app::KeyGrabService::Outcome::grabbed);
  ASSERT_TRUE(session->waitUntil([&] { return !refused.empty(); }, 10s));
  EXPECT_EQ(refused, std::vector{asked.id});
  EXPECT_EQ(portal->trigger(), QStringLiteral("CTRL+k"));

  EXPECT_EQ(shortcuts.grab(HotKey{200, 0}).outcome, app::KeyGrabService::Outcome::failed)
      << "a key no trigger can name";
}

}  // namespace
}  // namespace orrery::platform

#include "PortalGlobalShortcutsTest.moc"
