// IconCache: the apps' icons as images at the sizes the overlay draws them,
// for the QML delegates of the grid.
//
// An icon is found from the app's own file (IconLocator: a theme name or an
// image path), looked up in the icon theme (IconTheme) and decoded at the
// pixel size the delegate asks for, so an SVG is rendered sharp at any
// size and a large bitmap is scaled down once rather than on every frame.
// An app without a usable icon gets the theme's generic program icon
// ("application-x-executable"), else one drawn here, never an empty tile.
//
// Images are kept per app and pixel size, keyed by the app's URL and its
// modification date: an app that was updated is asked afresh, the old
// images are dropped. preload() fills the cache for a list of apps in the
// background, at launch and whenever the icon size changes, so opening the
// overlay finds every image ready.
//
// Delegates bind to an image provider URL,
//   image://appicon/<percent-encoded path>?size=<pixels>&v=<modified>
// where `v` is the modification date in clock ticks (absent when unknown)
// and `size` the pixel size used when the Image sets no sourceSize. Made by
// imageSource() for models, or by source() from QML:
//   Image { source: iconCache.source(model.appID, iconSize)
//           sourceSize: Qt.size(iconSize, iconSize) }
// Qt Quick asks the provider at sourceSize times the screen's device pixel
// ratio, so preload() should be given that pixel size.
//
// Thread rules: the object lives on the GUI thread, where preload(),
// source() and the properties are used. The images are made on worker
// threads (IconStore): the cache's own low-priority pool for preloading,
// the provider's pool for requests. No QIcon is used off the GUI thread
// (nor anywhere here). The provider may outlive the cache: both share the
// store.
#pragma once

#include <QHash>
#include <QImage>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QUrl>

#include <atomic>
#include <memory>
#include <vector>

#include "Orrery/appearance/IconLocator.h"
#include "Orrery/appearance/IconStore.h"
#include "Orrery/appearance/IconTheme.h"
#include "OrreryCore/catalog/AppInfo.h"

class QQuickImageProvider;

namespace orrery::app {

class IconCache final : public QObject {
  Q_OBJECT
  Q_PROPERTY(int preloadedIconSize READ preloadedIconSize NOTIFY preloadedIconSizeChanged)

 public:
  // The host of the image URLs, the name the provider is registered under.
  static constexpr const char* providerName = "appicon";

  // `themeName` is the user's icon theme (QIcon::themeName() on the GUI
  // thread); the theme's folders are read on first use, on a worker.
  IconCache(std::shared_ptr<const IconLocator> locator, QString themeName, IconThemeFolders folders,
            QObject* parent = nullptr);
  // Stops a running preload and waits for it.
  ~IconCache() override;

  // The image URL of `app`'s icon, `pixelSize` pixels when the Image sets no
  // sourceSize. An app with an empty URL gets the generic icon.
  static QUrl imageSource(const AppInfo& app, int pixelSize);

  // The image URL of the app with `appID` among those last given to
  // preload(); the generic icon for an unknown ID.
  Q_INVOKABLE QUrl source(const QString& appID, int pixelSize) const;

  // A provider for a QML engine, which takes ownership:
  //   engine.addImageProvider(IconCache::providerName, cache.makeImageProvider());
  QQuickImageProvider* makeImageProvider() const;

  // The images this cache and its providers share.
  IconStore& store() const { return *store_; }

  // Makes the images of `apps` at `pixelSize` in the background. The apps
  // are also those source() knows, and images of apps not among them, or
  // of another size, are dropped. A later call replaces an unfinished one.
  void preload(std::vector<AppInfo> apps, int pixelSize);
  int preloadedIconSize() const { return preloadedIconSize_; }

 signals:
  void preloadedIconSizeChanged(int pixelSize);
  // Every image of the preload for `pixelSize` is in the cache.
  void preloadFinished(int pixelSize);

 private:
  std::shared_ptr<IconStore> store_;
  std::shared_ptr<std::atomic<int>> preloadGeneration_;  // a preload stops when it changes
  QHash<QString, AppInfo> apps_;                         // by ID, from the last preload()
  int preloadedIconSize_ = 0;
  QThreadPool pool_;
};

}  // namespace orrery::app
