#include "OrreryCore/storage/DatedName.h"

#include <algorithm>

namespace orrery {

namespace {

// Far more than any folder holds in one second; stops a file system that
// claims every name is taken from keeping us in a loop.
constexpr int kMaximumCounter = 100000;
constexpr int kMoveAttempts = 100;

}  // namespace

std::string datedName(std::string_view prefix, Date date, int counter) {
  std::string stamp = iso8601(date);
  std::replace(stamp.begin(), stamp.end(), ':', '-');
  std::string name(prefix);
  name += stamp;
  if (counter > 1) name += "-" + std::to_string(counter);
  name += ".json";
  return name;
}

Expected<std::filesystem::path, FileError> uniqueURL(FileSystem& fileSystem,
                                                     const std::filesystem::path& directory,
                                                     std::string_view prefix, Date now) {
  for (int counter = 1; counter <= kMaximumCounter; ++counter) {
    std::filesystem::path candidate = directory / datedName(prefix, now, counter);
    const auto status = fileSystem.stat(candidate);
    if (!status && status.error().code == FileError::Code::notFound) return candidate;
    if (!status) return Unexpected(status.error());
  }
  return Unexpected(FileError{FileError::Code::exists, FileOperation::stat,
                              directory / datedName(prefix, now), 0, "no free dated name"});
}

Expected<std::filesystem::path, FileError> moveAside(FileSystem& fileSystem,
                                                     const std::filesystem::path& file,
                                                     std::string_view prefix, Date now) {
  const std::filesystem::path directory = file.parent_path();
  for (int attempt = 0;; ++attempt) {
    auto destination = uniqueURL(fileSystem, directory, prefix, now);
    if (!destination) return Unexpected(destination.error());
    auto moved = fileSystem.renameNoReplace(file, *destination);
    if (moved) return *destination;
    // Someone took the name between looking and moving: look again.
    if (moved.error().code != FileError::Code::exists || attempt + 1 >= kMoveAttempts)
      return Unexpected(moved.error());
  }
}

}  // namespace orrery
