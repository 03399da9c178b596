#include "platform/xdg/DesktopEntryFormat.h"

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

bool isSet(const GText& text) { return text && text.get()[0] != '\0'; }

bool contains(gchar** list, const std::string& value) {
  for (gchar** item = list; item != nullptr && *item != nullptr; ++item)
    if (value == *item) return true;
  return false;
}

// Entries of a few kilobytes are the rule; this bounds what a stray huge
// file can cost.
constexpr off_t kMaxEntryBytes = 4 * 1024 * 1024;

// Reads the whole file into `bytes` and returns its modification time
// (links followed, as opening follows them), or nothing.
std::optional<Date> readFile(const std::string& path, std::string& bytes) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::optional<Date> modified;
  struct stat status {};
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kMaxEntryBytes) {
    bytes.resize(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    bool failed = false;
    while (done < bytes.size()) {
      const ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) failed = true;
      if (got <= 0) break;
      done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    if (!failed)
      modified = Date(std::chrono::duration_cast<Date::duration>(
          std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec)));
  }
  close(fd);
  return modified;
}

bool isKeyCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

bool isLocaleCharacter(char c) { return isKeyCharacter(c) || c == '_' || c == '.' || c == '@'; }

bool equalIgnoringAsciiCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (g_ascii_tolower(a[i]) != g_ascii_tolower(b[i])) return false;
  return true;
}

// A key line's key and locale ("Name[de_CH] = …" gives "Name" and
// "de_CH"), or nothing when the line is not plainly one. Only keys GLib's
// parser accepts qualify, so dropping such a line never hides an error.
struct KeyLine {
  std::string_view key;
  std::string_view locale;  // empty for an untranslated key
};

std::optional<KeyLine> keyLine(std::string_view line) {
  std::size_t at = 0;
  while (at < line.size() && isKeyCharacter(line[at])) ++at;
  if (at == 0) return std::nullopt;
  KeyLine parsed{line.substr(0, at), {}};
  if (at < line.size() && line[at] == '[') {
    const std::size_t localeStart = ++at;
    while (at < line.size() && isLocaleCharacter(line[at])) ++at;
    if (at == localeStart || at == line.size() || line[at] != ']') return std::nullopt;
    parsed.locale = line.substr(localeStart, at - localeStart);
    ++at;
  }
  while (at < line.size() && line[at] == ' ') ++at;
  if (at == line.size() || line[at] != '=') return std::nullopt;
  return parsed;
}

