// OpenFolder: the folder of the last file a scan read, kept open.
//
// A scan reads a folder's candidates one after another. Opening each
// relative to its folder spares the kernel walking the whole path again for
// every file, which on a warm scan is a good part of what the kernel does.
//
// Thread rules: one owner (one scan's reader).
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "OrreryCore/base/Date.h"

namespace orrery::platform {

class OpenFolder {
 public:
  OpenFolder() = default;
  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;
  ~OpenFolder() { reset(); }

  struct Location {
    int folder;        // a descriptor for *at() calls
    const char* name;  // the path relative to it
  };

  // Where the absolute `path` is relative to its folder, kept open for the
  // next file in it. When the folder cannot be opened, the whole path
  // relative to the working folder, which being absolute is the path itself.
  Location of(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos || slash == 0) return {AT_FDCWD, path.c_str()};
    const std::string_view folder = std::string_view(path).substr(0, slash);
    if (folder != path_ || fd_ < 0) {
      reset();
      path_.assign(folder);
      fd_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    if (fd_ < 0) return {AT_FDCWD, path.c_str()};
    return {fd_, path.c_str() + slash + 1};
  }

 private:
  void reset() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

  std::string path_;
  int fd_ = -1;
};

// When the file of `status` was last modified.
inline Date modificationDate(const struct stat& status) {
  return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(status.st_mtim.tv_sec) +
                                                         std::chrono::nanoseconds(status.st_mtim.tv_nsec)));
}

// Reads the whole regular file at `location` into `bytes`, reusing its
// capacity, and returns the file's status (links followed, as opening
// follows them). Nothing when it cannot be opened, is not a regular file,
// is larger than `maxBytes` (a bound on what a stray huge file can cost) or
// a read fails. A file that shrank while being read is taken as it was read.
inline std::optional<struct stat> readWholeFile(OpenFolder::Location location, off_t maxBytes,
                                                std::string& bytes) {
  const int fd = openat(location.folder, location.name, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  std::optional<struct stat> result;
  struct stat status {};
  if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= maxBytes) {
    bytes.resize(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    bool failed = false;
    while (done < bytes.size()) {
      const ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) failed = true;
      if (got <= 0) break;
      done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    if (!failed) result = status;
  }
  close(fd);
  return result;
}

}  // namespace orrery::platform
