#include "OrreryCore/storage/PosixFileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace orrery {

namespace {

FileError failure(FileOperation operation, const std::filesystem::path& path, int errorNumber) {
  return FileError{fileErrorCode(errorNumber), operation, path, errorNumber, {}};
}

FileResult failed(FileOperation operation, const std::filesystem::path& path, int errorNumber) {
  return Unexpected(failure(operation, path, errorNumber));
}

// Runs a system call again while a signal interrupts it.
template <typename Call>
auto retrying(Call call) {
  for (;;) {
    auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

// 0 or an errno value.
int flushToDevice(int descriptor) {
#if defined(F_FULLFSYNC)
  // fsync on macOS only hands the data to the drive, whose cache may still
  // lose it; F_FULLFSYNC asks the drive to write it out. Some volumes
  // (network shares, FAT) refuse it, and fsync is then the best there is.
  if (retrying([&] { return ::fcntl(descriptor, F_FULLFSYNC); }) == 0) return 0;
#endif
  if (retrying([&] { return ::fsync(descriptor); }) == 0) return 0;
  return errno;
}

class PosixWritableFile final : public WritableFile {
 public:
  PosixWritableFile(int descriptor, std::filesystem::path path)
      : descriptor_(descriptor), path_(std::move(path)) {}
  ~PosixWritableFile() override {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  PosixWritableFile(const PosixWritableFile&) = delete;
  PosixWritableFile& operator=(const PosixWritableFile&) = delete;

  Expected<std::size_t, FileError> write(std::string_view bytes) override {
    if (descriptor_ < 0) return Unexpected(failure(FileOperation::write, path_, EBADF));
    if (bytes.empty()) return std::size_t{0};
    // One call: a regular file stores fewer bytes only when the disk fills up
    // (or a signal lands mid-way), and the caller treats that as a failure.
    const ssize_t written = retrying([&] { return ::write(descriptor_, bytes.data(), bytes.size()); });
    if (written < 0) return Unexpected(failure(FileOperation::write, path_, errno));
    return static_cast<std::size_t>(written);
  }

  FileResult sync() override {
    if (descriptor_ < 0) return failed(FileOperation::sync, path_, EBADF);
    if (const int error = flushToDevice(descriptor_)) return failed(FileOperation::sync, path_, error);
    return fileOK();
  }

  FileResult close() override {
    if (descriptor_ < 0) return failed(FileOperation::close, path_, EBADF);
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // Not retried on EINTR: the descriptor is released either way, and a
    // second close could close a descriptor another thread just opened.
    if (::close(descriptor) != 0 && errno != EINTR) return failed(FileOperation::close, path_, errno);
    return fileOK();
  }

 private:
  int descriptor_;
  std::filesystem::path path_;
};

}  // namespace

FileError::Code fileErrorCode(int errorNumber) {
  switch (errorNumber) {
    case ENOENT:
      return FileError::Code::notFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return FileError::Code::accessDenied;
    case ENOSPC:
    case EDQUOT:
      return FileError::Code::noSpace;
    case EIO:
      return FileError::Code::ioError;
    case EEXIST:
    case ENOTEMPTY:
      return FileError::Code::exists;
    case ENOTDIR:
      return FileError::Code::notADirectory;
    case EISDIR:
      return FileError::Code::isADirectory;
    default:
      return FileError::Code::other;
  }
}

PosixFileSystem& PosixFileSystem::shared() {
  static PosixFileSystem instance;
  return instance;
}

Expected<std::string, FileError> PosixFileSystem::readFile(const std::filesystem::path& path) {
  const int descriptor = retrying([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); });
  if (descriptor < 0) return Unexpected(failure(FileOperation::read, path, errno));
  std::string content;
  struct ::stat status {};
  if (::fstat(descriptor, &status) == 0 && status.st_size > 0)
    content.reserve(static_cast<std::size_t>(status.st_size));
  char buffer[64 * 1024];
  for (;;) {
    const ssize_t count = retrying([&] { return ::read(descriptor, buffer, sizeof buffer); });
    if (count < 0) {
      const int error = errno;
      ::close(descriptor);
      return Unexpected(failure(FileOperation::read, path, error));
    }
    if (count == 0) break;
    content.append(buffer, static_cast<std::size_t>(count));
  }
  ::close(descriptor);
  return content;
}

Expected<std::unique_ptr<WritableFile>, FileError> PosixFileSystem::createNew(
    const std::filesystem::path& path) {
  const int descriptor =
      retrying([&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666); });
  if (descriptor < 0) return Unexpected(failure(FileOperation::createNew, path, errno));
  return std::unique_ptr<WritableFile>(std::make_unique<PosixWritableFile>(descriptor, path));
}

FileResult PosixFileSystem::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) return failed(FileOperation::rename, from, errno);
  return fileOK();
}

