// TrayItem: Orrery's item in the panel's tray (StatusNotifierItem or
// XEmbed, whichever the desktop offers; Qt chooses).
//
// The symbol is a 3×3 grid of rounded squares, drawn light for dark panels
// and dark for light ones. A left click toggles the overlay; the menu
// offers "Show Orrery", "Settings …" and "Quit Orrery". The item is on the
// panel while the settings' showMenuBarIcon is on and the desktop has a
// tray; it follows the setting at once, and a tray that appears later
// gets it.
//
// Whether a tray exists is asked through a function given at construction
// (Qt's answer in the program), so the rules that depend on it can be
// tested where there is none.
//
// Thread rules: main thread only.
#pragma once

#include <QIcon>
#include <QObject>

#include <functional>
#include <memory>

#include "Orrery/settings/SettingsStore.h"

class QMenu;
class QSystemTrayIcon;

namespace orrery::app {

class TrayItem final : public QObject {
  Q_OBJECT

 public:
  using Availability = std::function<bool()>;

  // `settings` must outlive the item. `darkPanel` picks the light symbol.
  TrayItem(SettingsStore& settings, Availability trayAvailable, bool darkPanel, QObject* parent = nullptr);
  ~TrayItem() override;

  // The desktop has a tray to show the item in.
  bool trayAvailable() const { return trayAvailable_(); }
  // The item is on the panel: wanted by the settings and a tray exists.
  bool isShown() const;

  // The grid symbol at the usual panel sizes: light squares for a dark
  // panel, dark ones for a light panel.
  static QIcon gridSymbol(bool forDarkPanel);

  // Null until the item was first shown.
  QSystemTrayIcon* icon() const { return icon_.get(); }
  QMenu* menu() const { return menu_.get(); }

 signals:
  void toggleRequested();
  void showRequested();
  void settingsRequested();
  void quitRequested();

 private:
  void follow();

  SettingsStore& settings_;
  Availability trayAvailable_;
  bool darkPanel_;
  std::unique_ptr<QMenu> menu_;
  std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace orrery::app
