#include "storage/LayoutStore.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "storage/AtomicWrite.h"
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

LayoutStore::LayoutStore(std::filesystem::path directory_)
    : LayoutStore(std::move(directory_), PosixFileSystem::shared()) {}

LayoutStore::LayoutStore(std::filesystem::path directory_, FileSystem& fileSystem, Clock now)
    : directory(std::move(directory_)), files_(fileSystem, std::move(now)) {}

LayoutStore::LoadResult LayoutStore::loadWithStatus() const {
  removeStrayTemporaries(files_.fileSystem(), directory, kTemporaryStemPrefix);

  StoreFileRead<Layout> main = files_.read<Layout>(mainFile());
  switch (main.state) {
    case StoreFileState::decoded:
      return LoadResult{std::move(main.value), false};
    // The main file may well be intact; the caller keeps from saving over
    // it, and the backup is not consulted.
    case StoreFileState::unreadable:
      return LoadResult{Layout::empty(), true};
    // A first start.
    case StoreFileState::missing:
      return LoadResult{Layout::empty(), false};
    case StoreFileState::corrupt:
      break;
  }

  (void)files_.setAside(mainFile(), corruptPrefix);
  StoreFileRead<Layout> backup = files_.read<Layout>(backupFile());
  switch (backup.state) {
    case StoreFileState::decoded:
      return LoadResult{std::move(backup.value), false};
    case StoreFileState::corrupt:
      (void)files_.setAside(backupFile(), backupCorruptPrefix);
      return LoadResult{Layout::empty(), false};
    case StoreFileState::missing:
    case StoreFileState::unreadable:
      return LoadResult{Layout::empty(), false};
  }
  return LoadResult{Layout::empty(), false};
}

Layout LayoutStore::load() const { return loadWithStatus().layout; }

Expected<std::monostate, LayoutStore::SaveError> LayoutStore::save(const Layout& layout) const {
  auto current =
      files_.clearForSave<Layout>(directory, mainFile(), corruptPrefix, &SaveError::mainUnreadable);
  if (!current) return Unexpected(current.error());
  if (current->state == StoreFileState::decoded) {
    // The exact bytes, not a re-encoding: the backup is what was on disk.
    if (auto backedUp = replaceAtomically(files_.fileSystem(), backupFile(), current->bytes); !backedUp)
      return Unexpected(SaveError::fileSystem(backedUp.error()));
  }

  if (auto written = replaceAtomically(files_.fileSystem(), mainFile(), layout.encoded()); !written)
    return Unexpected(SaveError::fileSystem(written.error()));
  return std::monostate{};
}

Expected<std::filesystem::path, LayoutStore::SaveError> LayoutStore::saveCopy(const Layout& layout,
                                                                              std::string_view prefix) const {
  FileSystem& fileSystem = files_.fileSystem();
  if (auto created = fileSystem.createDirectories(directory); !created)
    return Unexpected(SaveError::fileSystem(created.error()));
  const auto temporary = writeTemporaryFile(fileSystem, directory, prefix, layout.encoded());
  if (!temporary) return Unexpected(SaveError::fileSystem(temporary.error()));
  // On failure the temporary file stays; the next load removes it.
  const auto copy = files_.setAside(*temporary, prefix);
  if (!copy) return Unexpected(SaveError::fileSystem(copy.error()));
  if (auto synced = fileSystem.syncDirectory(directory); !synced)
    return Unexpected(SaveError::fileSystem(synced.error()));
  return *copy;
}

}  // namespace orrery
