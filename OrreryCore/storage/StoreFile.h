// StoreFile: the steps the stores take alike with the one file each keeps.
//
// A read sorts the file into one of four outcomes: decoded, missing (only
// "not found"), unreadable, damaged. A file that cannot be read is never
// written over; a damaged one is moved aside under a dated name before
// anything new takes its place. Each store keeps its file names, what it
// does with each outcome, and the wording of its errors (StoreSaveError).
//
// Thread rules: no state besides the file system and the clock; used on the
// thread of the store that holds it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "OrreryCore/base/Date.h"
#include "OrreryCore/base/Expected.h"
#include "OrreryCore/storage/DatedName.h"
#include "OrreryCore/storage/FileSystem.h"

namespace orrery {

// Why a store's save stopped. A store's SaveError derives from
// StoreSaveError<SaveError>, lists `Kind` in the order of `Case` (naming the
// middle case after its file), and adds that case's named constructor and
// description().
template <typename Error>
class StoreSaveError {
 public:
  // The damaged file could not be moved aside; carries the move's error.
  // Nothing was written.
  static Error couldNotSetAsideCorrupt(FileError moveError) {
    return Error(Case::couldNotSetAsideCorrupt, std::move(moveError));
  }
  // The file system refused: creating the folder, writing a file. Carries its error.
  static Error fileSystem(FileError error) { return Error(Case::fileSystem, std::move(error)); }

  auto kind() const { return static_cast<typename Error::Kind>(case_); }
  // The underlying error; null when the file could not be read.
  const FileError* fileError() const { return error_ ? &*error_ : nullptr; }

  friend bool operator==(const StoreSaveError&, const StoreSaveError&) = default;

 protected:
  enum class Case { couldNotSetAsideCorrupt, unreadable, fileSystem };
  explicit StoreSaveError(Case which, std::optional<FileError> error = std::nullopt)
      : case_(which), error_(std::move(error)) {}

 private:
  Case case_;
  std::optional<FileError> error_;
};

enum class StoreFileState { decoded, missing, unreadable, corrupt };

template <typename Value>
struct StoreFileRead {
  StoreFileState state = StoreFileState::missing;
  Value value{};        // when decoded
  std::string bytes{};  // exactly as read, when decoded
};

class StoreFile {
 public:
  using Clock = std::function<Date()>;

  // The file system must outlive this. An empty clock means the system clock.
  StoreFile(FileSystem& fileSystem, Clock now) : fileSystem_(&fileSystem), clock_(std::move(now)) {}

  FileSystem& fileSystem() const { return *fileSystem_; }
  Date now() const { return clock_ ? clock_() : std::chrono::system_clock::now(); }

  // Reads `file` and decodes it with Value::decode.
  template <typename Value>
  StoreFileRead<Value> read(const std::filesystem::path& file) const {
    auto bytes = fileSystem_->readFile(file);
    if (!bytes)
      return {.state = bytes.error().code == FileError::Code::notFound ? StoreFileState::missing
                                                                       : StoreFileState::unreadable};
    auto value = Value::decode(*bytes);
    if (!value) return {.state = StoreFileState::corrupt};
    return {StoreFileState::decoded, std::move(*value), std::move(*bytes)};
  }

  // Moves `file` to a fresh dated name, prefix + stamp + ".json", in its folder.
  Expected<std::filesystem::path, FileError> setAside(const std::filesystem::path& file,
                                                      std::string_view prefix) const {
    return moveAside(*fileSystem_, file, prefix, now());
  }

  // Before a save replaces `file`: creates `directory`, stops with
  // `unreadable()` at a file that cannot be read, and moves a damaged one
  // aside under `corruptPrefix` (or stops). Returns the file as read, so
  // that its bytes can be kept as a backup.
  template <typename Value, typename Error>
  Expected<StoreFileRead<Value>, Error> clearForSave(const std::filesystem::path& directory,
                                                     const std::filesystem::path& file,
                                                     std::string_view corruptPrefix,
                                                     Error (*unreadable)()) const {
    if (auto created = fileSystem_->createDirectories(directory); !created)
      return Unexpected(Error::fileSystem(created.error()));
    StoreFileRead<Value> current = read<Value>(file);
    if (current.state == StoreFileState::unreadable) return Unexpected(unreadable());
    if (current.state == StoreFileState::corrupt) {
      if (auto moved = setAside(file, corruptPrefix); !moved)
        return Unexpected(Error::couldNotSetAsideCorrupt(moved.error()));
    }
    return current;
  }

 private:
  FileSystem* fileSystem_;
  Clock clock_;
};

}  // namespace orrery
