// PosixFileSystem: the machine's real file system behind FileSystem.
//
// Plain POSIX calls, retried on EINTR. Flushing uses F_FULLFSYNC where the
// system defines it (macOS, where fsync only hands data to the drive's cache),
// falling back to fsync where a volume refuses it. Renaming without replacing
// uses the kernel's no-replace rename where there is one, else link+unlink.
//
// Thread rules: stateless; any thread.
#pragma once

#include "OrreryCore/storage/FileSystem.h"

namespace orrery {

class PosixFileSystem final : public FileSystem {
 public:
  // One shared instance; the class has no state, so any instance will do.
  static PosixFileSystem& shared();

  Expected<std::string, FileError> readFile(const std::filesystem::path& path) override;
  Expected<std::unique_ptr<WritableFile>, FileError> createNew(const std::filesystem::path& path) override;
  FileResult rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  FileResult renameNoReplace(const std::filesystem::path& from, const std::filesystem::path& to) override;
  FileResult syncDirectory(const std::filesystem::path& path) override;
  Expected<std::vector<std::string>, FileError> listDirectory(const std::filesystem::path& path) override;
  FileResult remove(const std::filesystem::path& path) override;
  FileResult createDirectories(const std::filesystem::path& path) override;
  Expected<FileStatus, FileError> stat(const std::filesystem::path& path) override;
};

// The error code for an errno value.
FileError::Code fileErrorCode(int errorNumber);

}  // namespace orrery
