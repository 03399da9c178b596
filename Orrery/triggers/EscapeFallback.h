// EscapeFallback: Esc for the overlay while it has no keyboard focus of its
// own (the window manager kept it elsewhere, or the user clicked into
// another window over it): Esc without modifiers is grabbed on the whole
// desktop, only while the overlay controller switches the fallback on, and
// each press is reported by escapePressed().
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

#include "Orrery/triggers/GlobalHotKey.h"

namespace orrery::app {

class EscapeFallback final : public QObject {
  Q_OBJECT

 public:
  // Without a router (no way to grab keys here) it never activates.
  explicit EscapeFallback(GlobalHotKey::Router* router, QObject* parent = nullptr);
  ~EscapeFallback() override;

  // True when Esc is held as asked (always true when switched off).
  bool setActive(bool active);
  bool isActive() const;

 signals:
  void escapePressed();

 private:
  std::unique_ptr<GlobalHotKey> key_;
};

}  // namespace orrery::app
