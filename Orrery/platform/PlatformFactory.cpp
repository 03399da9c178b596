#include "Orrery/platform/PlatformFactory.h"

#include <QDateTime>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>

#include <cstdlib>
#include <initializer_list>
#include <string_view>

#include "Orrery/platform/posix/ProcessEnvironment.h"
#include "Orrery/platform/qt/QtWindowSystem.h"

#if defined(__APPLE__)
#include "Orrery/platform/bundle/AppBundleFormat.h"
#include "Orrery/platform/bundle/BundleIconLocator.h"
#include "Orrery/platform/macos/WorkspaceOpener.h"
#else
#include "Orrery/platform/drm/GraphicsDevices.h"
#include "Orrery/platform/fontconfig/FontWarmup.h"
#include "Orrery/platform/gio/DesktopHotCorners.h"
#include "Orrery/platform/gio/GioAppOpener.h"
#include "Orrery/platform/gio/GioFileTrash.h"
#include "Orrery/platform/gio/RunningDesktopApps.h"
#include "Orrery/platform/gnome/GnomeWallpaperSource.h"
#include "Orrery/platform/kde/PlasmaWallpaperSource.h"
#include "Orrery/platform/qt/PictureFiles.h"
#include "Orrery/platform/wayland/PortalGlobalShortcuts.h"
#include "Orrery/platform/x11/X11EventConnection.h"
#include "Orrery/platform/x11/X11GlobalPointer.h"
#include "Orrery/platform/x11/X11KeyGrabs.h"
#include "Orrery/platform/x11/X11KeyboardLayout.h"
#include "Orrery/platform/x11/X11RootPixmapSource.h"
#include "Orrery/platform/x11/X11WindowSystem.h"
#include "Orrery/platform/xdg/DesktopEntryFormat.h"
#include "Orrery/platform/xdg/XdgAutostart.h"
#include "Orrery/platform/xdg/XdgDirectories.h"
#include "Orrery/platform/xdg/XdgIconLocator.h"
#include "Orrery/platform/xfce/XfceWallpaperSource.h"

#include <xcb/xcb.h>
// Last: Xlib's macros (None, Bool, Status...) would clash with Qt's headers.
#include <X11/Xlib.h>
#endif

