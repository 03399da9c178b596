#include "platform/xdg/DesktopEntryFormat.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>

#include <glib.h>

namespace orrery::platform {

namespace {

constexpr const char* kGroup = "Desktop Entry";

struct KeyFileUnref {
  void operator()(GKeyFile* keys) const { g_key_file_unref(keys); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileUnref>;

struct GFree {
  void operator()(void* memory) const { g_free(memory); }
};
using GText = std::unique_ptr<gchar, GFree>;

struct StrvFree {
  void operator()(gchar** strings) const { g_strfreev(strings); }
};
using GStrings = std::unique_ptr<gchar*, StrvFree>;

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    parts.emplace_back(
        text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  return parts;
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// What g_find_program_in_path() accepts: a path with a slash is taken as it
// is, a bare name is looked up in the search path (an empty element is the
// current folder); either way it must be a file with an execute bit that
// this process may execute.
bool isExecutableFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return false;
  if ((status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0) return false;
  return access(path.c_str(), X_OK) == 0;
}

bool programExists(std::string_view program, const std::string& searchPath) {
  if (program.empty()) return false;
  if (program.find('/') != std::string_view::npos) return isExecutableFile(std::string(program));
  std::string candidate;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = searchPath.find(':', start);
    const std::string_view folder =
        std::string_view(searchPath)
            .substr(start, end == std::string::npos ? std::string::npos : end - start);
    candidate.assign(folder.empty() ? std::string_view(".") : folder);
    candidate += '/';
    candidate += program;
    if (isExecutableFile(candidate)) return true;
    if (end == std::string::npos) return false;
    start = end + 1;
  }
}

GText stringValue(GKeyFile* keys, const char* key) {
  return GText(g_key_file_get_string(keys, kGroup, key, nullptr));
}

bool isSet(const GText& text) { return text && text.get()[0] != '\0'; }

bool contains(gchar** list, const std::string& value) {
  for (gchar** item = list; item != nullptr && *item != nullptr; ++item)
    if (value == *item) return true;
  return false;
}

// OnlyShowIn/NotShowIn against the current desktops, in their order: the
// first desktop either list names decides; with none named, an entry with
// an OnlyShowIn list is not for this desktop.
bool shownIn(GKeyFile* keys, const std::vector<std::string>& desktops) {
  const GStrings only(g_key_file_get_string_list(keys, kGroup, "OnlyShowIn", nullptr, nullptr));
  const GStrings notIn(g_key_file_get_string_list(keys, kGroup, "NotShowIn", nullptr, nullptr));
  for (const std::string& desktop : desktops) {
    if (contains(only.get(), desktop)) return true;
    if (contains(notIn.get(), desktop)) return false;
  }
  return !only;
}

// An Exec line whose program is not installed makes the entry unusable.
bool execRunnable(GKeyFile* keys, const std::string& searchPath) {
  const GText exec = stringValue(keys, "Exec");
  if (!isSet(exec)) return true;
  gint argc = 0;
  gchar** argv = nullptr;
  if (!g_shell_parse_argv(exec.get(), &argc, &argv, nullptr)) return false;
  const GStrings arguments(argv);
  return argc > 0 && programExists(arguments.get()[0], searchPath);
}

// Name in the first of the process's languages that has a non-empty
// translation, else the plain Name.
std::string localizedName(GKeyFile* keys) {
  std::string key;
  for (const gchar* const* language = g_get_language_names(); *language != nullptr; ++language) {
    key.assign("Name[").append(*language).append("]");
    const GText value = stringValue(keys, key.c_str());
    if (isSet(value)) return value.get();
  }
  const GText plain = stringValue(keys, "Name");
  return isSet(plain) ? std::string(plain.get()) : std::string();
}

std::optional<Date> modificationDate(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(status.st_mtim.tv_sec) +
                                                         std::chrono::nanoseconds(status.st_mtim.tv_nsec)));
}

}  // namespace

DesktopEnvironment DesktopEnvironment::fromVariables(const std::function<const char*(const char*)>& lookup) {
  const auto value = [&](const char* name) {
    const char* text = lookup(name);
    return std::string(text == nullptr ? "" : text);
  };
  const auto absolute = [](const std::string& path) { return !path.empty() && path.front() == '/'; };

  DesktopEnvironment environment;
  const std::string home = withoutTrailingSlashes(value("HOME"));
  const std::string dataHome = value("XDG_DATA_HOME");
  if (absolute(dataHome))
    environment.dataHome = withoutTrailingSlashes(dataHome);
  else if (absolute(home))
    environment.dataHome = (home == "/" ? "" : home) + "/.local/share";

  std::string dataDirs = value("XDG_DATA_DIRS");
  if (dataDirs.empty()) dataDirs = "/usr/local/share/:/usr/share/";
  for (std::string& folder : split(dataDirs, ':'))
    if (absolute(folder)) environment.dataDirs.push_back(withoutTrailingSlashes(std::move(folder)));

  for (std::string& desktop : split(value("XDG_CURRENT_DESKTOP"), ':'))
    if (!desktop.empty()) environment.currentDesktops.push_back(std::move(desktop));

  // GLib's fallback when PATH is unset, so TryExec means what it means to GIO.
  const char* path = lookup("PATH");
  environment.searchPath = path == nullptr ? "/bin:/usr/bin:." : path;
  return environment;
}

DesktopEntryFormat::DesktopEntryFormat(DesktopEnvironment environment)
    : environment_(std::move(environment)) {}

std::vector<std::string> DesktopEntryFormat::defaultRoots() const {
  std::vector<std::string> roots;
  const auto add = [&](const std::string& dataFolder) {
    if (dataFolder.empty()) return;
    std::string root = (dataFolder == "/" ? "" : dataFolder) + "/applications";
    // A folder named twice would only be scanned twice for nothing.
    if (std::find(roots.begin(), roots.end(), root) == roots.end()) roots.push_back(std::move(root));
  };
  add(environment_.dataHome);
  for (const std::string& folder : environment_.dataDirs) add(folder);
  return roots;
}

bool DesktopEntryFormat::isCandidate(std::string_view name) const {
  return name.size() > 8 && name.ends_with(".desktop");
}

BundleRecord DesktopEntryFormat::read(const std::string& path, std::string_view relativePath) const {
  BundleRecord record;
  record.app.url = path;
  record.app.id = std::string(relativePath);
  std::replace(record.app.id.begin(), record.app.id.end(), '/', '-');
  record.listed = false;
  if (!g_utf8_validate(record.app.id.data(), static_cast<gssize>(record.app.id.size()), nullptr))
    return record;

  // Without G_KEY_FILE_KEEP_TRANSLATIONS the parser keeps only the
  // translations for the process's languages, which is all localizedName()
  // asks for and much less work on entries with a hundred translations.
  const KeyFile keys(g_key_file_new());
  if (!g_key_file_load_from_file(keys.get(), path.c_str(), G_KEY_FILE_NONE, nullptr)) return record;
  const GText startGroup(g_key_file_get_start_group(keys.get()));
  if (!startGroup || std::string_view(startGroup.get()) != kGroup) return record;
  const GText type = stringValue(keys.get(), "Type");
  if (!type || std::string_view(type.get()) != "Application") return record;
  if (g_key_file_get_boolean(keys.get(), kGroup, "Hidden", nullptr)) return record;
  if (g_key_file_get_boolean(keys.get(), kGroup, "NoDisplay", nullptr)) return record;
  if (!shownIn(keys.get(), environment_.currentDesktops)) return record;
  const GText tryExec = stringValue(keys.get(), "TryExec");
  if (isSet(tryExec) && !programExists(tryExec.get(), environment_.searchPath)) return record;
  if (!execRunnable(keys.get(), environment_.searchPath)) return record;

  record.listed = true;
  record.app.name = localizedName(keys.get());
  if (record.app.name.empty()) {
    const std::string_view file = std::string_view(path).substr(path.find_last_of('/') + 1);
    record.app.name = std::string(file.substr(0, file.size() - std::string_view(".desktop").size()));
  }
  record.app.modified = modificationDate(path);
  return record;
}

}  // namespace orrery::platform
