#include "OrreryCore/storage/AtomicWrite.h"

#include "OrreryCore/base/Uuid.h"

namespace orrery {

namespace {

constexpr std::string_view kTemporaryMarker = "tmp-";
constexpr std::size_t kUuidLength = 36;
// A fresh UUID colliding is practically impossible, but a child process
// forked after the generator was seeded repeats its parent's names.
constexpr int kCreateAttempts = 4;

// The error as the user should see it: about the target, with the step and
// the temporary file in the detail for the log.
FileError aboutTarget(FileError error, const std::filesystem::path& target) {
  if (error.path != target) {
    std::string step = std::string(operationName(error.operation)) + " " + error.path.filename().string();
    error.detail = error.detail.empty() ? step : step + ": " + error.detail;
    error.path = target;
  }
  return error;
}

}  // namespace

std::string temporaryName(std::string_view stem) {
  std::string name = ".";
  name += stem;
  name += kTemporaryMarker;
  name += Uuid::random().text();
  return name;
}

bool isTemporaryName(std::string_view name, std::string_view stemPrefix) {
  const std::size_t minimum = 1 + stemPrefix.size() + kTemporaryMarker.size() + kUuidLength;
  if (name.size() < minimum || name[0] != '.' || name.substr(1, stemPrefix.size()) != stemPrefix)
    return false;
  const std::string_view tail = name.substr(name.size() - kUuidLength - kTemporaryMarker.size());
  return tail.substr(0, kTemporaryMarker.size()) == kTemporaryMarker &&
         Uuid::parse(tail.substr(kTemporaryMarker.size())).has_value();
}

Expected<std::filesystem::path, FileError> writeTemporaryFile(FileSystem& fileSystem,
                                                              const std::filesystem::path& directory,
                                                              std::string_view stem, std::string_view bytes) {
  std::filesystem::path path;
  Expected<std::unique_ptr<WritableFile>, FileError> created = Unexpected(FileError{});
  for (int attempt = 0; attempt < kCreateAttempts; ++attempt) {
    path = directory / temporaryName(stem);
    created = fileSystem.createNew(path);
    if (created || created.error().code != FileError::Code::exists) break;
  }
  if (!created) return Unexpected(created.error());
  std::unique_ptr<WritableFile> file = std::move(*created);

  auto giveUp = [&](FileError error) -> Expected<std::filesystem::path, FileError> {
    file.reset();  // closes if still open
    (void)fileSystem.remove(path);
    return Unexpected(std::move(error));
  };

  if (!bytes.empty()) {
    const auto written = file->write(bytes);
    if (!written) return giveUp(written.error());
    if (*written != bytes.size()) {
      // A regular file takes fewer bytes than offered only when the disk or
      // the quota is full; the rest would fail anyway, so stop here.
      return giveUp(
          FileError{FileError::Code::noSpace, FileOperation::write, path, 0,
                    "stored " + std::to_string(*written) + " of " + std::to_string(bytes.size()) + " bytes"});
    }
  }
  if (auto synced = file->sync(); !synced) return giveUp(synced.error());
  if (auto closed = file->close(); !closed) return giveUp(closed.error());
  return path;
}

FileResult replaceAtomically(FileSystem& fileSystem, const std::filesystem::path& target,
                             std::string_view bytes) {
  const std::filesystem::path directory = target.parent_path();
  const std::string stem = target.filename().string() + ".";
  const auto temporary = writeTemporaryFile(fileSystem, directory, stem, bytes);
  if (!temporary) return Unexpected(aboutTarget(temporary.error(), target));
  if (auto renamed = fileSystem.rename(*temporary, target); !renamed) {
    (void)fileSystem.remove(*temporary);
    return Unexpected(aboutTarget(renamed.error(), target));
  }
  if (auto synced = fileSystem.syncDirectory(directory); !synced)
    return Unexpected(aboutTarget(synced.error(), target));
  return fileOK();
}

std::size_t removeStrayTemporaries(FileSystem& fileSystem, const std::filesystem::path& directory,
                                   std::string_view stemPrefix) {
  const auto names = fileSystem.listDirectory(directory);
  if (!names) return 0;
  std::size_t removed = 0;
  for (const std::string& name : *names) {
    if (isTemporaryName(name, stemPrefix) && fileSystem.remove(directory / name)) ++removed;
  }
  return removed;
}

}  // namespace orrery
