#include "storage/StoreFile.h"

#include "storage/DatedName.h"

namespace orrery {

Date StoreFile::now() const { return clock_ ? clock_() : std::chrono::system_clock::now(); }

Expected<std::string, StoreFileState> StoreFile::readBytes(const std::filesystem::path& file) const {
  auto bytes = fileSystem_->readFile(file);
  if (!bytes)
    return Unexpected(bytes.error().code == FileError::Code::notFound ? StoreFileState::missing
                                                                      : StoreFileState::unreadable);
  return std::move(*bytes);
}

Expected<std::filesystem::path, FileError> StoreFile::setAside(const std::filesystem::path& file,
                                                               std::string_view prefix) const {
  return moveAside(*fileSystem_, file, prefix, now());
}

}  // namespace orrery
