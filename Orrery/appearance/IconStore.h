// IconStore: the decoded app icons, shared by the IconCache, which fills it
// ahead of time, and the image provider, which serves the QML delegates.
//
// image() finds an app's icon (IconLocator, then IconTheme) and decodes it
// at the pixel size asked for: an SVG is rendered at that size, so it stays
// sharp at any device pixel ratio, a bitmap is scaled down smoothly once.
// The result keeps the icon's proportions within pixelSize × pixelSize.
// An app whose file names no icon, or one that cannot be found or decoded,
// gets the generic program icon: the theme's "application-x-executable",
// else a plain tile drawn here.
//
// Entries are keyed by the app's URL; an entry remembers the app's
// modification date, and a request with another date starts the entry
// afresh, so an updated app shows its new icon. Within an entry the file's
// icon name is read once and an image is kept per pixel size. Apps that
// name the same icon file (a family of tools, the variants of one program)
// share one decoded image.
//
// Thread rules: every member may be called from any thread at once. image()
// blocks while it reads the disk, so it belongs on worker threads; the
// first call also lists the theme's folders. Two threads asking for the
// same image at once may both make it; one copy is kept.
#pragma once

#include <QImage>
#include <QMutex>
#include <QString>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

#include "Orrery/appearance/IconLocator.h"
#include "Orrery/appearance/IconTheme.h"
#include "OrreryCore/catalog/AppInfo.h"

namespace orrery::app {

class IconStore {
 public:
  IconStore(std::shared_ptr<const IconLocator> locator, QString themeName, IconThemeFolders folders);

  // `app`'s icon at `pixelSize` pixels (at least 1). Only the app's url and
  // modified date are used; an empty url gives the generic icon.
  QImage image(const AppInfo& app, int pixelSize);

  // Whether `app`'s icon at `pixelSize` is in the store; reads nothing.
  bool contains(const AppInfo& app, int pixelSize) const;

  // Drops the entries of apps whose URL is not in `urls`, and every image
  // of another size than `pixelSize`.
  void retain(const std::unordered_set<std::string>& urls, int pixelSize);

  // How often the store has gone to the disk: an app's file read, an image
  // decoded, the theme's folders listed.
  std::uint64_t diskReads() const { return diskReads_.load(std::memory_order_relaxed); }

  // The version of the app's modification date the store keys by: the
  // clock's ticks, exact where seconds as a double would not be.
  using Version = std::optional<std::int64_t>;
  static Version versionOf(const AppInfo& app);

 private:
  struct Entry {
    Version version;
    std::optional<std::string> icon;  // what the app's file names, once read
    std::map<int, QImage> images;     // by pixel size
  };

  const IconTheme& theme();
  QImage genericImage(int pixelSize);
  QImage decode(const QString& file, int pixelSize);
  // decode(), once per file, file date and size for all apps.
  QImage sharedImage(const QString& file, int pixelSize);

  const std::shared_ptr<const IconLocator> locator_;
  const QString themeName_;
  const IconThemeFolders folders_;

  std::once_flag themeLoaded_;
  IconTheme theme_;  // written once under themeLoaded_

  mutable QMutex mutex_;  // guards entries_, generic_ and decoded_
  std::unordered_map<std::string, Entry> entries_;
  std::map<int, QImage> generic_;
  using DecodedKey = std::tuple<QString, std::int64_t, int>;  // file, its date, pixel size
  std::map<DecodedKey, QImage> decoded_;
  std::atomic<std::uint64_t> diskReads_{0};
};

}  // namespace orrery::app
