#include "Orrery/platform/qt/PictureFiles.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>
#include <cmath>

namespace orrery::platform {

namespace {

QString fileVersion(const QString& path) {
  const QFileInfo file(path);
  if (!file.exists()) return {};
  return QString::number(file.lastModified().toMSecsSinceEpoch()) + u':' + QString::number(file.size());
}

}  // namespace

app::DesktopPicture pictureFile(const QString& path) {
  return {path,
          [path](QSize atLeast) -> std::expected<QImage, QString> {
            QImageReader reader(path);
            reader.setAutoTransform(true);
            const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
            QSize stored = reader.size();
            // The decoder's size is before the turn; `atLeast` is after it.
            if (turned) atLeast.transpose();
            if (stored.isValid() && !atLeast.isEmpty() && stored.width() > atLeast.width() &&
                stored.height() > atLeast.height()) {
              const double factor = std::max(static_cast<double>(atLeast.width()) / stored.width(),
                                             static_cast<double>(atLeast.height()) / stored.height());
              reader.setScaledSize(QSize(static_cast<int>(std::ceil(stored.width() * factor)),
                                         static_cast<int>(std::ceil(stored.height() * factor))));
            }
            QImage image = reader.read();
            if (image.isNull()) return std::unexpected(path + QStringLiteral(": ") + reader.errorString());
            return image;
          },
          std::nullopt, fileVersion(path)};
}

FirstPictureSource::FirstPictureSource(std::vector<std::unique_ptr<app::DesktopPictureSource>> sources)
    : sources_(std::move(sources)) {
  for (const auto& source : sources_) source->setOnChanged([this] { announceChange(); });
}

std::optional<app::DesktopPicture> FirstPictureSource::current() {
  for (const auto& source : sources_)
    if (auto picture = source->current()) return picture;
  return std::nullopt;
}

}  // namespace orrery::platform
