#include "Orrery/appearance/IconStore.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLinearGradient>
#include <QMutexLocker>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

namespace orrery::app {

namespace {

// The name every freedesktop theme gives its icon for a program without
// one of its own.
const QString kGenericIconName = QStringLiteral("application-x-executable");

// A plain tile for when not even the theme has a generic icon (some
// platforms have no icon themes, minimal systems may lack the icon): a
// rounded square with a window outline, legible on light and dark
// backgrounds.
QImage drawnGenericIcon(int pixelSize) {
  QImage image(pixelSize, pixelSize, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  const qreal size = pixelSize;
  const QRectF tile(size * 0.08, size * 0.08, size * 0.84, size * 0.84);
  QLinearGradient shade(tile.topLeft(), tile.bottomLeft());
  shade.setColorAt(0, QColor(0x9a, 0xa4, 0xb1));
  shade.setColorAt(1, QColor(0x5f, 0x69, 0x77));
  painter.setPen(Qt::NoPen);
  painter.setBrush(shade);
  painter.drawRoundedRect(tile, size * 0.18, size * 0.18);

  const QRectF window = tile.adjusted(size * 0.18, size * 0.22, -size * 0.18, -size * 0.22);
  painter.setBrush(QColor(0xf4, 0xf6, 0xf8));
  painter.drawRoundedRect(window, size * 0.04, size * 0.04);
  painter.setBrush(QColor(0x3d, 0x46, 0x52));
  painter.drawRect(QRectF(window.left(), window.top(), window.width(), window.height() * 0.2));
  return image;
}

// The app's URL as a file name for Qt: bytes, not necessarily UTF-8.
QString fileName(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(path)); }

}  // namespace

IconStore::IconStore(std::shared_ptr<const IconLocator> locator, QString themeName, IconThemeFolders folders)
    : locator_(std::move(locator)), themeName_(std::move(themeName)), folders_(std::move(folders)) {}

IconStore::Version IconStore::versionOf(const AppInfo& app) {
  if (!app.modified) return std::nullopt;
  return static_cast<std::int64_t>(app.modified->time_since_epoch().count());
}

bool IconStore::contains(const AppInfo& app, int pixelSize) const {
  const QMutexLocker lock(&mutex_);
  const auto entry = entries_.find(app.url);
  return entry != entries_.end() && entry->second.version == versionOf(app) &&
         entry->second.images.contains(pixelSize);
}

QImage IconStore::image(const AppInfo& app, int pixelSize) {
  pixelSize = std::max(1, pixelSize);
  if (app.url.empty()) return genericImage(pixelSize);
  const Version version = versionOf(app);

  std::optional<std::string> icon;
  {
    const QMutexLocker lock(&mutex_);
    Entry& entry = entries_[app.url];
    if (entry.version != version) entry = Entry{version, std::nullopt, {}};
    if (const auto image = entry.images.find(pixelSize); image != entry.images.end()) return image->second;
    icon = entry.icon;
  }

  if (!icon) {
    diskReads_.fetch_add(1, std::memory_order_relaxed);
    icon = locator_->icon(app);
  }
  QString file;
  if (!icon->empty())
    file = icon->front() == '/' ? fileName(*icon) : theme().find(QString::fromStdString(*icon), pixelSize);
  QImage image = file.isEmpty() ? QImage() : sharedImage(file, pixelSize);
  if (image.isNull()) image = genericImage(pixelSize);

  const QMutexLocker lock(&mutex_);
  // The entry may have been dropped or restarted for another version
  // meanwhile; then this image is handed out but not kept.
  const auto entry = entries_.find(app.url);
  if (entry != entries_.end() && entry->second.version == version) {
    entry->second.icon = std::move(icon);
    entry->second.images.try_emplace(pixelSize, image);
  }
  return image;
}

void IconStore::retain(const std::unordered_set<std::string>& urls, int pixelSize) {
  const QMutexLocker lock(&mutex_);
  std::erase_if(entries_, [&](const auto& entry) { return !urls.contains(entry.first); });
  const auto otherSize = [&](const auto& image) { return image.first != pixelSize; };
  for (auto& [url, entry] : entries_) std::erase_if(entry.images, otherSize);
  std::erase_if(generic_, otherSize);
  std::erase_if(decoded_, [&](const auto& image) { return std::get<2>(image.first) != pixelSize; });
}

QImage IconStore::sharedImage(const QString& file, int pixelSize) {
  // The file's date is part of the key: a package update that replaces a
  // theme icon in place must show the new picture.
  const DecodedKey key{file, QFileInfo(file).lastModified().toMSecsSinceEpoch(), pixelSize};
  {
    const QMutexLocker lock(&mutex_);
    if (const auto image = decoded_.find(key); image != decoded_.end()) return image->second;
  }
  QImage image = decode(file, pixelSize);
  const QMutexLocker lock(&mutex_);
  return decoded_.try_emplace(key, std::move(image)).first->second;
}

const IconTheme& IconStore::theme() {
  std::call_once(themeLoaded_, [this] {
    diskReads_.fetch_add(1, std::memory_order_relaxed);
    theme_ = IconTheme::load(themeName_, folders_);
  });
  return theme_;
}

QImage IconStore::genericImage(int pixelSize) {
  {
    const QMutexLocker lock(&mutex_);
    if (const auto image = generic_.find(pixelSize); image != generic_.end()) return image->second;
  }
  const QString file = theme().find(kGenericIconName, pixelSize);
  QImage image = file.isEmpty() ? QImage() : decode(file, pixelSize);
  if (image.isNull()) image = drawnGenericIcon(pixelSize);
  const QMutexLocker lock(&mutex_);
  generic_.try_emplace(pixelSize, image);
  return image;
}

QImage IconStore::decode(const QString& file, int pixelSize) {
  diskReads_.fetch_add(1, std::memory_order_relaxed);
  QImageReader reader(file);
  // Vector images (and JPEG) are rendered at the size wanted rather than
  // at their nominal size and scaled afterwards, which would blur them.
  if (reader.supportsOption(QImageIOHandler::ScaledSize)) {
    const QSize natural = reader.size();
    reader.setScaledSize(natural.isEmpty() ? QSize(pixelSize, pixelSize)
                                           : natural.scaled(pixelSize, pixelSize, Qt::KeepAspectRatio));
  }
  QImage image = reader.read();
  if (image.isNull()) return image;
  if (std::max(image.width(), image.height()) != pixelSize)
    image = image.scaled(pixelSize, pixelSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

}  // namespace orrery::app
