// OpenFolder: the folder of the last file a scan read, kept open.
//
// A scan reads a folder's candidates one after another. Opening each
// relative to its folder spares the kernel walking the whole path again for
// every file, which on a warm scan is a good part of what the kernel does.
//
// Thread rules: one owner (one scan's reader).
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <string_view>

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

}  // namespace orrery::platform
