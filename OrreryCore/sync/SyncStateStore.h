// SyncStateStore: the sync state on disk, "sync-state.json" in the same
// folder as the arrangement file.
//
// Built so that damaged bookkeeping never silently turns sync off and is
// never overwritten unseen:
// - a file that cannot be read at all (permissions, I/O) is left alone:
//   loading reports `unreadable`, and save() refuses to write;
// - a file that cannot be decoded (not JSON, or a strict key malformed) is
//   moved aside under a dated name ("sync-state.corrupt-<stamp>.json", the
//   same naming as the arrangement file's copies) before a fresh record takes
//   its place;
// - every write is a durable atomic replacement; temporary files of a
//   crashed save (".sync-state.json.tmp-<UUID>") are deleted when loading.
// At start-up a state that was unreadable or damaged makes the catalog act
// as if sync were on, so apps missing here are not pruned from the shared
// arrangement; treatingExistingLayout() makes a lost state with a non-empty
// arrangement count as user edits, so the first sync asks instead of
// overwriting the user's work.
//
// File access goes through a FileSystem (the real disk unless a test passes
// a MemoryFileSystem), and "now" for dated names through an injected clock.
//
// Thread rules: no state besides the folder; the application calls it on
// the main thread only.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/storage/FileSystem.h"
#include "OrreryCore/storage/StoreFile.h"
#include "OrreryCore/sync/SyncState.h"

namespace orrery {

class SyncStateStore {
 public:
  static constexpr std::string_view fileName = "sync-state.json";
  static constexpr std::string_view corruptPrefix = "sync-state.corrupt-";

  struct LoadResult {
    SyncState state;
    bool unreadable = false;  // the file exists but cannot be read; do not save
    bool wasCorrupt = false;  // the file could not be decoded and was set aside
    bool wasMissing = false;  // there was no file

    // When the state was lost (missing or damaged) but the arrangement holds
    // items or hidden apps, the result with `userEdited` set; otherwise the
    // result unchanged.
    LoadResult treatingExistingLayout(const Layout& layout) const;

    friend bool operator==(const LoadResult&, const LoadResult&) = default;
  };

  class SaveError : public StoreSaveError<SaveError> {
   public:
    enum class Kind {
      // The file could not be decoded and moving it aside failed; carries the
      // move's error. Nothing was written.
      couldNotSetAsideCorrupt,
      // The file exists but cannot be read. Nothing was written.
      unreadable,
      // Creating the folder or writing the file failed; carries the error.
      fileSystem,
    };

    static SaveError unreadable() { return SaveError(Case::unreadable); }
    // A sentence for the user and the log.
    std::string description() const;

   private:
    friend StoreSaveError;
    using StoreSaveError::StoreSaveError;
  };

  using Clock = StoreFile::Clock;

  // On the real disk, with the system clock.
  explicit SyncStateStore(std::filesystem::path directory);
  // On the given file system, which must outlive the store. An empty clock
  // means the system clock.
  SyncStateStore(std::filesystem::path directory, FileSystem& fileSystem, Clock now = {});

  // Never fails: what went wrong shows in the flags and in the file moved aside.
  LoadResult loadWithStatus() const;
  SyncState load() const;

  Expected<std::monostate, SaveError> save(const SyncState& state) const;

  std::filesystem::path file() const { return directory / fileName; }

  // The folder holding the file.
  std::filesystem::path directory;

 private:
  StoreFile files_;
};

}  // namespace orrery
