#include "Orrery/appearance/IconTheme.h"

#include <QFile>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>
#include <tuple>

namespace orrery::app {

namespace {

// The groups and keys of an index.theme, values trimmed. Comments, blank
// lines and anything that is not "key=value" are skipped; the file is only
// read for numbers and lists, so nothing is unescaped.
using IniGroups = QHash<QString, QHash<QString, QString>>;

IniGroups readIni(const QString& path) {
  IniGroups groups;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return groups;
  const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
  QHash<QString, QString>* group = nullptr;
  for (const QString& rawLine : lines) {
    const QString line = rawLine.trimmed();
    if (line.isEmpty() || line.startsWith(u'#')) continue;
    if (line.startsWith(u'[') && line.endsWith(u']')) {
      // The first of two groups of the same name wins, as in GLib's parser.
      const QString name = line.mid(1, line.size() - 2);
      group = groups.contains(name) ? nullptr : &groups[name];
      continue;
    }
    const qsizetype equals = line.indexOf(u'=');
    if (group == nullptr || equals <= 0) continue;
    const QString key = line.left(equals).trimmed();
    if (!group->contains(key)) group->insert(key, line.mid(equals + 1).trimmed());
  }
  return groups;
}

QStringList list(const QString& value) {
  QStringList items;
  for (const QString& item : value.split(u',', Qt::SkipEmptyParts)) {
    const QString trimmed = item.trimmed();
    if (!trimmed.isEmpty()) items.append(trimmed);
  }
  return items;
}

int number(const QHash<QString, QString>& group, const QString& key, int fallback) {
  bool ok = false;
  const int value = group.value(key).toInt(&ok);
  return ok ? value : fallback;
}

bool isScalableExtension(const QString& extension) { return extension == u"svg" || extension == u"svgz"; }

// The extensions icon files carry, in the order the freedesktop lookup
// tries them for loose icons.
constexpr const char16_t* kExtensions[] = {u"png", u"svg", u"svgz", u"xpm"};

int extensionRank(const QString& extension) {
  for (int i = 0; i < static_cast<int>(std::size(kExtensions)); ++i)
    if (extension == QStringView(kExtensions[i])) return i;
  return -1;
}

// Calls `found(name, extension)` for each icon file in `folder`. Entries
// are not stat'ed: themes hold thousands of files, many of them links.
template <class Found>
bool listIcons(const QString& folder, Found&& found) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder.toStdString(), error);
  if (error) return false;
  for (const auto& entry : entries) {
    const QString fileName = QString::fromStdString(entry.path().filename().string());
    const qsizetype dot = fileName.lastIndexOf(u'.');
    if (dot <= 0) continue;
    const QString extension = fileName.mid(dot + 1);
    if (extensionRank(extension) < 0) continue;
    found(fileName.left(dot), extension);
  }
  return true;
}

}  // namespace