namespace orrery::platform {

std::shared_ptr<const BundleFormat> makeBundleFormat() {
  const VariableLookup variables = processVariables();
#if defined(__APPLE__)
  const char* home = variables("HOME");
  return std::make_shared<const AppBundleFormat>(home == nullptr ? "" : home);
#else
  return std::make_shared<const DesktopEntryFormat>(DesktopEnvironment::fromVariables(variables));
#endif
}

AppScanner makeAppScanner() {
  auto format = makeBundleFormat();
  auto roots = format->defaultRoots();
  return AppScanner{std::move(roots), AppScanner::kDefaultMaxDepth, std::move(format)};
}

std::filesystem::path dataDirectory() {
  const VariableLookup variables = processVariables();
#if defined(__APPLE__)
  const char* home = variables("HOME");
  return std::filesystem::path(home == nullptr ? "" : home) / "Library" / "Application Support" / "Orrery";
#else
  // Without any home folder the path stays relative to the working folder
  // rather than pointing somewhere shared.
  return std::filesystem::path(XdgDirectories::fromVariables(variables).dataHome) / "Orrery";
#endif
}

std::string collationLocale() { return platform::collationLocale(processVariables()); }

std::unique_ptr<app::LoginItem> makeLoginItem(const QString& executable) {
#if defined(__APPLE__)
  // The login-item service comes with the macOS layer.
  return nullptr;
#else
  return std::make_unique<XdgAutostart>(XdgAutostart::from(XdgDirectories::fromVariables(processVariables())),
                                        executable);
#endif
}

std::shared_ptr<const app::IconLocator> makeIconLocator() {
#if defined(__APPLE__)
  return std::make_shared<const BundleIconLocator>();
#else
  return std::make_shared<const XdgIconLocator>();
#endif
}

app::IconThemeFolders iconThemeFolders() {
  app::IconThemeFolders folders;
#if !defined(__APPLE__)
  // The order GTK searches in: the user's data folder, the old ~/.icons,
  // then the system's data folders.
  const XdgDirectories xdg = XdgDirectories::fromVariables(processVariables());
  const auto add = [&](const std::string& folder) {
    if (folder.empty()) return;
    const QString path = QString::fromStdString(folder);
    if (!folders.themeFolders.contains(path)) folders.themeFolders.append(path);
  };
  if (!xdg.dataHome.empty()) add(xdg.dataHome + "/icons");
  if (!xdg.home.empty()) add(xdg.home + "/.icons");
  for (const std::string& dataDir : xdg.dataDirs) add((dataDir == "/" ? "" : dataDir) + "/icons");
  folders.pixmapFolders.append(QStringLiteral("/usr/share/pixmaps"));
#endif
  return folders;
}

std::shared_ptr<const app::AppOpener> makeAppOpener() {
#if defined(__APPLE__)
  return std::make_shared<const WorkspaceOpener>();
#else
  return std::make_shared<const GioAppOpener>();
#endif
}

std::unique_ptr<const app::FileTrash> makeFileTrash() {
#if defined(__APPLE__)
  return nullptr;
#else
  return std::make_unique<const GioFileTrash>();
#endif
}

std::function<AppIDSet(const std::vector<AppInfo>&)> makeRunningAppsProbe() {
#if defined(__APPLE__)
  return [](const std::vector<AppInfo>&) { return AppIDSet{}; };
#else
  return [](const std::vector<AppInfo>& apps) { return runningDesktopApps(apps); };
#endif
}

QString iconThemeName(const QString& qtTheme, const app::IconThemeFolders& folders) {
  const auto installed = [&folders](const QString& theme) {
    for (const QString& folder : folders.themeFolders)
      if (QFileInfo::exists(folder + QLatin1Char('/') + theme + QStringLiteral("/index.theme"))) return true;
    return false;
  };
  if (!qtTheme.isEmpty() && qtTheme != QLatin1String("hicolor") && installed(qtTheme)) return qtTheme;
#if !defined(__APPLE__)
  // GTK's own setting, which desktops without a Qt platform theme keep.
  const XdgDirectories xdg = XdgDirectories::fromVariables(processVariables());
  for (const char* file : {"/gtk-4.0/settings.ini", "/gtk-3.0/settings.ini"}) {
    const QSettings gtk(QString::fromStdString(xdg.configHome) + QLatin1String(file), QSettings::IniFormat);
    const QString theme = gtk.value(QStringLiteral("Settings/gtk-icon-theme-name")).toString();
    if (!theme.isEmpty() && installed(theme)) return theme;
  }
#endif
  if (installed(QStringLiteral("Adwaita"))) return QStringLiteral("Adwaita");
  return QStringLiteral("hicolor");
}

std::unique_ptr<app::WindowSystem> makeWindowSystem() {
#if !defined(__APPLE__)
  if (QGuiApplication::platformName() == QLatin1String("xcb")) {
    if (auto x11 = X11WindowSystem::fromApplication()) return x11;
  }
#endif
  // Wayland, offscreen, and macOS until its layer brings a panel of its own.
  return std::make_unique<QtWindowSystem>();
}

bool prefersSoftwareQuickRenderer() {
#if defined(__APPLE__)
  return false;
#else
  const VariableLookup variables = processVariables();
  // Whoever names a backend knows better than our guess.
  if (variables("QT_QUICK_BACKEND") != nullptr || variables("QSG_RHI_BACKEND") != nullptr) return false;
  return !hasGraphicsDevice();
#endif
}

#if !defined(__APPLE__)
namespace {

// The triggers' own connection to the server Qt uses, opened once.
std::shared_ptr<X11EventConnection> triggerConnection() {
  static std::weak_ptr<X11EventConnection> shared;
  if (auto existing = shared.lock()) return existing;
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return nullptr;
  auto opened = X11EventConnection::forApplication();
  shared = opened;
  return opened;
}

bool sessionIs(const VariableLookup& variables, std::string_view desktop) {
  const char* current = variables("XDG_CURRENT_DESKTOP");
  if (current == nullptr) return false;
  const std::string_view list(current);
  std::size_t start = 0;
  while (start <= list.size()) {
    const std::size_t end = std::min(list.find(':', start), list.size());
    if (list.substr(start, end - start) == desktop) return true;
    start = end + 1;
  }
  return false;
}

}  // namespace
#endif

app::TriggerController::Platform makeTriggerPlatform() {
  app::TriggerController::Platform platform;
#if !defined(__APPLE__)
  if (auto connection = triggerConnection()) {
    platform.pointer = X11GlobalPointer::make(connection);
    platform.grabs = std::make_unique<X11KeyGrabs>(connection);
  } else if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")) &&
             PortalGlobalShortcuts::available()) {
    platform.grabs = std::make_unique<PortalGlobalShortcuts>();
    platform.escapeFallback = false;
  }
  const VariableLookup variables = processVariables();
  const XdgDirectories xdg = XdgDirectories::fromVariables(variables);
  DesktopHotCorners desktop;
  desktop.kwinrcFiles.push_back(xdg.configHome + "/kwinrc");
  for (const std::string& folder : xdg.configDirs) desktop.kwinrcFiles.push_back(folder + "/kwinrc");
  desktop.plasmaSession = sessionIs(variables, "KDE");
  desktop.gnomeSession = sessionIs(variables, "GNOME");
  platform.systemUsesCorner = [desktop](Corner corner) {
    return SystemHotCorners::isUsedBySystem(corner, desktop.read());
  };
  platform.systemCornerWarning = QString::fromStdString(DesktopHotCorners::warning());
#endif
  return platform;
}

