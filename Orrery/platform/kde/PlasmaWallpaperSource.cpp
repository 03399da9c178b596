#include "Orrery/platform/kde/PlasmaWallpaperSource.h"

#include "Orrery/platform/qt/PictureFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>
#include <QUrl>

#include <limits>
#include <map>

namespace orrery::platform {
namespace {

// KConfig's escapes in values: \s, \t, \n, \r, \\.
QString unescaped(const QString& value) {
  QString out;
  out.reserve(value.size());
  for (qsizetype i = 0; i < value.size(); ++i) {
    if (value[i] != u'\\' || i + 1 == value.size()) {
      out += value[i];
      continue;
    }
    const QChar next = value[++i];
    if (next == u's')
      out += u' ';
    else if (next == u't')
      out += u'\t';
    else if (next == u'n')
      out += u'\n';
    else if (next == u'r')
      out += u'\r';
    else
      out += next;
  }
  return out;
}

// A wallpaper package: the picture for the screen from contents/images/.
std::optional<QString> packagePicture(const QString& folder, QSize screen) {
  const QDir images(folder + QStringLiteral("/contents/images"));
  static const QRegularExpression sizeName(QStringLiteral("^(\\d+)x(\\d+)\\.\\w+$"));
  std::optional<QString> covering;
  std::optional<QString> largest;
  qint64 coveringArea = std::numeric_limits<qint64>::max();
  qint64 largestArea = -1;
  for (const QString& name : images.entryList(QDir::Files, QDir::Name)) {
    const auto match = sizeName.match(name);
    if (!match.hasMatch()) continue;
    const qint64 width = match.captured(1).toLongLong();
    const qint64 height = match.captured(2).toLongLong();
    const qint64 area = width * height;
    if (width >= screen.width() && height >= screen.height() && area < coveringArea) {
      coveringArea = area;
      covering = images.filePath(name);
    }
    if (area > largestArea) {
      largestArea = area;
      largest = images.filePath(name);
    }
  }
  return covering ? covering : largest;
}

}  // namespace

PlasmaWallpaperSource::PlasmaWallpaperSource(QString configFile, QSize screenPixels)
    : screenPixels_(screenPixels), file_(std::move(configFile)) {
  QObject::connect(&file_, &WatchedFile::changed, &file_, [this] { announceChange(); });
}

std::optional<app::DesktopPicture> PlasmaWallpaperSource::current() {
  const auto path = pictureIn(file_.path(), screenPixels_);
  if (!path) return std::nullopt;
  return pictureFile(*path);
}

std::optional<QString> PlasmaWallpaperSource::pictureIn(const QString& configFile, QSize screenPixels) {
  QFile file(configFile);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return std::nullopt;

  struct Containment {
    int screen = std::numeric_limits<int>::max();
    QString plugin;
    QString image;
  };
  std::map<QString, Containment> containments;  // by containment number
  static const QRegularExpression containmentGroup(QStringLiteral("^\\[Containments\\]\\[([^\\]]+)\\]$"));
  static const QRegularExpression imageGroup(QStringLiteral(
      "^\\[Containments\\]\\[([^\\]]+)\\]\\[Wallpaper\\]\\[org\\.kde\\.image\\]\\[General\\]$"));

  QString containment;  // the group being read, if one of the two kinds
  bool inImageGroup = false;
  QTextStream in(&file);
  QString line;
  while (in.readLineInto(&line)) {
    line = line.trimmed();
    if (line.isEmpty() || line.startsWith(u'#')) continue;
    if (line.startsWith(u'[')) {
      containment.clear();
      inImageGroup = false;
      if (const auto match = containmentGroup.match(line); match.hasMatch()) {
        containment = match.captured(1);
      } else if (const auto image = imageGroup.match(line); image.hasMatch()) {
        containment = image.captured(1);
        inImageGroup = true;
      }
      continue;
    }
    if (containment.isEmpty()) continue;
    const qsizetype equals = line.indexOf(u'=');
    if (equals <= 0) continue;
    // Keys may carry a locale or flags ("Image[$e]"); the plain name counts.
    QString key = line.left(equals).trimmed();
    key = key.left(key.indexOf(u'[') < 0 ? key.size() : key.indexOf(u'['));
    const QString value = unescaped(line.mid(equals + 1).trimmed());
    Containment& entry = containments[containment];
    if (inImageGroup && key == QLatin1String("Image")) {
      entry.image = value;
    } else if (!inImageGroup && key == QLatin1String("lastScreen")) {
      bool ok = false;
      const int screen = value.toInt(&ok);
      if (ok && screen >= 0) entry.screen = screen;
    } else if (!inImageGroup && key == QLatin1String("wallpaperplugin")) {
      entry.plugin = value;
    }
  }

  const Containment* chosen = nullptr;
  for (const auto& [number, entry] : containments) {
    // Panels have no wallpaper; desktops with another plugin show no picture.
    if (entry.image.isEmpty() || (!entry.plugin.isEmpty() && entry.plugin != QLatin1String("org.kde.image")))
      continue;
    if (chosen == nullptr || entry.screen < chosen->screen) chosen = &entry;
  }
  if (chosen == nullptr) return std::nullopt;

  const QUrl url(chosen->image);
  const QString path = url.isLocalFile() ? url.toLocalFile() : chosen->image;
  if (!QFileInfo(path).isAbsolute()) return std::nullopt;
  if (QFileInfo(path).isDir()) return packagePicture(QDir::cleanPath(path), screenPixels);
  return QDir::cleanPath(path);
}

}  // namespace orrery::platform
