#include "Orrery/platform/wayland/PortalGlobalShortcuts.h"

#include <xkbcommon/xkbcommon.h>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QLoggingCategory>

#include <array>

#include "OrreryCore/triggers/X11KeyTable.h"

namespace {

// One entry of BindShortcuts' a(sa{sv}).
struct PortalShortcut {
  QString id;
  QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
  argument.beginStructure();
  argument << shortcut.id << shortcut.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
  argument.beginStructure();
  argument >> shortcut.id >> shortcut.properties;
  argument.endStructure();
  return argument;
}

}  // namespace

Q_DECLARE_METATYPE(PortalShortcut)

namespace orrery::platform {

namespace {

Q_LOGGING_CATEGORY(portalLog, "ch.lumenfold.orrery.triggers")

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");
const QString kShortcutId = QStringLiteral("toggle-overlay");

QDBusConnection bus() { return QDBusConnection::sessionBus(); }

}  // namespace

bool PortalGlobalShortcuts::available() {
  if (!bus().isConnected()) return false;
  QDBusMessage get = QDBusMessage::createMethodCall(
      kService, kPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
  get << kInterface << QStringLiteral("version");
  const QDBusMessage reply = bus().call(get, QDBus::Block, 2000);
  return reply.type() == QDBusMessage::ReplyMessage;
}

PortalGlobalShortcuts::PortalGlobalShortcuts(QObject* parent) : QObject(parent) {
  qDBusRegisterMetaType<PortalShortcut>();
  qDBusRegisterMetaType<QList<PortalShortcut>>();
}

PortalGlobalShortcuts::~PortalGlobalShortcuts() {
  while (!bindings_.empty()) release(bindings_.begin()->first);
}

QString PortalGlobalShortcuts::trigger(const HotKey& key) {
  const auto keysym = X11KeyTable::keysymForKeyCode(key.keyCode);
  if (!keysym) return {};
  std::array<char, 64> name{};
  if (xkb_keysym_get_name(*keysym, name.data(), name.size()) <= 0) return {};
  QStringList parts;
  if ((key.carbonModifiers & HotKey::kControl) != 0) parts << QStringLiteral("CTRL");
  if ((key.carbonModifiers & HotKey::kOption) != 0) parts << QStringLiteral("ALT");
  if ((key.carbonModifiers & HotKey::kShift) != 0) parts << QStringLiteral("SHIFT");
  if ((key.carbonModifiers & HotKey::kCommand) != 0) parts << QStringLiteral("LOGO");
  parts << QString::fromLatin1(name.data());
  return parts.join(QLatin1Char('+'));
}

// The portal names a request's object after our unique bus name and the
// token we chose, so its Response can be listened to before it is sent.
QString PortalGlobalShortcuts::requestPath(const QString& token) const {
  QString sender = bus().baseService().mid(1);
  sender.replace(QLatin1Char('.'), QLatin1Char('_'));
  return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

app::KeyGrabService::Result PortalGlobalShortcuts::grab(const HotKey& key) {
  if (trigger(key).isEmpty()) return {Outcome::failed, 0, 0};
  const GrabId id = nextId_++;
  const QString token = QStringLiteral("orrery_session_%1").arg(id);
  Binding binding{key, requestPath(token), {}};
  bus().connect(kService, binding.requestPath, kRequest, QStringLiteral("Response"), this,
                SLOT(sessionCreated(uint, QVariantMap)));
  QDBusMessage create =
      QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("CreateSession"));
  create << QVariantMap{{QStringLiteral("handle_token"), token},
                        {QStringLiteral("session_handle_token"), QStringLiteral("orrery_%1").arg(id)}};
  const QDBusMessage reply = bus().call(create, QDBus::Block, 5000);
  if (reply.type() != QDBusMessage::ReplyMessage) {
    bus().disconnect(kService, binding.requestPath, kRequest, QStringLiteral("Response"), this,
                     SLOT(sessionCreated(uint, QVariantMap)));
    qCWarning(portalLog, "Portal-Sitzung nicht erstellt: %s", qPrintable(reply.errorMessage()));
    return {Outcome::failed, 0, 0};
  }
  // Connected here rather than in the constructor: QtDBus refused the
  // match made from there (connect() returned false) and never delivered.
  if (!listening_)
    listening_ = bus().connect(kService, kPath, kInterface, QStringLiteral("Activated"), this,
                               SLOT(activated(QDBusObjectPath, QString)));
  bindings_[id] = binding;
  return {Outcome::grabbed, id, 0};
}

void PortalGlobalShortcuts::sessionCreated(uint response, const QVariantMap& results) {
  const QString path = message().path();
  bus().disconnect(kService, path, kRequest, QStringLiteral("Response"), this,
                   SLOT(sessionCreated(uint, QVariantMap)));
  for (auto& [id, binding] : bindings_) {
    if (binding.requestPath != path) continue;
    if (response != 0) {
      qCWarning(portalLog, "Portal-Sitzung abgelehnt (Antwort %u)", response);
      const GrabId refused = id;
      bindings_.erase(refused);
      this->refused(refused);
      return;
    }
    binding.sessionPath = results.value(QStringLiteral("session_handle")).toString();
    bind(id);
    return;
  }
}

void PortalGlobalShortcuts::bind(GrabId id) {
  Binding& binding = bindings_.at(id);
  const QString token = QStringLiteral("orrery_bind_%1").arg(id);
  binding.requestPath = requestPath(token);
  bus().connect(kService, binding.requestPath, kRequest, QStringLiteral("Response"), this,
                SLOT(shortcutsBound(uint, QVariantMap)));
  const QList<PortalShortcut> shortcuts{
      {kShortcutId,
       {{QStringLiteral("description"), QStringLiteral("Show or hide Orrery")},
        {QStringLiteral("preferred_trigger"), trigger(binding.key)}}}};
  QDBusMessage call =
      QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("BindShortcuts"));
  call << QVariant::fromValue(QDBusObjectPath(binding.sessionPath)) << QVariant::fromValue(shortcuts)
       << QString() << QVariantMap{{QStringLiteral("handle_token"), token}};
  // A portal that cannot even take the request refuses it.
  auto* watcher = new QDBusPendingCallWatcher(bus().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, id](QDBusPendingCallWatcher* finished) {
    finished->deleteLater();
    if (!finished->isError() || !bindings_.contains(id)) return;
    qCWarning(portalLog, "Tastenkürzel nicht beim Portal angemeldet: %s",
              qPrintable(finished->error().message()));
    bus().disconnect(kService, bindings_.at(id).requestPath, kRequest, QStringLiteral("Response"), this,
                     SLOT(shortcutsBound(uint, QVariantMap)));
    release(id);
    refused(id);
  });
}

