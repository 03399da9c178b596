// IconTheme: freedesktop icon themes, looked up by icon name and pixel
// size without QIcon.
//
// QIcon::fromTheme() may only be used on the GUI thread and hands out
// icons, not files, so decoding on a worker would need QIcon there too.
// This index gives files instead: load() reads the index.theme of the
// theme, of the themes it inherits and of hicolor, lists each of their icon
// folders once and keeps which names each folder holds. A lookup then
// touches no disk, which also makes it independent of whether a theme's
// icon-theme.cache is up to date (without it QIcon stats every folder for
// every name).
//
// A name is looked up theme by theme in inheritance order, hicolor last;
// the first theme that has it decides, then the loose-icon folders
// (/usr/share/pixmaps) are tried. Within a theme the file that draws best
// at the requested size wins: a bitmap of exactly that size, else a
// scalable image (SVG), else the smallest larger bitmap, else the largest
// smaller one. Folders of Scale=2 count at twice their nominal size.
//
// Thread rules: load() reads the disk and may run on any thread; a loaded
// theme is immutable and may be used from any number of threads.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace orrery::app {

// Where themes and loose icons are, most important first (the platform
// factory knows them: platform::iconThemeFolders()).
struct IconThemeFolders {
  QStringList themeFolders;   // each holds themes as subfolders: ~/.local/share/icons, /usr/share/icons
  QStringList pixmapFolders;  // icons by file name alone: /usr/share/pixmaps

  friend bool operator==(const IconThemeFolders&, const IconThemeFolders&) = default;
};

class IconTheme {
 public:
  // An empty theme: finds nothing.
  IconTheme() = default;

  // `themeName` with the themes it inherits and hicolor, found in
  // `folders`. An unknown theme name leaves hicolor and the pixmaps.
  static IconTheme load(const QString& themeName, const IconThemeFolders& folders);

  // The absolute path of the file that best shows `name` at `pixelSize`
  // pixels; empty when no theme and no pixmap folder has it.
  QString find(const QString& name, int pixelSize) const;

  // The themes searched, in order.
  const QStringList& themes() const { return themes_; }

  // How many folders load() listed.
  int foldersListed() const { return foldersListed_; }

 private:
  enum class Type : std::uint8_t { fixed, scalable, threshold };
  struct Folder {
    QString path;
    int theme = 0;  // index into themes_
    int size = 0;
    int scale = 1;
    int minSize = 0;
    int maxSize = 0;
    int threshold = 2;
    Type type = Type::threshold;
  };
  struct File {
    int folder = 0;  // index into folders_
    QString extension;
  };

  QString best(const QString& name, const std::vector<File>& files, int pixelSize) const;

  QStringList themes_;
  std::vector<Folder> folders_;
  QHash<QString, std::vector<File>> files_;  // icon name → files, in theme order
  QStringList pixmapFolders_;
  QHash<QString, QString> pixmaps_;  // icon name → file, the first folder winning
  int foldersListed_ = 0;
};

}  // namespace orrery::app
