#include "OrreryCore/sync/SyncStateStore.h"

#include "OrreryCore/storage/AtomicWrite.h"
#include "OrreryCore/storage/PosixFileSystem.h"
#include "OrreryCore/text/Localized.h"

namespace orrery {

namespace {

// The stem of the store's temporary files: ".sync-state.json.tmp-<UUID>".
constexpr std::string_view kTemporaryStemPrefix = "sync-state.";

}  // namespace

// --- Results and errors -------------------------------------------------------

SyncStateStore::LoadResult SyncStateStore::LoadResult::treatingExistingLayout(const Layout& layout) const {
  if (!wasMissing && !wasCorrupt) return *this;
  if (layout.items.empty() && layout.hidden.empty()) return *this;
  LoadResult result = *this;
  result.state.userEdited = true;
  return result;
}

std::string SyncStateStore::SaveError::description() const {
  switch (kind()) {
    case Kind::couldNotSetAsideCorrupt:
      return text::localized(
          "The damaged sync-state.json can't be renamed.",
          "Error when saving the sync state failed: the damaged file could not be moved aside");
    case Kind::unreadable:
      return text::localized("sync-state.json can't be read (check access permissions).",
                             "Error when saving the sync state failed: the existing file cannot be read");
    case Kind::fileSystem:
      break;
  }
  return fileError()->description();
}

// --- Store ----------------------------------------------------------------------

SyncStateStore::SyncStateStore(std::filesystem::path directory_)
    : SyncStateStore(std::move(directory_), PosixFileSystem::shared()) {}

SyncStateStore::SyncStateStore(std::filesystem::path directory_, FileSystem& fileSystem, Clock now)
    : directory(std::move(directory_)), files_(fileSystem, std::move(now)) {}

SyncStateStore::LoadResult SyncStateStore::loadWithStatus() const {
  removeStrayTemporaries(files_.fileSystem(), directory, kTemporaryStemPrefix);

  StoreFileRead<SyncState> current = files_.read<SyncState>(file());
  LoadResult result;
  switch (current.state) {
    case StoreFileState::decoded:
      result.state = std::move(current.value);
      break;
    case StoreFileState::missing:
      result.wasMissing = true;
      break;
    case StoreFileState::unreadable:
      result.unreadable = true;
      break;
    case StoreFileState::corrupt:
      // A failure to move it is ignored here: save() tries again and refuses
      // to write over it.
      (void)files_.setAside(file(), corruptPrefix);
      result.wasCorrupt = true;
      break;
  }
  return result;
}

SyncState SyncStateStore::load() const { return loadWithStatus().state; }

Expected<std::monostate, SyncStateStore::SaveError> SyncStateStore::save(const SyncState& state) const {
  if (auto cleared = files_.clearForSave<SyncState>(directory, file(), corruptPrefix, &SaveError::unreadable);
      !cleared)
    return Unexpected(cleared.error());
  if (auto written = replaceAtomically(files_.fileSystem(), file(), state.encoded()); !written)
    return Unexpected(SaveError::fileSystem(written.error()));
  return std::monostate{};
}

}  // namespace orrery
