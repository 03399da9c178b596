// EscapeKeyGrab: the overlay's EscapeFallback on X11. Esc for the overlay
// while it has no keyboard focus of its own (the window manager kept it elsewhere, or the user clicked into
// another window over it): Esc without modifiers is grabbed on the whole
// desktop, only while the overlay controller switches the fallback on, and
// each press is reported by escapePressed() and to the handler the overlay
// controller set.
//
// Switching it on while another program holds Esc fails quietly (logged);
// the overlay then still closes by click or shortcut. While it is on, Esc
// reaches no other window, which is why it must be switched off as soon as
// the overlay has the keyboard again or is hidden.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>

#include <memory>
#include <utility>

#include "Orrery/overlay/EscapeFallback.h"
#include "Orrery/triggers/GlobalHotKey.h"

namespace orrery::app {

class EscapeKeyGrab final : public QObject, public EscapeFallback {
  Q_OBJECT

 public:
  // Without a router (no way to grab keys here) it never activates.
  explicit EscapeKeyGrab(GlobalHotKey::Router* router, QObject* parent = nullptr);
  ~EscapeKeyGrab() override;

  // True when Esc is held as asked (always true when switched off).
  bool grab(bool active);

  void setHandler(Handler handler) override { handler_ = std::move(handler); }
  void setActive(bool active) override { grab(active); }
  bool isActive() const override;

 signals:
  void escapePressed();

 private:
  std::unique_ptr<GlobalHotKey> key_;
  Handler handler_;
};

}  // namespace orrery::app
