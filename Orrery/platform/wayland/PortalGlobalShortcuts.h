// PortalGlobalShortcuts: the shortcut through the desktop portal's
// org.freedesktop.portal.GlobalShortcuts, for Wayland compositors that
// offer it (KDE Plasma 6, GNOME 48 and later, Hyprland).
//
// A compositor lets no client grab keys; instead the program asks the
// portal to bind a named shortcut with a preferred trigger ("ALT+space" in
// the XDG shortcut notation), and the desktop decides, often after asking
// the user. So grab() cannot know the answer: it starts a portal session,
// asks to bind the one shortcut, and reports "grabbed"; a refusal that
// arrives later is logged and reported as refused(). Presses arrive as
// the portal's Activated signal. release() closes the session.
//
// Where the session bus has no portal with this interface, available()
// is false and the factory does not use it.
//
// Thread rules: main thread only (QtDBus delivers there).
#pragma once

#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <map>

#include "Orrery/triggers/KeyGrabService.h"

namespace orrery::platform {

class PortalGlobalShortcuts final : public QObject, protected QDBusContext, public app::KeyGrabService {
  Q_OBJECT

 public:
  // Whether the session bus has a portal with GlobalShortcuts.
  static bool available();

  explicit PortalGlobalShortcuts(QObject* parent = nullptr);
  ~PortalGlobalShortcuts() override;

  Result grab(const HotKey& key) override;
  void release(GrabId id) override;

  // The XDG shortcut notation of a key ("CTRL+ALT+t"); empty for keys the
  // key table does not know.
  static QString trigger(const HotKey& key);

 private slots:
  void sessionCreated(uint response, const QVariantMap& results);
  void shortcutsBound(uint response, const QVariantMap& results);
  // Activated(o session, s shortcut, t timestamp, a{sv} options): the
  // first two are all that matter here.
  void activated(const QDBusObjectPath& session, const QString& shortcut);

 private:
  struct Binding {
    HotKey key;
    QString requestPath;  // the pending request
    QString sessionPath;  // once created
  };
  QString requestPath(const QString& token) const;
  void bind(GrabId id);

  std::map<GrabId, Binding> bindings_;
  GrabId nextId_ = 1;
  bool listening_ = false;
};

}  // namespace orrery::platform