std::unique_ptr<app::KeyboardLayout> makeKeyboardLayout() {
#if !defined(__APPLE__)
  if (auto connection = triggerConnection()) return std::make_unique<X11KeyboardLayout>(connection);
#endif
  return nullptr;
}

namespace {

// An empty source, for platforms whose picture is not read yet.
class NoPictureSource final : public app::DesktopPictureSource {
 public:
  std::optional<app::DesktopPicture> current() override { return std::nullopt; }
};

#if !defined(__APPLE__)
// Qt's X11 display name, for connections of our own to the same server.
std::string x11DisplayName() {
  auto* x11 = qGuiApp == nullptr ? nullptr : qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->display() == nullptr) return {};
  return XDisplayString(x11->display());
}
#endif

}  // namespace

std::unique_ptr<app::DesktopPictureSource> makeDesktopPictureSource(
    [[maybe_unused]] const app::Clock& clock) {
#if defined(__APPLE__)
  return std::make_unique<NoPictureSource>();
#else
  const VariableLookup variables = processVariables();
  const DesktopEnvironment environment = DesktopEnvironment::fromVariables(variables);
  const auto running = [&environment](std::initializer_list<const char*> names) {
    for (const std::string& desktop : environment.currentDesktops)
      for (const char* name : names)
        if (QString::fromStdString(desktop).compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
          return true;
    return false;
  };
  const QString configHome = QString::fromStdString(XdgDirectories::fromVariables(variables).configHome);
  std::vector<std::unique_ptr<app::DesktopPictureSource> > sources;
  if (running({"KDE"})) {
    QSize pixels(1920, 1080);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
      pixels = (QSizeF(screen->geometry().size()) * screen->devicePixelRatio()).toSize();
    sources.push_back(std::make_unique<PlasmaWallpaperSource>(
        configHome + QStringLiteral("/plasma-org.kde.plasma.desktop-appletsrc"), pixels));
  }
  if (running({"XFCE"})) {
    sources.push_back(std::make_unique<XfceWallpaperSource>(
        configHome + QStringLiteral("/xfce4/xfconf/xfce-perchannel-xml/xfce4-desktop.xml")));
  }
  if (running({"GNOME", "GNOME-Classic", "GNOME-Flashback", "Unity", "Budgie", "Pantheon", "ubuntu"})) {
    auto now = [&clock] {
      const auto since =
          std::chrono::duration_cast<std::chrono::milliseconds>(clock.now().time_since_epoch());
      return QDateTime::fromMSecsSinceEpoch(since.count());
    };
    if (auto gnome = GnomeWallpaperSource::fromSettings(now)) sources.push_back(std::move(gnome));
  }
  if (QGuiApplication::platformName() == QLatin1String("xcb")) {
    if (auto root = X11RootPixmapSource::open(x11DisplayName())) sources.push_back(std::move(root));
  }
  if (sources.empty()) return std::make_unique<NoPictureSource>();
  return std::make_unique<FirstPictureSource>(std::move(sources));
#endif
}

std::function<bool()> makeCompositorProbe() {
  const QString platform = QGuiApplication::platformName();
#if !defined(__APPLE__)
  if (platform == QLatin1String("xcb")) {
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || x11->connection() == nullptr) return [] { return false; };
    int screen = 0;
    char* host = nullptr;
    int display = 0;
    const std::string name = x11DisplayName();
    if (xcb_parse_display(name.empty() ? nullptr : name.c_str(), &host, &display, &screen) != 0)
      std::free(host);
    return [connection = x11->connection(), screen] {
      return X11RootPixmapSource::compositorRunning(connection, screen);
    };
  }
#endif
  const bool composited = platform.startsWith(QLatin1String("wayland")) || platform == QLatin1String("cocoa");
  return [composited] { return composited; };
}

InstanceLocation instanceLocation() {
  const VariableLookup variables = processVariables();
  const char* bus = variables("DBUS_SESSION_BUS_ADDRESS");
  InstanceLocation location;
  location.sessionBus = bus != nullptr && *bus != '\0';
  location.runtimeFolder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return location;
}

bool trayPanelIsDark() {
  const char* desktops = processVariables()("XDG_CURRENT_DESKTOP");
  if (desktops != nullptr) {
    for (const QString& desktop : QString::fromUtf8(desktops).split(u':')) {
      if (desktop == u"GNOME" || desktop == u"Unity" || desktop == u"Pantheon" || desktop == u"ubuntu")
        return true;
    }
  }
  return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

std::jthread warmFontsInBackground() {
#if defined(__APPLE__)
  return {};
#else
  return readFontConfigurationInBackground();
#endif
}

bool writesShortcutsInSymbols() {
#if defined(__APPLE__)
  return true;
#else
  return false;
#endif
}

}  // namespace orrery::platform
