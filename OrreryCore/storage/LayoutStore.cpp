#include "storage/LayoutStore.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "storage/AtomicWrite.h"
#include "storage/DatedName.h"
#include "storage/PosixFileSystem.h"
#include "text/Localized.h"

namespace orrery {

namespace {

// Stems of every temporary file the store makes: ".layout.json.tmp-…",
// ".layout.backup.json.tmp-…" and ".layout.before-sync-tmp-…".
constexpr std::string_view kTemporaryStemPrefix = "layout.";

std::optional<std::string> homeFromUserDatabase() {
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
      found->pw_dir == nullptr || found->pw_dir[0] == '\0')
    return std::nullopt;
  return std::string(found->pw_dir);
}

}  // namespace

// --- Errors -------------------------------------------------------------------

const FileError* LayoutStore::SaveError::fileError() const {
  if (const auto* setAside = std::get_if<SetAside>(&value_)) return &setAside->error;
  if (const auto* failed = std::get_if<Failed>(&value_)) return &failed->error;
  return nullptr;
}

std::string LayoutStore::SaveError::description() const {
  switch (kind()) {
    case Kind::couldNotSetAsideCorrupt:
      return text::localized(
          "The damaged layout.json can't be renamed.",
          "Error after saving the arrangement failed: the unreadable file could not be moved aside");
    case Kind::mainUnreadable:
      return text::localized("layout.json can't be read (check access permissions).",
                             "Error after saving the arrangement failed: the existing file cannot be read");
    case Kind::fileSystem:
      break;
  }
  return fileError()->description();
}

// --- Locations ------------------------------------------------------------------

LayoutStore::Environment LayoutStore::processEnvironment() {
  return [](std::string_view name) -> std::optional<std::string> {
    const std::string key(name);
    if (const char* value = std::getenv(key.c_str()); value != nullptr && value[0] != '\0')
      return std::string(value);
    if (key == "HOME") return homeFromUserDatabase();
    return std::nullopt;
  };
}

std::filesystem::path LayoutStore::defaultDirectory(DataLocation location, const Environment& environment) {
  // Without any home folder (no HOME, no user entry) the path stays relative
  // to the working folder rather than pointing somewhere shared.
  const std::filesystem::path home = environment("HOME").value_or("");
  switch (location) {
    case DataLocation::xdgDataHome: {
      // The base-directory rules ignore a relative XDG_DATA_HOME.
      if (auto data = environment("XDG_DATA_HOME"); data && std::filesystem::path(*data).is_absolute())
        return std::filesystem::path(*data) / "Orrery";
      return home / ".local" / "share" / "Orrery";
    }
    case DataLocation::applicationSupport:
      return home / "Library" / "Application Support" / "Orrery";
  }
  return home / "Orrery";
}

// --- Store ------------------------------------------------------------------------

struct LayoutStore::ReadResult {
  enum class Kind { loaded, missing, unreadable, corrupt };
  Kind kind = Kind::missing;
  Layout layout;     // when loaded
  std::string data;  // the raw bytes, when loaded
};

LayoutStore::LayoutStore(std::filesystem::path directory_)
    : LayoutStore(std::move(directory_), PosixFileSystem::shared()) {}

LayoutStore::LayoutStore(std::filesystem::path directory_, FileSystem& fileSystem, Clock now)
    : directory(std::move(directory_)), fileSystem_(&fileSystem), clock_(std::move(now)) {}

Date LayoutStore::now() const { return clock_ ? clock_() : std::chrono::system_clock::now(); }

LayoutStore::ReadResult LayoutStore::read(const std::filesystem::path& file) const {
  ReadResult result;
  auto bytes = fileSystem_->readFile(file);
  if (!bytes) {
    result.kind = bytes.error().code == FileError::Code::notFound ? ReadResult::Kind::missing
                                                                  : ReadResult::Kind::unreadable;
    return result;
  }
  auto layout = Layout::decode(*bytes);
  if (!layout) {
    result.kind = ReadResult::Kind::corrupt;
    return result;
  }
  result.kind = ReadResult::Kind::loaded;
  result.layout = std::move(*layout);
  result.data = std::move(*bytes);
  return result;
}

LayoutStore::LoadResult LayoutStore::loadWithStatus() const {
  removeStrayTemporaries(*fileSystem_, directory, kTemporaryStemPrefix);

  ReadResult main = read(mainFile());
  switch (main.kind) {
    case ReadResult::Kind::loaded:
      return LoadResult{std::move(main.layout), false};
    // The main file may well be intact; the caller keeps from saving over
    // it, and the backup is not consulted.
    case ReadResult::Kind::unreadable:
      return LoadResult{Layout::empty(), true};
    // A first start.
    case ReadResult::Kind::missing:
      return LoadResult{Layout::empty(), false};
    case ReadResult::Kind::corrupt:
      break;
  }

  (void)moveAside(*fileSystem_, mainFile(), corruptPrefix, now());
  ReadResult backup = read(backupFile());
  switch (backup.kind) {
    case ReadResult::Kind::loaded:
      return LoadResult{std::move(backup.layout), false};
    case ReadResult::Kind::corrupt:
      (void)moveAside(*fileSystem_, backupFile(), backupCorruptPrefix, now());
      return LoadResult{Layout::empty(), false};
    case ReadResult::Kind::missing:
    case ReadResult::Kind::unreadable:
      return LoadResult{Layout::empty(), false};
  }
  return LoadResult{Layout::empty(), false};
}

Layout LayoutStore::load() const { return loadWithStatus().layout; }

Expected<std::monostate, LayoutStore::SaveError> LayoutStore::save(const Layout& layout) const {
  if (auto created = fileSystem_->createDirectories(directory); !created)
    return Unexpected(SaveError::fileSystem(created.error()));

  const ReadResult current = read(mainFile());
  switch (current.kind) {
    case ReadResult::Kind::missing:
      break;
    case ReadResult::Kind::unreadable:
      return Unexpected(SaveError::mainUnreadable());
    case ReadResult::Kind::corrupt:
      if (auto moved = moveAside(*fileSystem_, mainFile(), corruptPrefix, now()); !moved)
        return Unexpected(SaveError::couldNotSetAsideCorrupt(moved.error()));
      break;
    case ReadResult::Kind::loaded:
      // The exact bytes, not a re-encoding: the backup is what was on disk.
      if (auto backedUp = replaceAtomically(*fileSystem_, backupFile(), current.data); !backedUp)
        return Unexpected(SaveError::fileSystem(backedUp.error()));
      break;
  }

  if (auto written = replaceAtomically(*fileSystem_, mainFile(), layout.encoded()); !written)
    return Unexpected(SaveError::fileSystem(written.error()));
  return std::monostate{};
}

Expected<std::filesystem::path, LayoutStore::SaveError> LayoutStore::saveCopy(const Layout& layout,
                                                                              std::string_view prefix) const {
  if (auto created = fileSystem_->createDirectories(directory); !created)
    return Unexpected(SaveError::fileSystem(created.error()));
  const auto temporary = writeTemporaryFile(*fileSystem_, directory, prefix, layout.encoded());
  if (!temporary) return Unexpected(SaveError::fileSystem(temporary.error()));
  // On failure the temporary file stays; the next load removes it.
  const auto copy = moveAside(*fileSystem_, *temporary, prefix, now());
  if (!copy) return Unexpected(SaveError::fileSystem(copy.error()));
  if (auto synced = fileSystem_->syncDirectory(directory); !synced)
    return Unexpected(SaveError::fileSystem(synced.error()));
  return *copy;
}

}  // namespace orrery