FileResult PosixFileSystem::renameNoReplace(const std::filesystem::path& from,
                                            const std::filesystem::path& to) {
#if defined(RENAME_NOREPLACE)
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return fileOK();
  // Some file systems lack the flag (EINVAL) or the kernel the call (ENOSYS);
  // link+unlink below does the same for regular files.
  if (errno != EINVAL && errno != ENOSYS) return failed(FileOperation::renameNoReplace, from, errno);
#elif defined(RENAME_EXCL)
  if (::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0) return fileOK();
  if (errno != ENOTSUP && errno != EINVAL) return failed(FileOperation::renameNoReplace, from, errno);
#endif
  // link() refuses an existing name, which is the whole point; the moment
  // with both names in place is harmless, the content is the same file.
  if (::link(from.c_str(), to.c_str()) != 0) return failed(FileOperation::renameNoReplace, from, errno);
  if (::unlink(from.c_str()) != 0) {
    const int error = errno;
    ::unlink(to.c_str());
    return failed(FileOperation::renameNoReplace, from, error);
  }
  return fileOK();
}

FileResult PosixFileSystem::syncDirectory(const std::filesystem::path& path) {
  const int descriptor = retrying([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
  if (descriptor < 0) return failed(FileOperation::syncDirectory, path, errno);
  const int error = flushToDevice(descriptor);
  ::close(descriptor);
  // A few file systems cannot flush a folder at all and say so with EINVAL;
  // their entries are as durable as they will ever get.
  if (error != 0 && error != EINVAL) return failed(FileOperation::syncDirectory, path, error);
  return fileOK();
}

Expected<std::vector<std::string>, FileError> PosixFileSystem::listDirectory(
    const std::filesystem::path& path) {
  DIR* directory = ::opendir(path.c_str());
  if (directory == nullptr) return Unexpected(failure(FileOperation::listDirectory, path, errno));
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(directory);
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  const int error = errno;
  ::closedir(directory);
  if (error != 0) return Unexpected(failure(FileOperation::listDirectory, path, error));
  std::sort(names.begin(), names.end());
  return names;
}

FileResult PosixFileSystem::remove(const std::filesystem::path& path) {
  if (::unlink(path.c_str()) != 0) return failed(FileOperation::remove, path, errno);
  return fileOK();
}

FileResult PosixFileSystem::createDirectories(const std::filesystem::path& path) {
  const std::filesystem::path normal = path.lexically_normal();
  std::filesystem::path current;
  for (const auto& component : normal) {
    if (component.empty()) continue;  // the empty name after a trailing separator
    const std::filesystem::path parent = current;
    current /= component;
    if (::mkdir(current.c_str(), 0777) == 0) {
      // A new folder is only durable once its parent's entry is.
      if (!parent.empty()) {
        if (auto synced = syncDirectory(parent); !synced) {
          FileError error = synced.error();
          error.operation = FileOperation::createDirectories;
          return Unexpected(error);
        }
      }
      continue;
    }
    const int error = errno;
    struct ::stat status {};
    if (error == EEXIST || error == EACCES || error == EROFS || error == EPERM) {
      // Creating an existing folder fails with these on some systems even
      // when nothing needs creating; only a folder that is there counts.
      if (::stat(current.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) continue;
        return failed(FileOperation::createDirectories, current, ENOTDIR);
      }
    }
    return failed(FileOperation::createDirectories, current, error);
  }
  return fileOK();
}

Expected<FileStatus, FileError> PosixFileSystem::stat(const std::filesystem::path& path) {
  struct ::stat status {};
  if (::lstat(path.c_str(), &status) != 0) return Unexpected(failure(FileOperation::stat, path, errno));
  FileStatus result;
  result.kind = S_ISREG(status.st_mode)   ? FileStatus::Kind::regular
                : S_ISDIR(status.st_mode) ? FileStatus::Kind::directory
                                          : FileStatus::Kind::other;
  result.size = static_cast<std::uintmax_t>(status.st_size);
  return result;
}

}  // namespace orrery
