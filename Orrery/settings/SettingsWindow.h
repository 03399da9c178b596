// SettingsWindow: the settings of Orrery in one window, a list of panes on
// the left (General, Trigger, Appearance, Hidden Apps, Sync, About) and the
// chosen pane on the right.
//
// Built from Qt Widgets, so the desktop's own style draws it (Breeze on
// KDE, the GTK theme through Qt's platform theme on GNOME), with the
// accessibility and keyboard handling of ordinary widgets: the pane list
// and every control are reached with Tab and the arrow keys, and each has
// an accessible name.
//
// Every control writes through the SettingsStore the moment it changes, and
// every change of the store, from here or elsewhere (sync, the tray), is
// shown at once. Hidden apps come from the arrangement, each with an
// "Unhide" button that edits the arrangement through its owner.
//
// Thread rules: main thread only.
#pragma once

#include <QWidget>

#include <filesystem>
#include <functional>

#include "Orrery/catalog/AppCatalog.h"
#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/settings/LaunchAtLogin.h"
#include "Orrery/settings/SettingsStore.h"
#include "OrreryCore/settings/HotKey.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QSlider;
class QSpinBox;
class QStackedWidget;
class QVBoxLayout;

namespace orrery::app {

class IconStore;

class SettingsWindow final : public QWidget {
  Q_OBJECT

 public:
  enum class Pane { general, trigger, appearance, hiddenApps, sync, about };

  // What the window shows and edits; the references must outlive it.
  struct Services {
    SettingsStore& settings;
    ArrangementController& arrangement;
    const AppCatalog& catalog;
    IconStore* icons = nullptr;              // none: hidden apps without icons
    LaunchAtLogin* launchAtLogin = nullptr;  // none: the platform cannot do it
    std::function<bool()> trayAvailable;     // the desktop has a tray
    std::filesystem::path dataDirectory;
  };

  explicit SettingsWindow(Services services, QWidget* parent = nullptr);

  void showPane(Pane pane);
  Pane currentPane() const;

  // Where the shortcut recorder goes in the Trigger pane; empty until the
  // recorder is built.
  QWidget* shortcutRecorderSlot() const { return shortcutRecorderSlot_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* buildGeneral();
  QWidget* buildTrigger();
  QWidget* buildAppearance();
  QWidget* buildHiddenApps();
  QWidget* buildSync();
  QWidget* buildAbout();
  // Changes one field of the settings through the store.
  void edit(const std::function<void(Settings&)>& change);
  void refresh();
  void refreshHiddenApps();
  void refreshStorageProblem();

  Services services_;
  QListWidget* paneList_ = nullptr;
  QStackedWidget* panes_ = nullptr;

  QCheckBox* launchAtLogin_ = nullptr;
  QLabel* launchAtLoginMessage_ = nullptr;
  QCheckBox* trayIcon_ = nullptr;
  QLabel* noTray_ = nullptr;
  QLabel* relaunchHint_ = nullptr;
  QLabel* storageProblem_ = nullptr;

  QComboBox* corner_ = nullptr;
  QComboBox* cornerModifier_ = nullptr;
  QWidget* shortcutRecorderSlot_ = nullptr;

  QSpinBox* columns_ = nullptr;
  QSpinBox* rows_ = nullptr;
  QSlider* iconSize_ = nullptr;
  QLabel* iconSizeValue_ = nullptr;
  QComboBox* layoutMode_ = nullptr;
  QCheckBox* animations_ = nullptr;
  QComboBox* background_ = nullptr;
  QPushButton* solidColour_ = nullptr;

  QVBoxLayout* hiddenRows_ = nullptr;
  QWidget* hiddenList_ = nullptr;
  QLabel* noHiddenApps_ = nullptr;
};

}  // namespace orrery::app