// The keys an entry is judged and named by. "Encoding" is among them
// because the parser rejects a file that declares anything but UTF-8.
bool isKeyRead(std::string_view key) {
  static constexpr std::string_view kKeys[] = {"Type",      "Name",    "Hidden", "NoDisplay", "OnlyShowIn",
                                               "NotShowIn", "TryExec", "Exec",   "Encoding"};
  return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

// The reader of one scan.
class DesktopEntryReader final : public BundleFormat::Reader {
 public:
  explicit DesktopEntryReader(const DesktopEnvironment& environment) : environment_(environment) {
    // The same list GLib's parser keeps translations for and the same
    // order GLib looks them up in.
    for (const gchar* const* language = g_get_language_names(); *language != nullptr; ++language)
      languages_.emplace_back(*language);
  }

  BundleRecord read(const std::string& path, std::string_view relativePath) override {
    BundleRecord record;
    record.app.url = path;
    record.app.id = std::string(relativePath);
    std::replace(record.app.id.begin(), record.app.id.end(), '/', '-');
    record.listed = false;
    if (!g_utf8_validate(record.app.id.data(), static_cast<gssize>(record.app.id.size()), nullptr))
      return record;

    const std::optional<Date> modified = readFile(path, bytes_);
    if (!modified) return record;
    keepInterestingLines();
    const KeyFile keys(g_key_file_new());
    if (!g_key_file_load_from_data(keys.get(), kept_.data(), kept_.size(), G_KEY_FILE_NONE, nullptr))
      return record;
    if (!isApplication(keys.get())) return record;

    record.listed = true;
    record.app.name = localizedName(keys.get());
    if (record.app.name.empty()) {
      const std::string_view file = std::string_view(path).substr(path.find_last_of('/') + 1);
      record.app.name = std::string(file.substr(0, file.size() - std::string_view(".desktop").size()));
    }
    record.app.modified = modified;
    return record;
  }

 private:
  // Copies `bytes_` to `kept_` without the lines nothing here reads:
  // blank lines, comments, keys other than those isApplication() and
  // localizedName() ask for, and Name translations into languages not
  // wanted. Lines before the first group all stay, so the parser still
  // rejects a file that does not start with one.
  void keepInterestingLines() {
    kept_.clear();
    bool inGroup = false;
    std::size_t start = 0;
    while (start < bytes_.size()) {
      std::size_t end = bytes_.find('\n', start);
      if (end == std::string::npos) end = bytes_.size();
      const std::string_view raw = std::string_view(bytes_).substr(start, end - start);
      std::string_view line = raw;
      while (!line.empty() && g_ascii_isspace(line.front())) line.remove_prefix(1);
      bool keep = true;
      if (line.starts_with('[')) {
        inGroup = true;
      } else if (inGroup) {
        if (line.empty() || line.front() == '#') {
          keep = false;
        } else if (const auto parsed = keyLine(line)) {
          keep = parsed->locale.empty() ? isKeyRead(parsed->key)
                                        : parsed->key == "Name" && wanted(parsed->locale);
        }
      }
      if (keep) kept_.append(raw).append("\n");
      start = end + 1;
    }
  }

  // The parser's own test for a translation worth keeping.
  bool wanted(std::string_view locale) const {
    return std::any_of(languages_.begin(), languages_.end(),
                       [&](const std::string& language) { return equalIgnoringAsciiCase(language, locale); });
  }

  bool has(GKeyFile* keys, const char* key) const { return g_key_file_has_key(keys, kGroup, key, nullptr); }

  // Asking GLib for a missing key builds a translated error message even
  // when nobody wants it, so optional keys are looked for first.
  GText optionalString(GKeyFile* keys, const char* key) const {
    return has(keys, key) ? GText(g_key_file_get_string(keys, kGroup, key, nullptr)) : GText();
  }
  bool optionalBoolean(GKeyFile* keys, const char* key) const {
    return has(keys, key) && g_key_file_get_boolean(keys, kGroup, key, nullptr);
  }
  GStrings optionalList(GKeyFile* keys, const char* key) const {
    return has(keys, key) ? GStrings(g_key_file_get_string_list(keys, kGroup, key, nullptr, nullptr))
                          : GStrings();
  }

  bool isApplication(GKeyFile* keys) {
    const GText startGroup(g_key_file_get_start_group(keys));
    if (!startGroup || std::string_view(startGroup.get()) != kGroup) return false;
    const GText type = optionalString(keys, "Type");
    if (!type || std::string_view(type.get()) != "Application") return false;
    if (optionalBoolean(keys, "Hidden") || optionalBoolean(keys, "NoDisplay")) return false;
    if (!shownIn(keys)) return false;
    const GText tryExec = optionalString(keys, "TryExec");
    if (isSet(tryExec) && !installed(tryExec.get())) return false;
    // An Exec line whose program is not installed makes the entry unusable.
    const GText exec = optionalString(keys, "Exec");
    if (isSet(exec)) {
      gint argc = 0;
      gchar** argv = nullptr;
      if (!g_shell_parse_argv(exec.get(), &argc, &argv, nullptr)) return false;
      const GStrings arguments(argv);
      if (argc < 1 || !installed(arguments.get()[0])) return false;
    }
    return true;
  }

  // OnlyShowIn/NotShowIn against the current desktops, in their order: the
  // first desktop either list names decides; with none named, an entry with
  // an OnlyShowIn list is not for this desktop.
  bool shownIn(GKeyFile* keys) const {
    const GStrings only = optionalList(keys, "OnlyShowIn");
    const GStrings notIn = optionalList(keys, "NotShowIn");
    for (const std::string& desktop : environment_.currentDesktops) {
      if (contains(only.get(), desktop)) return true;
      if (contains(notIn.get(), desktop)) return false;
    }
    return !only;
  }

  bool installed(const std::string& program) {
    const auto known = programs_.find(program);
    if (known != programs_.end()) return known->second;
    const bool exists = programExists(program, environment_.searchPath);
    programs_.emplace(program, exists);
    return exists;
  }

  // Name in the first wanted language with a non-empty translation, else
  // the plain Name.
  std::string localizedName(GKeyFile* keys) const {
    std::string key;
    for (const std::string& language : languages_) {
      key.assign("Name[").append(language).append("]");
      const GText value = optionalString(keys, key.c_str());
      if (isSet(value)) return value.get();
    }
    const GText plain = optionalString(keys, "Name");
    return isSet(plain) ? std::string(plain.get()) : std::string();
  }

  const DesktopEnvironment& environment_;
  std::vector<std::string> languages_;
  std::unordered_map<std::string, bool> programs_;
  std::string bytes_;
  std::string kept_;
};

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

std::unique_ptr<BundleFormat::Reader> DesktopEntryFormat::startScan() const {
  return std::make_unique<DesktopEntryReader>(environment_);
}

}  // namespace orrery::platform
