// GIO first: it names struct fields "signals", which Qt's headers define
// as a keyword.
#include <gio/gio.h>

#include "Orrery/platform/gnome/GnomeWallpaperSource.h"
#include "Orrery/platform/qt/PictureFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <QXmlStreamReader>

#include <cmath>
#include <vector>

namespace orrery::platform {
namespace {

QString stringSetting(GSettings* settings, const char* key) {
  gchar* value = g_settings_get_string(settings, key);
  QString text = QString::fromUtf8(value);
  g_free(value);
  return text;
}

bool hasKey(const char* schemaId, const char* key) {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  if (source == nullptr) return false;
  GSettingsSchema* schema = g_settings_schema_source_lookup(source, schemaId, TRUE);
  if (schema == nullptr) return false;
  const bool has = key == nullptr || g_settings_schema_has_key(schema, key);
  g_settings_schema_unref(schema);
  return has;
}

struct Slide {
  double seconds = 0;
  QString file;
};

// <file>path</file>, or <file><size width= height=>path</size>…</file>:
// the largest size.
QString readFile(QXmlStreamReader& xml) {
  QString direct;
  QString best;
  qint64 bestArea = -1;
  while (!xml.atEnd()) {
    const auto token = xml.readNext();
    if (token == QXmlStreamReader::Characters) direct += xml.text();
    if (token == QXmlStreamReader::EndElement) break;
    if (token == QXmlStreamReader::StartElement && xml.name() == QLatin1String("size")) {
      const qint64 area = xml.attributes().value(QLatin1String("width")).toLongLong() *
                          xml.attributes().value(QLatin1String("height")).toLongLong();
      const QString path = xml.readElementText().trimmed();
      if (area > bestArea) {
        bestArea = area;
        best = path;
      }
    }
  }
  return bestArea >= 0 ? best : direct.trimmed();
}

}  // namespace

std::unique_ptr<GnomeWallpaperSource> GnomeWallpaperSource::fromSettings(Now now) {
  if (!hasKey("org.gnome.desktop.background", "picture-uri")) return nullptr;
  GSettings* background = g_settings_new("org.gnome.desktop.background");
  GSettings* interface = hasKey("org.gnome.desktop.interface", "color-scheme")
                             ? g_settings_new("org.gnome.desktop.interface")
                             : nullptr;
  return std::unique_ptr<GnomeWallpaperSource>(new GnomeWallpaperSource(
      std::move(now), background, interface, hasKey("org.gnome.desktop.background", "picture-uri-dark")));
}

GnomeWallpaperSource::GnomeWallpaperSource(Now now, GSettings* background, GSettings* interface,
                                           bool hasDarkPicture)
    : now_(std::move(now)), background_(background), interface_(interface), hasDarkPicture_(hasDarkPicture) {
  const auto callback = reinterpret_cast<GCallback>(&GnomeWallpaperSource::onChanged);
  g_signal_connect(background_, "changed", callback, this);
  if (interface_ != nullptr) g_signal_connect(interface_, "changed::color-scheme", callback, this);
}

GnomeWallpaperSource::~GnomeWallpaperSource() {
  g_signal_handlers_disconnect_by_data(background_, this);
  g_object_unref(background_);
  if (interface_ != nullptr) {
    g_signal_handlers_disconnect_by_data(interface_, this);
    g_object_unref(interface_);
  }
}

void GnomeWallpaperSource::onChanged(GSettings*, const char*, void* self) {
  static_cast<GnomeWallpaperSource*>(self)->announceChange();
}

QString GnomeWallpaperSource::chosenUri(const QString& lightUri, const QString& darkUri, bool prefersDark) {
  return prefersDark && !darkUri.isEmpty() ? darkUri : lightUri;
}

std::optional<app::DesktopPicture> GnomeWallpaperSource::current() {
  if (stringSetting(background_, "picture-options") == QLatin1String("none")) return std::nullopt;
  const bool prefersDark =
      interface_ != nullptr && stringSetting(interface_, "color-scheme") == QLatin1String("prefer-dark");
  const QString uri =
      chosenUri(stringSetting(background_, "picture-uri"),
                hasDarkPicture_ ? stringSetting(background_, "picture-uri-dark") : QString(), prefersDark);
  const QUrl url(uri);
  const QString path =
      url.isLocalFile() ? url.toLocalFile() : (QFileInfo(uri).isAbsolute() ? uri : QString());
  if (path.isEmpty()) return std::nullopt;
  if (!path.endsWith(QLatin1String(".xml"), Qt::CaseInsensitive)) return pictureFile(path);

  const auto frame = slideshowFrame(path, now_());
  if (!frame) return std::nullopt;
  app::DesktopPicture picture = pictureFile(frame->file);
  if (frame->remaining > std::chrono::seconds(0)) picture.changesIn = frame->remaining;
  return picture;
}

std::optional<GnomeWallpaperSource::SlideshowFrame> GnomeWallpaperSource::slideshowFrame(
    const QString& xmlFile, const QDateTime& now) {
  QFile file(xmlFile);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  QXmlStreamReader xml(&file);
  if (!xml.readNextStartElement() || xml.name() != QLatin1String("background")) return std::nullopt;

  int start[6] = {0, 1, 1, 0, 0, 0};  // year, month, day, hour, minute, second
  bool hasStart = false;
  std::vector<Slide> slides;
  while (xml.readNextStartElement()) {
    if (xml.name() == QLatin1String("starttime")) {
      hasStart = true;
      while (xml.readNextStartElement()) {
        static const char* const fields[] = {"year", "month", "day", "hour", "minute", "second"};
        const QString name = xml.name().toString();
        const int value = xml.readElementText().trimmed().toInt();
        for (int i = 0; i < 6; ++i)
          if (name == QLatin1String(fields[i])) start[i] = value;
      }
    } else if (xml.name() == QLatin1String("static") || xml.name() == QLatin1String("transition")) {
      const bool isStatic = xml.name() == QLatin1String("static");
      Slide slide;
      while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("duration"))
          slide.seconds = xml.readElementText().trimmed().toDouble();
        else if ((isStatic && xml.name() == QLatin1String("file")) ||
                 (!isStatic && xml.name() == QLatin1String("to")))
          slide.file = readFile(xml);
        else
          xml.skipCurrentElement();
      }
      if (!slide.file.isEmpty() && slide.seconds >= 0) slides.push_back(slide);
    } else {
      xml.skipCurrentElement();
    }
  }
  if (slides.empty()) return std::nullopt;

  double total = 0;
  for (const Slide& slide : slides) total += slide.seconds;
  const QDateTime startTime(QDate(start[0], start[1], start[2]), QTime(start[3], start[4], start[5]));
  double elapsed = hasStart && startTime.isValid() ? static_cast<double>(startTime.msecsTo(now)) / 1000.0 : 0;
  if (!(elapsed > 0) || !(total > 0)) elapsed = 0;
  double position = total > 0 ? std::fmod(elapsed, total) : 0;
  for (const Slide& slide : slides) {
    if (position < slide.seconds) {
      const auto remaining =
          std::chrono::seconds(static_cast<long long>(std::ceil(slide.seconds - position)));
      return SlideshowFrame{slide.file, remaining};
    }
    position -= slide.seconds;
  }
  return SlideshowFrame{slides.front().file, std::chrono::seconds(0)};
}

}  // namespace orrery::platform
