#include "sync/SyncStateStore.h"

#include "storage/AtomicWrite.h"
#include "storage/DatedName.h"
#include "storage/PosixFileSystem.h"
#include "text/Localized.h"

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

const FileError* SyncStateStore::SaveError::fileError() const {
  if (const auto* setAside = std::get_if<SetAside>(&value_)) return &setAside->error;
  if (const auto* failed = std::get_if<Failed>(&value_)) return &failed->error;
  return nullptr;
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

struct SyncStateStore::ReadResult {
  enum class Kind { state, missing, unreadable, corrupt };
  Kind kind = Kind::missing;
  SyncState state;  // when Kind::state
};

SyncStateStore::SyncStateStore(std::filesystem::path directory_)
    : SyncStateStore(std::move(directory_), PosixFileSystem::shared()) {}

SyncStateStore::SyncStateStore(std::filesystem::path directory_, FileSystem& fileSystem, Clock now)
    : directory(std::move(directory_)), fileSystem_(&fileSystem), clock_(std::move(now)) {}

Date SyncStateStore::now() const { return clock_ ? clock_() : std::chrono::system_clock::now(); }

SyncStateStore::ReadResult SyncStateStore::read() const {
  ReadResult result;
  const auto bytes = fileSystem_->readFile(file());
  if (!bytes) {
    result.kind = bytes.error().code == FileError::Code::notFound ? ReadResult::Kind::missing
                                                                  : ReadResult::Kind::unreadable;
    return result;
  }
  auto state = SyncState::decode(*bytes);
  if (!state) {
    result.kind = ReadResult::Kind::corrupt;
    return result;
  }
  result.kind = ReadResult::Kind::state;
  result.state = std::move(*state);
  return result;
}

SyncStateStore::LoadResult SyncStateStore::loadWithStatus() const {
  removeStrayTemporaries(*fileSystem_, directory, kTemporaryStemPrefix);

  ReadResult current = read();
  LoadResult result;
  switch (current.kind) {
    case ReadResult::Kind::state:
      result.state = std::move(current.state);
      break;
    case ReadResult::Kind::missing:
      result.wasMissing = true;
      break;
    case ReadResult::Kind::unreadable:
      result.unreadable = true;
      break;
    case ReadResult::Kind::corrupt:
      // A failure to move it is ignored here: save() tries again and refuses
      // to write over it.
      (void)moveAside(*fileSystem_, file(), corruptPrefix, now());
      result.wasCorrupt = true;
      break;
  }
  return result;
}

SyncState SyncStateStore::load() const { return loadWithStatus().state; }

Expected<std::monostate, SyncStateStore::SaveError> SyncStateStore::save(const SyncState& state) const {
  if (auto created = fileSystem_->createDirectories(directory); !created)
    return Unexpected(SaveError::fileSystem(created.error()));

  switch (read().kind) {
    case ReadResult::Kind::state:
    case ReadResult::Kind::missing:
      break;
    case ReadResult::Kind::unreadable:
      return Unexpected(SaveError::unreadable());
    case ReadResult::Kind::corrupt:
      if (auto moved = moveAside(*fileSystem_, file(), corruptPrefix, now()); !moved)
        return Unexpected(SaveError::couldNotSetAsideCorrupt(moved.error()));
      break;
  }

  if (auto written = replaceAtomically(*fileSystem_, file(), state.encoded()); !written)
    return Unexpected(SaveError::fileSystem(written.error()));
  return std::monostate{};
}

}  // namespace orrery