void PortalGlobalShortcuts::shortcutsBound(uint response, const QVariantMap&) {
  const QString path = message().path();
  bus().disconnect(kService, path, kRequest, QStringLiteral("Response"), this,
                   SLOT(shortcutsBound(uint, QVariantMap)));
  for (auto& [id, binding] : bindings_) {
    if (binding.requestPath != path) continue;
    binding.requestPath.clear();
    if (response == 0) return;
    qCWarning(portalLog, "Tastenkürzel vom Portal abgelehnt (Antwort %u)", response);
    const GrabId refused = id;
    release(refused);
    this->refused(refused);
    return;
  }
}

void PortalGlobalShortcuts::activated(const QDBusObjectPath& session, const QString& shortcut) {
  if (shortcut != kShortcutId) return;
  for (const auto& [id, binding] : bindings_)
    if (binding.sessionPath == session.path()) pressed(id);
}

void PortalGlobalShortcuts::release(GrabId id) {
  const auto found = bindings_.find(id);
  if (found == bindings_.end()) return;
  if (!found->second.sessionPath.isEmpty()) {
    bus().asyncCall(QDBusMessage::createMethodCall(kService, found->second.sessionPath,
                                                   QStringLiteral("org.freedesktop.portal.Session"),
                                                   QStringLiteral("Close")));
  }
  bindings_.erase(found);
}

}  // namespace orrery::platform
