// PlatformFactory: the one place that knows which platform the program
// runs on. Everything else is handed the adapters made here and never asks.
//
// Thread rules: call from the main thread at start-up; the results are
// immutable (the login item is main-thread only, like its user; the app
// opener is called from the launcher's threads).
#pragma once

#include <QString>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Orrery/appearance/DesktopPictureSource.h"
#include "Orrery/appearance/IconLocator.h"
#include "Orrery/appearance/IconTheme.h"
#include "Orrery/base/Clock.h"
#include "Orrery/overlay/AppOpener.h"
#include "Orrery/overlay/WindowSystem.h"
#include "Orrery/settings/LoginItem.h"
#include "Orrery/trash/FileTrash.h"
#include "Orrery/triggers/KeyboardLayout.h"
#include "Orrery/triggers/TriggerController.h"
#include "OrreryCore/catalog/AppScanner.h"
#include "OrreryCore/catalog/BundleFormat.h"

namespace orrery::platform {

// How installed applications look here: .app bundles on macOS, desktop
// entries elsewhere, configured from the process environment.
std::shared_ptr<const BundleFormat> makeBundleFormat();

// The scanner the application uses: the format's default roots at the
// default depth.
AppScanner makeAppScanner();

// The folder "Orrery" in this platform's per-user data folder: the XDG data
// home on free desktops, Application Support on macOS.
std::filesystem::path dataDirectory();

// The locale app names are sorted in.
std::string collationLocale();

// Launch at login for `executable`: an XDG autostart entry on free desktops.
std::unique_ptr<app::LoginItem> makeLoginItem(const QString& executable);

// What names an app's icon: the desktop entry's Icon key on free desktops,
// the bundle's CFBundleIconFile on macOS.
std::shared_ptr<const app::IconLocator> makeIconLocator();

// Where icon themes and loose icons are: on free desktops the "icons"
// folders of the XDG data folders and ~/.icons, then /usr/share/pixmaps;
// nothing on macOS, which has no icon themes.
app::IconThemeFolders iconThemeFolders();

// The user's icon theme: `qtTheme` (what Qt's platform theme reports) when
// it names a real theme, else the one GTK is set to, else Adwaita when it
// is installed; hicolor, the fallback of every theme, as the last resort.
// Outside a full desktop session Qt often knows no theme at all.
QString iconThemeName(const QString& qtTheme, const app::IconThemeFolders& folders);
// How the launcher starts an app: its desktop entry through GIO on free
// desktops, its bundle through the workspace on macOS.
std::shared_ptr<const app::AppOpener> makeAppOpener();

// Moves an app's file to the Trash: its desktop entry through GIO's
// g_file_trash on free desktops. Nothing where no adapter exists yet
// (macOS): the overlay then offers no "Move to Trash …".
std::unique_ptr<const app::FileTrash> makeFileTrash();

// Which of the given apps are running now: on Linux the processes in /proc
// started from the app's desktop entry or running its executable.
std::function<AppIDSet(const std::vector<AppInfo>&)> makeRunningAppsProbe();

// The overlay's window system for the Qt platform the application runs on:
// EWMH on X11 (platform "xcb"); elsewhere what the compositor and Qt do by
// themselves. Needs the QGuiApplication to exist.
std::unique_ptr<app::WindowSystem> makeWindowSystem();

// Whether Qt Quick should draw with its own software renderer: on free
// desktops when the machine has no GPU to draw with (OpenGL would be
// emulated on the processor, slower and heavier) and the user has not chosen
// a Qt Quick backend themselves; never on macOS.
bool prefersSoftwareQuickRenderer();

// What the triggers can use here. On X11 (platform "xcb"): the pointer and
// key grabs of a private connection to Qt's server, and the corners GNOME
// or KDE act on. On Wayland no program may follow the pointer or grab
// keys: no pointer, and the shortcut through the desktop portal's
// GlobalShortcuts where the session offers it, else none (the trigger
// status then says how to bind `orrery --toggle`).
app::TriggerController::Platform makeTriggerPlatform();

// The keyboard layout for the shortcut recorder and key names; nothing
// where the window system does not tell.
std::unique_ptr<app::KeyboardLayout> makeKeyboardLayout();

// Where the desktop keeps its picture: the settings or configuration file of
// the desktop XDG_CURRENT_DESKTOP names (GNOME and its kin, KDE Plasma,
// Xfce), then the X root window's pixmap as tools like feh set it. Asked in
// that order; nothing found means glass. Slideshows are read at `clock`'s
// time; it must outlive the source. Needs the QGuiApplication to exist.
std::unique_ptr<app::DesktopPictureSource> makeDesktopPictureSource(const app::Clock& clock);

// Whether a compositor draws translucent windows over the desktop now: on
// X11 the owner of _NET_WM_CM_S<screen>; always on Wayland and macOS;
// never elsewhere (offscreen). Main thread.
std::function<bool()> makeCompositorProbe();

// Where the session's running program is found: the session bus when one
// is set up for the process (DBUS_SESSION_BUS_ADDRESS), else a local socket
// in the runtime folder ($XDG_RUNTIME_DIR, Qt's fallback where unset).
struct InstanceLocation {
  bool sessionBus = false;
  QString runtimeFolder;
};
InstanceLocation instanceLocation();

// The tray's panel is dark: GNOME's and its relatives' top bars are dark in
// every theme; elsewhere the panel follows the colour scheme, which the
// application's palette shows.
bool trayPanelIsDark();

// Shortcuts are written in symbols ("⌃⌥Space") on macOS, in words
// ("Ctrl+Alt+Space") on Linux desktops.
bool writesShortcutsInSymbols();

// Starts reading the system's font configuration in the background, where
// the toolkit would otherwise read it on the way to the first frame; the
// thread is joined when the returned value goes. Nothing to do on macOS.
std::jthread warmFontsInBackground();

}  // namespace orrery::platform