IconTheme IconTheme::load(const QString& themeName, const IconThemeFolders& folders) {
  IconTheme theme;

  // The themes in lookup order: depth first through Inherits, each once,
  // hicolor last. A theme is known by the first index.theme found for it.
  QHash<QString, IniGroups> indexes;
  const auto index = [&](const QString& name) -> const IniGroups* {
    if (auto known = indexes.constFind(name); known != indexes.cend()) return &*known;
    for (const QString& base : folders.themeFolders) {
      const QString path = base + u'/' + name + QStringLiteral("/index.theme");
      if (QFile::exists(path)) return &*indexes.insert(name, readIni(path));
    }
    return nullptr;
  };
  const auto add = [&](const auto& self, const QString& name) -> void {
    if (name.isEmpty() || theme.themes_.contains(name) || name.contains(u'/')) return;
    const IniGroups* groups = index(name);
    if (groups == nullptr) return;
    theme.themes_.append(name);
    for (const QString& parent :
         list(groups->value(QStringLiteral("Icon Theme")).value(QStringLiteral("Inherits"))))
      if (parent != u"hicolor") self(self, parent);
  };
  add(add, themeName);
  add(add, QStringLiteral("hicolor"));

  for (int themeIndex = 0; themeIndex < theme.themes_.size(); ++themeIndex) {
    const QString& name = theme.themes_[themeIndex];
    const IniGroups& groups = indexes[name];
    const QHash<QString, QString> header = groups.value(QStringLiteral("Icon Theme"));
    QStringList subfolders = list(header.value(QStringLiteral("Directories")));
    for (const QString& scaled : list(header.value(QStringLiteral("ScaledDirectories"))))
      if (!subfolders.contains(scaled)) subfolders.append(scaled);

    // A theme may be spread over several base folders (the user's icons
    // beside the system's); the earlier base comes first, so on a tie its
    // file wins.
    for (const QString& base : folders.themeFolders) {
      const QString themeFolder = base + u'/' + name + u'/';
      for (const QString& subfolder : subfolders) {
        const auto group = groups.constFind(subfolder);
        if (group == groups.cend()) continue;
        Folder folder;
        folder.path = themeFolder + subfolder;
        folder.theme = themeIndex;
        folder.size = number(*group, QStringLiteral("Size"), 0);
        if (folder.size <= 0) continue;
        folder.scale = std::max(1, number(*group, QStringLiteral("Scale"), 1));
        folder.minSize = number(*group, QStringLiteral("MinSize"), folder.size);
        folder.maxSize = number(*group, QStringLiteral("MaxSize"), folder.size);
        folder.threshold = number(*group, QStringLiteral("Threshold"), 2);
        const QString type = group->value(QStringLiteral("Type"));
        folder.type = type == u"Fixed" ? Type::fixed : type == u"Scalable" ? Type::scalable : Type::threshold;

        const int folderIndex = static_cast<int>(theme.folders_.size());
        const bool listed = listIcons(folder.path, [&](const QString& icon, const QString& extension) {
          theme.files_[icon].push_back({folderIndex, extension});
        });
        if (!listed) continue;
        ++theme.foldersListed_;
        theme.folders_.push_back(std::move(folder));
      }
    }
  }

  for (const QString& folder : folders.pixmapFolders) {
    QHash<QString, QString> here;
    const bool listed = listIcons(folder, [&](const QString& icon, const QString& extension) {
      const auto known = here.constFind(icon);
      if (known == here.cend() || extensionRank(extension) < extensionRank(known->section(u'.', -1)))
        here.insert(icon, folder + u'/' + icon + u'.' + extension);
    });
    if (!listed) continue;
    ++theme.foldersListed_;
    for (auto it = here.cbegin(); it != here.cend(); ++it)
      if (!theme.pixmaps_.contains(it.key())) theme.pixmaps_.insert(it.key(), it.value());
  }
  return theme;
}

QString IconTheme::find(const QString& name, int pixelSize) const {
  if (const auto files = files_.constFind(name); files != files_.cend() && !files->empty())
    return best(name, *files, pixelSize);
  return pixmaps_.value(name);
}

QString IconTheme::best(const QString& name, const std::vector<File>& files, int pixelSize) const {
  // Lower is better: (category, then two tie-breakers); see the header for
  // the order of categories. Only the first theme that has the name counts.
  using Rank = std::tuple<int, int, int>;
  const int firstTheme = folders_[static_cast<std::size_t>(files.front().folder)].theme;
  Rank bestRank{std::numeric_limits<int>::max(), 0, 0};
  const File* bestFile = nullptr;
  for (const File& file : files) {
    const Folder& folder = folders_[static_cast<std::size_t>(file.folder)];
    if (folder.theme != firstTheme) break;
    const int size = folder.size * folder.scale;
    Rank rank;
    if (isScalableExtension(file.extension)) {
      // Among scalable images, the one drawn for this size range has the
      // right amount of detail.
      const int low = folder.minSize * folder.scale;
      const int high = std::max(folder.maxSize, folder.size) * folder.scale;
      const int outside = pixelSize < low ? low - pixelSize : pixelSize > high ? pixelSize - high : 0;
      rank = {1, outside, std::abs(size - pixelSize)};
    } else if (size == pixelSize) {
      rank = {0, 0, 0};
    } else if (size > pixelSize) {
      rank = {2, size, 0};
    } else {
      rank = {3, -size, 0};
    }
    if (rank < bestRank) {
      bestRank = rank;
      bestFile = &file;
    }
  }
  const Folder& folder = folders_[static_cast<std::size_t>(bestFile->folder)];
  return folder.path + u'/' + name + u'.' + bestFile->extension;
}

}  // namespace orrery::app
