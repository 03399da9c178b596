#include "Orrery/platform/xdg/DesktopEntryFormat.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <unordered_map>

#include <glib.h>

#include "Orrery/platform/posix/OpenFolder.h"
#include "Orrery/platform/xdg/DesktopEntryFile.h"
#include "Orrery/platform/xdg/GLibDesktopEntry.h"
#include "Orrery/platform/xdg/XdgDirectories.h"

namespace orrery::platform {

namespace {

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

bool contains(const std::optional<std::vector<std::string>>& list, const std::string& value) {
  return list && std::find(list->begin(), list->end(), value) != list->end();
}

// Entries of a few kilobytes are the rule; this bounds what a stray huge
// file can cost.
constexpr off_t kMaxEntryBytes = 4 * 1024 * 1024;

// The language names GLib's parser keeps translations for, in the order
// GLib looks them up in.
std::vector<std::string> languageNames() {
  std::vector<std::string> languages;
  for (const gchar* const* language = g_get_language_names(); *language != nullptr; ++language)
    languages.emplace_back(*language);
  return languages;
}

std::vector<std::string> translatedNameKeys(const std::vector<std::string>& languages) {
  std::vector<std::string> keys;
  for (const std::string& language : languages) keys.push_back("Name[" + language + "]");
  return keys;
}

// The keys an entry is judged and named by.
std::vector<std::string> keysRead(const std::vector<std::string>& translatedNames) {
  std::vector<std::string> keys{"Type",       "Exec",      "Name",    "NoDisplay",
                                "OnlyShowIn", "NotShowIn", "TryExec", "Hidden"};
  keys.insert(keys.end(), translatedNames.begin(), translatedNames.end());
  return keys;
}

// The reader of one scan. Each entry is read by DesktopEntryFile, and by
// GLib's parser only when that reader leaves the file to it; both answer
// the same questions, asked by the same code below.
class DesktopEntryReader final : public BundleFormat::Reader {
 public:
  explicit DesktopEntryReader(const DesktopEnvironment& environment)
      : environment_(environment),
        translatedNames_(translatedNameKeys(languageNames())),
        file_(keysRead(translatedNames_)) {}

  BundleRecord read(const std::string& path, std::string_view relativePath) override {
    BundleRecord record;
    record.app.url = path;
    record.app.id = std::string(relativePath);
    std::replace(record.app.id.begin(), record.app.id.end(), '/', '-');
    record.listed = false;
    if (!g_utf8_validate(record.app.id.data(), static_cast<gssize>(record.app.id.size()), nullptr)) {
      record.withheld = "ID is not UTF-8";
      return record;
    }

    const OpenFolder::Location location = folder_.of(path);
    const auto status = readWholeFile(location, kMaxEntryBytes, bytes_);
    if (!status) {
      record.withheld = "unreadable";
      return record;
    }
    file_.read(bytes_);
    std::string_view withheld;
    if (!file_.needsGLib()) {
      withheld = withheldReason(file_);
      if (withheld.empty()) record.app.name = localizedName(file_);
    }
    // needsGLib() may also have been set by one of the questions.
    if (file_.needsGLib()) {
      const GLibDesktopEntry keys(bytes_);
      withheld = withheldReason(keys);
      record.app.name = withheld.empty() ? localizedName(keys) : std::string();
    }
    if (!withheld.empty()) {
      record.withheld = std::string(withheld);
      return record;
    }

    record.listed = true;
    if (record.app.name.empty()) {
      const std::string_view file = std::string_view(path).substr(path.find_last_of('/') + 1);
      record.app.name = std::string(file.substr(0, file.size() - std::string_view(".desktop").size()));
    }
    record.app.modified = modificationDate(*status);
    return record;
  }

 private:
  // Why the entry is not an app to show, in the keys' own names; empty
  // when it is one.
  template <class Keys>
  std::string_view withheldReason(const Keys& keys) {
    if (!keys.startsWithDesktopEntry()) return "no [Desktop Entry] group";
    if (keys.string("Type") != "Application") return "Type is not Application";
    if (keys.boolean("Hidden")) return "Hidden";
    if (keys.boolean("NoDisplay")) return "NoDisplay";
    if (!shownIn(keys)) return "OnlyShowIn/NotShowIn";
    const std::optional<std::string> tryExec = keys.string("TryExec");
    if (tryExec && !tryExec->empty() && !installed(*tryExec)) return "TryExec program not installed";
    // An Exec line whose program is not installed makes the entry unusable.
    const std::optional<std::string> exec = keys.string("Exec");
    if (exec && !exec->empty()) {
      const std::optional<std::string> program = commandProgram(*exec);
      if (!program || !installed(*program)) return "Exec program not installed";
    }
    return {};
  }

  // OnlyShowIn/NotShowIn against the current desktops, in their order: the
  // first desktop either list names decides; with none named, an entry with
  // an OnlyShowIn list is not for this desktop.
  template <class Keys>
  bool shownIn(const Keys& keys) const {
    const auto only = keys.list("OnlyShowIn");
    const auto notIn = keys.list("NotShowIn");
    for (const std::string& desktop : environment_.currentDesktops) {
      if (contains(only, desktop)) return true;
      if (contains(notIn, desktop)) return false;
    }
    return !only;
  }

  // One scan looks each program up once.
  bool installed(const std::string& program) {
    const auto known = programs_.find(program);
    if (known != programs_.end()) return known->second;
    const bool exists = programExists(program, environment_.searchPath);
    programs_.emplace(program, exists);
    return exists;
  }

  // Name in the first wanted language with a non-empty translation, else
  // the plain Name.
  template <class Keys>
  std::string localizedName(const Keys& keys) const {
    for (const std::string& key : translatedNames_) {
      std::optional<std::string> value = keys.string(key);
      if (value && !value->empty()) return std::move(*value);
    }
    return keys.string("Name").value_or(std::string());
  }

  const DesktopEnvironment& environment_;
  std::vector<std::string> translatedNames_;
  DesktopEntryFile file_;
  std::unordered_map<std::string, bool> programs_;
  OpenFolder folder_;
  std::string bytes_;
};

}  // namespace

DesktopEnvironment DesktopEnvironment::fromVariables(const std::function<const char*(const char*)>& lookup) {
  XdgDirectories folders = XdgDirectories::fromVariables(lookup);
  DesktopEnvironment environment;
  environment.dataHome = std::move(folders.dataHome);
  environment.dataDirs = std::move(folders.dataDirs);
  const char* desktops = lookup("XDG_CURRENT_DESKTOP");
  for (std::string& desktop : split(desktops == nullptr ? "" : desktops, ':'))
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

std::unique_ptr<BundleFormat::Reader> DesktopEntryFormat::startScan() const {
  return std::make_unique<DesktopEntryReader>(environment_);
}

}  // namespace orrery::platform
