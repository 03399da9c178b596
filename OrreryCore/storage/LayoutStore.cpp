#include "OrreryCore/storage/LayoutStore.h"

#include <vector>

#include "OrreryCore/storage/AtomicWrite.h"
#include "OrreryCore/storage/PosixFileSystem.h"
#include "OrreryCore/text/Localized.h"

namespace orrery {

namespace {

// Stems of every temporary file the store makes: ".layout.json.tmp-…",
// ".layout.backup.json.tmp-…" and ".layout.before-sync-tmp-…".
constexpr std::string_view kTemporaryStemPrefix = "layout.";

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
