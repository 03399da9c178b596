// LayoutStore: the user's arrangement on disk, "layout.json", with one
// generation of backup, "layout.backup.json".
//
// Built so that the user's only good copy is never lost:
// - every write is a durable atomic replacement (AtomicWrite.h);
// - a main file that cannot be read at all (permissions, I/O) blocks saving:
//   loading reports `mainUnreadable`, and save() refuses to write;
// - a main file that cannot be decoded is moved aside under a dated name
//   ("layout.corrupt-<stamp>.json") before anything new is written, and the
//   backup is used in its place;
// - every save first copies the last good main file, byte for byte, to the
//   backup, so the backup always holds the generation before the current one.
// Temporary files of a crashed save (".layout.…tmp-<UUID>") are deleted when
// loading and never read.
//
// File access goes through a FileSystem (the real disk unless a test passes
// a MemoryFileSystem), and "now" for dated names through an injected clock.
//
// Thread rules: no state besides the folder; the application calls it on
// the main thread only. Two stores on the same folder must not save at once.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/storage/FileSystem.h"
#include "OrreryCore/storage/StoreFile.h"

namespace orrery {

class LayoutStore {
 public:
  static constexpr std::string_view mainFileName = "layout.json";
  static constexpr std::string_view backupFileName = "layout.backup.json";
  static constexpr std::string_view corruptPrefix = "layout.corrupt-";
  static constexpr std::string_view backupCorruptPrefix = "layout.backup.corrupt-";
  // The prefix the sync engine uses for the copy it keeps before replacing
  // the local arrangement.
  static constexpr std::string_view beforeSyncPrefix = "layout.before-sync-";

  struct LoadResult {
    Layout layout;
    // "layout.json" exists but cannot be read; the caller must not save.
    bool mainUnreadable = false;

    friend bool operator==(const LoadResult&, const LoadResult&) = default;
  };

  class SaveError : public StoreSaveError<SaveError> {
   public:
    enum class Kind {
      // "layout.json" could not be decoded and moving it aside failed; carries
      // the move's error. Nothing was written.
      couldNotSetAsideCorrupt,
      // "layout.json" exists but cannot be read. Nothing was written.
      mainUnreadable,
      // The file system refused: creating the folder, writing the backup or
      // the main file (or the dated copy). Carries its error.
      fileSystem,
    };

    static SaveError mainUnreadable() { return SaveError(Case::unreadable); }
    // The sentence to show the user.
    std::string description() const;

   private:
    friend StoreSaveError;
    using StoreSaveError::StoreSaveError;
  };

  using Clock = StoreFile::Clock;

  // On the real disk, with the system clock.
  explicit LayoutStore(std::filesystem::path directory);
  // On the given file system, which must outlive the store. An empty clock
  // means the system clock.
  LayoutStore(std::filesystem::path directory, FileSystem& fileSystem, Clock now = {});

  // Never fails: what went wrong shows in `mainUnreadable` and in the files
  // moved aside.
  LoadResult loadWithStatus() const;
  Layout load() const;

  Expected<std::monostate, SaveError> save(const Layout& layout) const;

  // Writes a dated copy, prefix + stamp + ".json", and returns its path.
  Expected<std::filesystem::path, SaveError> saveCopy(const Layout& layout, std::string_view prefix) const;

  std::filesystem::path mainFile() const { return directory / mainFileName; }
  std::filesystem::path backupFile() const { return directory / backupFileName; }

  // The folder holding all of the store's files.
  std::filesystem::path directory;

 private:
  StoreFile files_;
};

}  // namespace orrery
