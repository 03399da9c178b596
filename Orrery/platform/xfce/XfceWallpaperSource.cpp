#include "Orrery/platform/xfce/XfceWallpaperSource.h"

#include "Orrery/platform/qt/PictureFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QXmlStreamReader>

namespace orrery::platform {

XfceWallpaperSource::XfceWallpaperSource(QString channelFile) : file_(std::move(channelFile)) {
  QObject::connect(&file_, &WatchedFile::changed, &file_, [this] { announceChange(); });
}

std::optional<app::DesktopPicture> XfceWallpaperSource::current() {
  const auto path = pictureIn(file_.path());
  if (!path) return std::nullopt;
  return pictureFile(*path);
}

std::optional<QString> XfceWallpaperSource::pictureIn(const QString& channelFile) {
  QFile file(channelFile);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  QXmlStreamReader xml(&file);
  QStringList path;  // the names of the open <property> elements
  std::optional<QString> firstWorkspace;
  std::optional<QString> any;
  while (!xml.atEnd()) {
    const auto token = xml.readNext();
    if (token == QXmlStreamReader::EndElement && xml.name() == QLatin1String("property")) {
      if (!path.isEmpty()) path.removeLast();
      continue;
    }
    if (token != QXmlStreamReader::StartElement || xml.name() != QLatin1String("property")) continue;
    const QString name = xml.attributes().value(QLatin1String("name")).toString();
    path.append(name);
    if (path.size() < 2 || path.front() != QLatin1String("backdrop")) continue;
    if (name != QLatin1String("last-image") && name != QLatin1String("image-path")) continue;
    const QString value = xml.attributes().value(QLatin1String("value")).toString();
    if (value.isEmpty() || !QFileInfo(value).isAbsolute()) continue;
    if (!any) any = QDir::cleanPath(value);
    if (!firstWorkspace && path.size() >= 2 && path[path.size() - 2] == QLatin1String("workspace0"))
      firstWorkspace = QDir::cleanPath(value);
  }
  if (xml.hasError() && !any) return std::nullopt;
  return firstWorkspace ? firstWorkspace : any;
}

}  // namespace orrery::platform
