#include "Orrery/appearance/IconCache.h"

#include <QThread>

#include <unordered_set>
#include <utility>

#include "Orrery/appearance/AppIconProvider.h"
#include "Orrery/platform/posix/ProcessEnvironment.h"

namespace orrery::app {

IconCache::IconCache(std::shared_ptr<const IconLocator> locator, QString themeName, IconThemeFolders folders,
                     QObject* parent)
    : QObject(parent),
      store_(std::make_shared<IconStore>(std::move(locator), std::move(themeName), std::move(folders))),
      preloadGeneration_(std::make_shared<std::atomic<int>>(0)) {
  // One thread is enough to stay ahead of a user opening the overlay, and
  // leaves the other cores to drawing and to the provider's requests.
  pool_.setMaxThreadCount(1);
  pool_.setThreadPriority(QThread::LowPriority);
}

IconCache::~IconCache() {
  preloadGeneration_->fetch_add(1);
  pool_.waitForDone();
}

QUrl IconCache::imageSource(const AppInfo& app, int pixelSize) {
  // "/" stays as it is for legibility; everything else outside the
  // unreserved characters is escaped, bytes that are not UTF-8 included.
  QString url = QStringLiteral("image://") + QLatin1String(providerName) + u'/' +
                QString::fromLatin1(QByteArray::fromStdString(app.url).toPercentEncoding("/")) +
                QStringLiteral("?size=") + QString::number(pixelSize);
  if (const IconStore::Version version = IconStore::versionOf(app))
    url += QStringLiteral("&v=") + QString::number(*version);
  return QUrl(url, QUrl::StrictMode);
}

QUrl IconCache::source(const QString& appID, int pixelSize) const {
  return imageSource(apps_.value(appID), pixelSize);
}

QQuickImageProvider* IconCache::makeImageProvider() const { return new AppIconProvider(store_); }

void IconCache::preload(std::vector<AppInfo> apps, int pixelSize) {
  apps_.clear();
  std::unordered_set<std::string> urls;
  for (const AppInfo& app : apps) {
    apps_.insert(QString::fromStdString(app.id), app);
    urls.insert(app.url);
  }
  // Dropping happens here rather than on the worker, so requests made
  // after this call never see images of the old size go away under them.
  store_->retain(urls, pixelSize);
  if (pixelSize != preloadedIconSize_) {
    preloadedIconSize_ = pixelSize;
    emit preloadedIconSizeChanged(pixelSize);
  }

  const int generation = preloadGeneration_->fetch_add(1) + 1;
  pool_.start(
      [this, store = store_, current = preloadGeneration_, generation, apps = std::move(apps), pixelSize] {
        platform::lowerCurrentThreadPriority();
        for (const AppInfo& app : apps) {
          if (current->load() != generation) return;
          store->image(app, pixelSize);
        }
        // Queued to this object, which outlives the pool's work: the destructor
        // waits for it.
        QMetaObject::invokeMethod(
            this, [this, pixelSize] { emit preloadFinished(pixelSize); }, Qt::QueuedConnection);
      });
}

}  // namespace orrery::app
